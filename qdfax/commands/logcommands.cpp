#include "command.h"

#include "displaytext.h"
#include "faxlog.h"
#include "faxserver.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskgetprinternames.h"
#include "terminal.h"
#include "text.h"

#include <QTime>

namespace {

const int mostEntries = 1000000;
const int defaultWatchInterval = 5; // s

/// A number option that is absent or at least 1. Nothing, with the error printed, if it is invalid.
std::optional<int> count(const Invocation& call, const char* option, int absent, int greatest)
{
    if (!call.isSet(option))
        return absent;
    QString error;
    const auto number = parseInteger(call.value(option), 1, greatest, &error);
    if (!number)
        call.failOption(option, error);
    return number;
}

int showLog(const Invocation& call, FaxLog::Kind kind)
{
    const auto limit = count(call, "limit", 0, mostEntries);
    const auto finished = kind == FaxLog::Queue ? count(call, "finished", 0, mostEntries) : 0;
    if (!limit || !finished)
        return ExitStatus::Usage;
    Session session(call);
    if (!session.open())
        return session.status();
    FaxLog log(kind);
    if (!log.fetch(session, *limit, *finished))
        return session.status();
    if (call.isJson())
        call.jsonArray(log.size(), [&log](int index) { return log.json(index); });
    else if (log.size() == 0)
        call.note(Text::tr("There are no faxes."));
    else
        call.table(log.table());
    return ExitStatus::Ok;
}

int watch(Invocation& call)
{
    QString error;
    const QString name = call.arguments().value(0, QStringLiteral("queue"));
    const auto kind = parseChoice(name, FaxLog::names(), &error);
    if (!kind)
        return call.failUsage(QStringLiteral("LOG %1.").arg(error));
    const auto limit = count(call, "limit", 0, mostEntries);
    const auto interval = count(call, "interval", defaultWatchInterval, 86400);
    const auto rounds = count(call, "rounds", 0, mostEntries);
    if (!limit || !interval || !rounds)
        return ExitStatus::Usage;

    Session session(call);
    if (!session.open())
        return session.status();
    session.setQuiet(true);
    if (!call.isJson() && Terminal::isOutput())
        Terminal::write("\x1b[2J");
    FaxLog log{FaxLog::Kind(*kind)};
    int status = ExitStatus::Ok;
    for (int round = 1;; ++round) {
        // a failure may be temporary, except wrong credentials
        FaxLog fresh{FaxLog::Kind(*kind)};
        status = ExitStatus::Ok;
        if (fresh.fetch(session, *limit))
            log = fresh;
        else
            status = session.status();
        if (call.isJson()) {
            if (status == ExitStatus::Ok)
                call.jsonArray(log.size(), [&log](int index) { return log.json(index); });
            else
                call.note(session.error());
            Terminal::outputFailed(); // flushes
        } else {
            QStringList lines{Text::tr("%1 of %2 at %3, every %4 s. Ctrl-C ends.")
                                  .arg(FaxLog::names().at(*kind), session.server().genUID(),
                                       QTime::currentTime().toString(QStringLiteral("HH:mm:ss")),
                                       QString::number(*interval))};
            const int width = Terminal::width();
            if (width > 0)
                lines[0] = cutToWidth(lines.at(0), width);
            if (status != ExitStatus::Ok)
                lines.append(printable(session.error()));
            lines += log.table().lines(width);
            Terminal::showScreen(lines);
        }
        if (round == *rounds || status == ExitStatus::AuthError)
            break;
        session.pause(*interval * 1000);
    }
    return status == ExitStatus::Ok ? status : call.fail(status, session.error());
}

int covers(Invocation& call)
{
    Session session(call);
    if (!session.open())
        return session.status();
    QVector<CoverPage> pages;
    if (!session.run(
            session.task<TaskGetCoverPages>(Task::GetCoverPages), &TaskGetCoverPages::doneGetCoverPages,
            [&pages](const CoverPageListPtr& received) { pages = *received; },
            Text::tr("Reading the cover pages")))
        return session.status();
    if (call.isJson()) {
        QJsonArray array;
        for (const CoverPage& page : qAsConst(pages))
            array.append(toJson(page));
        call.json(array);
        return ExitStatus::Ok;
    }
    const QString usual = session.server().user().defaultCoverpage();
    Table table({{QString()}, {Text::tr("NAME")}, {Text::tr("TYPE"), Table::Left, 4, 1}});
    int disabled = 0;
    for (const CoverPage& page : qAsConst(pages)) {
        // a disabled one has no name either
        if (page.enabled())
            table.addRow({page.name() == usual ? QStringLiteral("*") : QString(), page.name(), page.type()});
        else
            ++disabled;
    }
    if (table.rowCount() > 0)
        call.table(table);
    else
        call.note(Text::tr("The server offers no cover pages."));
    if (disabled > 0)
        call.note(Text::tr("Disabled on the server, and not shown: %1.").arg(disabled));
    return ExitStatus::Ok;
}

int printers(Invocation& call)
{
    Session session(call);
    if (!session.open())
        return session.status();
    if (!session.server().isPrintReceiptSupported()) {
        return call.fail(
            ExitStatus::NotSupported,
            Text::tr("Version %1 of this server does not print receipts, so it has no printers to "
                     "offer.")
                .arg(session.server().info().version()));
    }
    QStringList names;
    if (!session.run(
            session.task<TaskGetPrinterNames>(Task::GetPrinterNames),
            &TaskGetPrinterNames::doneGetPrinterNames,
            [&names](const QStringListPtr& received) { names = *received; },
            Text::tr("Reading the printers")))
        return session.status();
    if (call.isJson()) {
        call.json(QJsonArray::fromStringList(names));
        return ExitStatus::Ok;
    }
    if (names.isEmpty())
        call.note(Text::tr("The server offers no printers."));
    for (const QString& name : qAsConst(names))
        call.line(name);
    return ExitStatus::Ok;
}

QCommandLineOption limitOption(const QString& description)
{
    return {QStringLiteral("limit"), description, QStringLiteral("N")};
}

Command logCommand(FaxLog::Kind kind, const QString& summary)
{
    Command command;
    command.name = FaxLog::names().at(kind);
    command.summary = summary;
    command.run = [kind](const Invocation& call) { return showLog(call, kind); };
    command.options = {limitOption(kind == FaxLog::Status
                                       ? Text::tr("At most N faxes that wait and N that are being sent.")
                                       : Text::tr("At most N faxes, the newest."))};
    command.examples = QStringList{QStringLiteral("qdfax %1").arg(command.name),
                                   QStringLiteral("qdfax %1 --limit 20").arg(command.name)};
    return command;
}

} // namespace

QVector<Command> logCommands()
{
    Command queue =
        logCommand(FaxLog::Queue, Text::tr("Show the faxes that are not finished, the newest first"));
    queue.description = Text::tr("URL is what \"qdfax abort\" and \"qdfax reschedule\" take.");
    queue.options.append({QStringLiteral("finished"), Text::tr("Also the N faxes that were finished last."),
                          QStringLiteral("N")});
    queue.examples.append(
        QStringLiteral("qdfax queue --json | jq -r '.[] | select(.state==\"pending\") | .url'"));

    Command status = logCommand(
        FaxLog::Status, Text::tr("Show the faxes that wait or are being sent, of all that you may see"));

    Command sent = logCommand(FaxLog::Sent, Text::tr("Show the log of sent faxes, the newest first"));
    sent.examples.append(
        QStringLiteral("qdfax sent --json | jq '[.[] | select(.state==\"failed\")] | length'"));

    Command inbox = logCommand(FaxLog::Inbox, Text::tr("Show the log of received faxes, the newest first"));
    inbox.description = Text::tr("N is what \"qdfax download --inbox\" takes; it counts from the newest.");
    inbox.examples.append(QStringLiteral("qdfax inbox --json | jq -r '.[].location'"));

    Command watchCommand;
    watchCommand.name = QStringLiteral("watch");
    watchCommand.arguments = QStringLiteral("[queue|status|sent|inbox]");
    watchCommand.summary = Text::tr("Show a log again and again until interrupted");
    watchCommand.options = {
        limitOption(Text::tr("At most N faxes.")),
        {QStringLiteral("interval"), Text::tr("Seconds between two readings (%1).").arg(defaultWatchInterval),
         QStringLiteral("SECONDS")},
        {QStringLiteral("rounds"), Text::tr("End after so many readings."), QStringLiteral("N")}};
    watchCommand.examples = QStringList{QStringLiteral("qdfax watch"),
                                        QStringLiteral("qdfax watch inbox --limit 20 --interval 60")};
    watchCommand.mostArguments = 1;
    watchCommand.run = watch;

    Command coversCommand;
    coversCommand.name = QStringLiteral("covers");
    coversCommand.summary = Text::tr("List the cover pages that the server offers");
    coversCommand.description = Text::tr("A star marks the one of your profile.");
    coversCommand.examples = QStringList{QStringLiteral("qdfax covers")};
    coversCommand.run = covers;

    Command printersCommand;
    printersCommand.name = QStringLiteral("printers");
    printersCommand.summary = Text::tr("List the printers on which the server prints receipts");
    printersCommand.examples = QStringList{QStringLiteral("qdfax printers")};
    printersCommand.run = printers;

    return {queue, status, sent, inbox, watchCommand, coversCommand, printersCommand};
}
