#include "contactprovider.h"

#include "contactlocalstorage.h"
#include "contactmanager.h"
#include "log_p.h"

ContactProvider::ContactProvider(ContactManager& manager)
    : QObject(&manager)
    , m_storage(manager.storage())
{}

ContactProvider::~ContactProvider()
{
    while (m_syncCount != 0) {
        --m_syncCount;
        Q_EMIT onSyncStop();
        Q_EMIT errorSyncedContacts(Task::Error);
        QD_LOG(DEBUG, tr("sync count (%1)", "Logger").arg(m_syncCount));
    }
}
