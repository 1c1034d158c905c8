// Follows what a server receives, is sending and has sent: followlogs ADDRESS LOGIN PASSWORD [ROUNDS]
//
// Prints each fax once in each state, as soon as it is in it, and asks every two seconds; with ROUNDS it ends
// after so many.

#include "contactmanager.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "tasks/taskgetfaxentry.h"
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
        //! [inbound]
        auto* received = static_cast<TaskGetInboundFaxEntry*>(m_server->addTask(Task::GetInboundFaxEntry));
        QObject::connect(received, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
                         [this](const InboundFaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries)
                                 show(entry->location(), QStringLiteral("received"), entry->remoteId(),
                                      entry->pages());
                         });
        received->execute();
        //! [inbound]

        //! [status]
        auto* sending = static_cast<TaskGetFaxEntry*>(m_server->addTask(Task::GetFaxEntry));
        sending->setTaskEntryType(TaskGetFaxEntry::EntryOutboundStatus);
        QObject::connect(sending, &TaskGetFaxEntry::doneGetFaxEntry,
                         [this](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries) {
                                 const bool waits = entry->state() != BaseFaxEntry::StateSending;
                                 show(entry->entryUrl(),
                                      waits ? QStringLiteral("waiting") : QStringLiteral("sending"),
                                      entry->recipient(), entry->pages());
                             }
                         });
        sending->execute();
        //! [status]

        //! [outbound]
        auto* sent = static_cast<TaskGetOutboundFaxEntry*>(m_server->addTask(Task::GetOutboundFaxEntry));
        QObject::connect(sent, &TaskGetOutboundFaxEntry::doneGetFaxEntry,
                         [this](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries)
                                 show(entry->entryUrl(), QStringLiteral("sent"), entry->recipient(),
                                      entry->pages());
                         });
        sent->execute();
        //! [outbound]
    }

private:
    void show(const QUrl& url, const QString& what, const QString& whom, int pages)
    {
        const auto seen = qMakePair(url, what);
        if (m_seen.contains(seen))
            return;
        m_seen.insert(seen);
        m_out << what << '\t' << whom << '\t' << pages << " pages\t" << url.toDisplayString() << Qt::endl;
    }

    QPointer<FaxServer> m_server;
    QSet<QPair<QUrl, QString>> m_seen;
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
