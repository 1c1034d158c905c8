#include "command.h"

#include "contactcache.h"
#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "contactsession.h"
#include "displaytext.h"
#include "parsing.h"
#include "tasks/taskgetcontacts.h"
#include "terminal.h"
#include "text.h"

#include <QElapsedTimer>
#include <QJsonArray>

#include <limits>

namespace {

// --- Synchronising

/// A progress line: the book being read, its progress and the elapsed time.
class SyncProgress : public QObject
{
public:
    SyncProgress(Session& session, const QString& title)
        : m_session(session)
        , m_title(title)
    {
        m_clock.start();
        connect(&m_timer, &QTimer::timeout, this, &SyncProgress::tick);
        connect(&session.replies(), &ReplyWatch::downloading, this,
                [this](qint64 received) { m_received = received; });
        m_timer.start(100); // ms
    }

private:
    void tick()
    {
        // the library creates the task later, and reports the units only once they are stored
        const auto tasks = m_session.server().findChildren<TaskGetContacts*>();
        for (auto* task : tasks) {
            if (m_task == task)
                continue;
            m_task = task;
            const auto take = [this](const ContactList& contacts) { m_count = contacts.contacts().size(); };
            connect(task, &TaskGetContacts::doneGetContacts, this, take);
            connect(task, &TaskGetContacts::doneGetContactsAfterLastTimeSync, this, take);
        }
        if (m_clock.elapsed() < 300) // ms: short ones show nothing
            return;
        QString text = m_title + QStringLiteral(": ");
        if (m_count >= 0)
            text += Text::tr("storing %1 received").arg(m_count);
        else if (m_session.replies().finished() > 2) // identifiers and book; what follows are members
            text += Text::tr("%n members received", "", m_session.replies().finished() - 1);
        else
            text += Text::tr("%1 received").arg(sizeText(m_received));
        m_line.show(text + QStringLiteral(", ") + durationText(m_clock.elapsed() / 1000));
    }

    Session& m_session;
    QString m_title;
    QElapsedTimer m_clock;
    QTimer m_timer;
    QPointer<TaskGetContacts> m_task;
    qint64 m_received{0};
    int m_count{-1}; ///< Units that came; -1: not there yet.
    Terminal::ProgressLine m_line;
};

int sync(Invocation& call)
{
    ContactSession contacts(call);
    if (!contacts.open())
        return contacts.status();
    Terminal::setLastWords(Text::tr("qdfax: Interrupted. The book that was being read is as it was before."));
    const bool full = call.isSet("full");
    const QList<ContactList::Type> books = contacts.provider().contactsTypeList();
    QJsonArray array;
    Table table({{Text::tr("BOOK")},
                 {Text::tr("ENTRIES"), Table::Right},
                 {Text::tr("SECONDS"), Table::Right},
                 {QString()}});
    int status = ExitStatus::Ok;
    for (const ContactList::Type book : books) {
        QElapsedTimer clock;
        clock.start();
        bool ok = false;
        {
            const SyncProgress progress(
                contacts.session(),
                Text::tr("%1 (%2 of %3)").arg(bookText(book)).arg(books.indexOf(book) + 1).arg(books.size()));
            ok = contacts.synchronise(book, full);
            // a full synchronisation fetches everything and removes nothing
            if (ok && full)
                ok = contacts.synchronise(book, false);
        }
        const double seconds = double(clock.elapsed()) / 1000;
        const int count = contacts.cache().count(book);
        array.append(QJsonObject{{QStringLiteral("book"), bookWords().value(book - 1)},
                                 {QStringLiteral("entries"), count},
                                 {QStringLiteral("seconds"), seconds},
                                 {QStringLiteral("synchronised"), ok}});
        table.addRow({bookText(book), QString::number(count), QString::number(seconds, 'f', 1),
                      ok ? QString() : Text::tr("as before")});
        if (ok)
            continue;
        if (status == ExitStatus::Ok)
            status = contacts.status();
        // this user may be denied one book only; but a server that does not answer will not for the next one
        if (contacts.session().replies().last().httpStatus == 0)
            break;
    }
    Terminal::setLastWords(QString());
    if (call.isJson())
        call.json(array);
    else
        call.table(table);
    return status;
}

// --- Reading the cache

void print(const Invocation& call, const QVector<StoredContact>& units)
{
    if (!call.isJson()) {
        call.table(contactTable(units));
        return;
    }
    QJsonArray array;
    for (const StoredContact& unit : units)
        array.append(toJson(unit));
    call.json(array);
}

std::optional<uint> readCount(const Invocation& call, const char* option)
{
    if (!call.isSet(option))
        return 0;
    QString error;
    const auto number = parseInteger(call.value(option), 0, std::numeric_limits<int>::max(), &error);
    if (!number) {
        call.failOption(option, error);
        return std::nullopt;
    }
    return uint(*number);
}

int list(Invocation& call)
{
    const auto book = readBook(call, ContactList::Unknown);
    const auto offset = readCount(call, "offset");
    const auto limit = readCount(call, "limit");
    if (!book || !offset || !limit)
        return ExitStatus::Usage;
    int status = ExitStatus::Ok;
    const auto cache = ContactCache::open(call, &status);
    if (!cache)
        return status;
    const QVector<StoredContact> units = *book == ContactList::Unknown
                                             ? cache->list(ContactLocalStorage::TypeContact, *offset, *limit)
                                             : cache->list(*book, *offset, *limit);
    print(call, units);
    if (units.isEmpty() && *offset == 0)
        call.note(Text::tr("There is nothing in the cache. \"qdfax contacts sync\" fetches what the "
                           "server has."));
    return ExitStatus::Ok;
}

int search(Invocation& call)
{
    const auto limit = readCount(call, "limit");
    if (!limit)
        return ExitStatus::Usage;
    int status = ExitStatus::Ok;
    const auto cache = ContactCache::open(call, &status);
    if (!cache)
        return status;
    const QVector<StoredContact> units = cache->search(call.arguments().at(0), *limit);
    if (units.isEmpty() && !call.isJson())
        return call.fail(ExitStatus::NothingFound,
                         Text::tr("No name holds \"%1\".").arg(call.arguments().at(0)));
    print(call, units);
    return units.isEmpty() ? ExitStatus::NothingFound : ExitStatus::Ok;
}

int show(Invocation& call)
{
    int status = ExitStatus::Ok;
    const auto cache = ContactCache::open(call, &status);
    if (!cache)
        return status;
    QString error;
    const auto unit = cache->resolve(call.arguments().at(0), &status, &error);
    if (!unit)
        return call.fail(status, error);
    const QVector<StoredContact> members =
        unit->isGroup() ? cache->members(unit->id) : QVector<StoredContact>();
    if (call.isJson()) {
        QJsonObject object = toJson(*unit);
        if (unit->isGroup()) {
            QJsonArray array;
            for (const StoredContact& member : members)
                array.append(toJson(member));
            object.insert(QStringLiteral("members"), array);
        }
        call.json(object);
        return ExitStatus::Ok;
    }
    call.fields({{Text::tr("ID"), QString::number(unit->id)},
                 {Text::tr("Book"), bookText(unit->book())},
                 {Text::tr("Name"), unit->name},
                 {Text::tr("Description"), unit->description},
                 {Text::tr("Organization"), unit->organization},
                 {Text::tr("Fax"), unit->fax},
                 {Text::tr("Phone"), unit->phone},
                 {Text::tr("E-mail"), unit->email},
                 {Text::tr("Object ID"), unit->uid}});
    if (unit->isGroup()) {
        call.line(QString());
        call.table(contactTable(members));
    }
    return ExitStatus::Ok;
}

int groups(Invocation& call)
{
    int status = ExitStatus::Ok;
    const auto cache = ContactCache::open(call, &status);
    if (!cache)
        return status;
    const QVector<StoredContact> units = cache->list(ContactLocalStorage::TypeGroup);
    QJsonArray array;
    Table table({{Text::tr("ID"), Table::Right},
                 {Text::tr("NAME"), Table::Left, 12},
                 {Text::tr("MEMBERS"), Table::Right},
                 {Text::tr("DESCRIPTION"), Table::Left, 12, 1},
                 {Text::tr("BOOK"), Table::Left, 0, 2}});
    for (const StoredContact& unit : units) {
        QJsonObject object = toJson(unit);
        const int count = cache->memberCount(unit.id);
        object.insert(QStringLiteral("memberCount"), count);
        array.append(object);
        table.addRow({QString::number(unit.id), unit.name, QString::number(count), unit.description,
                      bookWords().value(unit.book() - 1)});
    }
    if (call.isJson())
        call.json(array);
    else
        call.table(table);
    return ExitStatus::Ok;
}

} // namespace

QVector<Command> contactCommands()
{
    Command syncCommand;
    syncCommand.name = QStringLiteral("contacts sync");
    syncCommand.summary = Text::tr("Fetch the contact books of the server");
    syncCommand.description = Text::tr(
        "Reads what has changed since the last time: your contacts, the server's, and the groups of\n"
        "both. They are kept on this machine, where the other contacts commands and\n"
        "\"qdfax send --to-contact\" find them. A book that cannot be read stays as it was.");
    syncCommand.examples = QStringList{QStringLiteral("qdfax contacts sync"),
                                       QStringLiteral("qdfax contacts sync --full --json")};
    syncCommand.options = QList<QCommandLineOption>{
        {QStringLiteral("full"), Text::tr("Read everything anew, not only what has changed.")}};
    syncCommand.run = sync;

    const auto offline = Text::tr("Shows what the last \"qdfax contacts sync\" brought, without asking "
                                  "the server.\n");
    Command listCommand;
    listCommand.name = QStringLiteral("contacts list");
    listCommand.arguments = QStringLiteral("[--book BOOK]");
    listCommand.summary = Text::tr("List contacts");
    listCommand.description = offline + Text::tr("Without --book the contacts of both books are listed.");
    listCommand.examples =
        QStringList{QStringLiteral("qdfax contacts list"),
                    QStringLiteral("qdfax contacts list --book global --offset 100 --limit 50 --json")};
    listCommand.options = QList<QCommandLineOption>{
        bookOption(Text::tr("Only this book.")),
        {QStringLiteral("offset"), Text::tr("Leave out so many at the beginning."), QStringLiteral("N")},
        {QStringLiteral("limit"), Text::tr("At most so many."), QStringLiteral("N")}};
    listCommand.run = list;

    Command searchCommand;
    searchCommand.name = QStringLiteral("contacts search");
    searchCommand.arguments = QStringLiteral("TEXT");
    searchCommand.summary = Text::tr("Find contacts and groups by name");
    searchCommand.description =
        offline + Text::tr("TEXT may stand anywhere in the name. Of letters outside A to Z the case "
                           "counts; % stands for any\ntext and _ for any character.");
    searchCommand.examples =
        QStringList{QStringLiteral("qdfax contacts search poe"),
                    QStringLiteral("qdfax contacts search poe --limit 1 --json | jq '.[0].id'")};
    searchCommand.options = QList<QCommandLineOption>{
        {QStringLiteral("limit"), Text::tr("At most so many."), QStringLiteral("N")}};
    searchCommand.leastArguments = searchCommand.mostArguments = 1;
    searchCommand.run = search;

    Command showCommand;
    showCommand.name = QStringLiteral("contacts show");
    showCommand.arguments = QStringLiteral("ID|NAME");
    showCommand.summary = Text::tr("Show a contact, or a group with its members");
    showCommand.description =
        offline + Text::tr("ID is as the other contacts commands show it; NAME is the whole name.");
    showCommand.examples = QStringList{QStringLiteral("qdfax contacts show 12"),
                                       QStringLiteral("qdfax contacts show \"Mary Poe\"")};
    showCommand.leastArguments = showCommand.mostArguments = 1;
    showCommand.run = show;

    Command groupsCommand;
    groupsCommand.name = QStringLiteral("contacts groups");
    groupsCommand.summary = Text::tr("List the groups of contacts");
    groupsCommand.description = offline + Text::tr("\"qdfax contacts show\" lists the members of one.");
    groupsCommand.examples = QStringList{QStringLiteral("qdfax contacts groups")};
    groupsCommand.run = groups;

    return QVector<Command>{syncCommand, listCommand, searchCommand, showCommand, groupsCommand} +
           contactChangeCommands() + contactFileCommands();
}
