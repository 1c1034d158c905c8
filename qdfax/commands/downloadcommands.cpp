#include "command.h"

#include "discover.h"
#include "displaytext.h"
#include "downloader.h"
#include "faxlog.h"
#include "faxserver.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "terminal.h"
#include "text.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QNetworkAccessManager>
#include <QTimer>

#include <algorithm>

namespace {

const int defaultSearchTime = 3000; // ms
const int longestSearchTime = 3600 * 1000;

/// An access manager that counts received bytes. The Downloader reads the reply and reports no lengths, so
/// the bytes are counted before. Requests the document uncompressed: truncation of a compressed one would go
/// unnoticed.
class CountingManager : public QNetworkAccessManager
{
public:
    qint64 received() const { return m_received; }
    /// The Content-Length; -1 without one.
    qint64 expected() const { return m_expected; }
    /// The Content-Encoding that the server used unasked; empty if none.
    QString encoding() const { return m_encoding; }

protected:
    QNetworkReply* createRequest(Operation op, const QNetworkRequest& request, QIODevice* data) override
    {
        QNetworkRequest plain(request);
        plain.setRawHeader("Accept-Encoding", "identity");
        QNetworkReply* reply = QNetworkAccessManager::createRequest(op, plain, data);
        connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] {
            const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
            m_expected = length.isValid() ? length.toLongLong() : -1;
            m_encoding = QString::fromLatin1(reply->rawHeader("Content-Encoding")).trimmed();
            if (m_encoding.compare(QLatin1String("identity"), Qt::CaseInsensitive) == 0)
                m_encoding.clear();
        });
        connect(reply, &QNetworkReply::readyRead, this,
                [this, reply] { m_received += reply->bytesAvailable(); });
        return reply;
    }

private:
    qint64 m_received{0};
    qint64 m_expected{-1};
    QString m_encoding;
};

/// A line with a bar, the size, the rate and the time left.
class DownloadProgress
{
public:
    explicit DownloadProgress(const QString& name)
        : m_name(name)
    {
        m_clock.start();
    }

    void show(qint64 received, qint64 total)
    {
        const qint64 now = m_clock.elapsed();
        if (m_shown >= 0 && now - m_shown < 100) // ms
            return;
        m_shown = now;
        const qint64 rate = now > 0 ? received * 1000 / now : 0;
        m_line.show(transferText(m_name, received, total, rate, Terminal::ProgressLine::width()));
    }

private:
    QString m_name;
    QElapsedTimer m_clock;
    qint64 m_shown{-1};
    Terminal::ProgressLine m_line;
};

int statusOf(const ReplyWatch::Outcome& last)
{
    switch (last.httpStatus) {
    case 401:
        return ExitStatus::AuthError;
    case 403:
        return ExitStatus::AccessDenied;
    case 404:
        return ExitStatus::NotFound;
    case 405:
        return ExitStatus::NotPermitted;
    default:
        return ExitStatus::Error;
    }
}

/// Whether the file is a web page by its first bytes, whatever its Content-Type.
bool holdsWebPage(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && ReplyWatch::beginsWebPage(file.read(ReplyWatch::bodyHead));
}

/// Why a name chosen by the server is refused; empty if it is accepted.
QString nameProblem(const QString& name)
{
    const int longestName = 255; // bytes, of most file systems
    if (std::any_of(name.begin(), name.end(), [](QChar c) { return c.category() == QChar::Other_Control; }))
        return Text::tr("it holds control characters");
    if (QFile::encodeName(name).size() > longestName)
        return Text::tr("it is longer than %1 bytes").arg(longestName);
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')))
        return Text::tr("it is not one for a new file");
    return QString();
}

/// The partial file left on disk, as a sentence; an empty file is removed.
QString leftover(const QString& path, int httpStatus)
{
    const QFileInfo info(path);
    if (!info.isFile())
        return QString();
    if (info.size() == 0) {
        QFile::remove(path);
        return QString();
    }
    const QString shown = QDir::toNativeSeparators(path);
    if (httpStatus >= 300)
        return Text::tr(" The file %1 holds what the server said, and not the document.").arg(shown);
    return Text::tr(" The partial file %1 (%2) is left.").arg(shown, sizeText(info.size()));
}

/// Fetches one file. The library counts a redirect as the file and tells no lengths, so status and lengths
/// are compared here.
int fetch(const Invocation& call, const QUrl& url, bool secure, const QString& folder, const QString& path)
{
    CountingManager manager;
    ReplyWatch watch(manager);
    QEventLoop loop;
    QTimer silence;
    bool timedOut = false;
    bool finished = false;
    Downloader::Error error = Downloader::NoError;
    QString written = path;

    Downloader downloader(nullptr, manager);
    downloader.setDownloadPath(folder);
    QObject::connect(&downloader, &Downloader::downloadFinished, &loop, [&](const QString& filePath) {
        finished = true;
        written = filePath;
    });
    QObject::connect(&downloader, &Downloader::downloadError, &loop, [&](Downloader::Error what) {
        if (error == Downloader::NoError)
            error = what;
    });
    // finished() and not the error signal: only then the reason is known. Queued, since the Downloader's slot
    // runs after the manager's.
    QObject::connect(&manager, &QNetworkAccessManager::finished, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    silence.setSingleShot(true);
    QObject::connect(&silence, &QTimer::timeout, &loop, [&] {
        timedOut = true;
        loop.quit();
    });
    QObject::connect(&watch, &ReplyWatch::activity, &silence, [&] {
        if (silence.isActive())
            silence.start();
    });

    QElapsedTimer clock;
    clock.start();
    {
        DownloadProgress progress(QFileInfo(path).fileName());
        QObject::connect(&watch, &ReplyWatch::downloading, &loop,
                         [&](qint64 received, qint64 total) { progress.show(received, total); });
        downloader.download(url, secure);
        if (error == Downloader::NoError) {
            Terminal::setLastWords(Text::tr("qdfax: Interrupted. The partial file %1 is left.")
                                       .arg(printable(QDir::toNativeSeparators(path))));
            if (call.timeout() > 0)
                silence.start(call.timeout());
            loop.exec();
        }
    }
    Terminal::setLastWords(QString());

    const ReplyWatch::Outcome last = watch.last();
    const QString source = url.authority().section(QLatin1Char('@'), -1);
    if (timedOut) {
        return call.fail(
            ExitStatus::TimeOut,
            Text::tr("Downloading from %1: nothing was heard for %2. Try again later, or allow more "
                     "with --timeout.%3")
                .arg(source, durationText(call.timeout() / 1000), leftover(written, 0)));
    }
    if (error == Downloader::FileError) {
        return call.fail(ExitStatus::File,
                         Text::tr("The file %1 cannot be written. Check permissions and free space.%2")
                             .arg(QDir::toNativeSeparators(written), leftover(written, 0)));
    }
    if (!finished || last.httpStatus != 200) {
        QString why = Session::networkReason(last, secure);
        if (last.error == QNetworkReply::RemoteHostClosedError && manager.received() > 0)
            why = Text::tr("the connection ended before the file did. Try again.");
        if (last.httpStatus == 401 && url.userName().isEmpty())
            why = Text::tr("it wants a login, and none was sent, since this is not the configured server.");
        if (why.isEmpty())
            why = Text::tr("the server answered \"%1 %2\".").arg(last.httpStatus).arg(last.reason);
        return call.fail(statusOf(last), Text::tr("Downloading from %1 failed: %2%3")
                                             .arg(source, why, leftover(written, last.httpStatus)));
    }
    if (!manager.encoding().isEmpty()) {
        return call.fail(ExitStatus::InvalidReply,
                         Text::tr("Downloading from %1 failed: the server packed the document (%2), "
                                  "although it was asked not to. The file %3 holds what it sent.")
                             .arg(source, manager.encoding(), QDir::toNativeSeparators(written)));
    }
    if (last.isWebPage || holdsWebPage(written)) {
        return call.fail(ExitStatus::InvalidReply,
                         Text::tr("Downloading from %1 failed: a web page came instead of a document. "
                                  "The file %2 holds it.")
                             .arg(source, QDir::toNativeSeparators(written)));
    }
    const qint64 size = QFileInfo(written).size();
    if (size != manager.received()) {
        return call.fail(ExitStatus::File,
                         Text::tr("%1 arrived, but the file holds %2. Is the disk full?%3")
                             .arg(sizeText(manager.received()), sizeText(size), leftover(written, 0)));
    }
    // the access manager does not report a connection that is closed too early
    if (manager.expected() >= 0 && size != manager.expected()) {
        return call.fail(
            ExitStatus::Error,
            Text::tr("Downloading from %1 failed: only %2 of %3 arrived. Try again.%4")
                .arg(source, sizeText(size), sizeText(manager.expected()), leftover(written, 0)));
    }

    if (call.isJson()) {
        call.json(QJsonObject{{QStringLiteral("file"), QDir::toNativeSeparators(written)},
                              {QStringLiteral("bytes"), size},
                              {QStringLiteral("url"), urlText(url.adjusted(QUrl::RemoveUserInfo))}});
    } else {
        const qint64 ms = std::max<qint64>(1, clock.elapsed());
        call.line(Text::tr("%1: %2 in %3, %4/s")
                      .arg(QDir::toNativeSeparators(written), sizeText(size), durationText(ms / 1000),
                           sizeText(size * 1000 / ms)));
    }
    return ExitStatus::Ok;
}

int download(Invocation& call)
{
    QString error;
    if (call.isSet("inbox") == !call.arguments().isEmpty())
        return call.failUsage(Text::tr("Give either a URL or --inbox N."));
    int number = 0;
    if (call.isSet("inbox")) {
        const auto n = parseInteger(call.value("inbox"), 1, 1000000, &error);
        if (!n)
            return call.failOption("inbox", error);
        number = *n;
    }
    const QString folder = call.isSet("to") ? call.value("to") : QStringLiteral(".");
    if (!QFileInfo(folder).isDir())
        return call.fail(ExitStatus::File, Text::tr("There is no folder %1.").arg(folder));

    Session session(call);
    QUrl url;
    if (number > 0) {
        if (!session.open())
            return session.status();
        FaxLog log(FaxLog::Inbox);
        // the server's own order need not be that of the times
        if (!log.fetch(session, 0))
            return session.status();
        if (number > log.received().size()) {
            return call.fail(
                ExitStatus::NotFound,
                Text::tr("There are %n received faxes, so there is no number %1.", "", log.size())
                    .arg(number));
        }
        url = log.received().at(number - 1)->location();
        if (url.path().isEmpty()) {
            return call.fail(ExitStatus::NotFound, Text::tr("The server names no document for this fax."));
        }
    } else {
        url = QUrl(call.arguments().at(0), QUrl::TolerantMode);
        if (!session.attach())
            return session.status();
    }
    const FaxServer& server = session.server();
    if (url.isRelative() && url.host().isEmpty() && url.path().startsWith(QLatin1Char('/')))
        url = serverUrl(server.address(), server.useSSL()).resolved(url);
    if (!url.isValid() || url.host().isEmpty() ||
        (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https"))) {
        return call.failUsage(
            Text::tr("\"%1\" is not a URL of a document; it begins with http:// or https://.")
                .arg(urlText(url)));
    }

    // The URL was chosen by a server, and could name any host: send the credentials to the own server only.
    bool secure = url.scheme() == QLatin1String("https");
    url.setUserInfo(QString());
    if (namesServer(url, server.address(), server.useSSL())) {
        secure = server.useSSL();
        url.setUserName(server.login(), QUrl::DecodedMode);
        url.setPassword(server.password(), QUrl::DecodedMode);
    }

    const QString name = QFileInfo(url.path(QUrl::FullyDecoded)).fileName();
    const QString path = QDir(folder).filePath(name);
    const QString problem = nameProblem(name);
    if (!problem.isEmpty()) {
        return call.fail(ExitStatus::File,
                         Text::tr("The name \"%1\", which the server gives the document, is refused: %2.")
                             .arg(cutToWidth(printable(name), 60), problem));
    }
    const QFileInfo target(path);
    if ((target.exists() || target.isSymLink()) && !call.isSet("overwrite")) {
        return call.fail(
            ExitStatus::File,
            Text::tr("The file %1 is there already. Choose another folder by --to, or replace it "
                     "with --overwrite.")
                .arg(QDir::toNativeSeparators(path)));
    }
    return fetch(call, url, secure, folder, path);
}

int discover(Invocation& call)
{
    int time = defaultSearchTime;
    if (call.isSet("timeout")) {
        QString error;
        const auto ms = parseInteger(call.value("timeout"), 1, longestSearchTime, &error);
        if (!ms)
            return call.failOption("timeout", error);
        time = *ms;
    }
    QStringList known;
    QJsonArray found;
    QEventLoop loop;
    Discover search;
    QObject::connect(&search, &Discover::discoveredEntry, &loop, [&](const DiscoverEntry& entry) {
        // each server answers several times; one without an address is unusable
        if (entry.inetAddr.isEmpty() || known.contains(entry.inetAddr))
            return;
        known.append(entry.inetAddr);
        if (call.isJson()) {
            found.append(QJsonObject{{QStringLiteral("address"), entry.inetAddr},
                                     {QStringLiteral("model"), entry.model},
                                     {QStringLiteral("version"), entry.version}});
            return;
        }
        call.line(entry.inetAddr.leftJustified(24) + QLatin1Char(' ') + entry.model.leftJustified(12) +
                  QLatin1Char(' ') + entry.version);
        Terminal::outputFailed(); // flushes: each line when the server is found
    });
    QObject::connect(&search, &Discover::timeOutDiscover, &loop, &QEventLoop::quit);
    search.startDiscover(time);
    loop.exec();
    if (call.isJson())
        call.json(found);
    if (known.isEmpty()) {
        return call.fail(
            ExitStatus::NothingFound,
            Text::tr("No fax server answered within %1 ms. It may be in another network: add it by "
                     "its address.")
                .arg(time));
    }
    return ExitStatus::Ok;
}

} // namespace

QVector<Command> downloadCommands()
{
    Command downloadCommand;
    downloadCommand.name = QStringLiteral("download");
    downloadCommand.arguments = QStringLiteral("URL | --inbox N");
    downloadCommand.summary = Text::tr("Download a received document");
    downloadCommand.description = Text::tr(
        "The file is named as the server names it. Login and password go to the configured server only;\n"
        "a URL of another host is fetched without them. What was interrupted stays, and is named.");
    downloadCommand.examples = QStringList{QStringLiteral("qdfax download --inbox 1"),
                                           QStringLiteral("qdfax download --inbox 3 --to ~/faxes"),
                                           QStringLiteral("qdfax inbox --json | jq -r '.[].location' | "
                                                          "xargs -n 1 qdfax download --to ~/faxes")};
    downloadCommand.options = {
        {QStringLiteral("inbox"),
         Text::tr("The document of the Nth entry of \"qdfax inbox\"; 1 is the newest."), QStringLiteral("N")},
        {QStringLiteral("to"), Text::tr("Put it into this folder and not the current one."),
         QStringLiteral("DIR")},
        {QStringLiteral("overwrite"), Text::tr("Replace a file of the same name.")}};
    downloadCommand.mostArguments = 1;
    downloadCommand.run = download;

    Command discoverCommand;
    discoverCommand.name = QStringLiteral("discover");
    discoverCommand.summary = Text::tr("Find fax servers on the local network");
    discoverCommand.description =
        Text::tr("Broadcasts a query and prints each server when its answer comes.");
    discoverCommand.examples = QStringList{QStringLiteral("qdfax discover"),
                                           QStringLiteral("qdfax discover --timeout 10000 --json")};
    discoverCommand.options = {
        {QStringLiteral("timeout"),
         Text::tr("How long to wait for answers, in milliseconds (%1).").arg(defaultSearchTime),
         QStringLiteral("MS")}};
    discoverCommand.run = discover;

    return {downloadCommand, discoverCommand};
}
