#include "session.h"

#include "command.h"
#include "contactmanager.h"
#include "displaytext.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "terminal.h"
#include "text.h"

#include <QBuffer>
#include <QChildEvent>
#include <QNetworkAccessManager>

namespace {

bool looksLikeWebPage(QNetworkReply& reply)
{
    if (reply.header(QNetworkRequest::ContentTypeHeader).toString().contains(QLatin1String("html")))
        return true;
    QByteArray head = reply.property(Task::bodyHeadProperty).toByteArray();
    if (head.isEmpty() && reply.isOpen()) // an aborted reply is closed
        head = reply.peek(ReplyWatch::bodyHead);
    return ReplyWatch::beginsWebPage(head);
}

} // namespace

// --- ReplyWatch

ReplyWatch::ReplyWatch(QNetworkAccessManager& nam, QObject* parent)
    : QObject(parent)
{
    nam.installEventFilter(this);
    // ahead of the task, which connects to the reply after the manager has
    connect(&nam, &QNetworkAccessManager::finished, this, &ReplyWatch::slotFinished);
}

bool ReplyWatch::beginsWebPage(const QByteArray& head)
{
    const QByteArray text = head.trimmed().toLower();
    return text.startsWith("<!doctype html") || text.startsWith("<html");
}

bool ReplyWatch::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ChildAdded) {
        // the child is still being constructed
        const QPointer<QObject> child = static_cast<QChildEvent*>(event)->child();
        QTimer::singleShot(0, this, [this, child] {
            if (auto* reply = qobject_cast<QNetworkReply*>(child.data()))
                watch(reply);
        });
    }
    return QObject::eventFilter(watched, event);
}

void ReplyWatch::watch(QNetworkReply* reply)
{
    if (!reply->isFinished()) {
        ++m_pending;
        connect(reply, &QNetworkReply::finished, this, [this] { --m_pending; });
    }
    connect(reply, &QNetworkReply::metaDataChanged, this, [this] {
        m_isAnswered = true;
        Q_EMIT activity();
    });
    // for a body from a sequential device the reply does not know the total length of the upload
    const qint64 length = reply->request().header(QNetworkRequest::ContentLengthHeader).toLongLong();
    connect(reply, &QNetworkReply::uploadProgress, this, [this, length](qint64 sent) {
        Q_EMIT activity();
        if (length > 0 && sent > 0) // 0 is said at the end
            Q_EMIT uploading(sent, length);
    });
    connect(reply, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64 total) {
        Q_EMIT activity();
        Q_EMIT downloading(received, total);
    });
}

void ReplyWatch::slotFinished(QNetworkReply* reply)
{
    ++m_finished;
    m_last.error = reply->error();
    m_last.httpStatus = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    m_last.reason = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
    // The text of an HTTP error quotes the URL, which holds the password.
    m_last.socketError = m_last.httpStatus == 0 ? reply->errorString() : QString();
    m_last.isWebPage = looksLikeWebPage(*reply);
    Q_EMIT activity();
}

// --- Session

Session::Session(const Invocation& invocation)
    : m_invocation(invocation)
{
    m_silence.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] {
        if (m_isPatient && m_watch->pending() == 0) {
            m_silence.start();
            return;
        }
        m_timedOut = true;
        m_loop.quit();
    });
}

Session::~Session() = default;

void Session::useContacts()
{
    m_contacts = std::make_unique<ContactManager>();
}

void Session::begin()
{
    m_manager = std::make_unique<FaxManager>(QPointer<ContactManager>(m_contacts.get()));
    m_watch = std::make_unique<ReplyWatch>(m_manager->nam());
    connect(m_watch.get(), &ReplyWatch::activity, this, [this] {
        if (m_silence.isActive())
            m_silence.start();
    });
}

void Session::fail(int status, const QString& sentence)
{
    m_status = status;
    m_error = sentence;
    if (!m_quiet)
        m_invocation.fail(status, sentence);
}

bool Session::open()
{
    return attach() && waitForLogin();
}

bool Session::attach()
{
    StoredServer chosen;
    const QString problem = m_settings.choose(m_invocation.serverName(), &chosen);
    m_invocation.note(m_settings.takeRemark());
    if (!problem.isEmpty()) {
        fail(ExitStatus::Settings, problem);
        return false;
    }
    begin();
    m_server = m_settings.open(chosen, *m_manager);
    return m_server;
}

bool Session::openNew(const QString& address, bool useSSL, const QString& login, const QString& password)
{
    begin();
    m_server = m_manager->addServer(address, useSSL, login, password);
    return waitForLogin();
}

bool Session::waitForLogin()
{
    // The server logs in by itself: credentials, then its identity, then the user's record.
    QString doing = Text::tr("Logging in");
    bool loggedIn = false;
    Task::Status failed = Task::Unknown;
    // clazy:excludeall=lambda-in-connect (the connections end before what they capture)
    const QList<QMetaObject::Connection> connections = {
        connect(m_server, &FaxServer::changedQuendraInfo, this,
                [&doing] { doing = Text::tr("Reading the user's profile"); }),
        connect(m_server, &FaxServer::changedFaxUser, this,
                [&] {
                    loggedIn = true;
                    m_loop.quit();
                }),
        connect(m_server, &FaxServer::changedLastStatus, this,
                [&](Task::Status status) {
                    if (status == Task::Ok) {
                        doing = Text::tr("Reading the server's identity");
                        return;
                    }
                    failed = status;
                    m_loop.quit();
                }),
    };
    const bool answered = wait(doing);
    for (const QMetaObject::Connection& connection : connections)
        disconnect(connection);
    if (!answered)
        return false;
    if (!loggedIn)
        explain(isWebPage() ? Task::InvalidReply : failed, doing);
    return loggedIn;
}

Task* Session::addTask(Task::Type type)
{
    return m_server->addTask(type);
}

bool Session::finish(const Outcome& outcome, const QString& doing)
{
    // it may have failed before anything was sent
    if (!outcome.ok && outcome.failed == Task::Unknown && !wait(doing))
        return false;
    Terminal::ProgressLine::clear();
    if (!outcome.ok)
        explain(outcome.failed, doing);
    return outcome.ok;
}

bool Session::wait(const QString& doing)
{
    m_timedOut = false;
    if (m_invocation.timeout() > 0)
        m_silence.start(m_invocation.timeout());
    m_loop.exec();
    m_silence.stop();
    if (!m_timedOut)
        return true;
    // a server that expects plain text does not answer a TLS handshake
    const QString hint = m_server->useSSL() && !m_watch->isAnswered()
                             ? Text::tr(" If the server does not speak HTTPS there, add it without "
                                        "--ssl.")
                             : QString();
    fail(ExitStatus::TimeOut,
         Text::tr("%1 at %2: nothing was heard for %3. Try again later, or allow more with "
                  "--timeout.%4")
             .arg(doing, m_server->address(), durationText(m_invocation.timeout() / 1000), hint));
    return false;
}

bool Session::isWebPage() const
{
    return m_watch->last().isWebPage && m_watch->last().httpStatus == 200;
}

int Session::explain(Task::Status status, const QString& doing)
{
    fail(status, Text::tr("%1 at %2 failed: %3").arg(doing, m_server->address(), reason(status)));
    return m_status;
}

void Session::pause(int ms)
{
    QTimer::singleShot(ms, &m_loop, &QEventLoop::quit);
    m_loop.exec();
}

QString Session::reason(Task::Status status) const
{
    const ReplyWatch::Outcome& last = m_watch->last();
    if (isWebPage()) {
        return Text::tr(
            "a web page came instead of a fax server's answer. Check address and port: some other "
            "server may listen there.");
    }
    if (status == Task::AuthError) {
        return Text::tr("the server does not accept login \"%1\" with this password. Enter them again with "
                        "\"qdfax server add\".")
            .arg(m_server->login());
    }
    const QString network = networkReason(last, m_server->useSSL());
    if (!network.isEmpty())
        return network;
    if (status == Task::InvalidReply) {
        return Text::tr("the answer cannot be understood. Check that a fax server listens at this address; "
                        "--log-level 4 writes the answer to the log.");
    }
    return Text::tr("the server did not confirm it. Its answer goes to the log with --log-level 4.");
}

QString Session::networkReason(const ReplyWatch::Outcome& last, bool useSSL)
{
    if (last.httpStatus == 400 && !useSSL) {
        return Text::tr("the server answered \"400 %1\". If it expects HTTPS there, add it with --ssl.")
            .arg(last.reason);
    }
    if (last.httpStatus >= 300) {
        const QString answer =
            Text::tr("the server answered \"%1 %2\".").arg(last.httpStatus).arg(last.reason);
        switch (last.httpStatus) {
        case 401:
            return answer +
                   Text::tr(
                       " Login or password are not accepted; enter them again with \"qdfax server add\".");
        case 403:
            return answer + Text::tr(" This user may not do that; ask the server's administrator.");
        case 405:
            return answer + Text::tr(" It does not permit that here; ask the server's administrator.");
        case 404:
            return answer +
                   Text::tr(" What was asked for does not exist there (any more); check the URL or address.");
        case 409:
            return answer + Text::tr(" It is no longer in a state that allows this; see \"qdfax queue\" and "
                                     "\"qdfax sent\".");
        default:
            break;
        }
        if (last.httpStatus < 400)
            return answer + Text::tr(" It points elsewhere, which is not followed; check address and --ssl.");
        return answer + Text::tr(" Try again later, or ask the server's administrator.");
    }

    switch (last.error) {
    case QNetworkReply::NoError:
        break;
    case QNetworkReply::HostNotFoundError:
        return Text::tr("no host has this name. Check its spelling, and the network.");
    case QNetworkReply::ConnectionRefusedError:
        return Text::tr("the connection is refused. Check that the server runs, and its port.");
    case QNetworkReply::RemoteHostClosedError:
        return useSSL ? Text::tr("the server closed the connection. If it does not speak HTTPS "
                                 "there, add it without --ssl.")
                      : Text::tr("the server closed the connection without an answer. If it "
                                 "expects HTTPS there, add it with --ssl.");
    case QNetworkReply::SslHandshakeFailedError:
        return Text::tr(
                   "no secure connection comes about (%1). If the server does not speak HTTPS there, add "
                   "it without --ssl.")
            .arg(last.socketError);
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::ProtocolInvalidOperationError:
        return useSSL ? Text::tr("the answer is not HTTP. Check address and port.")
                      : Text::tr("the answer is not HTTP. Check address and port; if the server "
                                 "expects HTTPS there, add it with --ssl.");
    case QNetworkReply::OperationCanceledError:
        return Text::tr("the answer is larger than any real one, and was cut off.");
    default:
        // No error text from the socket: the connection was closed in the middle. An unreachable network has
        // a text, which Qt translates into the language of the user.
        if (last.error == QNetworkReply::UnknownNetworkError &&
            (last.socketError.isEmpty() || last.socketError == QBuffer().errorString()))
            return Text::tr("the connection ended before the answer came. Try again later.");
        return Text::tr("%1. Check address and network.")
            .arg(last.socketError.isEmpty() ? Text::tr("the connection failed (%1)").arg(last.error)
                                            : last.socketError);
    }
    return QString();
}
