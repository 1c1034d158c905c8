// The contact store, compared with the same work through SQLite's C interface: statements prepared once, one
// transaction, ids known instead of looked up.

#include "bench.h"
#include "contact.h"
#include "contactlocalstorage.h"
#include "plainsqlite.h"
#include "quendracontact.h"
#include "quendracontactproviderdisassemblethread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTemporaryDir>
#include <QUrl>

#include <atomic>
#include <memory>

namespace {

using Store = ContactLocalStorage;

const int membersOfGroup = 100;

/// The texts of one contact, unique for each contact and round.
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

/// A temporary folder for a store's file, new for each measurement.
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

/// Stores a book.
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

/// A store that already contains one book.
struct Filled
{
    Folder folder;
    std::unique_ptr<Store> store = std::make_unique<Store>();
    quint32 source = newSource(*store);

    Filled(int round, int count) { fill(*store, source, rows(round, count), 1000); }
};

/// The worker thread of a synchronisation, which stores a book through its own connection.
class Worker
{
public:
    Worker(Store& store, quint32 source, const QVector<Row>& contacts, quint32 known, quint32 timestamp)
        : m_thread(new QuendraContactProviderDisassembleThread(&store, source, nullptr))
    {
        ContactList list;
        list.setContactsType(ContactList::PersonalContacts);
        list.contacts().reserve(contacts.size());
        for (const Row& row : contacts) {
            const auto contact = QSharedPointer<QuendraContact>::create();
            contact->setUrl(QUrl(QStringLiteral("http://127.0.0.1/qdws/v1/contacts/alice/") + row.uid));
            contact->setName(row.name);
            contact->setPhone(row.phone);
            contact->setFax(row.fax);
            contact->setEmail(row.email);
            contact->setOrganization(row.organization);
            list.contacts().append(contact);
        }
        m_thread->setContacts(list, timestamp);
        m_thread->setKnown(Store::TypeContact, Store::LocationPersonal, known);
    }
    ~Worker()
    {
        m_thread->wait();
        QCoreApplication::sendPostedEvents(m_thread, QEvent::DeferredDelete);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Milliseconds from the start until its done signal.
    double run()
    {
        QEventLoop loop;
        QObject::connect(m_thread, &QuendraContactProviderDisassembleThread::doneDisassembleContactFromThread,
                         &loop, &QEventLoop::quit);
        return milliseconds([&] {
            m_thread->start();
            loop.exec();
        });
    }

    /// Calls @p work repeatedly until the thread is done.
    template <typename Work>
    void runBeside(Work work)
    {
        std::atomic_bool isDone{false};
        QObject::connect(m_thread, &QuendraContactProviderDisassembleThread::doneDisassembleContactFromThread,
                         [&isDone] { isDone = true; });
        m_thread->start();
        while (!isDone)
            work();
        m_thread->wait();
    }

private:
    QuendraContactProviderDisassembleThread* m_thread;
};

int countOf(Store& store, quint32 source)
{
    return store.getContactList(source, Store::TypeContact, Store::LocationPersonal, 0, 0, 0).size();
}

quint32 timeOf(Store& store, quint32 source)
{
    return store.getContactLastTimeStamp(source, Store::TypeContact, Store::LocationPersonal);
}

double storeFirst(int round, int count)
{
    Folder folder;
    Store store;
    const quint32 source = newSource(store);
    const double time = Worker(store, source, rows(round, count), 0, 1000).run();
    if (countOf(store, source) != count || timeOf(store, source) != 1000)
        fail("store-first");
    return time;
}

double plainStoreFirst(int round, int count)
{
    Folder folder;
    Store().addSource(QStringLiteral("user@fax"), Store::SourceQuendra);
    const QVector<Row> contacts = rows(round, count);
    Plain plain(folder.file());
    const double time = milliseconds([&] { fillPlain(plain, contacts); });
    if (plain.number("SELECT count(*) FROM contacts WHERE timestamp=1000") != count)
        fail("plain store-first");
    return time;
}

double storeAgain(int round, int count)
{
    Filled filled(round, count);
    const double time = Worker(*filled.store, filled.source, rows(round + 1, count), 1000, 2000).run();
    if (countOf(*filled.store, filled.source) != count || timeOf(*filled.store, filled.source) != 2000)
        fail("store-again");
    return time;
}

double plainStoreAgain(int round, int count)
{
    Filled filled(round, count);
    filled.store.reset();
    const QVector<Row> contacts = rows(round + 1, count);
    Plain plain(filled.folder.file());
    const double time = milliseconds([&] {
        sqlite3_stmt* update = plain.prepare(updateContact);
        plain.run("BEGIN");
        const QString empty = QLatin1String("");
        for (int i = 0; i < contacts.size(); ++i) {
            const Row& row = contacts.at(i);
            plain.step(update, 2000, row.name, empty, row.phone, row.fax, row.email, row.organization, i + 1);
        }
        plain.run("COMMIT");
    });
    if (plain.number("SELECT count(*) FROM contacts WHERE timestamp=2000") != count)
        fail("plain store-again");
    return time;
}

/// The nth member of a group; a different contact each @p time that the group is stored.
int memberOf(int group, int n, int time, int contacts)
{
    return (group * 19 + n * 241 + time * 7) % contacts;
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

/// Stores the members of groups twice, like a synchronisation: with @p whole also the groups and the members
/// themselves, otherwise only the memberships of existing contacts.
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
                    const int member = memberOf(g, m, 2 * round + again, memberships);
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
    for (int g = 0; g < groups; ++g) {
        const quint32 group = quint32(memberships + g + 1);
        QList<quint32> ids = store.getContactList(source, Store::AnyType, Store::AnyLocation, group, 0, 0);
        if (ids.size() != membersOfGroup ||
            !ids.contains(quint32(memberOf(g, 0, 2 * round + 1, memberships)) + 1))
            fail("store-groups");
    }
    return time;
}

double plainStoreGroups(int round, int memberships, bool whole)
{
    const int groups = memberships / membersOfGroup;
    Filled filled(round, memberships);
    if (!whole)
        addGroups(filled, groups);
    filled.store.reset();
    Plain plain(filled.folder.file());
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
                    const int id = memberOf(g, m, 2 * round + again, memberships) + 1;
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
    if (plain.number("SELECT count(*) FROM groups") != groups * membersOfGroup)
        fail("plain store-groups");
    return time;
}

/// Two sources with a book each; all contacts of the second are members of a group.
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
    Plain plain(filled.folder.file());
    const double time = plain.deleteFirstSource();
    if (plain.number("SELECT count(*) FROM contacts") != count ||
        plain.number("SELECT count(*) FROM groups") != count)
        fail("plain source-delete");
    return time;
}

ContactUnitPtr makeContact(Store::ContactType, Store::ContactLocation, const QString&, const QString& name,
                           const QString&, const QString& phone, const QString& fax, const QString& email,
                           // NOLINTNEXTLINE(performance-unnecessary-value-param): the store's signature
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

/// The number of pages read in one measurement, so that it is long enough.
const int pageReads = 10;

/// The offset of a page: each round reads other pages, or the same in another order.
int pageBegin(int round, int read, int count)
{
    return qMax(0, count - page * (1 + (round * 3 + read) % (pageReads + 2)));
}

/// Whether the pages are the requested ones.
bool arePages(const QVector<ContactList>& pages, int round, int count)
{
    for (int i = 0; i < pageReads; ++i) {
        const auto& contacts = pages.at(i).contacts();
        const auto* first =
            contacts.size() == page ? dynamic_cast<Contact*>(contacts.first().data()) : nullptr;
        if (!first || first->name() != Row(0, pageBegin(round, i, count)).name)
            return false;
    }
    return true;
}

double listPages(Filled& filled, int round, int count)
{
    QVector<ContactList> pages(pageReads);
    const double time = milliseconds([&] {
        for (int i = 0; i < pageReads; ++i) {
            pages[i] = filled.store->getContactList(makeContact, filled.source, Store::TypeContact,
                                                    Store::LocationPersonal, 0,
                                                    uint(pageBegin(round, i, count)), page, nullptr);
        }
    });
    if (!arePages(pages, round, count))
        fail("list-page");
    return time;
}

double plainListPages(const Filled& filled, int round, int count)
{
    Plain plain(filled.folder.file());
    sqlite3_stmt* list =
        plain.prepare("SELECT id, uid, type, location, name, description, phone, fax, email, organization "
                      "FROM contacts WHERE source=? AND location=? AND type=? LIMIT ? OFFSET ?");
    QVector<ContactList> pages(pageReads);
    const double time = milliseconds([&] {
        for (int i = 0; i < pageReads; ++i) {
            ContactList contacts;
            Plain::bindAll(list, int(filled.source), 2, 1, page, pageBegin(round, i, count));
            while (sqlite3_step(list) == SQLITE_ROW) {
                contacts.contacts().append(makeContact(
                    Store::TypeContact, Store::LocationPersonal, Plain::text(list, 1), Plain::text(list, 4),
                    Plain::text(list, 5), Plain::text(list, 6), Plain::text(list, 7), Plain::text(list, 8),
                    Plain::text(list, 9), ContactList(), nullptr));
            }
            sqlite3_reset(list);
            pages[i] = std::move(contacts);
        }
    });
    if (!arePages(pages, round, count))
        fail("plain list-page");
    return time;
}

const int searches = 5;
const int hits = 100;

/// A text that matches a few names, so that the whole book is read.
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
    Plain plain(filled.folder.file());
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
    if (found < searches || found > searches * hits)
        fail("plain search");
    return time;
}

/// The longest time of a search while a synchronisation stores a book into a store that contains one of the
/// same size: the same book again, or another source's. The searches have hits in the first rows, no hits,
/// and one hit in the last row; the latter two read the whole book.
double readerWait(int round, int count)
{
    Filled filled(round, count);
    const bool isOther = round % 2;
    const quint32 source = isOther ? newSource(*filled.store, "other@fax") : filled.source;
    struct Search
    {
        QString text;
        int least, most;
    };
    // the book may be replaced between two searches
    const Search wanted[] = {{QStringLiteral("contact"), 10, 10},
                             {QStringLiteral("nobody's name"), 0, 0},
                             {Row(round, count - 1).name, isOther, 1}};
    double worst = 0;
    std::size_t next = 0;
    Worker(*filled.store, source, rows(round + 1, count), isOther ? 0 : 1000, 2000).runBeside([&] {
        const Search& search = wanted[next++ % std::size(wanted)];
        int found = 0;
        worst = std::max(
            worst, milliseconds([&] { found = filled.store->quickSearch(search.text, 10, 0, 0).size(); }));
        if (found < search.least || found > search.most)
            fail("reader-wait");
    });
    if (next == 0 || timeOf(*filled.store, source) != 2000)
        fail("reader-wait, what was stored");
    return worst;
}

/// A row that compares two functions of the round and the size.
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
    qRegisterMetaType<ContactList::Type>("ContactList::Type");
    Bench bench(argc, argv);
    row(bench, "store-first", 2.2, bench.size(50000), storeFirst, plainStoreFirst);
    row(bench, "store-again", 2.6, bench.size(50000), storeAgain, plainStoreAgain);
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
            "list-page", 1.3, [&](int round) { return listPages(filled, round, count); },
            [&](int round) { return plainListPages(filled, round, count); });
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
