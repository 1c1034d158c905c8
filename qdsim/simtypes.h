#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>

/// @brief One received request, as it came over the wire.
///
/// A value, filled in three steps: the transport sets what was received, the routing sets #user, and the
/// answer sets #status and #refusal. Copies are cheap (Qt's implicit sharing).
struct SimRequest
{
    QString method;
    QByteArray target;  ///< request target exactly as received, percent escapes and query included
    QString path;       ///< path of the target, percent escapes decoded ("+" stays "+")
    QByteArray query;   ///< what follows "?", not decoded; null without "?"
    QByteArray rawHead; ///< request line and header lines exactly as received, up to the empty line
    QVector<QPair<QByteArray, QByteArray>> headers; ///< in order of arrival, values trimmed
    QByteArray body;                                ///< kept up to SimOptions::keepBodyLimit bytes
    qint64 bodySize = 0;                            ///< length of the whole body in bytes
    bool secure = false;                            ///< came through TLS
    QString user;                                   ///< name of the authenticated user, empty if none
    int status = 0;      ///< HTTP status of the answer; 0: connection cut, or not answered yet
    bool faulty = false; ///< a fault was injected
    QString refusal;     ///< why the request was refused; empty if it was accepted

    /// The value of the first header of that name (case does not matter), null if there is none.
    QByteArray header(const char* name) const;
    bool hasHeader(const char* name) const;
};

/// @brief What is sent back for one request, including the ways in which it may go wrong on the way.
struct SimReply
{
    int status = 200;
    QByteArray contentType = QByteArrayLiteral("application/xml");
    QVector<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;

    /// Instead of #body: a document of #size bytes of which the function returns any stretch.
    std::function<QByteArray(qint64 offset, qint64 length)> generator;
    qint64 size = 0;

    QString refusal;         ///< readable reason if the request was refused
    int delayMs = 0;         ///< wait before the first byte
    bool hangUp = false;     ///< close the connection instead of answering
    qint64 cutAfter = -1;    ///< close the connection after so many bytes of the body; -1: send it whole
    int dripMs = 0;          ///< send the body byte by byte with so many milliseconds between; 0: at once
    bool compressed = false; ///< compress if the client accepts it

    qint64 length() const { return generator ? size : body.size(); }

    /// An XML answer `<reply><message>TEXT</message></reply>` with status 200.
    static SimReply message(const QString& text);
    /// A refusal with a 4xx status; the reason goes into the log and into the body's "message".
    static SimReply refuse(int status, const QString& reason);
};

/// @brief A person as the service knows one: the elements of a contact.
struct SimPerson
{
    QString url; ///< "contact_url"
    QString username;
    QString name;
    QString email; ///< "email_address"
    QString phone; ///< "phone_number"
    QString fax;   ///< "fax_number"
    QString organization;
};

/// @brief Schedule options of one fax or a user's defaults; the texts are the wire's own.
struct SimSchedule
{
    qint64 sendAt = 0; ///< "schedule_all_at" in ms since 1970 UTC; 0: at once
    int priority = 3;
    int maxTries = 3;
    int tryInterval = 300; ///< seconds
    QString receipt = QStringLiteral("failure");
    QString receiptAttachment = QStringLiteral("pdf");
    QString printReceipt = QStringLiteral("never");
    QString printer;
    bool printFirstPage = false;
    QString pageSize = QStringLiteral("auto");
};

/// @brief The cover page of a fax or one that the server offers.
struct SimCoverPage
{
    bool enabled = false;
    QString name;
    QString type;
    QString url;
    QString subject;
    QString comments;
};

/// @brief A user of the simulated server.
struct SimUser
{
    QString name;
    QString password;
    bool editGlobal = false; ///< may change the global book ("global")
    bool admin = false;      ///< sees and changes every user's faxes, profiles and books ("admin")
    bool noSend = false;     ///< submissions are answered 403 ("nosend")
    bool readOnly = false;   ///< no book may be changed, attempts are answered 405 ("readonly")

    SimPerson person;
    bool coverPageEnabled = false;
    QString coverPageName;
    SimSchedule defaults;

    /// Reads "NAME:PASSWORD[:RIGHTS]", RIGHTS being names separated by commas. False if it is none; @p error
    /// says why.
    static bool parse(const QString& text, SimUser* user, QString* error);
};

/// @brief One attachment of a received fax.
struct SimAttachment
{
    QString name; ///< as the client named it; the URL for an external attachment
    QString contentType;
    qint64 size = 0; ///< decoded bytes
    QString path;    ///< the file in the spool; empty without a spool folder
    QByteArray
        content; ///< decoded bytes, kept only without a spool folder and up to SimOptions::keepBodyLimit
};

/// @brief How a simulated server is to run. Everything has a working default.
struct SimOptions
{
    QString bind = QStringLiteral("127.0.0.1");
    bool bindIpv6 = false; ///< listen on ::1 as well, same port
    quint16 port = 0;      ///< 0: any free port
    bool tls = false;      ///< HTTPS with a self-signed certificate made at start
    bool compress = false; ///< gzip replies for clients that accept it

    QVector<SimUser>
        users; ///< empty: one user "alice" with the password "secret", who may edit the global book

    QString model = QStringLiteral("QDF40X");
    QString version = QStringLiteral("3.6.1");
    QString serial = QStringLiteral("SIM-000001");
    QString hostname = QStringLiteral("qdsim");
    QString description = QStringLiteral("Simulated fax server");
    int channels = 4;

    double speed = 1;         ///< how much faster than real a fax moves; 0: it does not move by itself
    bool manualClock = false; ///< time stands still but for SimServer::step()
    qint64 clockStart = 0;    ///< ms since 1970 UTC; not 0: time begins here, stands still, and goes on by a
                              ///< second with each request but GET, so that two runs answer alike
    QString failPattern;      ///< regular expression; a fax to a number that matches fails

    QString spoolDir;  ///< received attachments are stored here; empty: not stored
    QString stateDir;  ///< state is loaded from and saved here; empty: in memory only
    QString recordDir; ///< every exchange is written here, see SimRecorder; empty: none is

    qint64 keepBodyLimit = 1 << 20; ///< bytes kept of each request body and attachment; -1: all

    bool keepRequests = true; ///< for SimServer::requests(); false for a server that runs for days

    int inbound = 0;             ///< entries the inbound log starts with
    qint64 hugeDocument = 0;     ///< size in bytes of one generated document in the inbound log; 0: none
    int contacts = 0;            ///< generated people in every book
    int groups = 0;              ///< generated groups in every book
    quint32 seed = 1;            ///< for everything generated
    double changesPerSecond = 0; ///< how fast the change generator works; 0: off

    QString discoveryAddress;     ///< address of the UDP responder; empty: off
    QString discoveryAnnounce;    ///< what replies say as "inet_addr"; empty: SimServer::address()
    quint16 discoveryPort = 7070; ///< 0: any free port
};
