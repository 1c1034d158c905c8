#include "outlookcontactproviderdisassemblethread.h"

#include "outlookfolderkey_p.h"
#include "tsan_p.h"

#include <limits>

namespace {

/// A local time in Unix seconds, as in the store. 0 for an invalid time and for one outside the store's
/// range: Outlook uses the year 4501 for "none".
unsigned int timestampOf(const QDateTime& time)
{
    const qint64 seconds = time.isValid() ? time.toSecsSinceEpoch() : 0;
    return seconds > 0 && seconds <= std::numeric_limits<unsigned int>::max() ? unsigned(seconds) : 0;
}

} // namespace

OutlookContactProviderDisassembleThread::OutlookContactProviderDisassembleThread(
    const QPointer<ContactLocalStorage>& storage, unsigned int source, QObject* parent)
    : QThread(parent)
    , m_storage(storage)
    , m_source(source)
{}

OutlookContactProviderDisassembleThread::~OutlookContactProviderDisassembleThread()
{
    wait();
    tsanTakeOver(this);
}

void OutlookContactProviderDisassembleThread::run()
{
    const OutlookAccess access;
    bool isStored = false;
    bool isRead = false;
    if (m_storage) {
        const bool begun = m_storage->scopeBegin();
        // If another folder has been chosen meanwhile, the contacts of this one must not be stored again.
        QString name;
        ContactLocalStorage::SourceType kind;
        const bool isWanted = begun && m_storage->getSourceInfo(m_source, name, kind);
        if (isWanted) {
            dropContacts();
            isRead = copyFolder(access);
            if (isInterruptionRequested())
                dropContacts();
        }
        const bool holds = m_storage->scopeEnd();
        isStored = isWanted && holds;
        m_storage->freeStorageForThread();
    }
    tsanHandOver(this);
    Q_EMIT copied(isStored, isRead);
    Q_EMIT doneDisassembleContactFromThread(m_type);
    deleteLater();
    tsanHandOver(this);
}

void OutlookContactProviderDisassembleThread::dropContacts()
{
    const auto kind = m_type == ContactList::OutlookContacts ? ContactLocalStorage::TypeContact
                                                             : ContactLocalStorage::TypeGroup;
    m_storage->deleteContactList(m_source, kind, ContactLocalStorage::LocationPersonal);
}

bool OutlookContactProviderDisassembleThread::copyFolder(const OutlookAccess& access)
{
    const QSharedPointer<OutlookApplication> application = access.createApplication();
    if (!application || !isOutlookFolderKey(m_entryID))
        return false;
    const QSharedPointer<OutlookSession> session = application->session();
    if (!session)
        return false;
    session->logon();
    const QSharedPointer<OutlookFolder> folder = outlookFolder(*session, m_entryID);
    QSharedPointer<OutlookItems> items;
    if (folder && isContactFolder(*folder))
        items = folder->items();
    int count = items ? items->count() : -1;
    if (m_type == ContactList::OutlookContacts) {
        // the folder may change while it is read
        for (int i = 1; i <= count && !isInterruptionRequested(); ++i, count = items->count()) {
            const QSharedPointer<OutlookItem> item = items->item(i);
            if (item && item->itemClass() == OutlookItem::contactClass)
                store(*item);
        }
    }
    const bool isWhole = count >= 0 && !isInterruptionRequested();
    session->logoff();
    return isWhole;
}

void OutlookContactProviderDisassembleThread::store(const OutlookItem& item)
{
    const QString entryID = item.entryID();
    const unsigned int modified = timestampOf(item.lastModificationTime());
    const QString name = item.fullName();
    const QString phone = item.businessTelephoneNumber();
    const QString fax = item.businessFaxNumber();
    const QString company = item.companyName();
    if (item.isIntact())
        m_storage->addContact(m_source, ContactLocalStorage::TypeContact,
                              ContactLocalStorage::LocationPersonal, entryID, modified, name, QString(),
                              phone, fax, QString(), company);
}
