// Requests and replies beside what Qt does for the same bytes.

#include "bench.h"
#include "benchserver.h"
#include "simserver.h"
#include "tasks/taskgetquendrainfo.h"

#include <QCoreApplication>

namespace {

/// Text with an ampersand every so many bytes; with none if that is 0.
QByteArray text(int round, int size, int every)
{
    QByteArray bytes(size, 'a');
    for (int i = 0; i < size; ++i)
        bytes[i] = char('a' + (i + round) % 23);
    for (int i = every - 1; every > 0 && i < size; i += every)
        bytes[i] = '&';
    return bytes;
}

void amp(Bench& bench, const char* name, double limit, int every)
{
    const int size = bench.size(100000) * 100;
    FaxManager manager{QPointer<ContactManager>()};
    BareServer server(manager, QStringLiteral("127.0.0.1"));
    BareTask task(server);
    bench.ratio(
        name, limit,
        [&](int round) {
            const QByteArray bytes = text(round, size, every);
            QString repaired;
            const double time = milliseconds([&] { repaired = task.fixAmp(bytes); });
            if (repaired.size() != size + 4 * bytes.count('&'))
                fail(name);
            return time;
        },
        [&](int round) {
            const QByteArray bytes = text(round, size, every);
            QString decoded;
            const double time = milliseconds([&] { decoded = QString::fromUtf8(bytes); });
            if (decoded.size() != size)
                fail(name);
            return time;
        },
        21);
}

/// Sends the next identity request when one has been answered.
class InfoRequests : public QObject
{
public:
    InfoRequests(FaxServer& server, int count)
        : m_server(server)
        , m_left(count)
    {}

    void run()
    {
        next();
        m_loop.exec();
    }

private:
    void next()
    {
        if (m_left-- == 0)
            return m_loop.quit();
        auto* task = static_cast<TaskGetQuendraInfo*>(m_server.addTask(Task::GetQuendraInfo));
        connect(task, &TaskGetQuendraInfo::doneGetFaxInfo, this, [this] { next(); });
        connect(task, &Task::errorExecute, this, [] { fail("task-overhead"); });
        task->execute();
    }

    FaxServer& m_server;
    int m_left;
    QEventLoop m_loop;
};

/// The same with nothing but Qt.
class PlainRequests : public QObject
{
public:
    PlainRequests(QNetworkAccessManager& manager, const QUrl& url, int count)
        : m_manager(manager)
        , m_url(url)
        , m_left(count)
    {}

    void run()
    {
        next();
        m_loop.exec();
    }

private:
    void next()
    {
        if (m_left-- == 0)
            return m_loop.quit();
        QNetworkReply* reply = m_manager.get(plainRequest(m_url));
        connect(reply, &QNetworkReply::finished, this, [this, reply] {
            if (reply->error() != QNetworkReply::NoError || reply->readAll().isEmpty())
                fail("plain task-overhead");
            reply->deleteLater();
            next();
        });
    }

    QNetworkAccessManager& m_manager;
    QUrl m_url;
    int m_left;
    QEventLoop m_loop;
};

void taskOverhead(Bench& bench)
{
    if (!bench.wants("task-overhead") || !bench.hasSize(1, 10000))
        return;
    SimOptions options;
    options.keepRequests = false;
    SimServer sim(options);
    if (!sim.start())
        fail("no server");
    FaxManager manager{QPointer<ContactManager>()};
    BareServer server(manager, sim.address());
    QNetworkAccessManager plain;
    const int count = bench.size(2000);
    bench.ratio(
        "task-overhead", 1.15,
        [&](int) {
            InfoRequests requests(server, count);
            return milliseconds([&] { requests.run(); });
        },
        [&](int) {
            PlainRequests requests(plain, sim.url(QStringLiteral("/qdws/v1/about")), count);
            return milliseconds([&] { requests.run(); });
        });
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    amp(bench, "amp-clean", 1.1, 0);
    amp(bench, "amp-full", 3.0, 50);
    taskOverhead(bench);
    return bench.exitCode();
}
