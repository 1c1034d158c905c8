#include "contactsdeleterthread.h"

#include "tsan_p.h"

ContactsDeleterThread::ContactsDeleterThread(const QPointer<ContactLocalStorage>& storage,
                                             unsigned int source, ContactLocalStorage::ContactType type,
                                             ContactLocalStorage::ContactLocation location,
                                             const QList<QString>& uids, QObject* parent)
    : QThread(parent)
    , m_storage(storage)
    , m_source(source)
    , m_type(type)
    , m_location(location)
    , m_uids(uids)
{}

ContactsDeleterThread::~ContactsDeleterThread()
{
    wait();
    tsanTakeOver(this);
}

void ContactsDeleterThread::run()
{
    bool isStored = false;
    if (m_storage) {
        // whoever began a bracket ends it, also when beginning failed: the mutex is held either way
        const bool begun = m_storage->scopeBegin();
        if (begun &&
            (!m_known || m_storage->getContactLastTimeStamp(m_source, m_type, m_location) == *m_known))
            m_storage->deleteContactsIfNotInUIDS(m_source, m_type, m_location, m_uids);
        const bool holds = m_storage->scopeEnd();
        isStored = begun && holds;
        m_storage->freeStorageForThread();
    }
    tsanHandOver(this);
    Q_EMIT deleted(isStored);
    Q_EMIT doneContactsDeletion();
    deleteLater();
    tsanHandOver(this);
}
