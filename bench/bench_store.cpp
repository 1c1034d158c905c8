// The contact store beside the same work on SQLite's own interface: statements prepared once, one
// transaction, ids known instead of looked up.

#include "bench.h"
#include "contact.h"
#include "contactlocalstorage.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <sqlite3.h>
#include <thread>

namespace {

using Store = ContactLocalStorage;

const int membersOfGroup = 100;

/// The texts of one contact; no two contacts and no two rounds have the same.
struct Row
{
    QString uid, name, phone, fax, email, organization;

    Row(int round, int i)
        : uid(QString::number(i + 1))
        , name(QStringLiteral("Contact %1 of round %2").arg(i).arg(round))
        , phone(QStringLiteral("+1 555 %1").arg(round * 100000 + i))
        , fax(QStringLiteral("+1 556 %1").arg(round * 100000 + i))
        , email(QStringLiteral("c%1.%2@example.org").arg(i).arg(round))
        , organization(QStringLiteral("Company %1").arg((i + round) % 97))
    {}
};

QVector<Row> rows(int round, int count)
{
    QVector<Row> result;
    result.reserve(count);
    for (int i = 0; i < count; ++i)
        result.append(Row(round, i));
    return result;
}

/// A folder with a store's file, new for each measurement.
class Folder
{
public:
    Folder() { qputenv("APPDATA", m_dir.path().toLocal8Bit()); }

    QByteArray file() const
    {
        return m_dir.filePath(QStringLiteral("Quendra Client Software/Contacts/contacts.sqlite")).toUtf8();
    }

private:
    QTemporaryDir m_dir;
};

/// SQLite's own interface, on the file that a store made.
class Plain
{
public:
    explicit Plain(const Folder& folder)
    {
        if (sqlite3_open(folder.file().constData(), &m_db) != SQLITE_OK)
            fail("open");
        run("PRAGMA cache_spill=OFF");
    }
    ~Plain()
    {
        for (sqlite3_stmt* statement : m_statements)
            sqlite3_finalize(statement);
        sqlite3_close(m_db);
    }

    void run(const char* text)
    {
        if (sqlite3_exec(m_db, text, nullptr, nullptr, nullptr) != SQLITE_OK)
            fail(sqlite3_errmsg(m_db));
    }

    sqlite3_stmt* prepare(const char* text)
    {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_db, text, -1, &statement, nullptr) != SQLITE_OK)
            fail(sqlite3_errmsg(m_db));
        m_statements.push_back(statement);
        return statement;
    }

    /// Binds and runs a statement that gives no rows.
    template <typename... Values>
    void step(sqlite3_stmt* statement, const Values&... values)
    {
        bindAll(statement, values...);
        if (sqlite3_step(statement) != SQLITE_DONE)
            fail(sqlite3_errmsg(m_db));
        sqlite3_reset(statement);
    }

    template <typename... Values>
    static void bindAll(sqlite3_stmt* statement, const Values&... values)
    {
        int index = 1;
        (bind(statement, index++, values), ...);
    }

    static QString text(sqlite3_stmt* statement, int column)
    {
        const void* data = sqlite3_column_text16(statement, column);
        return QString(static_cast<const QChar*>(data), sqlite3_column_bytes16(statement, column) / 2);
    }

private:
    static void bind(sqlite3_stmt* statement, int index, int value)
    {
        sqlite3_bind_int(statement, index, value);
    }
    static void bind(sqlite3_stmt* statement, int index, const QString& value)
    {
        sqlite3_bind_text16(statement, index, value.utf16(), value.size() * 2, SQLITE_STATIC);
    }

    sqlite3* m_db{nullptr};
    std::vector<sqlite3_stmt*> m_statements;
};

const char* const insertContact =
    "INSERT INTO contacts(uid, type, location, source, timestamp, name, description, phone, fax, email, "
    "organization) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
const char* const updateContact = "UPDATE contacts SET timestamp=?, name=?, description=?, phone=?, fax=?, "
                                  "email=?, organization=? WHERE id=?";

void add(Store& store, quint32 source, const QVector<Row>& contacts, quint32 timestamp)
{
    for (const Row& row : contacts) {
        if (!store.addContact(source, Store::TypeContact, Store::LocationPersonal, row.uid, timestamp,
                              row.name, QString(), row.phone, row.fax, row.email, row.organization))
            fail("addContact");
    }
}

/// Stores a book as a synchronisation does.
void fill(Store& store, quint32 source, const QVector<Row>& contacts, quint32 timestamp)
{
    store.scopeBegin();
    add(store, source, contacts, timestamp);
    store.scopeEnd();
}

void fillPlain(Plain& plain, const QVector<Row>& contacts)
{
    sqlite3_stmt* insert = plain.prepare(insertContact);
    plain.run("BEGIN");
    const QString empty = QLatin1String("");
    for (const Row& row : contacts)
        plain.step(insert, row.uid, 1, 2, 1, 1000, row.name, empty, row.phone, row.fax, row.email,
                   row.organization);
    plain.run("COMMIT");
}

quint32 newSource(Store& store, const char* name = "user@fax")
{
    return store.addSource(QLatin1String(name), Store::SourceQuendra);
}

/// A store with one book, for rows about what comes after.
struct Filled
{
    Folder folder;
    std::unique_ptr<Store> store = std::make_unique<Store>();
    quint32 source = newSource(*store);

    Filled(int round, int count) { fill(*store, source, rows(round, count), 1000); }
};

double storeFirst(int round, int count)
{
    Folder folder;
    Store store;
    const quint32 source = newSource(store);
    const QVector<Row> contacts = rows(round, count);
    const double time = milliseconds([&] { fill(store, source, contacts, 1000); });
    if (store.getContactList(source, Store::TypeContact, Store::LocationPersonal, 0, 0, 0).size() != count)
        fail("store-first");
    return time;
}

double plainStoreFirst(int round, int count)
{
    Folder folder;
    Store().addSource(QStringLiteral("user@fax"), Store::SourceQuendra);
    const QVector<Row> contacts = rows(round, count);
    Plain plain(folder);
    return milliseconds([&] { fillPlain(plain, contacts); });
}

double storeAgain(int round, int count)
{
    Filled filled(round, count);
    const QVector<Row> contacts = rows(round + 1, count);
    const double time = milliseconds([&] { fill(*filled.store, filled.source, contacts, 2000); });
    if (filled.store->getContactLastTimeStamp(filled.source, Store::AnyType, Store::AnyLocation) != 2000)
        fail("store-again");
    return time;
}

double plainStoreAgain(int round, int count)
{
    Filled filled(round, count);
    filled.store.reset();
    const QVector<Row> contacts = rows(round + 1, count);
    Plain plain(filled.folder);
    return milliseconds([&] {
        sqlite3_stmt* update = plain.prepare(updateContact);
        plain.run("BEGIN");
        const QString empty = QLatin1String("");
        for (int i = 0; i < contacts.size(); ++i) {
            const Row& row = contacts.at(i);
            plain.step(update, 2000, row.name, empty, row.phone, row.fax, row.email, row.organization, i + 1);
        }
        plain.run("COMMIT");
    });
}

/// Which contact is the nth member of a group.
int memberOf(int group, int n, int contacts)
{
    return (group * 19 + n * 241) % contacts;
}

void addGroups(Filled& filled, int groups)
{
    const QString none = QLatin1String("");
    filled.store->scopeBegin();
    for (int g = 0; g < groups; ++g) {
        filled.store->addContact(filled.source, Store::TypeGroup, Store::LocationPersonal,
                                 QString::number(g + 1), 1000, QStringLiteral("Group %1").arg(g), none, none,
                                 none, none, none);
    }
    filled.store->scopeEnd();
}

/// The members of groups, first and again, as a synchronisation stores them: with @p whole the groups and
/// their members themselves as well, otherwise the memberships of contacts that are known.
double storeGroups(int round, int memberships, bool whole)
{
    const int groups = memberships / membersOfGroup;
    Filled filled(round, memberships);
    if (!whole)
        addGroups(filled, groups);
    Store& store = *filled.store;
    const quint32 source = filled.source;
    const QString none = QLatin1String("");
    double time = 0;
    for (int again = 0; again < 2; ++again) {
        const QVector<Row> contacts = rows(round + 1 + again, memberships);
        time += milliseconds([&] {
            store.scopeBegin();
            for (int g = 0; g < groups; ++g) {
                quint32 group = quint32(memberships + g + 1);
                if (whole) {
                    group = store.addContact(source, Store::TypeGroup, Store::LocationPersonal,
                                             QString::number(g + 1), 1000, QStringLiteral("Group %1").arg(g),
                                             none, none, none, none, none);
                }
                store.unlinkContactAndGroup(0, group);
                for (int m = 0; m < membersOfGroup; ++m) {
                    const int member = memberOf(g, m, memberships);
                    quint32 id = quint32(member + 1);
                    if (whole) {
                        const Row& row = contacts.at(member);
                        id =
                            store.addContact(source, Store::TypeContact, Store::LocationPersonal, row.uid, 0,
                                             row.name, none, row.phone, row.fax, row.email, row.organization);
                    }
                    store.linkContactAndGroup(id, group);
                }
            }
            store.scopeEnd();
        });
    }
    const quint32 last = quint32(memberships + groups);
    if (store.getContactList(source, Store::AnyType, Store::AnyLocation, last, 0, 0).size() != membersOfGroup)
        fail("store-groups");
    return time;
}

double plainStoreGroups(int round, int memberships, bool whole)
{
    const int groups = memberships / membersOfGroup;
    Filled filled(round, memberships);
    if (!whole)
        addGroups(filled, groups);
    filled.store.reset();
    Plain plain(filled.folder);
    const QString empty = QLatin1String("");
    double time = 0;
    for (int again = 0; again < 2; ++again) {
        const QVector<Row> contacts = rows(round + 1 + again, memberships);
        time += milliseconds([&] {
            sqlite3_stmt* insert = plain.prepare(insertContact);
            sqlite3_stmt* update = plain.prepare("UPDATE contacts SET name=?, description=?, phone=?, fax=?, "
                                                 "email=?, organization=? WHERE id=?");
            sqlite3_stmt* unlink = plain.prepare("DELETE FROM groups WHERE contactgroup=?");
            sqlite3_stmt* link = plain.prepare("INSERT INTO groups(contact, contactgroup) VALUES(?, ?)");
            plain.run("BEGIN");
            for (int g = 0; g < groups; ++g) {
                const int group = memberships + g + 1;
                if (whole && again) {
                    plain.step(update, QStringLiteral("Group %1").arg(g), empty, empty, empty, empty, empty,
                               group);
                } else if (whole) {
                    plain.step(insert, QString::number(g + 1), 2, 2, 1, 1000,
                               QStringLiteral("Group %1").arg(g), empty, empty, empty, empty, empty);
                }
                plain.step(unlink, group);
                for (int m = 0; m < membersOfGroup; ++m) {
                    const int id = memberOf(g, m, memberships) + 1;
                    if (whole) {
                        const Row& row = contacts.at(id - 1);
                        plain.step(update, row.name, empty, row.phone, row.fax, row.email, row.organization,
                                   id);
                    }
                    plain.step(link, id, group);
                }
            }
            plain.run("COMMIT");
        });
    }
    return time;
}

/// Two sources with a book each; the contacts of the second are all members of a group.
struct TwoSources : Filled
{
    TwoSources(int round, int count)
        : Filled(round, count)
    {
        const quint32 other = newSource(*store, "other@fax");
        fill(*store, other, rows(round + 1, count), 1000);
        const QList<quint32> ids = store->getContactList(other, Store::AnyType, Store::AnyLocation, 0, 0, 0);
        store->scopeBegin();
        for (const quint32 id : ids)
            store->linkContactAndGroup(id, ids.first());
        store->scopeEnd();
    }
};

double sourceDelete(int round, int count)
{
    TwoSources filled(round, count);
    const double time = milliseconds([&] { filled.store->deleteSource(filled.source); });
    if (filled.store->quickSearch(QString(), 0, 0, 0).size() != count)
        fail("source-delete");
    return time;
}

double plainSourceDelete(int round, int count)
{
    TwoSources filled(round, count);
    filled.store.reset();
    Plain plain(filled.folder);
    plain.run("DROP TRIGGER delete_source");
    plain.run("DROP TRIGGER delete_contact");
    return milliseconds([&] {
        plain.run("BEGIN;"
                  "DELETE FROM properties WHERE contact IN (SELECT id FROM contacts WHERE source=1);"
                  "DELETE FROM groups WHERE contact IN (SELECT id FROM contacts WHERE source=1) "
                  "OR contactgroup IN (SELECT id FROM contacts WHERE source=1);"
                  "DELETE FROM contacts WHERE source=1;"
                  "DELETE FROM sources WHERE id=1;"
                  "COMMIT");
    });
}

ContactUnitPtr makeContact(Store::ContactType, Store::ContactLocation, const QString&, const QString& name,
                           const QString&, const QString& phone, const QString& fax, const QString& email,
                           const QString& organization, ContactList, void*)
{
    const auto contact = QSharedPointer<Contact>::create();
    contact->setName(name);
    contact->setPhone(phone);
    contact->setFax(fax);
    contact->setEmail(email);
    contact->setOrganization(organization);
    return contact;
}

const int page = 100;

/// The last page of the book, so often that it takes a while.
const int pageReads = 10;

double listPages(Filled& filled, int count)
{
    int found = 0;
    const double time = milliseconds([&] {
        for (int i = 0; i < pageReads; ++i) {
            found += filled.store
                         ->getContactList(makeContact, filled.source, Store::TypeContact,
                                          Store::LocationPersonal, 0, uint(count - page), page, nullptr)
                         .contacts()
                         .size();
        }
    });
    if (found != pageReads * page)
        fail("list-page");
    return time;
}

double plainListPages(const Filled& filled, int count)
{
    Plain plain(filled.folder);
    sqlite3_stmt* list =
        plain.prepare("SELECT id, uid, type, location, name, description, phone, fax, email, organization "
                      "FROM contacts WHERE source=? AND location=? AND type=? LIMIT ? OFFSET ?");
    int found = 0;
    const double time = milliseconds([&] {
        for (int i = 0; i < pageReads; ++i) {
            ContactList contacts;
            Plain::bindAll(list, int(filled.source), 2, 1, page, count - page);
            while (sqlite3_step(list) == SQLITE_ROW) {
                contacts.contacts().append(makeContact(
                    Store::TypeContact, Store::LocationPersonal, Plain::text(list, 1), Plain::text(list, 4),
                    Plain::text(list, 5), Plain::text(list, 6), Plain::text(list, 7), Plain::text(list, 8),
                    Plain::text(list, 9), ContactList(), nullptr));
            }
            sqlite3_reset(list);
            found += contacts.contacts().size();
        }
    });
    if (found != pageReads * page)
        fail("plain list-page");
    return time;
}

const int searches = 5;
const int hits = 100;

/// A part of the names of a few contacts; the whole book is read for it.
QString searched(int round, int i, int count)
{
    return QStringLiteral("CONTACT %1").arg((round * searches + i) * 37 % count);
}

double search(Filled& filled, int round, int count)
{
    int found = 0;
    const double time = milliseconds([&] {
        for (int i = 0; i < searches; ++i)
            found +=
                filled.store->quickSearch(searched(round, i, count), uint(hits), filled.source, 0).size();
    });
    if (found < searches || found > searches * hits)
        fail("search");
    return time;
}

double plainSearch(const Filled& filled, int round, int count)
{
    Plain plain(filled.folder);
    sqlite3_stmt* find =
        plain.prepare("SELECT id, name FROM contacts WHERE name LIKE ? AND source=? LIMIT ?");
    int found = 0;
    const double time = milliseconds([&] {
        for (int i = 0; i < searches; ++i) {
            QMap<quint32, QString> result;
            const QString pattern = QLatin1Char('%') + searched(round, i, count) + QLatin1Char('%');
            Plain::bindAll(find, pattern, int(filled.source), hits);
            while (sqlite3_step(find) == SQLITE_ROW)
                result.insert(quint32(sqlite3_column_int64(find, 0)), Plain::text(find, 1));
            sqlite3_reset(find);
            found += result.size();
        }
    });
    if (found < searches)
        fail("plain search");
    return time;
}

/// The longest that a reader waits for one search while another thread stores a book.
double readerWait(int round, int count)
{
    Filled filled(round, 1000);
    const QVector<Row> contacts = rows(round + 1, count);
    std::atomic_bool done{false};
    std::thread writer([&] {
        fill(*filled.store, filled.source, contacts, 2000);
        filled.store->freeStorageForThread();
        done = true;
    });
    double worst = 0;
    while (!done) {
        worst = std::max(worst, milliseconds([&] {
                             if (filled.store->quickSearch(QStringLiteral("contact"), 10, 0, 0).size() != 10)
                                 fail("reader-wait");
                         }));
    }
    writer.join();
    return worst;
}

/// A row whose two sides are functions of the round and the size.
void row(Bench& bench, const char* name, double limit, int size, double (*ours)(int, int),
         double (*baseline)(int, int))
{
    bench.ratio(
        name, limit, [=](int round) { return ours(round, size); },
        [=](int round) { return baseline(round, size); });
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    row(bench, "store-first", 2.5, bench.size(50000), storeFirst, plainStoreFirst);
    row(bench, "store-again", 3.0, bench.size(50000), storeAgain, plainStoreAgain);
    for (const bool whole : {false, true}) {
        const int size = bench.size(20000);
        bench.ratio(
            whole ? "store-groups-whole" : "store-groups", whole ? 1.5 : 1.0,
            [=](int round) { return storeGroups(round, size, whole); },
            [=](int round) { return plainStoreGroups(round, size, whole); });
    }
    if (bench.hasSize(0, 0)) {
        const auto growth = [](double (*work)(int, int)) {
            return [work](int round) { return work(round, 100000) / work(round, 10000); };
        };
        bench.ratio("store-growth", 1.5, growth(storeFirst), growth(plainStoreFirst));
    }
    row(bench, "source-delete", 1.5, bench.size(50000), sourceDelete, plainSourceDelete);
    if (bench.wants("list-page")) {
        const int count = bench.size(50000);
        Filled filled(0, count);
        bench.ratio(
            "list-page", 1.3, [&](int) { return listPages(filled, count); },
            [&](int) { return plainListPages(filled, count); });
    }
    if (bench.wants("search")) {
        const int count = bench.size(100000);
        Filled filled(0, count);
        bench.ratio(
            "search", 1.3, [&](int round) { return search(filled, round, count); },
            [&](int round) { return plainSearch(filled, round, count); });
    }
    bench.worst("reader-wait", 150, [&](int round) { return readerWait(round, bench.size(50000)); });
    return bench.exitCode();
}
