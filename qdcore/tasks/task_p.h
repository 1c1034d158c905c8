#pragma once

// What the tasks of the library share: sending, logging, and the end of a reply. Internal: not installed.

#include "contactlist.h"
#include "log_p.h"
#include "tasks/operations_p.h"
#include "tasks/replybodies_p.h"
#include "tasks/replyreader_p.h"
#include "tasks/task.h"

#include <QPointer>

struct ContactChange;
struct ItemReply;
class OneShotBody;

/**
 * The state of a task that its subclasses use as "d".
 *
 * Code that does not depend on a task has files of its own: the address and headers of a request
 * (servicerequest_p.h), its document (requestdocument_p.h), the bodies of replies (replybodies_p.h) and their
 * documents (replydocument_p.h), and the properties of the operations (operations_p.h).
 */
class TaskPrivate
{
public:
    explicit TaskPrivate(Task& task)
        : m_task(task)
    {}

    /// Whether execute() has nothing left to do: the request was sent, or the task has failed.
    bool isStarted() const { return m_started || m_failed; }

    /// The URL of the operation, with @p rest appended to its path.
    QUrl url(const QString& rest = QString()) const;

    /// Logs the request: @p log is a text with %1 for the URL, which is shown without the password.
    void logRequest(const QUrl& url, const LogText& log) const;
    /// Sends the request with the operation's method and calls Task::setReply(); does nothing if already
    /// started. A request with a body is never sent twice, and uses a new connection.
    void send(const QUrl& url, const QByteArray& body = QByteArray());
    void send(const QUrl& url, std::unique_ptr<OneShotBody> body);
    /// Logs and sends, unless the request was sent before.
    void send(const QUrl& url, const LogText& log, const QByteArray& body = QByteArray());

    /// Aborts a reply without notifying the task, and deletes it later.
    void letGo(const QPointer<QNetworkReply>& reply);

    /// Logs the body of a good reply after a prefix.
    void logBody(const LogText& prefix) { logBody(prefix, m_task.body()); }
    /// The same for the body of another reply, or when the task may be gone.
    static void logBody(const LogText& prefix, const QByteArray& body);

    /// The status for the reply's network error, as the operation maps it.
    Task::Status errorStatus() const;

    /// Parses the reply's document while it arrives. To be called before send(); body() then holds only what
    /// logBody() needs.
    void readChildren(ReplyReader::Take take);
    ReplyReader& reader() { return *m_reader; }
    /// To be called once in onFinished(), before anything that was read is emitted. False if the document was
    /// not well-formed; the task has then ended with InvalidReply.
    bool finishDocument();

    /// Ends the task after a network error: logs it (@p error, with %1 for its number) and the body (after
    /// the prefix @p errorBody), and fails with errorStatus().
    void failReply(const LogText& error, const LogText& errorBody);
    /// The same in the other order: first the signal, then the log lines.
    void failThenLog(const LogText& error, const LogText& errorBody);

    /// Reads the items of a list while the reply arrives; finishItems() emits them by @p done. @p read
    /// appends one item element, a child of the document element named @p item, to the list. Defined in
    /// itemreply_p.h.
    template <typename T, typename ListPtr, typename Read>
    void readItems(const QString& item, void (T::*done)(ListPtr), Read read);
    /// The same for items that are records; one that cannot be read is left out.
    template <typename Entry, typename T, typename ListPtr>
    void readEntries(const QString& item, void (T::*done)(ListPtr));
    /// Implements onFinished() of a task whose reply is a list of items.
    void finishItems(const ItemReply& reply);

    /// Implements onFinished() of a task that changes a contact. Defined in contactchange_p.h.
    template <typename T>
    void finishChange(const ContactChange& change, void (T::*done)(const ContactUnit&, ContactList::Type));

    ReplyBodies bodies; ///< Of all the replies of this task.

private:
    friend class Task;

    Task& m_task;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    std::shared_ptr<ReplyReader> m_reader;
    std::function<void()> m_emitItems; ///< Emits what readItems() has read.
    bool m_saysSuccess{false};         ///< The list's message is "Success".
    int m_error{QNetworkReply::OperationCanceledError};
    bool m_started{false};
    bool m_finished{false};
    bool m_failed{false};
};
