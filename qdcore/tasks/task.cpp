#include "tasks/task.h"

#include "domtext_p.h"
#include "faxserver.h"
#include "log_p.h"
#include "serveraddress_p.h"
#include "tasks/oneshotbody_p.h"
#include "xmlguard_p.h"

#include <QDomDocument>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QUuid>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

namespace {

/// How much of a reply waits in the access manager until it is read, in bytes. Without a limit its thread
/// goes on reading, and decompressing, whatever a server sends, for as long as the event loop is busy with
/// something else.
constexpr qint64 waitingSize = qint64(16) * 1024;

/// More ampersands than a text of 256 MiB has any use for.
constexpr int maxAmpersands = 16 * 1024 * 1024;

} // namespace

Task::Task(FaxServer& server)
    : QObject(&server)
    , m_server(server)
    , m_nam(server.nam())
{}

Task::~Task()
{
    if (m_reply)
        letGo(m_reply);
}

void Task::letGo(QNetworkReply* reply)
{
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

void Task::setReply(QNetworkReply* reply)
{
    m_reply = reply;
    connect(reply, &QNetworkReply::finished, this, &Task::slotFinished, Qt::QueuedConnection);
    collect(reply);
}

void Task::collect(QNetworkReply* reply)
{
    m_collected.insert(reply, QByteArray());
    reply->setReadBufferSize(waitingSize);
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] {
        const auto body = m_collected.find(reply);
        if (body == m_collected.end())
            return;
        if (body->isEmpty())
            reply->setProperty(bodyHeadProperty, reply->peek(bodyHeadSize));
        m_received += reply->bytesAvailable();
        if (m_received <= maxReplySize) {
            body->append(reply->readAll());
        } else {
            m_collected.erase(body);
            reply->abort();
        }
    });
}

QByteArray Task::takeBody(QNetworkReply* reply)
{
    const auto body = m_collected.find(reply);
    if (body == m_collected.end())
        return QByteArray();
    const QByteArray rest = reply->readAll();
    m_received += rest.size();
    const QByteArray whole = body->isEmpty() ? rest : body->append(rest);
    m_collected.erase(body);
    return whole;
}

void Task::slotFinished()
{
    onFinished();
}

// --- The request

void Task::applyServer(QUrl& url) const
{
    url.setScheme(m_server.useSSL() ? QStringLiteral("https") : QStringLiteral("http"));
    url.setUserName(m_server.login(), QUrl::DecodedMode);
    url.setPassword(m_server.password(), QUrl::DecodedMode);
    // An invalid URL makes the access manager finish the request with an error, so that nonsense takes the
    // same way to its end as a server that cannot be reached.
    if (!setServerAddress(url, m_server.address()) || !url.isValid())
        url = QUrl();
}

QUrl Task::serviceUrl(const QString& path) const
{
    QUrl url;
    url.setPath(path, QUrl::DecodedMode);
    applyServer(url);
    return url;
}

QUrl Task::resourceUrl(const QUrl& resource) const
{
    QUrl url = resource;
    applyServer(url);
    return url;
}

QUrl Task::limited(const QUrl& url, const QString& query, int limit)
{
    QUrl limited = url;
    if (limit > 0 && !query.isEmpty() && url.isValid())
        limited.setQuery(QString(query).replace(QLatin1String("%1"), QString::number(limit)),
                         QUrl::TolerantMode);
    return limited;
}

QNetworkRequest Task::request(const QUrl& url) const
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/xml"));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    if (m_server.useSSL()) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setPeerVerifyMode(QSslSocket::QueryPeer);
        request.setSslConfiguration(tls);
    }
    const QString login = m_server.login();
    const QString password = m_server.password();
    if (!login.isEmpty() || !password.isEmpty()) {
        const QByteArray credentials = (login + QLatin1Char(':') + password).toLatin1();
        request.setRawHeader(QByteArrayLiteral("Authorization"), "Basic " + credentials.toBase64());
        request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    }
    return request;
}

void Task::get(const QUrl& url, const LogText& log)
{
    send(url, log, QByteArrayLiteral("GET"), QByteArray());
}

void Task::post(const QUrl& url, const QByteArray& body, const LogText& log)
{
    send(url, log, QByteArrayLiteral("POST"), body);
}

void Task::put(const QUrl& url, const QByteArray& body, const LogText& log)
{
    send(url, log, QByteArrayLiteral("PUT"), body);
}

void Task::deleteResource(const QUrl& url, const LogText& log)
{
    send(url, log, QByteArrayLiteral("DELETE"), QByteArray());
}

void Task::send(const QUrl& url, const LogText& log, const QByteArray& verb, const QByteArray& body)
{
    if (isStarted())
        return;
    if (Logger::inst().level() >= Logger::DEBUG)
        Logger::inst().log(Logger::DEBUG, log.text.arg(url.toDisplayString()), log.file, log.line);

    QNetworkRequest request = this->request(url);
    if (verb == "GET")
        return setReply(nam().get(request));
    if (verb == "DELETE")
        return setReply(nam().deleteResource(request));
    if (body.isEmpty())
        return setReply(verb == "PUT" ? nam().put(request, body) : nam().post(request, body));

    auto* device = new OneShotBody(body, this);
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    request.setHeader(QNetworkRequest::ContentLengthHeader, qint64(body.size()));
    QNetworkReply* reply = verb == "PUT" ? nam().put(request, device) : nam().post(request, device);
    device->setParent(reply);
    setReply(reply);
}

QDomElement Task::startDocument(QDomDocument& document, const QString& rootName)
{
    appendDeclaration(document);
    return appendElement(document, document, rootName);
}

QByteArray Task::oneLine(const QDomDocument& document)
{
    return document.toString(0).remove(QLatin1Char('\n')).toUtf8();
}

QByteArray Task::indented(QDomDocument& document)
{
    // Serialising a file of 100 MB through the DOM takes twenty times as long as encoding it. A placeholder
    // stands in for it meanwhile; it cannot be mistaken, since no text of the document can hold a tag.
    const QByteArray placeholder = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    QVector<QString> contents;
    const QDomNodeList elements = document.elementsByTagName(QStringLiteral("content"));
    for (int i = 0; i < elements.size(); ++i) {
        QDomNode text = elements.at(i).firstChild();
        if (!text.isText())
            continue;
        contents.append(text.nodeValue());
        text.setNodeValue(QString::fromLatin1(placeholder));
    }

    const QByteArray frame = document.toByteArray(1);
    const QByteArray stand = "<content>" + placeholder + "</content>";
    qint64 total = frame.size();
    for (const QString& content : qAsConst(contents))
        total += content.size() - placeholder.size();

    if (total > std::numeric_limits<int>::max())
        return QByteArray();
    QByteArray bytes;
    bytes.reserve(int(total));
    int from = 0;
    for (QString& content : contents) {
        const int at = frame.indexOf(stand, from) + int(qstrlen("<content>"));
        bytes.append(frame.constData() + from, at - from);
        constexpr int blockSize = 256 * 1024;
        for (int done = 0; done < content.size(); done += blockSize)
            bytes.append(content.midRef(done, blockSize).toLatin1());
        content.clear();
        from = at + placeholder.size();
    }
    bytes.append(frame.constData() + from, frame.size() - from);
    return bytes;
}

// --- The reply

bool Task::succeeded() const
{
    return m_reply && m_reply->isFinished() && m_reply->error() == QNetworkReply::NoError;
}

QByteArray Task::body()
{
    if (!m_bodyRead && m_reply) {
        m_body = takeBody(m_reply);
        m_bodyRead = true;
    }
    return m_body;
}

int Task::networkError() const
{
    return m_reply ? int(m_reply->error()) : int(QNetworkReply::OperationCanceledError);
}

namespace {

/// As Task::fixAmp(), before decoding. A null array when there is nothing to repair.
QByteArray withAmpersands(const QByteArray& data)
{
    static const QByteArray entities[] = {"amp;", "lt;", "gt;", "apos;", "quot;"};
    const char* const end = data.constData() + data.size();
    const char* copied = data.constData();
    const auto next = [end](const char* from) {
        return static_cast<const char*>(std::memchr(from, '&', size_t(end - from)));
    };
    QByteArray repaired;
    for (const char* at = next(copied); at; at = next(at + 1)) {
        const auto begins = [rest = at + 1, end](const QByteArray& entity) {
            return end - rest >= entity.size() &&
                   std::memcmp(rest, entity.constData(), size_t(entity.size())) == 0;
        };
        if (std::any_of(std::begin(entities), std::end(entities), begins))
            continue;
        if (repaired.isNull())
            repaired.reserve(data.size() + data.size() / 8);
        repaired.append(copied, int(at + 1 - copied));
        repaired.append("amp;", 4);
        copied = at + 1;
    }
    if (!repaired.isNull())
        repaired.append(copied, int(end - copied));
    return repaired;
}

} // namespace

QString Task::fixAmp(const QByteArray& data)
{
    // Done before decoding: there are half as many bytes to look at and to move. Decoding ends at a null
    // byte, which XML cannot hold: what stands in front of one must be a whole document.
    const QByteArray repaired = withAmpersands(data);
    return QString::fromUtf8(repaired.isNull() ? data : repaired);
}

bool Task::parse(QByteArray data, QDomDocument& document)
{
    // repairing writes four characters more for each, and a text of nothing else would not fit into a string
    if (data.count('&') > maxAmpersands)
        return false;
    // each stage goes before the next comes: a reply may have 256 MiB
    if (QByteArray repaired = withAmpersands(data); !repaired.isNull())
        data = std::move(repaired);
    const QString text = QString::fromUtf8(data);
    data.clear();
    return isFitForDom(text) && document.setContent(text);
}

bool Task::parseBody(QDomDocument& document, Body body)
{
    QByteArray data = this->body();
    if (body == Body::LetGo)
        m_body.clear();
    if (parse(std::move(data), document))
        return true;
    fail(InvalidReply);
    return false;
}

int Task::protocolVersion() const
{
    return m_server.info().protocolVersion();
}

Task::Status Task::errorStatus(ErrorMapping mapping, int networkError)
{
    struct Row
    {
        ErrorMapping mapping;
        QNetworkReply::NetworkError error;
        Status status;
    };
    static constexpr Row exceptions[] = {
        {ErrorMapping::AuthApart, QNetworkReply::AuthenticationRequiredError, AuthError},
        {ErrorMapping::ContentApart, QNetworkReply::UnknownContentError, InvalidReply},
        {ErrorMapping::Contact, QNetworkReply::UnknownContentError, InvalidReply},
        {ErrorMapping::Contact, QNetworkReply::ContentAccessDenied, AccessDenied},
        {ErrorMapping::Contact, QNetworkReply::ContentNotFoundError, NotFound},
        {ErrorMapping::Contact, QNetworkReply::ContentOperationNotPermittedError, NotPermitted},
    };
    for (const Row& row : exceptions) {
        if (row.mapping == mapping && row.error == networkError)
            return row.status;
    }
    return Error;
}

void Task::logBody(const LogText& prefix)
{
    logBody(prefix, body());
}

void Task::logBody(const LogText& prefix, const QByteArray& body)
{
    if (Logger::inst().level() >= Logger::DEBUG)
        Logger::inst().log(Logger::DEBUG, QString::fromUtf8(body).prepend(prefix.text), prefix.file,
                           prefix.line);
}

void Task::logReplyError(const LogText& error, const LogText& body)
{
    Logger::inst().log(Logger::ERROR, error.text.arg(networkError()), error.file, error.line);
    logBody(body);
}

void Task::fail(Status status)
{
    m_failed = true;
    deleteLater();
    Q_EMIT errorExecute(status);
}
