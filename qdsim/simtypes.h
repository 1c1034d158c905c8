#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>

/// @brief One received request, as it was on the wire.
///
/// A value, filled in three steps: the transport sets what was received, the routing sets #user, and the
/// answer sets #status and #refusal. Copies are cheap (Qt's implicit sharing).
struct SimRequest
{
    QString method;
    QByteArray target;  ///< request target exactly as received, including percent-encoding and query
    QString path;       ///< path of the target, percent-decoded ("+" stays "+")
    QByteArray query;   ///< the part after "?", not decoded; null without "?"
    QByteArray rawHead; ///< request line and header lines exactly as received, up to the empty line
    QVector<QPair<QByteArray, QByteArray>> headers; ///< in order of arrival, values trimmed
    QByteArray body;                                ///< kept up to SimOptions::keepBodyLimit bytes
    qint64 bodySize = 0;                            ///< length of the whole body in bytes
    bool secure = false;                            ///< received over TLS
    QString user;                                   ///< name of the authenticated user, empty if none
    int status = 0;      ///< HTTP status of the reply; 0: connection cut, or no reply yet
    bool faulty = false; ///< a fault was injected
    QString refusal;     ///< why the request was refused; empty if it was accepted

    /// The value of the first header with this name (case-insensitive), null if there is none.
    QByteArray header(const char* name) const;
    bool hasHeader(const char* name) const;
};

/// @brief The reply to one request, including the faults to inject into its transmission.
struct SimReply
{
    int status = 200;
    QByteArray contentType = QByteArrayLiteral("application/xml");
    QVector<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;

    /// Instead of #body: returns any range of a document of #size bytes.
    std::function<QByteArray(qint64 offset, qint64 length)> generator;
    qint64 size = 0;

    QString refusal;         ///< readable reason if the request was rejected
    int delayMs = 0;         ///< wait before the first byte
    bool hangUp = false;     ///< close the connection instead of replying
    qint64 cutAfter = -1;    ///< close the connection after this number of bytes of the body; -1: do not
    int dripMs = 0;          ///< send the body byte by byte, with this delay in ms; 0: at once
    bool compressed = false; ///< compress if the client accepts it

    qint64 length() const { return generator ? size : body.size(); }

    /// An XML reply `<reply><message>TEXT</message></reply>` with status 200.
    static SimReply message(const QString& text);
    /// A refusal with a 4xx status; the reason is logged and is the "message" of the body.
    static SimReply refuse(int status, const QString& reason);
};

/// @brief A person: the elements of a contact.
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

/// @brief Schedule options of one fax or a user's defaults; the texts are as on the wire.
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

/// @brief A cover page, of a fax or offered by the server.
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
    bool admin = false;      ///< may read and change every user's faxes, profiles and books ("admin")
    bool noSend = false;     ///< submissions are rejected with 403 ("nosend")
    bool readOnly = false;   ///< changes of any book are rejected with 405 ("readonly")

    SimPerson person;
    bool coverPageEnabled = false;
    QString coverPageName;
    SimSchedule defaults;

    /// Parses "NAME:PASSWORD[:RIGHTS]", with the names of RIGHTS separated by commas. False if the text is
    /// invalid; @p error says why.
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

/// @brief The options of a simulated server. All have working defaults.
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

    double speed = 1;         ///< factor by which faxes are faster than real; 0: they do not progress
    bool manualClock = false; ///< only SimServer::step() advances the clock
    qint64 clockStart = 0;    ///< ms since 1970 UTC; not 0: the clock starts at this time and advances by a
                              ///< second with each request but GET, which makes replies reproducible
    QString failPattern;      ///< regular expression; a fax to a matching number fails

    QString spoolDir;  ///< received attachments are stored here; empty: not stored
    QString stateDir;  ///< the state is loaded and saved here; empty: in memory only
    QString recordDir; ///< every exchange is written here, see SimRecorder; empty: not recorded

    qint64 keepBodyLimit = 1 << 20; ///< bytes kept of each request body and attachment; -1: all

    bool keepRequests = true; ///< for SimServer::requests(); false for a long-running server

    int inbound = 0;             ///< generated entries of the inbound log
    qint64 hugeDocument = 0;     ///< size in bytes of one generated document in the inbound log; 0: none
    int contacts = 0;            ///< generated people in every book
    int groups = 0;              ///< generated groups in every book
    quint32 seed = 1;            ///< for all generated data
    double changesPerSecond = 0; ///< rate of generated changes of the books; 0: off

    QString discoveryAddress;     ///< address of the UDP responder; empty: off
    QString discoveryAnnounce;    ///< "inet_addr" in the answers; empty: SimServer::address()
    quint16 discoveryPort = 7070; ///< 0: any free port
};
