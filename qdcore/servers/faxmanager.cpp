#include "faxmanager.h"

#include "domtext_p.h"
#include "faxserver.h"

#include <QDomDocument>
#include <QNetworkAccessManager>

FaxManager::FaxManager(const QPointer<ContactManager>& contactManager, QObject* parent)
    : QObject(parent)
    , m_contactManager(contactManager)
    , m_nam(new QNetworkAccessManager(this))
{}

FaxManager::~FaxManager()
{
    // Before the access manager: a task's destructor uses its reply. A slot called while one server is
    // destroyed may destroy another.
    const auto children = findChildren<FaxServer*>(QString(), Qt::FindDirectChildrenOnly);
    const QVector<QPointer<FaxServer>> servers(children.begin(), children.end());
    for (const QPointer<FaxServer>& server : servers)
        delete server;
}

QPointer<FaxServer> FaxManager::addServer(const QString& address, bool useSSL, const QString& login,
                                          const QString& password)
{
    const QPointer<FaxServer> server(new FaxServer(*this));
    server->setAddress(address);
    server->setUseSSL(useSSL);
    server->setLogin(login);
    server->setPassword(password);
    return addServer(server, true);
}

QPointer<FaxServer> FaxManager::addServer(const QPointer<FaxServer>& server, bool syncContacts)
{
    if (!server)
        return server;
    const QMetaObject::Connection watch =
        connect(server, &FaxServer::changedLastStatus, this, &FaxManager::slotChangedServerStatus);
    server->verifyUser(syncContacts);
    server->initProvider();
    // A slot of changedContactProviderList() may have destroyed the server or this manager, or called
    // deleteServer(); each of these breaks the connection.
    if (!watch) {
        if (server)
            server->deinitProvider();
        return server;
    }
    m_servers.append(server);
    if (m_defaultIndex < 0)
        m_defaultIndex = m_servers.size() - 1;
    const QPointer<FaxServer> added = m_servers.last();
    Q_EMIT changedFaxServerList();
    return added;
}

void FaxManager::deleteServer(const QPointer<FaxServer>& server)
{
    // the argument may be the list's own entry
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): hence the copy
    const QPointer<FaxServer> removed = server;
    const int index = m_servers.indexOf(removed);
    // also of one that is still being added
    if (removed)
        disconnect(removed, &FaxServer::changedLastStatus, this, &FaxManager::slotChangedServerStatus);
    if (index >= 0) {
        m_servers.removeAt(index);
        if (index == m_defaultIndex)
            m_defaultIndex = m_servers.isEmpty() ? -1 : 0;
        else if (index < m_defaultIndex)
            --m_defaultIndex;
        Q_EMIT changedFaxServerList();
    }
    if (!removed)
        return;
    removed->deinitProvider();
    if (removed)
        removed->deleteLater();
}

QPointer<FaxServer> FaxManager::getServerByUID(const QString& uid) const
{
    for (const QPointer<FaxServer>& server : m_servers) {
        if (server && server->genUID() == uid)
            return server;
    }
    return nullptr;
}

void FaxManager::setDefaultServer(const QPointer<FaxServer>& server)
{
    const int index = m_servers.indexOf(server);
    if (index < 0)
        return;
    m_defaultIndex = index;
    Q_EMIT changedFaxServerList();
}

bool FaxManager::isDefaultServer(const QPointer<FaxServer>& server) const
{
    const int index = m_servers.indexOf(server);
    return index >= 0 && index == m_defaultIndex;
}

void FaxManager::setUserServer(const QPointer<FaxServer>& server)
{
    const int index = m_servers.indexOf(server);
    if (index >= 0)
        m_userIndex = index;
}

void FaxManager::updateContacts()
{
    const QVector<QPointer<FaxServer>> servers = m_servers;
    for (const QPointer<FaxServer>& server : servers) {
        if (server && server->lastStatus() == Task::Ok)
            server->updateContact();
    }
}

void FaxManager::slotChangedServerStatus(Task::Status)
{
    const QPointer<FaxServer> server = qobject_cast<FaxServer*>(sender());
    if (!server)
        return;
    const int index = m_servers.indexOf(server);
    if (index == m_defaultIndex)
        Q_EMIT changedDefaultFaxServerStatus();
    else if (isUserServerPresent() && index == m_userIndex)
        Q_EMIT changedUserFaxServerStatus();
}

bool FaxManager::readStorage(const QDomElement& element, int version)
{
    const QPointer<FaxManager> self(this);
    const QString name = QStringLiteral("server");
    for (QDomElement child = element.firstChildElement(name); !child.isNull();
         child = child.nextSiblingElement(name)) {
        const QPointer<FaxServer> server(new FaxServer(*this));
        if (!server->readStorage(child, version)) {
            server->deleteLater();
            continue;
        }
        addServer(server, false);
        if (!self)
            return true;
        if (isTrue(child.attribute(QStringLiteral("default"), QStringLiteral("false")))) {
            const int index = server ? m_servers.indexOf(server) : -1;
            if (index < 0)
                continue; // a slot has removed it from the list
            m_defaultIndex = index;
            Q_EMIT changedFaxServerList();
            if (!self)
                return true;
        }
    }
    return true;
}

bool FaxManager::writeStorage(QDomDocument& doc, QDomElement& element, int) const
{
    for (int i = 0; i < m_servers.size(); ++i) {
        const QPointer<FaxServer>& server = m_servers.at(i);
        if (!server)
            continue;
        QDomElement child = appendElement(doc, element, QStringLiteral("server"));
        if (i == m_defaultIndex)
            child.setAttribute(QStringLiteral("default"), boolText(true));
        server->writeStorage(doc, child, 1);
    }
    return true;
}
