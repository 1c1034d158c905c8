#include "quendracontactproviderdisassemblethread.h"

#include "bookknowledge_p.h"
#include "tsan_p.h"

#include <utility>

QuendraContactProviderDisassembleThread::QuendraContactProviderDisassembleThread(
    const QPointer<ContactLocalStorage>& storage, unsigned int source, QObject* parent)
    : QThread(parent)
    , m_storage(storage)
    , m_source(source)
    , m_known(QSharedPointer<BookKnowledge>::create(
          StoredBook{source, ContactLocalStorage::AnyType, ContactLocalStorage::AnyLocation}))
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

void QuendraContactProviderDisassembleThread::setContacts(ContactList&& contacts, unsigned int timestamp)
{
    m_contacts = std::move(contacts);
    m_timestamp = timestamp;
}

void QuendraContactProviderDisassembleThread::setKnown(ContactLocalStorage::ContactType type,
                                                       ContactLocalStorage::ContactLocation location,
                                                       unsigned int timestamp)
{
    m_known = QSharedPointer<BookKnowledge>::create(StoredBook{m_source, type, location}, timestamp);
}

void QuendraContactProviderDisassembleThread::run()
{
    bool isStored = false;
    const ContactList::Type book = m_contacts.contactsType();
    if (m_storage) {
        const bool begun = m_storage->scopeBegin();
        // the server may have been removed while the reply was on its way; its units must not come back
        QString name;
        ContactLocalStorage::SourceType kind;
        if (begun && m_storage->getSourceInfo(m_source, name, kind))
            m_known->store(*m_storage, m_contacts, m_timestamp);
        const bool holds = m_storage->scopeEnd();
        isStored = begun && holds;
        m_storage->freeStorageForThread();
    }
    m_contacts = ContactList(); // destroying 100,000 units takes too long for the event loop
    tsanHandOver(this);
    Q_EMIT written(isStored);
    Q_EMIT doneDisassembleContactFromThread(book);
    deleteLater();
    tsanHandOver(this);
}
