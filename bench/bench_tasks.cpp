// Requests and replies, compared with Qt's own processing of the same bytes.

#include "bench.h"
#include "benchserver.h"
#include "simserver.h"
#include "tasks/taskgetquendrainfo.h"

#include <QCoreApplication>

#include <functional>

namespace {

/// Text with an ampersand every @p every bytes; without any if that is 0.
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

/// Sequential requests: @p send sends one and calls next() when it has been answered.
class Requests : public QObject
{
public:
    Requests(int count, const std::function<void(Requests&)>& send)
        : m_send(send)
        , m_left(count)
    {}

    void run()
    {
        next();
        m_loop.exec();
    }

    void next()
    {
        if (m_left-- == 0)
            return m_loop.quit();
        m_send(*this);
    }

private:
    std::function<void(Requests&)> m_send;
    int m_left;
    QEventLoop m_loop;
};

void askByTask(Requests& requests, FaxServer& server)
{
    auto* task = static_cast<TaskGetQuendraInfo*>(server.addTask(Task::GetQuendraInfo));
    QObject::connect(task, &TaskGetQuendraInfo::doneGetFaxInfo, &requests, &Requests::next);
    QObject::connect(task, &Task::errorExecute, &requests, [] { fail("task-overhead"); });
    task->execute();
}

/// The same with Qt only.
void askPlainly(Requests& requests, QNetworkAccessManager& manager, const QUrl& url)
{
    QNetworkReply* reply = manager.get(plainRequest(url));
    QObject::connect(reply, &QNetworkReply::finished, &requests, [&requests, reply] {
        if (reply->error() != QNetworkReply::NoError || reply->readAll().isEmpty())
            fail("plain task-overhead");
        reply->deleteLater();
        requests.next();
    });
}

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
            Requests requests(count, [&](Requests& next) { askByTask(next, server); });
            return milliseconds([&] { requests.run(); });
        },
        [&](int) {
            const QUrl url = sim.url(QStringLiteral("/qdws/v1/about"));
            Requests requests(count, [&](Requests& next) { askPlainly(next, plain, url); });
            return milliseconds([&] { requests.run(); });
        });
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    amp(bench, "amp-clean", 1.1, 0);
    amp(bench, "amp-full", 2.5, 50);
    taskOverhead(bench);
    return bench.exitCode();
}
