#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>

#include <functional>

class QTcpSocket;

/// One request as it came over the wire.
struct WireRequest
{
    QByteArray raw; ///< Every byte, head and body.
    QByteArray method;
    QByteArray target; ///< Path and query, still encoded.
    QByteArray body;
    int connection{0}; ///< Which connection it came on, counted from 1.

    /// The value of a header, compared without regard to case; null when it was not sent.
    QByteArray header(const QByteArray& name) const;
};

/**
 * A server controlled by the test: it records the bytes of every request and answers with exact bytes, or
 * closes the connection at a chosen point. It lives on the test's thread and event loop and listens on
 * 127.0.0.1.
 */
class ScriptedServer : public QTcpServer
{
    Q_OBJECT
public:
    enum class HangUp {
        Never,       ///< Answers.
        AfterHead,   ///< When the head of the request has arrived.
        InsideBody,  ///< When half the body has arrived.
        AfterBody,   ///< When the whole request has arrived, without an answer.
        InsideReply, ///< After half the answer.
        AfterReply,  ///< After the answer.
        NoAnswer     ///< Keeps the connection and does not answer.
    };
    Q_ENUM(HangUp)

    /// Whether TLS is available, which needs the program openssl.
    static bool canTls();
    /// With @p tls the server uses TLS with a new self-signed certificate.
    explicit ScriptedServer(bool tls = false, const QHostAddress& where = QHostAddress::LocalHost);

    /// "127.0.0.1:PORT", or what else it listens on.
    QString address() const;

    /// The answer to every request: whole bytes from the status line on.
    void setAnswer(const QByteArray& answer);
    /// The answer to each request, made from it.
    void setAnswer(std::function<QByteArray(const WireRequest&)> answer) { m_answer = std::move(answer); }
    void setHangUp(HangUp when) { m_hangUp = when; }

    /// Pieces to be written after the answer to a request, until one is empty or the client has disconnected:
    /// each when the previous one has been sent, or every @p interval ms.
    void setMore(std::function<QByteArray(const WireRequest&)> more, int interval = 0);

    /// Requests in the order in which their heads were complete; bodies may be incomplete after a hang-up.
    const QList<WireRequest>& requests() const { return m_requests; }

    /// The number of connections so far, and of those open now.
    int connectionCount() const { return m_connectionCount; }
    int openCount() const { return m_connections.size(); }

    /// A reply, 200 by default, with a body and its Content-Length.
    static QByteArray reply(const QByteArray& body, const QByteArray& status = "200 OK",
                            const QByteArray& moreHeaders = QByteArray());

    /// An incomplete 200 reply, a decompression bomb: each of @p more bytes inflates to 1032 blanks.
    static QByteArray bomb(int more = 0);

    /// Writes a self-signed certificate for 127.0.0.1 and its key as PEM files. Returns whether that worked.
    static bool makeCertificate(const QString& certificateFile, const QString& keyFile);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    struct Connection
    {
        int number{0};
        QByteArray received;
        int request{-1}; ///< The request whose body is being read.
    };

    void read(QTcpSocket* socket);
    bool readOne(QTcpSocket* socket, Connection& connection);
    bool hangUp(QTcpSocket* socket);

    bool m_tls;
    QSslCertificate m_certificate;
    QSslKey m_key;
    std::function<QByteArray(const WireRequest&)> m_answer;
    HangUp m_hangUp{HangUp::Never};
    std::function<QByteArray(const WireRequest&)> m_more;
    int m_interval{0};
    QList<WireRequest> m_requests;
    QHash<QTcpSocket*, Connection> m_connections;
    int m_connectionCount{0};
};
