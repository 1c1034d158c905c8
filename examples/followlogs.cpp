// Follows the faxes that a server receives, is sending and has sent: followlogs ADDRESS LOGIN PASSWORD
// [ROUNDS]
//
// Prints each fax once per state and polls again two seconds after the replies; with ROUNDS it exits after
// this number of polls.

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
    Follower(const QPointer<FaxServer>& server, int rounds)
        : m_server(server)
        , m_rounds(rounds)
    {}

    void ask()
    {
        m_unanswered = 3;
        //! [inbound]
        auto* received = static_cast<TaskGetInboundFaxEntry*>(m_server->addTask(Task::GetInboundFaxEntry));
        QObject::connect(received, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
                         [this](const InboundFaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries)
                                 show(entry->location(), QStringLiteral("received"), entry->remoteId(),
                                      entry->pages());
                             answered();
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
                             answered();
                         });
        sending->execute();
        //! [status]

        //! [outbound]
        auto* sent = static_cast<TaskGetOutboundFaxEntry*>(m_server->addTask(Task::GetOutboundFaxEntry));
        QObject::connect(sent, &TaskGetOutboundFaxEntry::doneGetFaxEntry,
                         [this](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries) {
                                 const auto state = entry->state(); // also failed, aborted or rejected
                                 const bool isSent =
                                     state == BaseFaxEntry::StateSent || state == BaseFaxEntry::StateComplete;
                                 show(entry->entryUrl(),
                                      isSent ? QStringLiteral("sent") : QStringLiteral("not sent"),
                                      entry->recipient(), entry->pages());
                             }
                             answered();
                         });
        sent->execute();
        //! [outbound]
    }

private:
    void answered()
    {
        if (--m_unanswered > 0)
            return;
        if (--m_rounds == 0)
            QCoreApplication::quit();
        else
            QTimer::singleShot(2000, m_server, [this] { ask(); });
    }

    void show(const QUrl& url, const QString& what, const QString& whom, int pages)
    {
        const auto seen = qMakePair(url, what);
        if (m_seen.contains(seen))
            return;
        m_seen.insert(seen);
        m_out << what << '\t' << whom << '\t' << pages << " pages\t" << url.toDisplayString() << Qt::endl;
    }

    QPointer<FaxServer> m_server;
    int m_rounds; // below 1: unlimited
    int m_unanswered{0};
    QSet<QPair<QUrl, QString>> m_seen;
    QTextStream m_out{stdout};
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4)
        qFatal("usage: followlogs ADDRESS LOGIN PASSWORD [ROUNDS]");

    FaxManager manager{QPointer<ContactManager>()};
    QPointer<FaxServer> server = manager.addServer(arguments[1], false, arguments[2], arguments[3]);
    Follower follower(server, arguments.value(4).toInt());

    QObject::connect(server, &FaxServer::changedFaxUser, [&] { follower.ask(); }); // the login is complete
    QObject::connect(server, &FaxServer::changedLastStatus, [&](Task::Status status) {
        if (status == Task::Ok)
            return;
        QTextStream(stdout) << "failed: " << QVariant::fromValue(status).toString() << '\n';
        app.exit(1);
    });
    return app.exec();
}
