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

/// The usual options but for what a function sets.
template <typename Set>
SimOptions with(Set set)
{
    SimOptions options;
    set(options);
    return options;
}

/// A user as the program's command line spells one: "name:password:rights".
inline SimUser someUser(const char* text)
{
    SimUser user;
    QString error;
    if (!SimUser::parse(QString::fromUtf8(text), &user, &error))
        qFatal("%s", qPrintable(error));
    return user;
}

/// A request made of the test's own bytes, and the raw answer.
struct Wire
{
    QByteArray method;
    QByteArray target;
    QByteArray body = {};
    QByteArray credentials = QByteArrayLiteral("alice:secret"); ///< null: no header
    QByteArray contentType = QByteArrayLiteral("application/xml");
    QByteArray moreHeaders = {};
    bool keepAlive = false; ///< read one answer and leave the connection open

    struct Answer
    {
        int status = 0; ///< 0: the connection ended without an answer
        QByteArray head;
        QByteArray body;
        bool isWhole = false; ///< as many bytes as announced

        QString text(const QByteArray& element) const
        {
            const QString name = QString::fromLatin1(element);
            return QRegularExpression(QStringLiteral("<%1>([^<]*)</%1>").arg(name))
                .match(QString::fromUtf8(body))
                .captured(1);
        }
        int count(const char* element) const { return body.count(QByteArray("<") + element + '>'); }
    };

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
        return answer;
    }

    static void connectTo(const SimServer& server, QSslSocket* socket)
    {
        socket->setPeerVerifyMode(QSslSocket::QueryPeer);
        if (server.options().tls)
            socket->connectToHostEncrypted(server.options().bind, server.port());
        else
            socket->connectToHost(server.options().bind, server.port());
        if (socket->waitForConnected(20000) && server.options().tls)
            socket->waitForEncrypted(20000);
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
        return answer->isWhole = answer->body.size() == size;
    }
};

inline QByteArray declared(const QByteArray& document)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>" + document;
}

/// A document on one line.
inline QByteArray document(const QByteArray& name, const QByteArray& content)
{
    return declared('<' + name + '>' + content + "</" + name + '>');
}

inline SimEntry someEntry(const char* name, const QString& uid = QString())
{
    SimEntry entry;
    entry.uid = uid;
    entry.person.name = QString::fromUtf8(name);
    return entry;
}

inline const SimBookId alicesContacts{QStringLiteral("alice"), false};

/// Asks for something under "/qdws/v1/".
inline Wire::Answer ask(const SimServer& server, const QByteArray& method, const QByteArray& target,
                        const QByteArray& body = QByteArray(),
                        const QByteArray& credentials = QByteArrayLiteral("alice:secret"))
{
    return Wire{method, "/qdws/v1/" + target, body, credentials}.send(server);
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

inline QByteArray block(const QByteArray& name, const QByteArray& texts)
{
    return " <" + name + ">\n" + fields(texts, 2) + " </" + name + ">\n";
}

inline QByteArray submission(const QByteArray& content)
{
    return declared("\n<schedule_fax>\n" + content + "</schedule_fax>\n");
}

/// A minimal submission to these numbers.
inline QByteArray shortFax(const QByteArrayList& numbers, const QByteArray& attachments = QByteArray(),
                           const QByteArray& options = QByteArray())
{
    QByteArray recipients;
    for (const QByteArray& number : numbers)
        recipients += block("recipient", "fax_number=" + number);
    return submission(block("sender", "default_cover_page_enabled=false default_cover_page_name=") +
                      block("cover_page", "enabled=false") + recipients + attachments + options);
}

/// Users with every kind of rights, a clock that only the test moves, faxes to numbers with 999 fail.
inline SimOptions steppedOptions()
{
    SimOptions options;
    options.manualClock = true;
    options.failPattern = QStringLiteral("999");
    for (const char* user :
         {"alice:secret:global", "bob:word", "root:r:admin", "mute:m:nosend", "fixed:f:readonly"})
        options.users.append(someUser(user));
    return options;
}
