// A client that runs for a long time against a server that changes and sometimes fails: does it leak, does it
// lose data?
//
// soak MINUTES [SEED [KIB]]     KIB: leak so much per second, to check that it is detected
//
// The server is a second process of this program, so that its memory is not counted.

#include "contactworld.h"
#include "downloader.h"
#include "faxdocument.h"
#include "faxkit.h"
#include "inboundfaxentry.h"
#include "operations.h"
#include "quendracontact.h"
#include "shorthand.h"
#include "tasks/taskabort.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "tasks/taskschedule.h"

#include <QDataStream>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>

#include <poll.h>
#include <unistd.h>

namespace {

/// The four books as a line, each given by whether it is global and whether it is one of groups.
template <typename Book>
QByteArray spelled(Book book)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << book(false, false) << book(false, true) << book(true, false) << book(true, true);
    return bytes.toBase64();
}

// --- The server: commands of one letter on standard input

const char quiet = 'q'; ///< no more changes, no more faults
const char tell = 't';  ///< the books, in a line

int serve(quint32 seed)
{
    SimOptions options = SynchronisedWorld::books(400, 5, seed);
    options.inbound = 20;
    options.keepRequests = false;
    options.keepBodyLimit = 0;
    SimServer sim(options);
    for (const char* fault : {"cut,chance=1", "truncated,chance=1", "delay=1000,chance=1"}) {
        if (!sim.addFault(s(fault)))
            return 2;
    }
    if (!sim.start())
        return 2;
    std::printf("%s\n", qPrintable(sim.address()));
    std::fflush(stdout);
    bool changes = true;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    for (;;) {
        if (::poll(&input, 1, 500) == 0) { // two changes a second
            if (changes)
                sim.stepChanges(1);
            continue;
        }
        char command = 0;
        if (::read(STDIN_FILENO, &command, 1) != 1)
            return 0;
        if (command == quiet) {
            changes = false;
            sim.clearFaults();
        } else if (command == tell) {
            const auto book = [&sim](bool global, bool groups) {
                return ContactWorld::onServer(sim, s("alice"), global, groups);
            };
            std::printf("%s\n", spelled(book).constData());
            std::fflush(stdout);
        }
    }
}

// --- The client

/// Memory in KiB, and open files, each second.
struct Samples
{
    QVector<int> rss;
    QVector<int> fds;

    void take()
    {
        const QByteArray pages = readFile(s("/proc/self/statm")).split(' ').value(1);
        rss.append(int(pages.toLong() * (::sysconf(_SC_PAGESIZE) / 1024)));
        const QDir files(s("/proc/self/fd"));
        fds.append(files.entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size());
    }
    /// The period over which a median is taken, and the start of the first.
    int window() const { return std::max(1, rss.size() / 6); }
    int begin() const { return std::min(window(), 300); }
    /// The median after the first minutes, and the one at the end.
    std::pair<int, int> medians(const QVector<int>& values) const
    {
        const auto median = [&](int from) {
            QVector<int> part = values.mid(from, window());
            std::sort(part.begin(), part.end());
            return part.value(part.size() / 2);
        };
        return {median(begin()), median(values.size() - window())};
    }
};

class Soak
{
public:
    explicit Soak(const QString& address)
        : m_server(m_world.faxes->addServer(address, false, s("alice"), s("secret")))
    {
        m_world.watch(m_server->contactProvider());
        m_works = m_world.settleLogin(m_server);
        // what a submission carries
        writeFile(m_folder.filePath(s("fax.txt")), QByteArray(20000, 'x'));
    }

    bool works() const { return m_works; }
    ContactWorld& world() { return m_world; }
    ContactProvider* provider() { return m_server->contactProvider(); }

    void begin()
    {
        QObject::connect(m_world.contacts, &ContactManager::onSyncStop, &m_context,
                         [this] { later([this] { synchronise(); }); });
        synchronise();
        readLogs();
        submit();
        download();
    }

    /// Starts no more operations, and waits for the running ones. False if one never ends.
    bool end()
    {
        m_ends = true;
        return spinUntil([this] { return m_running == 0 && !m_world.contacts->isSync(); }, 60);
    }

    QString figures() const
    {
        return QString::asprintf(
            "%d books synchronised (%d failed), %d logs, %d faxes, %d downloads, %d other failures",
            m_world.counts->ends, m_world.counts->errors, m_logs, m_faxes, m_downloads, m_failures);
    }

private:
    void later(const std::function<void()>& next)
    {
        if (!m_ends)
            QTimer::singleShot(50, &m_context, next);
    }

    void synchronise()
    {
        if (m_ends || m_world.contacts->isSync())
            return;
        const bool full = ++m_rounds % 20 == 0;
        const auto books = provider()->contactsTypeList();
        for (const ContactList::Type book : books)
            provider()->syncContacts(book, full);
    }

    /// Runs a task; @p next follows when it has gone.
    template <typename T, typename Signal, typename Slot>
    void run(T* task, Signal done, Slot slot, const std::function<void()>& next)
    {
        ++m_running;
        QObject::connect(task, done, &m_context, slot);
        QObject::connect(task, &Task::errorExecute, &m_context, [this] { ++m_failures; });
        QObject::connect(task, &QObject::destroyed, &m_context, [this, next] {
            --m_running;
            later(next);
        });
        task->execute();
    }

    template <typename T>
    T* task(Task::Type type)
    {
        return qobject_cast<T*>(operation(type).make(*m_server));
    }

    template <typename T, typename Signal, typename Slot>
    void readLog(Task::Type type, Signal done, Slot slot)
    {
        auto* log = task<T>(type);
        log->setCompleteLimit(50);
        run(log, done, slot, [this] { readLogs(); });
    }

    void readLogs()
    {
        using Queue = TaskGetFaxEntry;
        using Sent = TaskGetOutboundFaxEntry;
        using Received = TaskGetInboundFaxEntry;
        const auto count = [this] { ++m_logs; };
        switch (++m_turn % 3) {
        case 0:
            return readLog<Queue>(Task::GetFaxEntry, &Queue::doneGetFaxEntry, count);
        case 1:
            return readLog<Sent>(Task::GetOutboundFaxEntry, &Sent::doneGetFaxEntry, count);
        default:
            return readLog<Received>(Task::GetInboundFaxEntry, &Received::doneGetInboundFaxEntry,
                                     [this](const InboundFaxEntriesPtrListPtr& entries) {
                                         ++m_logs;
                                         if (!entries->isEmpty())
                                             m_document = entries->at(m_turn % entries->size())->location();
                                     });
        }
    }

    void submit()
    {
        QuendraContact recipient;
        recipient.setFax(s("100"));
        FaxDocument document;
        document.setAttachs(
            {inlineAttach(s("fax.txt"), contentOf(Content::PlainText, m_folder.filePath(s("fax.txt"))))});
        document.recipients().addContact(recipient);
        auto* submission = task<TaskSchedule>(Task::Schedule);
        submission->setFaxDocument(document);
        m_fax.clear();
        run(
            submission, &TaskSchedule::doneFaxSchedule,
            [this](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                ++m_faxes;
                if (!entries->isEmpty())
                    m_fax = entries->first()->entryUrl();
            },
            [this] { m_fax.isEmpty() ? submit() : abort(); });
    }

    void abort()
    {
        auto* aborting = task<TaskAbort>(Task::Abort);
        aborting->setFaxEntryUrl(m_fax);
        run(
            aborting, &TaskAbort::doneAbort, [] {}, [this] { submit(); });
    }

    void download()
    {
        if (m_document.isEmpty())
            return later([this] { download(); });
        QUrl url = m_document;
        url.setUserName(s("alice"));
        url.setPassword(s("secret"));
        auto* downloader = new Downloader(nullptr, m_world.faxes->nam());
        downloader->setDownloadPath(m_folder.path());
        ++m_running;
        QObject::connect(downloader, &QObject::destroyed, &m_context, [this] {
            --m_running;
            later([this] { download(); });
        });
        QObject::connect(downloader, &Downloader::downloadFinished, &m_context,
                         [this, downloader](const QString& file) {
                             ++m_downloads;
                             QFile::remove(file);
                             downloader->deleteLater();
                         });
        // an error may be reported, and is then counted, twice
        QObject::connect(downloader, &Downloader::downloadError, &m_context, [this, downloader] {
            ++m_failures;
            downloader->deleteLater();
        });
        downloader->download(url, false);
    }

    QTemporaryDir m_folder;
    ContactWorld m_world;
    QPointer<FaxServer> m_server;
    QObject m_context; ///< Context of connections to this; destroyed before the world.
    bool m_works{false};
    bool m_ends{false};
    int m_running{0};
    int m_rounds{0};
    int m_turn{0};
    int m_logs{0};
    int m_faxes{0};
    int m_downloads{0};
    int m_failures{0};
    QUrl m_fax;
    QUrl m_document;
};

int run(double minutes, quint32 seed, int leak)
{
    QTemporaryDir folder;
    qputenv("APPDATA", folder.path().toLocal8Bit());
    QProcess server;
    server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    server.start(QCoreApplication::applicationFilePath(), {s("--server"), QString::number(seed)});
    const auto line = [&server] {
        while (!server.canReadLine() && server.waitForReadyRead(60000)) {
        }
        return server.readLine().trimmed();
    };
    Soak soak(s(line()));
    if (!soak.works()) {
        std::fprintf(stderr, "The server cannot be worked with.\n");
        return 2;
    }
    std::printf("%g minutes, seed %u; 1 %% of the replies cut, 1 %% malformed, 1 %% a second late\n", minutes,
                seed);
    soak.begin();

    Samples samples;
    const int seconds = std::max(1, int(minutes * 60));
    QEventLoop loop;
    QTimer clock;
    QObject::connect(&clock, &QTimer::timeout, &loop, [&] {
        samples.take();
        if (char* lost = leak > 0 ? static_cast<char*>(std::malloc(size_t(leak) * 1024)) : nullptr)
            std::fill(lost, lost + leak * 1024, 'x');
        const int count = samples.rss.size();
        if (count % 60 == 0) {
            std::printf("%3d min: %6d KiB, %3d files, %s\n", count / 60, samples.rss.last(),
                        samples.fds.last(), qPrintable(soak.figures()));
            std::fflush(stdout);
        }
        if (count >= seconds)
            loop.quit();
    });
    clock.start(1000);
    loop.exec();
    clock.stop();

    int failed = 0;
    const auto verdict = [&failed](bool ok, const QString& what) {
        std::printf("%-6s %s\n", ok ? "ok" : "FAILED", qPrintable(what));
        failed += !ok;
    };
    verdict(soak.end(), s("everything that was begun has ended"));
    server.write(&quiet, 1);
    server.waitForBytesWritten();
    server.write(&tell, 1);
    const bool synchronised = soak.world().sync(soak.provider(), false);
    const quint32 source = soak.provider()->sourceId();
    const auto book = [&](bool global, bool groups) { return soak.world().stored(source, global, groups); };
    const int people = book(false, false).size() + book(true, false).size();
    verdict(synchronised && people > 0 && line() == spelled(book),
            s("the store is the server's, %1 contacts").arg(people));
    const SyncCounts& counts = *soak.world().counts;
    verdict(counts.isPaired() && counts.starts > 0,
            QString::asprintf("starts and stops: %d and %d of the manager, %d and %d of the provider",
                              counts.starts, counts.stops, counts.providerStarts, counts.providerStops));
    const auto [rss, laterRss] = samples.medians(samples.rss);
    const auto [fds, laterFds] = samples.medians(samples.fds);
    verdict(laterRss <= rss + rss / 20 + 2048,
            QString::asprintf("memory: %d KiB after the first %d s, %d KiB at the end", rss, samples.begin(),
                              laterRss));
    // the number of open connections varies by one; more is a leak
    verdict(laterFds <= fds + 1, s("open files: %1, then %2").arg(fds).arg(laterFds));
    std::printf("%s; %s\n", failed == 0 ? "passed" : "FAILED", qPrintable(soak.figures()));

    server.closeWriteChannel();
    if (!server.waitForFinished(20000))
        server.kill();
    return failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == s("--server"))
        return serve(arguments.value(2).toUInt());
    bool isNumber = false;
    const double minutes = arguments.value(1).toDouble(&isNumber);
    if (!isNumber || minutes <= 0) {
        std::fprintf(stderr, "Usage: soak MINUTES [SEED [KIB]]\n");
        return 2;
    }
    return run(minutes, arguments.value(2, s("1")).toUInt(), arguments.value(3).toInt());
}
