#include "contactmanager.h"

#include "contactlocalstorage.h"
#include "contactrow_p.h"
#include "log_p.h"
#include "outlookcontactprovider.h"
#include "quendracontactprovider.h"
#include "tasks/signaltypes_p.h"

#include <algorithm>
#include <utility>

ContactManager::ContactManager(QObject* parent)
    : QObject(parent)
    , m_storage(new ContactLocalStorage(this))
{
    qRegisterMetaType<QuickSearchResalt>("QuickSearchResalt");
    registerSignalTypes();
}

ContactManager::~ContactManager()
{
    // emptied first: a slot called during the destruction must not find them
    const QVector<QPointer<ContactProvider>> providers = std::exchange(m_providers, {});
    for (const auto& provider : providers)
        delete provider;
    // those whose deleteLater() is pending: their threads use the store
    qDeleteAll(findChildren<ContactProvider*>(QString(), Qt::FindDirectChildrenOnly));
    delete m_storage;
}

QPointer<ContactProvider> ContactManager::addProvider(ContactProvider::Type type)
{
    QPointer<ContactProvider> provider;
    switch (type) {
    case ContactProvider::QuendraProvider:
        provider = new QuendraContactProvider(*this);
        break;
    case ContactProvider::OutlookProvider:
        provider = new OutlookContactProvider(*this);
        break;
    }
    if (provider) {
        connect(provider, &ContactProvider::onSyncStart, this, &ContactManager::slotSyncStart);
        connect(provider, &ContactProvider::onSyncStop, this, &ContactManager::slotSyncStop);
    }
    m_providers.append(provider);
    Q_EMIT changedContactProviderList();
    return provider;
}

void ContactManager::deleteProvider(const QPointer<ContactProvider>& provider)
{
    const int index = m_providers.indexOf(provider);
    if (index < 0)
        return;
    const QPointer<ContactProvider> removed = m_providers.takeAt(index);
    if (removed)
        removed->deleteLater();
    Q_EMIT changedContactProviderList();
}

QSharedPointer<ContactUnit> ContactManager::getContactById(unsigned int id)
{
    const auto row = ContactRow::read(m_storage, id);
    if (!row)
        return QSharedPointer<ContactUnit>();
    for (const auto& provider : qAsConst(m_providers)) {
        if (provider && provider->sourceId() == row->source)
            return provider->aggregateContact(id);
    }
    return QSharedPointer<ContactUnit>();
}

void ContactManager::quickSearch(const QString& text, unsigned int limit, unsigned int source1,
                                 unsigned int source2)
{
    const QuickSearchResalt result =
        m_storage ? m_storage->quickSearch(text, limit, source1, source2) : QuickSearchResalt();
    Q_EMIT resultOfQuickSearch(result);
}

bool ContactManager::isSync() const
{
    return std::any_of(m_providers.begin(), m_providers.end(), [](const QPointer<ContactProvider>& provider) {
        return provider && provider->isSync();
    });
}

void ContactManager::initOutlook(bool syncNow)
{
    if (m_outlookProvider)
        return;
    const QPointer<ContactManager> self(this);
    const QPointer<ContactProvider> provider = addProvider(ContactProvider::OutlookProvider);
    if (!self)
        return;
    m_outlookProvider = provider;
    if (auto* outlook = qobject_cast<OutlookContactProvider*>(provider.data()))
        outlook->setEntryID(m_outlookEntryID, syncNow);
}

void ContactManager::initAppleContacts(bool) {}

void ContactManager::setOutlookEntryID(const QString& entryID, bool syncNow)
{
    m_outlookEntryID = entryID;
    if (auto* outlook = qobject_cast<OutlookContactProvider*>(m_outlookProvider.data()))
        outlook->setEntryID(entryID, syncNow);
}

unsigned int ContactManager::outlookSourceId() const
{
    return m_outlookProvider ? m_outlookProvider->sourceId() : 0;
}

bool ContactManager::isOutlookSync() const
{
    return m_outlookProvider && m_outlookProvider->isSync();
}

void ContactManager::slotSyncStart()
{
    ++m_syncCount;
    const QPointer<ContactManager> self(this);
    if (m_syncCount == 1)
        Q_EMIT onSyncStart();
    if (self)
        QD_LOG(DEBUG, tr("manager sync count (%1)", "Logger").arg(m_syncCount));
}

void ContactManager::slotSyncStop()
{
    --m_syncCount;
    const QPointer<ContactManager> self(this);
    if (m_syncCount == 0)
        Q_EMIT onSyncStop();
    if (self)
        QD_LOG(DEBUG, tr("manager sync count (%1)", "Logger").arg(m_syncCount));
}

void ContactManager::slotResultOfQuickSearch(QuickSearchResalt searchResult)
{
    Q_EMIT resultOfQuickSearch(searchResult);
}
