#pragma once

#include "simserver.h"

#include <QtCore/QRegularExpression>
#include <QtNetwork/QSslSocket>

/// A simulated server that runs for as long as this lives.
class Started : public SimServer
{
public:
    explicit Started(const SimOptions& options = SimOptions())
        : SimServer(options)
    {
        QString error;
        if (!start(&error))
            qFatal("%s", qPrintable(error));
    }
};

/// A user as the program's command line spells one: "name:password:rights".
inline SimUser someUser(const char* text)
{
    SimUser user;
    QString error;
    if (!SimUser::parse(QString::fromUtf8(text), &user, &error))
        qFatal("%s", qPrintable(error));
    return user;
}

/// A request of which every byte is the test's own, and the answer as it came.
struct Wire
{
    QByteArray method = QByteArrayLiteral("GET");
    QByteArray target;
    QByteArray body;
    QByteArray credentials = QByteArrayLiteral("alice:secret"); ///< null: no header
    QByteArray contentType = QByteArrayLiteral("application/xml");
    QByteArray moreHeaders;
    bool keepAlive = false; ///< read one answer and leave the connection open

    struct Answer
    {
        int status = 0; ///< 0: the connection ended without an answer
        QByteArray head;
        QByteArray body;
        bool isWhole = false; ///< as many bytes as announced

        QString text(const char* element) const
        {
            const QString name = QLatin1String(element);
            return QRegularExpression(QStringLiteral("<%1>([^<]*)</%1>").arg(name))
                .match(QString::fromUtf8(body))
                .captured(1);
        }
        int count(const char* element) const { return body.count(QByteArray("<") + element + '>'); }
    };

    Wire(const QByteArray& method_, const QByteArray& target_, const QByteArray& body_ = QByteArray())
        : method(method_)
        , target(target_)
        , body(body_)
    {}

    QByteArray bytes(const SimServer& server) const
    {
        QByteArray out = method + ' ' + target + " HTTP/1.1\r\nHost: " + server.address().toLatin1() + "\r\n";
        if (!credentials.isNull())
            out += "Authorization: Basic " + credentials.toBase64() + "\r\n";
        if (!contentType.isNull())
            out += "Content-Type: " + contentType + "\r\n";
        if (!body.isNull())
            out += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
        if (!keepAlive)
            out += "Connection: close\r\n";
        return out + moreHeaders + "\r\n" + body;
    }

    Answer send(const SimServer& server, QSslSocket* connection = nullptr) const
    {
        QSslSocket own;
        QSslSocket& socket = connection ? *connection : own;
        if (socket.state() == QAbstractSocket::UnconnectedState)
            connectTo(server, &socket);
        socket.write(bytes(server));
        QByteArray received;
        Answer answer;
        while (!isComplete(received, &answer) &&
               (socket.bytesAvailable() > 0 || socket.waitForReadyRead(20000)))
            received += socket.readAll();
        isComplete(received, &answer);
        return answer;
    }

    static void connectTo(const SimServer& server, QSslSocket* socket)
    {
        socket->setPeerVerifyMode(QSslSocket::QueryPeer);
        if (server.options().tls) {
            socket->connectToHostEncrypted(server.options().bind, server.port());
            socket->waitForEncrypted(20000);
        } else {
            socket->connectToHost(server.options().bind, server.port());
            socket->waitForConnected(20000);
        }
    }

private:
    static bool isComplete(const QByteArray& received, Answer* answer)
    {
        const int end = received.indexOf("\r\n\r\n");
        if (end < 0)
            return false;
        answer->head = received.left(end + 2);
        answer->body = received.mid(end + 4);
        answer->status = answer->head.mid(9, 3).toInt();
        const int at = answer->head.indexOf("Content-Length: ");
        const int size = answer->head.mid(at + 16, answer->head.indexOf('\r', at) - at - 16).toInt();
        answer->isWhole = answer->body.size() == size;
        return answer->isWhole;
    }
};

inline QByteArray declared(const QByteArray& document)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + document;
}

/// Asks for something under "/qdws/v1/".
inline Wire::Answer ask(const SimServer& server, const QByteArray& method, const QByteArray& target,
                        const QByteArray& body = QByteArray(),
                        const QByteArray& credentials = QByteArrayLiteral("alice:secret"))
{
    Wire wire(method, "/qdws/v1/" + target, body);
    wire.credentials = credentials;
    return wire.send(server);
}

inline Wire::Answer get(const SimServer& server, const QByteArray& target)
{
    return ask(server, "GET", target);
}

/// Elements that hold texts without blanks, of "name=text name=text"; each on a line of its own when
/// indented.
inline QByteArray fields(const QByteArray& texts, int indent = 0)
{
    QByteArray xml;
    for (const QByteArray& part : texts.split(' ')) {
        const int end = part.indexOf('=');
        const QByteArray name = part.left(end);
        xml += QByteArray(indent, ' ') + '<' + name + '>' + part.mid(end + 1) + "</" + name + '>' +
               (indent ? "\n" : "");
    }
    return xml;
}

inline QByteArray block(const QByteArray& name, const QByteArray& content)
{
    return " <" + name + ">\n" + content + " </" + name + ">\n";
}

inline QByteArray submission(const QByteArray& content)
{
    return declared("\n<schedule_fax>\n" + content + "</schedule_fax>\n");
}

/// A submission as short as can be, to these numbers.
inline QByteArray shortFax(const QByteArrayList& numbers, const QByteArray& attachments = QByteArray(),
                           const QByteArray& options = QByteArray())
{
    QByteArray recipients;
    for (const QByteArray& number : numbers)
        recipients += block("recipient", fields("fax_number=" + number, 2));
    return submission(
        block("sender", fields("default_cover_page_enabled=false default_cover_page_name=", 2)) +
        block("cover_page", fields("enabled=false", 2)) + recipients + attachments + options);
}

/// Two users, a clock that only the test moves, faxes to numbers with 999 fail.
inline SimOptions steppedOptions()
{
    SimOptions options;
    options.manualClock = true;
    options.failPattern = QStringLiteral("999");
    options.users = {someUser("alice:secret:global"), someUser("bob:word"), someUser("root:r:admin"),
                     someUser("mute:m:nosend")};
    return options;
}
