#include "fakenetwork.h"

/// FaxManager's access manager is private, as it should be. An explicit template instantiation may name a
/// private member, so this replaces it by the fake without a test hook in the library.
QSharedPointer<QNetworkAccessManager> FaxManager::*networkOfManager();

template <QSharedPointer<QNetworkAccessManager> FaxManager::*Member>
struct OpenManager
{
    friend QSharedPointer<QNetworkAccessManager> FaxManager::*networkOfManager() { return Member; }
};
template struct OpenManager<&FaxManager::m_nam>;

FakeManager::FakeManager()
    : FaxManager(QPointer<ContactManager>())
{
    (this->*networkOfManager()).reset(new FakeNetwork(this));
}
