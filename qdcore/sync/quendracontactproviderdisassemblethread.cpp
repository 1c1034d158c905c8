#include "quendracontactproviderdisassemblethread.h"

#include "contactdisassembly_p.h"
#include "tsan_p.h"

QuendraContactProviderDisassembleThread::QuendraContactProviderDisassembleThread(
    const QPointer<ContactLocalStorage>& storage, unsigned int source, QObject* parent)
    : QThread(parent)
    , m_storage(storage)
    , m_source(source)
{}

QuendraContactProviderDisassembleThread::~QuendraContactProviderDisassembleThread()
{
    wait();
    tsanTakeOver(this);
}

void QuendraContactProviderDisassembleThread::setContacts(const ContactList& contacts, unsigned int timestamp)
{
    m_contacts = contacts;
    m_timestamp = timestamp;
}

void QuendraContactProviderDisassembleThread::setKnown(ContactLocalStorage::ContactType type,
                                                       ContactLocalStorage::ContactLocation location,
                                                       unsigned int timestamp)
{
    m_type = type;
    m_location = location;
    m_known = timestamp;
}

bool QuendraContactProviderDisassembleThread::isOutdated() const
{
    if (!m_known)
        return false;
    const unsigned int now = m_storage->getContactLastTimeStamp(m_source, m_type, m_location);
    return now != *m_known && now > m_timestamp;
}

void QuendraContactProviderDisassembleThread::run()
{
    bool isStored = false;
    if (m_storage) {
        const bool begun = m_storage->scopeBegin();
        // the server may have been removed while the reply was on its way; its units must not come back
        QString name;
        ContactLocalStorage::SourceType kind;
        if (begun && m_storage->getSourceInfo(m_source, name, kind) && !isOutdated()) {
            for (const auto& unit : qAsConst(m_contacts).contacts()) {
                if (unit)
                    disassemble(*m_storage, m_source, *unit, m_timestamp, 0);
            }
        }
        const bool holds = m_storage->scopeEnd();
        isStored = begun && holds;
        m_storage->freeStorageForThread();
    }
    tsanHandOver(this);
    Q_EMIT written(isStored);
    Q_EMIT doneDisassembleContactFromThread(m_contacts.contactsType());
    deleteLater();
    tsanHandOver(this);
}
