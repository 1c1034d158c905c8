#pragma once

#include "faxserver.h"
#include "settingsfile.h"

#include <QEventLoop>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <memory>

class ContactManager;
class FaxManager;
class Invocation;
class QNetworkAccessManager;

/**
 * Observes the replies of an access manager: the library reports only a status, while users need the reason
 * of a failure and the progress of a long upload.
 */
class ReplyWatch : public QObject
{
    Q_OBJECT
public:
    explicit ReplyWatch(QNetworkAccessManager& nam, QObject* parent = nullptr);

    /// The result of the last finished reply.
    struct Outcome
    {
        QNetworkReply::NetworkError error{QNetworkReply::NoError};
        int httpStatus{0}; ///< 0: there was no HTTP answer.
        QString reason;    ///< The HTTP reason phrase.
        QString socketError;
        bool isWebPage{false};
    };
    /// Whether a body that begins like this is a web page; bodyHead bytes are enough to decide.
    static bool beginsWebPage(const QByteArray& head);
    static constexpr qint64 bodyHead = Task::bodyHeadSize;

    const Outcome& last() const { return m_last; }
    /// Requests that are not answered yet.
    int pending() const { return m_pending; }
    /// Replies that have finished since the last forget().
    int finished() const { return m_finished; }
    void forget()
    {
        m_last = Outcome();
        m_finished = 0;
    }
    /// Whether any reply has begun.
    bool isAnswered() const { return m_isAnswered; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// Data was received or sent.
    void activity();
    void uploading(qint64 sent, qint64 total);
    void downloading(qint64 received, qint64 total);

private:
    void watch(QNetworkReply* reply);
    void slotFinished(QNetworkReply* reply);

    Outcome m_last;
    int m_pending{0};
    int m_finished{0};
    bool m_isAnswered{false};
};

/**
 * A command's connection to one server: the library's objects, and waiting for them in straight-line code.
 *
 * Only the server that the command needs is loaded, so no other one is contacted. Each function that waits
 * returns on an answer, on a failure, or when nothing was received for --timeout; failures are printed to
 * standard error, and status() is the exit status.
 */
class Session : public QObject
{
    Q_OBJECT
public:
    explicit Session(const Invocation& invocation);
    ~Session() override;

    /// To be called before one of the next three: gives the server a provider of its contact books.
    void useContacts();

    /// Opens the server that --server names, else the default one, and waits for the end of its login.
    bool open();
    /// The same without waiting for the login. For callers that need only the server's address and
    /// credentials.
    bool attach();
    /// Opens a server that is not in the settings yet.
    bool openNew(const QString& address, bool useSSL, const QString& login, const QString& password);

    FaxManager& manager() { return *m_manager; }
    ContactManager& contacts() { return *m_contacts; }
    FaxServer& server() { return *m_server; }
    SettingsFile& settings() { return m_settings; }
    ReplyWatch& replies() { return *m_watch; }

    /// The exit status of the last failure.
    int status() const { return m_status; }

    /// Keeps error texts in error() instead of printing them, for a caller that tries again.
    void setQuiet(bool quiet) { m_quiet = quiet; }
    const QString& error() const { return m_error; }

    /// Makes the session fail for a reason of the caller's.
    void fail(int status, const QString& sentence);

    /// Waits, running the event loop.
    void pause(int ms);

    /// Creates a task of the server. The type must match the class.
    template <typename T>
    T* task(Task::Type type)
    {
        return qobject_cast<T*>(addTask(type));
    }

    /// Executes a task and waits for its outcome. @p take gets the arguments of the done signal; @p doing
    /// names the request in error texts ("Reading the queue"). The task deletes itself.
    template <typename T, typename... Args, typename Take>
    bool run(T* task, void (T::*done)(Args...), Take take, const QString& doing)
    {
        return request(
            task, done, &Task::errorExecute, [task] { task->execute(); }, take, doing);
    }

    /// The same for any object that answers by one of two signals after @p start.
    template <typename T, typename Base, typename... Args, typename Start, typename Take>
    bool request(T* object, void (T::*done)(Args...), void (Base::*failed)(Task::Status), Start start,
                 Take take, const QString& doing)
    {
        Outcome outcome;
        const QMetaObject::Connection onDone = connect(object, done, this, [&](Args... args) {
            outcome.ok = true;
            take(args...);
            m_loop.quit();
        });
        const QMetaObject::Connection onFailure = connect(object, failed, this, [&](Task::Status status) {
            outcome.failed = status;
            m_loop.quit();
        });
        m_watch->forget();
        start();
        const bool ok = finish(outcome, doing);
        disconnect(onDone);
        disconnect(onFailure);
        return ok;
    }

    /// Suspends the time-out while the library processes a reply, for requests that may spend most of their
    /// time writing to the database.
    void setPatientWhileIdle(bool patient) { m_isPatient = patient; }

    /// Says why a request failed, in a sentence that names the server and what to do.
    int explain(Task::Status status, const QString& doing);
    /// The reason alone, from the observed reply.
    static QString networkReason(const ReplyWatch::Outcome& last, bool useSSL);

private:
    struct Outcome
    {
        bool ok{false};
        Task::Status failed{Task::Unknown};
    };

    Task* addTask(Task::Type type);
    bool finish(const Outcome& outcome, const QString& doing);
    void begin();
    bool waitForLogin();
    /// Runs the event loop until it is quit. False, with the error printed, after the time-out.
    bool wait(const QString& doing);
    bool isWebPage() const;
    QString reason(Task::Status status) const;

    const Invocation& m_invocation;
    SettingsFile m_settings;
    std::unique_ptr<ContactManager> m_contacts; ///< Outlives the servers.
    std::unique_ptr<FaxManager> m_manager;
    std::unique_ptr<ReplyWatch> m_watch;
    QPointer<FaxServer> m_server;
    QEventLoop m_loop;
    QTimer m_silence;
    bool m_timedOut{false};
    bool m_quiet{false};
    bool m_isPatient{false};
    QString m_error;
    int m_status{0};
};
