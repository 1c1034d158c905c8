#pragma once

#include "basefaxentry.h"
#include "contactlist.h"
#include "coverpage.h"
#include "faxuser.h"
#include "inboundfaxentry.h"
#include "iquendrastorage.h"
#include "qstringlistptr.h"
#include "quendrainfo.h"
#include "tasks/task.h"

#include <QObject>
#include <QPointer>
#include <QString>

class ContactProvider;
class FaxManager;
class QNetworkAccessManager;

/**
 * One configured fax server: its address and account, its identity, and the outcome of the last request.
 *
 * Every request is a Task made by addTask(), which keeps lastStatus() and isConnected() current whatever the
 * request is. A server logs in when it is added to its FaxManager (verifyUser()), then reads its identity and
 * the user's record by itself.
 *
 * Created by FaxManager only, which owns it; FaxManager::deleteServer() ends it. Lives on the manager's
 * thread. A slot connected to any of its signals may delete the server or the manager.
 */
class QDCORE_EXPORT FaxServer : public QObject, public IQuendraStorage
{
    Q_OBJECT
public:
    ~FaxServer() override;

    // --- How to reach it. A setter that changes a value makes lastStatus() Unknown, without a signal.

    /// Host name or IP address with an optional port, as the user typed it: "fax.example.org:8080",
    /// "[::1]:8080".
    const QString& address() const { return m_address; }
    void setAddress(const QString& address);

    /// HTTPS instead of HTTP. The server's certificate is requested but not verified.
    bool useSSL() const { return m_useSSL; }
    void setUseSSL(bool useSSL);

    /// The user's name on the server.
    const QString& login() const { return m_login; }
    void setLogin(const QString& login);

    /// In plain text; enciphered only in the settings file.
    const QString& password() const { return m_password; }
    void setPassword(const QString& password);

    // --- What is known of it

    /// The server's identity record, empty until the first login.
    const QuendraInfo& info() const { return m_info; }
    /// Assigns the record; no signal.
    void setInfo(const QuendraInfo& info) { m_info = info; }

    /// The logged-in user's record, empty until the first login.
    const FaxUser& user() const { return m_user; }
    /// Takes over the record, sets its support flags from the server's version and emits changedFaxUser().
    void setUser(const FaxUser& user);

    /// The access manager that all servers of a manager share; not owned.
    QNetworkAccessManager* nam() const { return m_nam; }

    /// The outcome of the last request; Unknown until the first one ends.
    Task::Status lastStatus() const { return m_lastStatus; }
    /// Whether the last outcome that says anything about the connection was a good one.
    bool isConnected() const { return m_connected; }

    /// The provider of this server's contact books, null without a contact manager.
    QPointer<ContactProvider> contactProvider() const { return m_provider; }

    /// The printer names last received, none before that.
    const QStringList& printersList() const;

    /// The cover pages last received, none before that.
    const QVector<CoverPage>& coverPagesList() const;
    /// 0 when no list was received yet.
    int coverPagesCount() const;
    /// The cover page at an index; an empty one if the index is out of range.
    const CoverPage& coverPage(int index) const;
    /// The page to begin with: none, an empty cover page.
    CoverPage defaultCoverPage() const;

    /// Whether this server's version prints receipts and has printer names to offer.
    bool isPrintReceiptSupported() const;
    /// Whether this server's version takes a page size with a fax.
    bool isFaxPageSizeSupported() const;

    /// One line for lists: "description (address : model)", or "address : model" without a description. A
    /// long address is cut.
    QString getServerPreambule() const;

    /// The key of this account, "login@address" in lower case. Also names its contacts in the contact store.
    QString genUID() const;

    // --- Requests

    /// Creates a task of this type, connected to this server's bookkeeping but not started; the server owns
    /// it until it deletes itself. The caller casts it to its class, connects, sets parameters and calls
    /// execute(). Null for a number that is no type.
    Task* addTask(Task::Type type);

    /// Logs in, then reads identity and user record; ends with changedFaxUser(), or where it fails with
    /// changedLastStatus(). lastStatus() becomes Unknown at once, without a signal. With @p syncContacts
    /// every contact book is synchronised once the identity is there.
    void verifyUser(bool syncContacts);

    /// Reads the identity record; ends with changedQuendraInfo(). The argument is not used.
    void updateInfo(bool unused = false);

    /// Reads the user's record; ends with changedFaxUser(). The argument is not used.
    void updateContact(bool unused = false);

    /// Reads the cover pages; ends with changedCoverPagesList() or errorRetrieveCoverpageList().
    void updateCoverpagesList();

    /// Reads the printer names; ends with changedPrintersList() or errorRetrievePrintersList(). A server too
    /// old to print receipts is not asked, and nothing is emitted.
    void updatePrinternamesList();

    // --- Contacts

    /// Links a contact provider, if there is a contact manager and none is linked yet.
    void initProvider();
    /// Unlinks and deletes the contact provider; the cached contacts of this server go with it.
    void deinitProvider();

    // --- Settings: "connection", "about" and "user"

    /// False when an element is missing; what was read before it stays. A password that does not decipher is
    /// taken as plain text.
    bool readStorage(const QDomElement& element, int version) override;
    /// Always true. The password is enciphered.
    bool writeStorage(QDomDocument& doc, QDomElement& element, int version) const override;

Q_SIGNALS:
    /// The identity record was read, changed or not.
    void changedQuendraInfo(const QuendraInfo& info);
    /// The user's record was read, or set by setUser(). A login ends with it.
    void changedFaxUser(const FaxUser& user);
    /// lastStatus() is another now. Comes after changedConnected().
    void changedLastStatus(Task::Status status);
    /// What isConnected() returns was set, to another value or to the same.
    void changedConnected(bool connected);
    /// coverPagesList() was read. @p server is the sender.
    void changedCoverPagesList(FaxServer* server);
    /// printersList() was read. @p server is the sender.
    void changedPrintersList(FaxServer* server);
    /// updateCoverpagesList() has failed, and the list is as it was; lastStatus() tells more.
    void errorRetrieveCoverpageList();
    /// updatePrinternamesList() has failed, and the list is as it was; lastStatus() tells more.
    void errorRetrievePrintersList();

public Q_SLOTS:
    /// Keeps the record, asks for the user's one, after verifyUser(true) synchronises the contact
    /// books, and emits changedQuendraInfo().
    void slotFaxInfoReceived(const QuendraInfo& info);
    /// Keeps the record, but not the schedule options of a server of protocol version 1, which has none;
    /// emits changedFaxUser().
    void slotFaxUserReceived(const FaxUser& user);
    /// Keeps the list and emits changedCoverPagesList().
    void slotCoverPagesReceived(CoverPageListPtr coverPagesList);
    /// Keeps the list and emits changedPrintersList().
    void slotPrinterNamesReceived(QStringListPtr printerNamesList);
    /// Makes this the last status. Unknown, Error and AuthError mean that the server is not connected, Ok
    /// that it is; the others say nothing about that. Emits changedLastStatus() unless it was the last status
    /// already.
    void slotError(Task::Status status);
    /// A success of any request is a success of the server: Ok and connected. Its result is not examined.
    void slotDone();
    void slotDone(const QuendraInfo& info);
    void slotDone(const FaxUser& user);
    void slotDone(BaseFaxEntry::FaxEntriesPtrListPtr entries);
    void slotDone(const InboundFaxEntriesPtrListPtr& entries);
    void slotDone(CoverPageListPtr coverPages);
    void slotDone(QStringListPtr names);
    void slotDone(const ContactList& contacts, unsigned int timeStamp);
    void slotDone(ContactList::Type bookType);
    void slotDone(const ContactUnit& contact, ContactList::Type bookType);
    void slotDone(const QList<QString>& contactsOids, ContactList::Type type);
    /// The login is verified: goes on with updateInfo().
    void slotDoneVerifyUser();
    /// The login has failed: no contact book will be synchronised.
    void slotErrorVerifyUser();

protected:
    /// A child of the manager, whose access manager it uses.
    explicit FaxServer(FaxManager& manager);

    /// Stores the flag and always emits changedConnected().
    void setConnected(bool connected);
    /// As slotError().
    void setLastStatus(Task::Status status);

private:
    friend class FaxManager;

    /// The key of the stored passwords, the same for every installation. Changing it makes every stored
    /// password unreadable.
    static const quint64 def_cryptKey = Q_UINT64_C(0x5E3D71A09C4B2F68);

    static const CoverPage& emptyCoverPage();

    template <typename T>
    T* createTask(Task::Type type);
    template <typename T, typename... Args, typename... Others>
    Task* newTask(void (T::*done)(Args...), Others... others);

    template <typename T>
    void change(T& member, const T& value);
    void applySupport(const FaxUser& user) const;
    void takeUser(const FaxUser& user);
    bool succeeded();

    QString m_address;
    bool m_useSSL{false};
    QString m_login;
    QString m_password;
    FaxUser m_user;
    QuendraInfo m_info;
    QNetworkAccessManager* m_nam;
    Task::Status m_lastStatus{Task::Unknown};
    FaxManager& m_manager;
    QPointer<ContactProvider> m_provider;
    CoverPageListPtr m_coverPages;
    QStringListPtr m_printers;
    bool m_connected{false};
    bool m_syncAfterLogin{false};
};
