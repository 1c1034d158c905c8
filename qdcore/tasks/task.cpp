#include "tasks/task.h"

#include "faxserver.h"
#include "tasks/itemreply_p.h"
#include "tasks/oneshotbody_p.h"
#include "tasks/replydocument_p.h"
#include "tasks/servicerequest_p.h"
#include "tasks/task_p.h"

#include <QDomDocument>
#include <QNetworkAccessManager>

#include <utility>

namespace {

/**
 * A peer-verify name that forces a new connection.
 *
 * Race: the server may close a keep-alive connection just as it is reused, and then it is unknown whether the
 * request arrived. The connection cache is keyed by address and this name. With HTTPS the name is sent to the
 * server (SNI), so only its letter case varies; an IP address has no variants.
 */
QString nameOfFreshConnection(const QUrl& url)
{
    static quint32 number = 0;
    ++number;
    QString name = url.host();
    if (url.scheme() != QLatin1String("https"))
        return name + QLatin1Char('#') + QString::number(number);
    quint32 bits = number;
    for (QChar& letter : name) {
        if (letter.isLower()) {
            if (bits & 1U)
                letter = letter.toUpper();
            bits >>= 1U;
        }
    }
    return name;
}

} // namespace

Task::Task(FaxServer& server)
    : QObject(&server)
    , d(std::make_unique<TaskPrivate>(*this))
    , m_server(server)
    , m_nam(server.nam())
{}

Task::~Task()
{
    d->letGo(d->m_reply);
}

// --- The request

QUrl Task::serviceUrl(const QString& path) const
{
    return ::serviceUrl(m_server, path);
}

QUrl Task::resourceUrl(const QUrl& resource) const
{
    return ::resourceUrl(m_server, resource);
}

QUrl TaskPrivate::url(const QString& rest) const
{
    return m_task.serviceUrl(QLatin1String(operationOf(m_task.type()).path) + rest);
}

void TaskPrivate::logRequest(const QUrl& url, const LogText& log) const
{
    if (Logger::inst().level() >= Logger::DEBUG)
        Logger::inst().log(Logger::DEBUG, log.text.arg(url.toDisplayString()), log.file, log.line);
}

void TaskPrivate::send(const QUrl& url, const LogText& log, const QByteArray& body)
{
    if (isStarted())
        return;
    logRequest(url, log);
    send(url, body);
}

void TaskPrivate::send(const QUrl& url, const QByteArray& body)
{
    send(url, std::make_unique<OneShotBody>(body));
}

void TaskPrivate::send(const QUrl& url, std::unique_ptr<OneShotBody> body)
{
    if (isStarted())
        return;
    const QByteArray method = operationOf(m_task.type()).method;
    QNetworkRequest request = serviceRequest(m_task.server(), url);
    QNetworkAccessManager& nam = m_task.nam();
    if (method == "GET")
        return m_task.setReply(nam.get(request));
    if (method == "DELETE")
        return m_task.setReply(nam.deleteResource(request));

    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    request.setHeader(QNetworkRequest::ContentLengthHeader, body->size());
    request.setPeerVerifyName(nameOfFreshConnection(url));
    request.setRawHeader(QByteArrayLiteral("Connection"), QByteArrayLiteral("close"));
    QNetworkReply* reply = method == "PUT" ? nam.put(request, body.get()) : nam.post(request, body.get());
    body.release()->setParent(reply);
    m_task.setReply(reply);
}

// --- The reply

QNetworkReply* Task::reply() const
{
    return d->m_reply;
}

void Task::setReply(QNetworkReply* reply)
{
    d->m_reply = reply;
    d->m_started = true;
    d->bodies.collect(
        reply, this,
        [this](QNetworkReply*, int error, const QByteArray& body) {
            d->m_finished = true;
            d->m_error = error;
            d->m_body = body;
            QMetaObject::invokeMethod(this, &Task::slotFinished, Qt::QueuedConnection);
        },
        d->m_reader, ReplyBodies::InPortions);
}

void Task::slotFinished()
{
    onFinished();
}

void TaskPrivate::letGo(const QPointer<QNetworkReply>& reply)
{
    if (!reply)
        return;
    reply->disconnect(&m_task);
    reply->abort(); // emits finished(); a slot of the application may delete this reply or another one
    if (reply)
        reply->deleteLater();
}

bool Task::succeeded() const
{
    return d->m_finished && d->m_error == QNetworkReply::NoError;
}

int Task::networkError() const
{
    return d->m_error;
}

QByteArray Task::body()
{
    return d->m_body;
}

QString Task::fixAmp(const QByteArray& data)
{
    return withAmpersands(data);
}

bool Task::parseBody(QDomDocument& document)
{
    QByteArray data = body();
    d->m_body.clear();
    if (parseReply(std::move(data), document))
        return true;
    fail(InvalidReply);
    return false;
}

void TaskPrivate::readChildren(ReplyReader::Take take)
{
    if (isStarted())
        return;
    m_reader = std::make_shared<ReplyReader>(std::move(take));
}

bool TaskPrivate::finishDocument()
{
    if (m_reader->finish())
        return true;
    m_task.fail(Task::InvalidReply);
    return false;
}

int Task::protocolVersion() const
{
    return m_server.info().protocolVersion();
}

// --- The end

void TaskPrivate::logBody(const LogText& prefix, const QByteArray& body)
{
    if (Logger::inst().level() >= Logger::DEBUG)
        Logger::inst().log(Logger::DEBUG, QString::fromUtf8(body).prepend(prefix.text), prefix.file,
                           prefix.line);
}

Task::Status TaskPrivate::errorStatus() const
{
    return statusOf(operationOf(m_task.type()).errors, m_task.networkError());
}

void TaskPrivate::failReply(const LogText& error, const LogText& errorBody)
{
    Logger::inst().log(Logger::ERROR, error.text.arg(m_task.networkError()), error.file, error.line);
    logBody(errorBody);
    m_task.fail(errorStatus());
}

void TaskPrivate::failThenLog(const LogText& error, const LogText& errorBody)
{
    // a slot may destroy the task: the lines use nothing of it
    const int number = m_task.networkError();
    const QByteArray body = m_task.body();
    m_task.fail(errorStatus());
    Logger::inst().log(Logger::ERROR, error.text.arg(number), error.file, error.line);
    logBody(errorBody, body);
}

void TaskPrivate::finishItems(const ItemReply& reply)
{
    if (!m_task.succeeded())
        return failReply(reply.error, reply.errorBody);
    logBody(reply.reply);
    if (!finishDocument())
        return;
    // the entries are emitted whatever the message says, and the error is logged afterwards
    const bool isValid = !reply.isLog || m_saysSuccess;
    const auto emitItems = std::move(m_emitItems);
    m_task.deleteLater();
    emitItems();
    if (!isValid)
        Logger::inst().log(Logger::ERROR, reply.invalid.text, reply.invalid.file, reply.invalid.line);
}

void Task::fail(Status status)
{
    d->m_failed = true;
    deleteLater();
    Q_EMIT errorExecute(status);
}
