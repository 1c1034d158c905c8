#include "simclock.h"
#include "simserver.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QTime>

#include <csignal>
#include <cstdio>
#include <mutex>

#include <pthread.h>

namespace {

const char examples[] =
    "A simulated network fax server to develop clients against. It accepts only what the protocol allows "
    "and says on\nstandard error what was wrong with the rest. It ends on SIGINT and SIGTERM.\n\n"
    "Examples:\n"
    "  qdsim --port 8080\n"
    "  qdsim --tls --user alice:secret:global --user bob:word --spool /tmp/faxes --speed 20\n"
    "  qdsim --fail-pattern '000$' --fault status=503,path=/qdws/v1/ofax,method=POST,times=1\n"
    "  qdsim --inbound 10000 --contacts 20000 --groups 100 --changes 5\n\n"
    "Trouble is caused by --fault "
    "KIND[=ARGUMENT][,method=M][,path=PREFIX][,skip=N][,times=N][,chance=PERCENT]. Kinds:\n";

int fail(const QString& text)
{
    static_cast<void>(std::fprintf(stderr, "qdsim: %s\n", qPrintable(text)));
    return 2;
}

/// Reads the users from a file, one NAME:PASSWORD[:RIGHTS] per line; "#" begins a comment line.
bool readUsersFile(const QString& path, QVector<SimUser>* users, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    const int before = users->size();
    // not atEnd(), which is always true for a pipe
    for (QByteArray text; !(text = file.readLine()).isEmpty();) {
        const QString line = QString::fromUtf8(text).trimmed();
        SimUser user;
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (!SimUser::parse(line, &user, error)) {
            *error = QStringLiteral("%1: %2").arg(path, *error);
            return false;
        }
        users->append(user);
    }
    if (users->size() == before) {
        *error = QStringLiteral("%1 names no users").arg(path);
        return false;
    }
    return true;
}

/// Parses the command line; every number is validated.
class CommandLine
{
public:
    CommandLine()
    {
        m_parser.setApplicationDescription(QString::fromLatin1(examples) + SimFault::help());
        m_parser.addHelpOption();
        m_parser.addVersionOption();
        add("port", "Listen on this port; 0, the default, takes a free one.", "PORT");
        add("bind", "Listen on this address (default 127.0.0.1).", "ADDRESS");
        add("ipv6", "Listen on ::1 as well.");
        add("tls", "Speak HTTPS with a self-signed certificate made at start.");
        add("gzip", "Compress answers for clients that accept it.");
        add("user",
            "A user (default alice:secret:global). Rights: global (may change the global book), admin, "
            "nosend, readonly. May be repeated.",
            "NAME:PASSWORD[:RIGHTS]");
        add("users", "Read users from a file, one a line.", "FILE");
        add("model", "Model of the server (default QDF40X).", "MODEL");
        add("firmware", "Firmware version of the server (default 3.6.1).", "VERSION");
        add("speed", "How much faster faxes move than a second a page; 0: not at all.", "FACTOR");
        add("fail-pattern", "Faxes to numbers that match this regular expression fail.", "REGEX");
        add("spool", "Store received attachments here, one folder a submission.", "DIR");
        add("state", "Keep the server's state here from run to run.", "DIR");
        add("record",
            "Write every exchange into this new or empty folder, as a readable file each; credentials are "
            "replaced.",
            "DIR");
        add("clock",
            "Begin at this time (UTC, yyyy-MM-ddThh:mm:ss) and let a second pass with every request but "
            "GET, so that two runs answer alike.",
            "TIME");
        add("inbound", "Fill the inbound log with so many faxes.", "N");
        add("huge", "Add one received document of so many MB, made while it is downloaded.", "MB");
        add("contacts", "Fill every book, the global one and each user's, with so many people.", "N");
        add("groups", "Fill every book with so many groups.", "N");
        add("changes", "Add, edit and delete so many random contacts and groups a second.", "RATE");
        add("seed", "Seed of everything that is made up (default 1).", "N");
        add("discovery",
            "Answer discovery queries on UDP at this address: a broadcast address or 0.0.0.0. Off by "
            "default.",
            "ADDRESS");
        add("discovery-port", "UDP port of discovery (default 7070).", "PORT");
        add("announce", "The address that discovery replies name (default: the one listened on).", "ADDRESS");
        add("fault", "Cause trouble, see above. May be repeated.", "SPEC");
    }

    void add(const char* name, const QByteArray& help, const char* value = "")
    {
        m_parser.addOption(QCommandLineOption(QString::fromLatin1(name), QString::fromUtf8(help),
                                              QString::fromLatin1(value)));
    }

    /// False with a sentence in @p error if something cannot be read.
    bool read(SimOptions* options, QStringList* faults, QString* error)
    {
        m_parser.process(*QCoreApplication::instance());
        if (!m_parser.positionalArguments().isEmpty())
            m_error =
                QStringLiteral("unexpected argument \"%1\"").arg(m_parser.positionalArguments().constFirst());
        options->port = static_cast<quint16>(number("port", 0, 65535, 0));
        options->bind = text("bind", options->bind);
        options->bindIpv6 = isSet("ipv6");
        options->tls = isSet("tls");
        options->compress = isSet("gzip");
        options->model = text("model", options->model);
        options->version = text("firmware", options->version);
        options->speed = number("speed", 0, 1e6, 1);
        options->failPattern = text("fail-pattern", QString());
        options->spoolDir = text("spool", QString());
        options->stateDir = text("state", QString());
        options->recordDir = text("record", QString());
        options->clockStart = SimClock::fromUtcText(text("clock", QString()));
        if (isSet("clock") && options->clockStart == 0)
            m_error = QStringLiteral("--clock must be a time like 2026-11-15T14:30:00");
        options->inbound = static_cast<int>(number("inbound", 0, 1e6, 0));
        options->hugeDocument = static_cast<qint64>(number("huge", 0, 4000, 0)) << 20;
        options->contacts = static_cast<int>(number("contacts", 0, 1e6, 0));
        options->groups = static_cast<int>(number("groups", 0, 1e5, 0));
        options->changesPerSecond = number("changes", 0, 1e5, 0);
        options->seed = static_cast<quint32>(number("seed", 0, 4294967295.0, 1));
        options->discoveryAddress = text("discovery", QString());
        options->discoveryPort = static_cast<quint16>(number("discovery-port", 0, 65535, 7070));
        options->discoveryAnnounce = text("announce", QString());
        readUsers(options);
        if (!QRegularExpression(options->failPattern).isValid())
            m_error = QStringLiteral("--fail-pattern is no regular expression");
        *faults = m_parser.values(QStringLiteral("fault"));
        *error = m_error;
        return m_error.isEmpty();
    }

private:
    bool isSet(const char* name) const { return m_parser.isSet(QString::fromLatin1(name)); }
    QString text(const char* name, const QString& standard) const
    {
        return isSet(name) ? m_parser.value(QString::fromLatin1(name)) : standard;
    }
    double number(const char* name, double least, double most, double standard)
    {
        if (!isSet(name))
            return standard;
        bool isNumber = false;
        const double value = m_parser.value(QString::fromLatin1(name)).toDouble(&isNumber);
        if (!isNumber || value < least || value > most)
            m_error = QStringLiteral("--%1 must be a number from %2 to %3")
                          .arg(QLatin1String(name))
                          .arg(least)
                          .arg(most);
        return value;
    }
    void readUsers(SimOptions* options)
    {
        const QStringList users = m_parser.values(QStringLiteral("user"));
        for (const QString& text : users) {
            SimUser user;
            if (SimUser::parse(text, &user, &m_error))
                options->users.append(user);
        }
        if (isSet("users"))
            readUsersFile(text("users", QString()), &options->users, &m_error);
    }

    QCommandLineParser m_parser;
    QString m_error;
};

void logLine(const QString& line)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    const QByteArray time = QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz")).toLatin1();
    static_cast<void>(std::fprintf(stderr, "%s %s\n", time.constData(), line.toUtf8().constData()));
}

} // namespace

int main(int argc, char** argv)
{
    // Blocked before any thread starts, so that all threads inherit the mask and sigwait() gets the signals.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("qdsim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QDSIM_VERSION));

    CommandLine commandLine;
    SimOptions options;
    QStringList faults;
    QString error;
    if (!commandLine.read(&options, &faults, &error))
        return fail(error);
    options.keepRequests = false; // not used here, and would grow for days
    options.keepBodyLimit = 0;
    SimServer server(options);
    for (const QString& fault : qAsConst(faults)) {
        if (!server.addFault(fault, &error))
            return fail(error);
    }
    server.setLog(logLine);
    if (!server.start(&error))
        return fail(error);
    std::printf("qdsim listening on %s\n", qPrintable(server.url().toString()));
    static_cast<void>(std::fflush(stdout));

    int signal = 0;
    sigwait(&endSignals, &signal);
    server.stop();
    return 0;
}
