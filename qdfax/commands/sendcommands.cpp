#include "command.h"

#include "contactcache.h"
#include "displaytext.h"
#include "faxentry.h"
#include "faxfile.h"
#include "faxfollower.h"
#include "faxorder.h"
#include "faxserver.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "tasks/taskabort.h"
#include "tasks/taskreschedule.h"
#include "terminal.h"
#include "text.h"

#include <QElapsedTimer>
#include <QJsonArray>

#include <algorithm>

namespace {

const int defaultInterval = 2;

/// The fax described by the command line, checked as far as possible without the server.
struct FaxRequest
{
    FaxOrder order;
    int interval{defaultInterval}; ///< Seconds between two polls, when waiting for the end.
};

/// The contacts named by --to-contact, and the members of groups among them.
int readContacts(const Invocation& call, ContactList& recipients)
{
    int status = ExitStatus::Ok;
    const auto cache = ContactCache::open(call, &status);
    if (!cache)
        return status;
    ContactCache::Recipients named;
    const QStringList names = call.values("to-contact");
    for (const QString& text : names) {
        QString error;
        const auto unit = cache->resolve(text, &status, &error);
        if (!unit)
            return call.fail(status, Text::tr("--to-contact: %1 Nothing was sent.").arg(error));
        cache->expand(*unit, named);
    }
    const QString without = named.withoutFax.join(QStringLiteral(", "));
    if (named.contacts.isEmpty()) {
        return call.failOption("to-contact",
                               without.isEmpty()
                                   ? Text::tr("names no one: the group has no members")
                                   : Text::tr("reaches no one: %1 without a fax number").arg(without));
    }
    if (!without.isEmpty())
        call.note(Text::tr("Not sent to those without a fax number: %1.").arg(without));
    for (const StoredContact& unit : qAsConst(named.contacts))
        recipients.addContact(unit.contact());
    return ExitStatus::Ok;
}

int readRequest(const Invocation& call, FaxRequest& request)
{
    QString error;
    if (!call.isSet("to") && !call.isSet("to-contact"))
        return call.failUsage(Text::tr("--to NUMBER or --to-contact NAME is missing."));
    const QStringList numbers = call.values("to");
    for (const QString& text : numbers) {
        const auto recipient = parseRecipient(text, &error);
        if (!recipient)
            return call.failOption("to", error);
        request.order.recipients.addContact(*recipient);
    }
    if (call.isSet("cover") && call.isSet("no-cover"))
        return call.failUsage(Text::tr("--cover and --no-cover exclude each other."));
    for (const char* option : {"cover", "subject", "comments"}) {
        if (!checkText(call.value(option), qstrcmp(option, "comments") == 0, &error))
            return call.failOption(option, error);
    }
    request.order.files = call.arguments();
    if (request.order.files.isEmpty() && !call.isSet("cover"))
        return call.failUsage(Text::tr("There is nothing to send: name a file, or a cover page by --cover."));
    if (call.isSet("at")) {
        const auto at = parseFutureTime(call.value("at"), QDateTime::currentDateTime(), &error);
        if (!at)
            return call.failOption("at", error);
        request.order.at = *at;
    }
    if (call.isSet("interval")) {
        const auto interval = parseInteger(call.value("interval"), 1, 3600, &error);
        if (!interval)
            return call.failOption("interval", error);
        request.interval = *interval;
    }
    const auto schedule = ScheduleChoices::read(call);
    if (!schedule)
        return ExitStatus::Usage;
    request.order.schedule = *schedule;
    if (!attachFiles(request.order.files,
                     &error)) // they are read again after the login, which may take long
        return call.fail(ExitStatus::File, error);
    if (call.isSet("cover"))
        request.order.cover = call.value("cover");
    else if (call.isSet("no-cover"))
        request.order.cover = QString();
    request.order.subject = call.value("subject");
    request.order.comments = call.value("comments");
    return call.isSet("to-contact") ? readContacts(call, request.order.recipients) : int(ExitStatus::Ok);
}

/// A progress line for a long upload.
class UploadProgress : public QObject
{
public:
    explicit UploadProgress(const ReplyWatch& watch)
    {
        connect(&watch, &ReplyWatch::uploading, this, &UploadProgress::show);
    }

private:
    void show(qint64 sent, qint64 total)
    {
        if (!m_clock.isValid())
            m_clock.start();
        const qint64 now = m_clock.elapsed();
        if (now < 500 || (sent < total && now - m_shown < 100)) // ms: short ones show nothing
            return;
        m_shown = now;
        m_line.show(sent < total ? Text::tr("Sending %1 of %2 (%3 %), %4/s")
                                       .arg(sizeText(sent), sizeText(total),
                                            QString::number(sent * 100 / total), sizeText(sent * 1000 / now))
                                 : Text::tr("Sent %1, waiting for the server").arg(sizeText(total)));
    }

    QElapsedTimer m_clock;
    qint64 m_shown{0};
    Terminal::ProgressLine m_line;
};

void printEntries(const Invocation& call, const QVector<QSharedPointer<BaseFaxEntry>>& entries)
{
    if (call.isJson()) {
        QJsonArray array;
        for (const auto& entry : entries) {
            if (const auto fax = entry.dynamicCast<FaxEntry>())
                array.append(toJson(*fax));
        }
        call.json(array);
        return;
    }
    Table table({{Text::tr("STATE")},
                 {Text::tr("TO"), Table::Left, 12, 1},
                 {Text::tr("PAGES"), Table::Right, 0, 2},
                 {Text::tr("URL")}});
    for (const auto& entry : entries) {
        table.addRow({stateForPeople(entry->state()), entry->recipient(), QString::number(entry->pages()),
                      urlText(entry->entryUrl())});
    }
    call.table(table);
}

int send(Invocation& call)
{
    FaxRequest request;
    int status = readRequest(call, request);
    if (status != ExitStatus::Ok)
        return status;
    Session session(call);
    if (!session.open())
        return session.status();
    BaseFaxEntry::FaxEntriesPtrListPtr entries;
    {
        const UploadProgress progress(session.replies());
        QString doubt;
        entries = submitFax(session, request.order, &doubt);
        if (!doubt.isEmpty())
            call.note(doubt);
        if (!entries)
            return session.status();
    }
    if (!call.isSet("wait")) {
        printEntries(call, *entries);
        return ExitStatus::Ok;
    }
    FaxFollower follower(call, session, *entries);
    status = follower.follow(request.interval);
    if (!call.isJson()) {
        call.table(follower.table());
        return status;
    }
    QJsonArray array;
    for (const FaxFollower::Fax& fax : follower.faxes()) {
        array.append(QJsonObject{{QStringLiteral("state"), stateText(fax.state)},
                                 {QStringLiteral("sent"), fax.isSent()},
                                 {QStringLiteral("recipient"), fax.recipient},
                                 {QStringLiteral("pages"), fax.pages},
                                 {QStringLiteral("url"), fax.url}});
    }
    call.json(array);
    return status;
}

/// Runs a request about one queued fax, which the server only confirms.
template <typename T>
int requestEntry(Invocation& call, Task::Type type, void (T::*done)(), const QDateTime& at,
                 const QString& doing, const QString& said)
{
    QString error;
    const auto url = parseEntryUrl(call.arguments().at(0), &error);
    if (!url)
        return call.failUsage(QStringLiteral("URL %1.").arg(error));
    Session session(call);
    if (!session.open())
        return session.status();
    T* task = session.task<T>(type);
    task->setFaxEntryUrl(*url);
    if constexpr (std::is_same_v<T, TaskReschedule>)
        task->setDateTime(at);
    if (!session.run(
            task, done, [] {}, doing))
        return session.status();
    if (call.isJson()) {
        call.json(QJsonObject{{QStringLiteral("url"), urlText(*url)}, {QStringLiteral("accepted"), true}});
    } else {
        call.line(said);
    }
    return ExitStatus::Ok;
}

int abortFax(Invocation& call)
{
    return requestEntry(call, Task::Abort, &TaskAbort::doneAbort, QDateTime(), Text::tr("Aborting the fax"),
                        Text::tr("The server is aborting the fax. \"qdfax queue\" shows its state."));
}

int reschedule(Invocation& call)
{
    QDateTime at;
    if (call.isSet("at")) {
        QString error;
        const auto time = parseFutureTime(call.value("at"), QDateTime::currentDateTime(), &error);
        if (!time)
            return call.failOption("at", error);
        at = *time;
    }
    return requestEntry(call, Task::Reschedule, &TaskReschedule::doneReschedule, at,
                        Text::tr("Rescheduling the fax"),
                        at.isNull() ? Text::tr("The server will send the fax now.")
                                    : Text::tr("The server will send the fax at %1.").arg(timeText(at)));
}

} // namespace

QVector<Command> sendCommands()
{
    Command sendCommand;
    sendCommand.name = QStringLiteral("send");
    sendCommand.arguments =
        QStringLiteral("FILE... --to NUMBER[,NAME[,ORGANIZATION]]...|--to-contact ID|NAME...");
    sendCommand.summary = Text::tr("Send files as a fax");
    sendCommand.description = Text::tr(
        "Takes PDF, PostScript, plain text and TIFF, recognised by content. Prints one line a recipient\n"
        "with the state and the URL of the fax, by which it can be aborted or rescheduled.\n"
        "A comma inside a name is written as \\,. Names of contacts are looked up in what the last\n"
        "\"qdfax contacts sync\" brought; a group stands for its members, each of whom gets the fax once.\n"
        "Without --cover and --no-cover your profile decides.\n"
        "Options that are not given are those of your profile.");
    sendCommand.examples = QStringList{
        QStringLiteral("qdfax send report.pdf --to \"+49 30 1234567\""),
        QStringLiteral("qdfax send offer.pdf terms.txt --to 5551234,\"Mary Poe\",\"Poe, Inc.\" --to 5555678"),
        QStringLiteral(
            "qdfax send note.txt --to 5551234 --cover Standard --subject Hello --comments \"As agreed\""),
        QStringLiteral("qdfax send big.tif --to 5551234 --at 2026-11-15T22:00 --priority 1 --max-tries 5"),
        QStringLiteral("qdfax send a.pdf --to-contact \"Mary Poe\" --to-contact Friends"),
        QStringLiteral("qdfax send a.pdf --to 5551234 --wait && rm a.pdf"),
        QStringLiteral("qdfax send a.pdf --to 5551234 --json | jq -r '.[].url'")};
    sendCommand.options = QList<QCommandLineOption>{
        {QStringLiteral("to"), Text::tr("A recipient. May be given several times."),
         QStringLiteral("NUMBER[,NAME[,ORGANIZATION]]")},
        {QStringLiteral("to-contact"),
         Text::tr("A contact, or the members of a group. May be given several times."),
         QStringLiteral("ID|NAME")},
        {QStringLiteral("cover"), Text::tr("Put this cover page of the server before it."),
         QStringLiteral("NAME")},
        {QStringLiteral("no-cover"), Text::tr("No cover page, whatever your profile says.")},
        {QStringLiteral("subject"), Text::tr("The subject, on the cover page and in the logs."),
         QStringLiteral("TEXT")},
        {QStringLiteral("comments"), Text::tr("Text for the cover page."), QStringLiteral("TEXT")},
        {QStringLiteral("at"), Text::tr("Send at this local time, like 2026-11-15T14:30, and not now."),
         QStringLiteral("TIME")},
        {QStringLiteral("wait"), Text::tr("Wait until it is sent to, or has failed for, every recipient.")},
        {QStringLiteral("interval"),
         Text::tr("Seconds between two looks while waiting (%1).").arg(defaultInterval),
         QStringLiteral("SECONDS")},
    };
    sendCommand.options += ScheduleChoices::options();
    sendCommand.mostArguments = -1;
    sendCommand.run = send;

    Command abortCommand;
    abortCommand.name = QStringLiteral("abort");
    abortCommand.arguments = QStringLiteral("URL");
    abortCommand.summary = Text::tr("Cancel a fax that is not sent yet");
    abortCommand.description = Text::tr(
        "URL is what \"qdfax send\" and \"qdfax queue\" print. The request always goes to the configured\n"
        "server, whichever the URL names. Success means that the server will try.");
    abortCommand.examples = QStringList{QStringLiteral("qdfax abort http://fax.example.org/qdws/v1/ofax/17"),
                                        QStringLiteral("qdfax abort /qdws/v1/ofax/17")};
    abortCommand.leastArguments = abortCommand.mostArguments = 1;
    abortCommand.run = abortFax;

    Command rescheduleCommand;
    rescheduleCommand.name = QStringLiteral("reschedule");
    rescheduleCommand.arguments = QStringLiteral("URL [--at TIME]");
    rescheduleCommand.summary = Text::tr("Send a queued fax at another time, or now");
    rescheduleCommand.description = abortCommand.description;
    rescheduleCommand.examples =
        QStringList{QStringLiteral("qdfax reschedule http://fax.example.org/qdws/v1/ofax/17"),
                    QStringLiteral("qdfax reschedule /qdws/v1/ofax/17 --at 2026-11-15T22:00")};
    rescheduleCommand.options = QList<QCommandLineOption>{
        {QStringLiteral("at"), Text::tr("The local time, like 2026-11-15T14:30; without it: now."),
         QStringLiteral("TIME")}};
    rescheduleCommand.leastArguments = rescheduleCommand.mostArguments = 1;
    rescheduleCommand.run = reschedule;

    return {sendCommand, abortCommand, rescheduleCommand};
}
