#include "scriptedserver.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSslSocket>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

QByteArray WireRequest::header(const QByteArray& name) const
{
    const QRegularExpression line(QStringLiteral("\n%1: *([^\r\n]*)").arg(QString::fromLatin1(name)),
                                  QRegularExpression::CaseInsensitiveOption);
    const QByteArray head = raw.left(raw.indexOf("\r\n\r\n"));
    return line.match(QString::fromLatin1(head)).captured(1).toLatin1();
}

ScriptedServer::ScriptedServer(bool tls, const QHostAddress& where)
    : m_tls(tls)
{
    if (tls) {
        const QTemporaryDir folder;
        const QString certificate = folder.filePath(QStringLiteral("certificate.pem"));
        const QString key = folder.filePath(QStringLiteral("key.pem"));
        if (!makeCertificate(certificate, key))
            qFatal("openssl cannot make a certificate");
        QFile keyFile(key);
        keyFile.open(QIODevice::ReadOnly);
        m_key = QSslKey(&keyFile, QSsl::Rsa);
        m_certificate = QSslCertificate::fromPath(certificate).value(0);
    }
    if (!listen(where))
        qFatal("cannot listen on %s", qPrintable(where.toString()));
}

bool ScriptedServer::canTls()
{
    return !QStandardPaths::findExecutable(QStringLiteral("openssl")).isEmpty();
}

bool ScriptedServer::makeCertificate(const QString& certificateFile, const QString& keyFile)
{
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"),
                  QStringLiteral("req -x509 -newkey rsa:2048 -nodes -days 2 -batch -subj /CN=127.0.0.1")
                          .split(QLatin1Char(' '))
                      << QStringLiteral("-keyout") << keyFile << QStringLiteral("-out") << certificateFile);
    return openssl.waitForFinished() && openssl.exitCode() == 0;
}

QString ScriptedServer::address() const
{
    return QStringLiteral("%1:%2").arg(serverAddress().toString()).arg(serverPort());
}

void ScriptedServer::setAnswer(const QByteArray& answer)
{
    m_answer = [answer](const WireRequest&) { return answer; };
}

void ScriptedServer::setMore(std::function<QByteArray(const WireRequest&)> more, int interval)
{
    m_more = std::move(more);
    m_interval = interval;
}

QByteArray ScriptedServer::reply(const QByteArray& body, const QByteArray& status,
                                 const QByteArray& moreHeaders)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" +
           moreHeaders + "\r\n" + body;
}

QByteArray ScriptedServer::bomb(int more)
{
    QByteArray blanks = qCompress(QByteArray(2000000, ' '), 9).mid(4);
    blanks.truncate(blanks.size() / 2);
    return "HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\n\r\n" + blanks + QByteArray(more, blanks.back());
}

void ScriptedServer::incomingConnection(qintptr descriptor)
{
    auto* secure = m_tls ? new QSslSocket(this) : nullptr;
    QTcpSocket* socket = secure ? secure : new QTcpSocket(this);
    socket->setSocketDescriptor(descriptor);
    if (secure) {
        secure->setLocalCertificate(m_certificate);
        secure->setPrivateKey(m_key);
        secure->startServerEncryption();
    }
    m_connections[socket].number = ++m_connectionCount;
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        m_connections.remove(socket);
        socket->deleteLater();
    });
}

void ScriptedServer::read(QTcpSocket* socket)
{
    m_connections[socket].received += socket->readAll();
    while (m_connections.contains(socket) && readOne(socket, m_connections[socket])) {
    }
}

/// False: nothing more is to be read.
bool ScriptedServer::hangUp(QTcpSocket* socket)
{
    m_connections.remove(socket);
    socket->disconnect(this);
    socket->disconnectFromHost();
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    if (socket->state() == QAbstractSocket::UnconnectedState)
        socket->deleteLater();
    return false;
}

/// Consumes a request, or the part received so far, from a connection. False if more bytes are needed.
bool ScriptedServer::readOne(QTcpSocket* socket, Connection& connection)
{
    if (!connection.received.isEmpty() &&
        (connection.received.at(0) < 'A' || connection.received.at(0) > 'Z'))
        return hangUp(socket); // not HTTP
    const int headEnd = connection.received.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return false;
    if (connection.request < 0) {
        WireRequest request;
        request.raw = connection.received.left(headEnd + 4);
        const QList<QByteArray> words = request.raw.left(request.raw.indexOf("\r\n")).split(' ');
        request.method = words.value(0);
        request.target = words.value(1);
        request.connection = connection.number;
        connection.request = m_requests.size();
        m_requests.append(request);
    }
    WireRequest& request = m_requests[connection.request];
    if (m_hangUp == HangUp::AfterHead)
        return hangUp(socket);
    const int length = request.header("Content-Length").toInt();
    request.body = connection.received.mid(headEnd + 4, length);
    if (m_hangUp == HangUp::InsideBody && length > 0 && request.body.size() >= length / 2)
        return hangUp(socket);
    if (request.body.size() < length)
        return false;

    request.raw += request.body;
    connection.received.remove(0, headEnd + 4 + length);
    connection.request = -1;
    if (m_hangUp == HangUp::NoAnswer)
        return true;
    if (m_hangUp == HangUp::AfterBody || m_hangUp == HangUp::InsideBody || !m_answer)
        return hangUp(socket);
    const QByteArray answer = m_answer(request);
    if (m_hangUp == HangUp::InsideReply || m_hangUp == HangUp::AfterReply) {
        socket->write(m_hangUp == HangUp::InsideReply ? answer.left(answer.size() / 2) : answer);
        return hangUp(socket);
    }
    socket->write(answer);
    const auto sendMore = [this, socket, request] {
        const QByteArray piece = m_more(request);
        if (!piece.isEmpty())
            socket->write(piece);
    };
    if (m_more && m_interval == 0) {
        connect(socket, &QTcpSocket::bytesWritten, this, [socket, sendMore] {
            if (socket->bytesToWrite() == 0)
                sendMore();
        });
    } else if (m_more) {
        auto* timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, this, sendMore);
        timer->start(m_interval);
    }
    return true;
}
