#pragma once

#include "iquendrastorage.h"
#include "qdcore_global.h"
#include "tasks/task.h"

#include <QObject>
#include <QPointer>
#include <QSharedPointer>
#include <QString>
#include <QVector>

class ContactManager;
class FaxServer;
class QNetworkAccessManager;

/**
 * The configured fax servers of an application.
 *
 * Keeps them in one ordered list, marks one as the default and, apart from that, one as the server of the
 * current user, and owns the one access manager that all requests share. A client application makes one
 * manager, after its ContactManager, and loads the settings into it through QuendraStorage.
 *
 * Owns its servers, which are QObject children. For the thread it was made on.
 */
class QDCORE_EXPORT FaxManager : public QObject, public IQuendraStorage
{
    Q_OBJECT
public:
    /// @p contactManager may be null: servers then have no contact providers.
    explicit FaxManager(const QPointer<ContactManager>& contactManager, QObject* parent = nullptr);
    /// Destroys the servers with their running tasks, then the access manager. No outcome is
    /// emitted.
    ~FaxManager() override;

    /// The access manager of all requests. Replies are its children. Never to be deleted.
    QNetworkAccessManager& nam() { return *m_nam; }

    /// The servers in the order added. An entry whose server was destroyed otherwise than by deleteServer()
    /// is null.
    const QVector<QPointer<FaxServer>>& servers() const { return m_servers; }

    /// The contact manager given to the constructor, not owned; null when there is none or it is gone.
    const QPointer<ContactManager>& conatctManager() const { return m_contactManager; }

    /// Adds a server and starts its login, FaxServer::verifyUser(); its contact books are synchronised after
    /// it. The first server becomes the default. @p address may carry a port. Null when a slot of the contact
    /// manager's signals has destroyed the server meanwhile, or this manager. A server that such a slot gave
    /// to deleteServer() is returned, but not in the list: the event loop deletes it.
    QPointer<FaxServer> addServer(const QString& address, bool useSSL, const QString& login,
                                  const QString& password);

    /// Takes a server off the list and deletes it, its contact provider and its cached contacts, later on the
    /// event loop: outcomes of its requests may still arrive until then. When it was the default, the first
    /// server becomes it. The index of the user server is left as it is.
    void deleteServer(const QPointer<FaxServer>& server);

    /// The first server whose FaxServer::genUID() equals @p uid; null when there is none.
    QPointer<FaxServer> getServerByUID(const QString& uid) const;

    /// The default server, null when there is none.
    QPointer<FaxServer> defaultServer() const { return serverAt(m_defaultIndex); }
    /// -1 for none.
    int defaultServerIndex() const { return m_defaultIndex; }
    /// Does nothing for a server that is not in the list.
    void setDefaultServer(const QPointer<FaxServer>& server);
    /// False for a server that is not in the list.
    bool isDefaultServer(const QPointer<FaxServer>& server) const;

    /// The server that the current user works with, null when there is none.
    QPointer<FaxServer> usertServer() const { return serverAt(m_userIndex); }
    /// -1 for none.
    int userServerIndex() const { return m_userIndex; }
    /// Does nothing for a server that is not in the list. No signal.
    void setUserServer(const QPointer<FaxServer>& server);
    /// Whether the index of the user server is one of the list, whose entry may be null all the same.
    bool isUserServerPresent() const { return m_userIndex >= 0 && m_userIndex < m_servers.size(); }
    /// No signal.
    void clearUserServer() { m_userIndex = -1; }

    /// Reads the user's record anew from every server whose last request succeeded; each ends with
    /// FaxServer::changedFaxUser().
    void updateContacts();

    /// Adds the servers of the "server" children of @p element, starting their logins. Always true; a server
    /// that cannot be read is left out.
    bool readStorage(const QDomElement& element, int version) override;
    /// Appends one "server" element a server; the default one carries default="true". Always true.
    bool writeStorage(QDomDocument& doc, QDomElement& element, int version) const override;

Q_SIGNALS:
    /// A server was added or deleted.
    void changedFaxServerList();
    /// The last status of the default server changed.
    void changedDefaultFaxServerStatus();
    /// The last status of the user server changed, and it is not the default server.
    void changedUserFaxServerStatus();

protected:
    //@{
    /// Stores the index unchecked, without a signal; -1 for none.
    void setDefaultServerIndex(int index) { m_defaultIndex = index; }
    void setUserServerIndex(int index) { m_userIndex = index; }
    //@}

private Q_SLOTS:
    void slotChangedServerStatus(Task::Status status);

private:
    QPointer<FaxServer> addServer(const QPointer<FaxServer>& server, bool syncContacts);
    QPointer<FaxServer> serverAt(int index) const { return m_servers.value(index); }

    QPointer<ContactManager> m_contactManager;
    int m_defaultIndex{-1};
    int m_userIndex{-1};
    QVector<QPointer<FaxServer>> m_servers;
    QSharedPointer<QNetworkAccessManager> m_nam;
};
