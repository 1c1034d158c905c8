// The submission of a large document: its memory compared with the size of the file, its time with reading,
// encoding and posting the same bytes, and how long it blocks the event loop with reading the file.

#include "attach.h"
#include "bench.h"
#include "benchserver.h"
#include "contact.h"
#include "diskdataprovider.h"
#include "gaploop.h"
#include "memory.h"
#include "sink.h"
#include "tasks/taskschedule.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

namespace {

const char* const childArgument = "--submit";

/// A file of a given size, with different content in each round.
class LargeFile
{
public:
    explicit LargeFile(qint64 size)
        : m_size(size)
    {
        QByteArray block = "%PDF-1.4\n";
        quint32 state = 1;
        while (block.size() < 1 << 20) {
            state = state * 1664525u + 1013904223u;
            block.append(char(state >> 24));
        }
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly))
            fail("large file");
        for (qint64 left = size; left > 0; left -= block.size())
            file.write(block.constData(), qMin<qint64>(left, block.size()));
    }

    void change(int round) const
    {
        QFile file(path());
        if (!file.open(QIODevice::ReadWrite))
            fail("large file");
        for (qint64 at = 4096; at < m_size; at += 1 << 20) {
            file.seek(at);
            file.write(QByteArray::number(round));
        }
    }

    QString path() const { return m_dir.filePath(QStringLiteral("large.pdf")); }
    qint64 size() const { return m_size; }

private:
    QTemporaryDir m_dir;
    qint64 m_size;
};

FaxDocument document(const QString& path)
{
    DiskDataProvider provider;
    provider.setFileName(path);
    Content content;
    content.setType(Content::Pdf);
    content.setData(provider);
    Attach attach;
    attach.setLocation(Attach::Inline);
    attach.setName(QStringLiteral("large.pdf"));
    attach.setContent(content);
    Contact recipient;
    recipient.setName(QStringLiteral("Reception"));
    recipient.setFax(QStringLiteral("+1 555 0100"));
    FaxDocument document;
    document.attachs().append(attach);
    document.recipients().addContact(recipient);
    return document;
}

/// Submits a file and waits for the reply. Returns the time when it began.
double submit(FaxServer& server, const QString& path)
{
    auto* task = static_cast<TaskSchedule*>(server.addTask(Task::Schedule));
    task->setFaxDocument(document(path));
    QEventLoop loop;
    QObject::connect(task, &TaskSchedule::doneFaxSchedule, &loop, &QEventLoop::quit);
    QObject::connect(task, &Task::errorExecute, [] { fail("submission"); });
    const double begin = clockMilliseconds();
    task->execute();
    loop.exec();
    return begin;
}

QString addressOf(int port)
{
    return QStringLiteral("127.0.0.1:%1").arg(port);
}

/// Run in a fresh process: submits a small file, so that all code is loaded, and then the large one. Prints
/// the growth of the peak memory in MB.
int child(char** argv)
{
    const QString small = QString::fromLocal8Bit(argv[2]);
    const QString large = QString::fromLocal8Bit(argv[3]);
    FaxManager manager{QPointer<ContactManager>()};
    BareServer server(manager, addressOf(std::atoi(argv[4])));
    submit(server, small);
    resetPeakMemory();
    const double before = memory("VmRSS");
    submit(server, large);
    std::printf("%.3f\n", (memory("VmHWM") - before) / 1024);
    return 0;
}

double submitMemory(const Sink& sink, const LargeFile& small, const LargeFile& large)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
                  {QLatin1String(childArgument), small.path(), large.path(), QString::number(sink.port())});
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        fail("submit-memory");
    bool isNumber = false;
    const double grown = process.readAllStandardOutput().toDouble(&isNumber);
    if (!isNumber || grown <= 0)
        fail("submit-memory, what the process printed");
    return grown;
}

double submitTime(const Sink& sink, const LargeFile& large)
{
    FaxManager manager{QPointer<ContactManager>()};
    BareServer server(manager, addressOf(sink.port()));
    const double begin = submit(server, large.path());
    if (sink.bodySize() < large.size() / 3 * 4)
        fail("submit-time");
    return sink.lastByte() - begin;
}

double plainSubmitTime(const Sink& sink, const LargeFile& large)
{
    QNetworkAccessManager manager;
    const double begin = clockMilliseconds();
    QFile file(large.path());
    if (!file.open(QIODevice::ReadOnly))
        fail("plain submit-time");
    const QByteArray encoded = file.readAll().toBase64();
    const QUrl url(QStringLiteral("http://") + addressOf(sink.port()) + QStringLiteral("/qdws/v1/ofax"));
    if (bodyOf(manager.post(plainRequest(url), encoded)).isEmpty() || sink.bodySize() != encoded.size())
        fail("plain submit-time");
    return sink.lastByte() - begin;
}

double gapSubmit(const Sink& sink, const LargeFile& large)
{
    FaxManager manager{QPointer<ContactManager>()};
    BareServer server(manager, addressOf(sink.port()));
    auto* task = static_cast<TaskSchedule*>(server.addTask(Task::Schedule));
    task->setFaxDocument(document(large.path()));
    GapLoop loop;
    QObject::connect(task, &TaskSchedule::doneFaxSchedule, [&] { loop.quit(); });
    QObject::connect(task, &Task::errorExecute, [] { fail("gap-submit"); });
    return loop.run([&] { task->execute(); });
}

double readTime(const LargeFile& large)
{
    QByteArray bytes;
    const double time = milliseconds([&] {
        QFile file(large.path());
        if (file.open(QIODevice::ReadOnly))
            bytes = file.readAll();
    });
    if (bytes.size() != large.size())
        fail("reading");
    return time;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 5 && std::strcmp(argv[1], childArgument) == 0)
        return child(argv);
    Bench bench(argc, argv);
    if (!bench.wants("submit-memory") && !bench.wants("submit-time") && !bench.wants("gap-submit"))
        return bench.exitCode();

    const Sink sink("<?xml version=\"1.0\" encoding=\"utf-8\"?><fax_entries><fax_entry><state>pending</state>"
                    "</fax_entry></fax_entries>");
    const LargeFile small(1024);
    const LargeFile large(qint64(bench.size(100 * 1024)) * 1024);
    const double megabytes = double(large.size()) / 1024 / 1024;
    bench.ratio(
        "submit-memory", 1.4,
        [&](int round) {
            large.change(round);
            return submitMemory(sink, small, large);
        },
        [&](int) { return megabytes; }, 9);
    bench.ratio(
        "submit-time", 1.0,
        [&](int round) {
            large.change(round);
            return submitTime(sink, large);
        },
        [&](int round) {
            large.change(round + 1);
            return plainSubmitTime(sink, large);
        });
    bench.ratio(
        "gap-submit", 1.5, [&](int) { return gapSubmit(sink, large); }, [&](int) { return readTime(large); },
        5);
    return bench.exitCode();
}
