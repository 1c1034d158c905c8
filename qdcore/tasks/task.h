#pragma once

#include "qdcore_global.h"

#include <QByteArray>
#include <QHash>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QUrl>

class FaxServer;
class QDomDocument;
class QDomElement;
class QNetworkAccessManager;
class QNetworkRequest;
struct ItemReply;
struct LogText;

/**
 * One request to a fax server's web service.
 *
 * The life of a task: FaxServer::addTask() creates it as a child of the server and connects the server's
 * bookkeeping to it; the caller connects its own slots, sets the parameters and calls execute(), without
 * effect where what it is about is not set. The task sends one request, waits for the reply, emits exactly
 * one outcome (its own done signal or errorExecute()) and deletes itself. A task whose server is destroyed
 * goes with it and emits nothing. There is no time-out: a reply that never ends keeps the task waiting.
 *
 * Tasks live on the thread of their server, normally the GUI thread, and never block it.
 *
 * A subclass is a page: execute() names the path and the log text, onFinished() reads the document.
 * Everything that operations share (URL, headers, TLS, credentials, the repair and parsing of the reply, the
 * mapping of errors) is done here.
 */
class QDCORE_EXPORT Task : public QObject
{
    Q_OBJECT
public:
    /// The operation; the argument of FaxServer::addTask(), which makes a task of the class said here.
    enum Type : int {
        GetQuendraInfo = 0,       ///< TaskGetQuendraInfo
        VerifyLogin = 1,          ///< TaskVerifyLogin
        GetFaxUser = 2,           ///< TaskGetFaxUser
        ModifyFaxUser = 3,        ///< TaskModifyFaxUser
        Schedule = 4,             ///< TaskSchedule
        GetContacts = 5,          ///< TaskGetContacts
        AddContact = 6,           ///< TaskAddContact
        ModifyContact = 7,        ///< TaskModifyContact
        GetContactsOids = 8,      ///< TaskGetContactsOids
        DeleteContact = 9,        ///< TaskDeleteContact
        GetCoverPages = 10,       ///< TaskGetCoverPages
        GetFaxEntry = 11,         ///< TaskGetFaxEntry
        GetInboundFaxEntry = 12,  ///< TaskGetInboundFaxEntry
        GetOutboundFaxEntry = 13, ///< TaskGetOutboundFaxEntry
        Abort = 14,               ///< TaskAbort
        Reschedule = 15,          ///< TaskReschedule
        ChekPermissions = 16,     ///< TaskChekPermissions
        GetPrinterNames = 17      ///< TaskGetPrinterNames
    };
    Q_ENUM(Type)

    /// The outcome of a request. The number 6 is free.
    enum Status : qint32 {
        Unknown = 0,      ///< Nothing is known yet. Never emitted by a task.
        Ok = 1,           ///< The last request succeeded. Never emitted by a task.
        Error = 2,        ///< Transport or server error, or a document that lacks what it should hold.
        AuthError = 3,    ///< The server refused the credentials (HTTP 401), or did not verify the login.
        NotSupported = 4, ///< The receiver cannot do this. Never emitted by a task.
        NotPermitted = 5, ///< The user may not do this (HTTP 405).
        InvalidReply = 7, ///< The reply is not XML; for some tasks also a reply or document of no use.
        AccessDenied = 8, ///< HTTP 403.
        NotFound = 9      ///< HTTP 404.
    };
    Q_ENUM(Status)

    /// The reply and those of further requests of the same task may have this many bytes together, after
    /// decompression. What is more is cut off and ends the task with Error.
    static constexpr qint64 maxReplySize = qint64(256) * 1024 * 1024;

    /// The dynamic property in which a reply keeps how its body begins, at most bodyHeadSize bytes: the task
    /// reads bodies as they come, and whoever listens to the access manager would find nothing.
    static constexpr const char* bodyHeadProperty = "bodyHead";
    static constexpr qint64 bodyHeadSize = 512; ///< In bytes.

    ~Task() override;

    /// Builds and sends the request; a second call does nothing. A task whose parameters cannot be sent fails
    /// from within this call.
    virtual void execute() = 0;

protected:
    /// Handles the finished reply: emits the outcome.
    virtual void onFinished() = 0;

public:
    /// The operation.
    virtual Task::Type type() = 0;

Q_SIGNALS:
    /// The request failed. The task deletes itself afterwards.
    void errorExecute(Task::Status status);

protected:
    /// How a network error becomes a status. Any error that a mapping does not name is Error.
    enum class ErrorMapping {
        AuthApart,    ///< 401 is AuthError.
        AlwaysError,  ///< No exception.
        ContentApart, ///< An unknown content error is InvalidReply.
        Contact ///< 403, 404, 405 and the unknown content error have statuses of their own; 401 has not.
    };

    /// A child of the server, and connected to nothing: see FaxServer::addTask().
    explicit Task(FaxServer& server);

    /// Whom the request goes to. Outlives the task.
    FaxServer& server() { return m_server; }
    const FaxServer& server() const { return m_server; }
    /// What sends the request; the manager's, and gone with it.
    QNetworkAccessManager& nam() { return *m_nam; }

    /// The reply; null until the request is sent, and after the access manager is gone.
    QNetworkReply* reply() const { return m_reply.data(); }

    /// Takes a reply just sent: its end calls onFinished(), and its body is collected. The call is queued,
    /// like every one that can end in an outcome: a slot may destroy the access manager and with it the
    /// reply, which must not be in the middle of a signal then.
    void setReply(QNetworkReply* reply);

    /// Collects the body of a reply as it comes, with as little of it waiting in the access manager as
    /// possible, and cuts the reply off when the task has more than maxReplySize.
    void collect(QNetworkReply* reply);

    /// What was collected of a finished reply, once; nothing of one that was cut off.
    QByteArray takeBody(QNetworkReply* reply);

    /// Whether this task has had more than maxReplySize: whatever else is sent to it will be cut off.
    bool isOverLimit() const { return m_received > maxReplySize; }

    /// Aborts a reply that nobody waits for any more and deletes it later. The task hears nothing of it.
    void letGo(QNetworkReply* reply);

    /// Whether execute() has nothing to do any more: the request was sent, or the task has failed.
    bool isStarted() const { return m_reply || m_failed; }

    // --- The request

    /// The server's URL with this path, taken in decoded mode. Invalid when the server's address is nonsense.
    QUrl serviceUrl(const QString& path) const;

    /// A resource that the server named, with host, port, credentials and scheme of the configured server put
    /// over it: whatever host a reply names, requests go to the configured one only.
    QUrl resourceUrl(const QUrl& resource) const;

    /// The URL with a query that limits how much is sent; @p query holds %1 for the limit, 0 and less is
    /// none.
    static QUrl limited(const QUrl& url, const QString& query, int limit);

    /// A request as every operation sends it: content type, TLS configuration and credentials.
    QNetworkRequest request(const QUrl& url) const;

    //@{
    /// Sends the request, once; setReply() follows. @p log is a text with %1 for the URL, which is shown
    /// without the password.
    void get(const QUrl& url, const LogText& log);
    void post(const QUrl& url, const QByteArray& body, const LogText& log);
    void put(const QUrl& url, const QByteArray& body, const LogText& log);
    void deleteResource(const QUrl& url, const LogText& log);
    //@}

    /// Starts a request document with its declaration and returns its root element.
    static QDomElement startDocument(QDomDocument& document, const QString& rootName);

    /// The document as one line: no indentation, every line feed removed, UTF-8.
    static QByteArray oneLine(const QDomDocument& document);

    /// The document indented by 1, UTF-8. The texts of "content" elements, base64 of whole files, are moved
    /// into the result without passing through the DOM's serialiser, and are no longer in the document
    /// afterwards. Empty when the result would not fit into 2 GiB.
    static QByteArray indented(QDomDocument& document);

    // --- The reply

    /// Whether the reply is there and complete, without a network error.
    bool succeeded() const;

    /// The whole body; read on the first call.
    QByteArray body();

    /// The body as text for the log.
    QString bodyText() { return QString::fromUtf8(body()); }

    /// The number of the network error, a QNetworkReply::NetworkError.
    int networkError() const;

    /// Decodes UTF-8 and writes "&amp;" for every ampersand that does not begin one of the five predefined
    /// entities. Servers forget to escape; numeric references become literal text by this.
    QString fixAmp(const QByteArray& data);

    /// Repairs and parses a reply body. False when it is not XML, or nested or numerous beyond what the DOM
    /// can take (256 levels, 2 million nodes). @p data is to be moved in: as a text it takes twice as much,
    /// and a third time in the document.
    static bool parse(QByteArray data, QDomDocument& document);

    /// What becomes of the body that was parsed.
    enum class Body {
        LetGo, ///< It makes room for the document, and is empty afterwards.
        Kept   ///< It can be read again.
    };
    /// parse() of the body; a failure ends the task with InvalidReply.
    bool parseBody(QDomDocument& document, Body body = Body::LetGo);

    /// The protocol version of the server, for the records' readFax() and writeFax().
    int protocolVersion() const;

    /// The status for the reply's network error.
    Status errorStatus(ErrorMapping mapping) const { return errorStatus(mapping, networkError()); }
    static Status errorStatus(ErrorMapping mapping, int networkError);

    /// Logs the body of a good reply after a prefix.
    void logBody(const LogText& prefix);
    /// The same for the body of another reply, or when the task may be gone.
    static void logBody(const LogText& prefix, const QByteArray& body);

    /// Logs the network error (@p error, with %1 for its number) and the body (@p body, a prefix).
    void logReplyError(const LogText& error, const LogText& body);

    /// The whole end of a task whose reply is a list of items. @p read puts one item element into the list.
    /// Defined in itemreply_p.h.
    template <typename T, typename ListPtr, typename Read>
    void finishItems(const ItemReply& reply, void (T::*done)(ListPtr), Read read);

    /// Reads an item as a record of its own and keeps it if it can be read; for finishItems() of the log
    /// tasks.
    template <typename Entry>
    auto entryReader();

    /// Ends the task with errorExecute(). As with every outcome, a slot may destroy the server and this task
    /// with it: nothing of the task may be touched afterwards. For the same reason a done signal is emitted
    /// last, after deleteLater(), and carries values that do not belong to the task.
    void fail(Status status);

private Q_SLOTS:
    void slotFinished();

private:
    void applyServer(QUrl& url) const;
    void send(const QUrl& url, const LogText& log, const QByteArray& verb, const QByteArray& body);

    FaxServer& m_server;
    QNetworkAccessManager* m_nam;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    bool m_bodyRead{false};
    QHash<QNetworkReply*, QByteArray> m_collected; ///< The bodies of the replies that are under way.
    qint64 m_received{0};                          ///< The bytes of all replies together.
    bool m_failed{false};
};
