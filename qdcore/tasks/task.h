#pragma once

#include "qdcore_global.h"

#include <QNetworkReply>
#include <QObject>
#include <QUrl>

#include <memory>

class FaxServer;
class QDomDocument;
class QNetworkAccessManager;
class TaskPrivate;

/**
 * One request to a fax server's web service.
 *
 * The life of a task: FaxServer::addTask() creates it as a child of the server and connects the server's
 * bookkeeping to it; the caller connects its own slots, sets the parameters and calls execute(), which has no
 * effect while a required parameter is missing. The task sends one request, waits for the reply, emits
 * exactly one outcome (its own done signal or errorExecute()) and deletes itself. A task whose server is
 * destroyed goes with it and emits nothing. There is no time-out: a reply that never ends keeps it waiting.
 *
 * Tasks live on the thread of their server, normally the GUI thread, and never block it.
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

    /// Limit of a task's replies after decompression, and of the records made of them, in bytes; a quarter of
    /// it for a reply that is not a list. Beyond it the task ends with Error.
    static constexpr qint64 maxReplySize = qint64(1024) * 1024 * 1024;

    /// Dynamic property of a reply: the first bytes of its body, which is read before its finished().
    static constexpr const char* bodyHeadProperty = "bodyHead";
    static constexpr qint64 bodyHeadSize = 512; ///< In bytes.

    ~Task() override;

    /// Builds and sends the request, once. A task whose parameters cannot be sent fails within this call.
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
    /// A child of the server, and connected to nothing: see FaxServer::addTask().
    explicit Task(FaxServer& server);

    /// Whom the request goes to. Outlives the task.
    FaxServer& server() { return m_server; }
    const FaxServer& server() const { return m_server; }
    /// What sends the request; owned by the FaxManager, and destroyed with it.
    QNetworkAccessManager& nam() { return *m_nam; }
    /// The reply; null until the request is sent, and once an application has deleted it: onFinished() relies
    /// on succeeded(), networkError() and body() instead.
    QNetworkReply* reply() const;

    /// Takes a reply just sent: collects its body, and calls onFinished() at its end. The call is queued,
    /// like every one that can end in an outcome: a slot may destroy the access manager and with it the
    /// reply, which must not be in the middle of a signal then.
    void setReply(QNetworkReply* reply);

    /// The server's URL with this path, taken in decoded mode; invalid when the server's address is.
    QUrl serviceUrl(const QString& path) const;
    /// A URL that the server named, with scheme, host, port and credentials of the configured server put over
    /// it: whatever host a reply names, requests go to the configured one only.
    QUrl resourceUrl(const QUrl& resource) const;

    /// Whether the reply is complete, without a network error.
    bool succeeded() const;
    /// The whole body, from its end until parseBody().
    QByteArray body();
    /// A QNetworkReply::NetworkError: the reply's, OperationCanceledError until its end.
    int networkError() const;

    /// Decodes UTF-8 and writes "&amp;" for every ampersand that does not begin one of the five predefined
    /// entities. Servers forget to escape; numeric references become literal text by this.
    QString fixAmp(const QByteArray& data);

    /// Repairs and parses the body, and frees it, to make room for the document: whoever needs it afterwards
    /// keeps body() first. A failure ends the task with InvalidReply.
    bool parseBody(QDomDocument& document);

    /// The protocol version of the server, for readFax() and writeFax() of the records.
    int protocolVersion() const;

    /// Ends the task with errorExecute(). As with every outcome, a slot may destroy the server and this task
    /// with it: nothing of the task may be touched afterwards. For the same reason a done signal is emitted
    /// last, after deleteLater(), and carries values that do not belong to the task.
    void fail(Status status);

    /// What the library's own tasks share: task_p.h, which is not installed.
    const std::unique_ptr<TaskPrivate> d;

private Q_SLOTS:
    void slotFinished();

private:
    friend class TaskPrivate;
    FaxServer& m_server;
    QNetworkAccessManager* m_nam;
};
