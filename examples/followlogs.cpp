// Follows what a server receives and sends: followlogs ADDRESS LOGIN PASSWORD [ROUNDS]
//
// Prints each fax once, as soon as it is in a log, and asks every two seconds; with ROUNDS it ends after so
// many.

#include "contactmanager.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"

#include <QCoreApplication>
#include <QSet>
#include <QTextStream>
#include <QTimer>

class Follower
{
public:
    explicit Follower(const QPointer<FaxServer>& server)
        : m_server(server)
    {}

    void ask()
    {
        auto* received = static_cast<TaskGetInboundFaxEntry*>(m_server->addTask(Task::GetInboundFaxEntry));
        QObject::connect(received, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
                         [this](const InboundFaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries)
                                 show(entry->location(), QStringLiteral("received"), entry->remoteId(),
                                      entry->pages());
                         });
        received->execute();

        auto* sent = static_cast<TaskGetOutboundFaxEntry*>(m_server->addTask(Task::GetOutboundFaxEntry));
        QObject::connect(sent, &TaskGetOutboundFaxEntry::doneGetFaxEntry,
                         [this](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries)
                                 show(entry->entryUrl(), QStringLiteral("sent"), entry->recipient(),
                                      entry->pages());
                         });
        sent->execute();
    }

private:
    void show(const QUrl& url, const QString& what, const QString& whom, int pages)
    {
        if (m_seen.contains(url))
            return;
        m_seen.insert(url);
        m_out << what << '\t' << whom << '\t' << pages << " pages\t" << url.toDisplayString() << Qt::endl;
    }

    QPointer<FaxServer> m_server;
    QSet<QUrl> m_seen;
    QTextStream m_out{stdout};
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4)
        qFatal("usage: followlogs ADDRESS LOGIN PASSWORD [ROUNDS]");
    int rounds = arguments.value(4).toInt();

    FaxManager manager{QPointer<ContactManager>()};
    QPointer<FaxServer> server = manager.addServer(arguments[1], false, arguments[2], arguments[3]);
    Follower follower(server);

    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (arguments.size() > 4 && rounds-- == 0)
            app.quit();
        else if (server->lastStatus() == Task::Ok)
            follower.ask();
        else if (server->lastStatus() != Task::Unknown) // Unknown: the login has not ended
            app.exit(1);
    });
    timer.start(2000);
    return app.exec();
}
