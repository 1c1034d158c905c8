#include "fakenetwork.h"

/// FaxManager makes its own access manager and keeps it to itself, which is right. Naming a private member is
/// allowed in an explicit instantiation, so this puts the fake in its place without a door in the library.
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
