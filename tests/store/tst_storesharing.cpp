#include "contactsdeleterthread.h"
#include "quendracontact.h"
#include "quendracontactproviderdisassemblethread.h"
#include "storekit.h"
#include "tsan_p.h"

#include <QtTest>

#include <functional>
#include <future>
#include <thread>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

/// A thread of Qt's, for its object: the store tells threads apart by the addresses of these.
class Worker : public QThread
{
public:
    explicit Worker(std::function<void()> work)
        : m_work(std::move(work))
    {}
    void complete()
    {
        start();
        wait();
        tsanTakeOver(this);
    }

protected:
    void run() override
    {
        m_work();
        tsanHandOver(this);
    }

private:
    std::function<void()> m_work;
};

/// For as long as this lives, no file grows beyond so many bytes, as on a failing disk; which needs no
/// rights.
class FileLimit
{
public:
#ifdef Q_OS_UNIX
    explicit FileLimit(quint32 size)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{size, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
    }

private:
    rlimit m_before{};
#else
    explicit FileLimit(quint32) {}
#endif
};

} // namespace

/// The contact cache shared with threads and other programs, its brackets, and files that refuse to be
/// written.
class StoreSharingTest : public StoreTest
{
    Q_OBJECT

    /// Runs a statement on the store's own connection of this thread, the only one that is open.
    static bool onTheStores(const char* text)
    {
        return QSqlQuery(QSqlDatabase::database(QSqlDatabase::connectionNames().constFirst())).exec(s(text));
    }
    void inAThread(const std::function<void()>& work)
    {
        std::thread([&] {
            work();
            m_store->freeStorageForThread();
        }).join();
    }

private Q_SLOTS:
    void init() { newStore(); }
    void cleanup() { closeStore(); }

    void bracketChangesNothing()
    {
        // The same random operations by themselves and in brackets: what a bracket remembers and keeps back
        // may show neither in the results nor in the file.
        const auto run = [&](quint32 seed, bool brackets) {
            newStore();
            QRandomGenerator random(seed);
            const auto number = [&random](int limit) { return quint32(random.bounded(limit)); };
            QList<quint32> results;
            int inBracket = 0;
            for (quint32 i = 0; i < 700; ++i) {
                if (brackets && inBracket == 0)
                    m_store->scopeBegin();
                const quint32 id = 1 + number(90);
                const quint32 other = 1 + number(90);
                const auto type = static_cast<Store::ContactType>(1 + number(2));
                const auto location = static_cast<Store::ContactLocation>(1 + number(2));
                const QString uid = QString::number(number(120));
                const quint32 what = number(100);
                if (what < 45)
                    results += add(uid, QString::number(i), type, location, account, number(3) * i);
                else if (what < 65)
                    m_store->linkContactAndGroup(id, other);
                else if (what < 70)
                    m_store->unlinkContactAndGroup(number(2) ? id : 0, number(2) ? other : 0);
                else if (what < 75)
                    m_store->updateContactInfo(id, number(2), uid, uid, uid, uid, uid, uid);
                else if (what < 79)
                    m_store->deleteContact(id);
                else if (what < 82)
                    m_store->deleteContact(account, type, location, uid);
                else if (what < 83)
                    m_store->deleteContactsIfNotInUIDS(account, type, location, {uid, s("5")});
                else if (what < 86)
                    m_store->addProperty(id, key(1), uid);
                else if (what < 90)
                    results += m_store->getContact(account, type, location, uid);
                else if (what < 93)
                    results += m_store->getContactLastTimeStamp(account, type, location);
                else if (what < 96)
                    results += m_store->quickSearch(uid, 0, 0, 0).keys();
                else
                    results += m_store->getContactList(account, type, anywhere, id, 0, 0);
                inBracket = (inBracket + 1) % 140;
                if (brackets && inBracket == 0)
                    m_store->scopeEnd();
            }
            return spelled(results) + QLatin1Char('\n') + everything();
        };
        for (quint32 seed = 1; seed <= 5; ++seed) {
            const QString plain = run(seed, false);
            QVERIFY(raw("SELECT id FROM contacts").count(QLatin1Char(' ')) > 50);
            QCOMPARE(run(seed, true), plain);
        }
    }

    void bracketFindsTheFirst()
    {
        // Rows that another program left: several with one uid, one without any.
        QCOMPARE(raw("INSERT INTO contacts(uid, type, location, source) VALUES(NULL, 1, 2, 1), "
                     "('7', 1, 2, 1), ('7', 1, 2, 1)"),
                 QString());
        m_store->scopeBegin();
        add(6);
        QCOMPARE(add(7), 2U);
        QCOMPARE(find(none), 0U);
        m_store->deleteContact(2);
        QCOMPARE(add(7), 3U);
        // The database takes a byte order mark off.
        const quint32 marked = add(QChar(0xFEFF) + s("8"));
        QCOMPARE(add(8), marked);
        // Deleting what has no row takes no membership of it.
        m_store->linkContactAndGroup(99, marked);
        m_store->deleteContact(99);
        m_store->linkContactAndGroup(99, marked);
        m_store->scopeEnd();
        QCOMPARE(raw("SELECT contact FROM groups"), s("99"));
    }

    void nestedBrackets()
    {
        m_store->scopeEnd(); // of nothing
        QVERIFY(m_store->scopeBegin());
        QVERIFY(m_store->scopeBegin());
        add(1);
        QVERIFY(m_store->scopeEnd());
        QCOMPARE(uids(), QString());
        add(2);
        m_store->scopeEnd();
        QCOMPARE(uids(), s("1 2"));
        for (const char* line : {"Transaction mutex locked", "Transaction commit started",
                                 "Transaction commit finished", "Transaction mutex unlocked"})
            QCOMPARE(logged(line), 2);
        QCOMPARE(logged("[ERROR"), 0);

        // A thread that gives up its connection in the middle takes back what it wrote, and leaves no lock.
        m_store->scopeBegin();
        add(3);
        m_store->freeStorageForThread();
        m_store->scopeEnd();
        inAThread([this] { add(4); });
        QCOMPARE(uids(), s("1 2 4"));
    }

    void largeBracket()
    {
        // Readers see the state before it, writers wait for its end.
        const int size = 20000;
        add(size + 1);
        m_store->scopeBegin();
        QElapsedTimer timer;
        timer.start();
        for (int i = 1; i <= size; ++i)
            add(i, QString(100, QLatin1Char('x')));
        const qint64 adding = timer.restart();
        for (int i = 2; i <= 201; ++i)
            m_store->deleteContact(account, people, personal, QString::number(i));
        // What the bracket knows of the others stays known when one goes.
        QVERIFY2(timer.elapsed() < adding, qPrintable(s("adding took %1 ms").arg(adding)));
        int foundWithin = -1;
        inAThread([&] { foundWithin = m_store->quickSearch(none, 0, 0, 0).size() + int(find(s("1"))); });
        auto deleted = std::async(std::launch::async, [&] {
            m_store->deleteContact(account, people, personal, s("1"));
            m_store->freeStorageForThread();
        });
        const auto wait = deleted.wait_for(std::chrono::milliseconds(50));
        m_store->scopeEnd();
        deleted.wait();
        QCOMPARE(foundWithin, 1);
        QVERIFY(wait == std::future_status::timeout);
        QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), size - 200);
    }

    void failedWrite_data()
    {
        const Rows<QString> row("refused");
        row("contact, the last one", "INSERT ON contacts WHEN NEW.uid='last'");
        row("contact among others", "INSERT ON contacts WHEN NEW.uid='400'");
        row("first contact", "INSERT ON contacts WHEN NEW.uid='301'");
        row("change", "UPDATE ON contacts WHEN OLD.uid='150'");
        row("membership", "INSERT ON groups");
        row("membership's end", "DELETE ON groups WHEN OLD.contact=2");
        row("property", "INSERT ON properties");
        row("property's end", "DELETE ON properties WHEN OLD.type=2");
        row("deletion", "DELETE ON contacts WHEN OLD.uid='7'");
        row("deletion of few", "DELETE ON contacts WHEN OLD.uid='few'");
        row("deletion of many", "DELETE ON contacts WHEN OLD.uid='many'");
        row("source", "INSERT ON sources");
        row("no more pages", "");
#ifdef Q_OS_UNIX
        row("full disk", "");
#endif
        row("a reader that stays", "");
        row("a writer that was there", "");
    }
    void failedWrite()
    {
        // Whatever fails in a bracket, and however SQLite goes on, the book is stored whole or not at all.
        QFETCH(QString, refused);
        std::optional<FileLimit> disk;
        std::optional<OtherProgram> reader; // lets the bracket run, and not commit
        std::optional<OtherProgram> writer; // lets it not begin
        const QString how = s(QTest::currentDataTag());
        const quint32 group = add(s("g"), none, groups);
        m_store->scopeBegin();
        for (int i = 1; i <= 300; ++i)
            add(i, QString(1000, QLatin1Char('o')));
        for (int i = 1; i <= 40; ++i)
            add(i == 40 ? s("many") : QString::number(i), none, groups, global);
        add(s("few"), none, people, global);
        m_store->linkContactAndGroup(2, group);
        m_store->addProperty(2, key(2), none);
        m_store->scopeEnd();
        const QString before = everything();

        // Returns the id of the last contact and whether the bracket inside still ran.
        const auto storeBook = [&] {
            m_store->scopeBegin();
            writer.reset(); // what would be written now would be part of a book
            for (int i = 1; i <= 600; ++i) {
                const QString name(1000, QLatin1Char('n'));
                m_store->linkContactAndGroup(add(QString::number(i), name, people, personal, account, 2),
                                             group);
            }
            m_store->unlinkContact(2);
            m_store->addProperty(3, key(3), none);
            m_store->deleteProperty(2, key(2));
            m_store->addSource(s("another"), Store::SourceOutlook);
            m_store->deleteContact(account, people, personal, s("7"));
            m_store->deleteContactList(account, people, global);
            m_store->deleteContactList(account, groups, global);
            const bool inner = m_store->scopeBegin();
            const quint32 last = add(s("last"));
            m_store->scopeEnd();
            m_store->linkContactAndGroup(group, group);
            m_store->scopeEnd();
            return qMakePair(last, inner);
        };
        bool atTheEnd = refused.endsWith(s("'last'"));
        if (how == s("a reader that stays")) {
            reader.emplace(s("SELECT uid FROM contacts"));
            atTheEnd = reader->next() && onTheStores("PRAGMA busy_timeout=100");
        } else if (how == s("a writer that was there")) {
            writer.emplace(s("BEGIN EXCLUSIVE"));
            QVERIFY(writer->works() && onTheStores("PRAGMA busy_timeout=100"));
        } else if (!refused.isEmpty()) {
            QCOMPARE(raw(s("CREATE TRIGGER refuse BEFORE %1 BEGIN SELECT RAISE(ABORT, 'refused'); END")
                             .arg(refused)),
                     QString());
        } else if (how == s("full disk")) {
            disk.emplace(100 * 1024); // SQLite's journal is larger
        } else {
            QVERIFY(onTheStores("PRAGMA max_page_count=180"));
        }
        QCOMPARE(storeBook(), qMakePair(atTheEnd ? 643U : 0U, atTheEnd));
        reader.reset();
        disk.reset();
        QCOMPARE(everything(), before);
        QVERIFY(logged("Error to add contact (db insert)") > 0);

        // The next one repairs it.
        QCOMPARE(raw("DROP TRIGGER IF EXISTS refuse"), QString());
        QVERIFY(onTheStores("PRAGMA max_page_count=1073741823"));
        bool isRepaired = false;
        inAThread([&] { isRepaired = storeBook().second; }); // which gets the mutex
        QVERIFY(isRepaired);
        QCOMPARE(raw("SELECT count(*), sum(timestamp), max(id) FROM contacts"), s("601|1200|643"));
        QCOMPARE(raw("SELECT count(*) FROM groups"), s("599"));
        QCOMPARE(raw("SELECT * FROM properties"), s("3|3|"));
        m_store.reset();
    }

    void lockedForLong()
    {
        // Another program has the file for longer than SQLite's patience, which is 5 s (or for as long as
        // QDCORE_LOCK_SECONDS says): a worker waits once and not for each contact, leaves the book as it
        // was, and says that it is done. The next one stores it all.
        for (const int uid : {1, 2, 9})
            add(uid, s("old"));
        const QString before = everything();
        ContactList book;
        book.setContactsType(ContactList::PersonalContacts);
        const QStringList ids{s("1"), s("2"), s("3"), s("4")};
        for (const QString& id : ids) {
            QuendraContact contact;
            contact.setUrl(QUrl(s("https://fax/user/contacts/") + id));
            contact.setName(s("new"));
            book.addContact(contact);
        }
        const auto synchronise = [&](quint32 known) {
            auto* const deleter =
                new ContactsDeleterThread(m_store.get(), account, people, personal, ids, nullptr);
            auto* const writer = new QuendraContactProviderDisassembleThread(m_store.get(), account, nullptr);
            writer->setContacts(book, known - 2);
            deleter->setKnown(known);
            writer->setKnown(people, personal, known - 1);
            const QPointer<QThread> threads[] = {deleter, writer};
            deleter->start();
            writer->start();
            return spinUntil([&] { return !threads[0] && !threads[1]; }, 18);
        };
        {
            const OtherProgram other(s("BEGIN IMMEDIATE"));
            QVERIFY(other.works());
            const QDeadlineTimer longest(1000 * qEnvironmentVariableIntValue("QDCORE_LOCK_SECONDS"));
            do {
                QVERIFY(synchronise(9));
                QCOMPARE(everything(), before);
            } while (!longest.hasExpired());
        }
        QVERIFY(synchronise(9));
        const char* const stored = "SELECT uid, name, timestamp FROM contacts ORDER BY uid";
        QCOMPARE(raw(stored), s("1|new|7 2|new|7 3|new|7 4|new|7"));

        // Somebody has stored newer ones than were known when the server was asked.
        add(s("8"), s("newer"), people, personal, account, 20);
        QVERIFY(synchronise(10));
        QCOMPARE(raw(stored), s("1|new|7 2|new|7 3|new|7 4|new|7 8|newer|20"));
    }

    void manyThatCannotBeCounted()
    {
        // Another program lets go of the file after the counting was given up. Taken for few, the rows would
        // go one by one; the schema's version tells that they did not.
        for (int i = 1; i <= 40; ++i)
            add(i);
        const QString version = raw("PRAGMA schema_version");
        QVERIFY(onTheStores("PRAGMA busy_timeout=1000"));
        std::promise<void> locked;
        std::promise<void> never;
        std::thread program([&] {
            const OtherProgram other(s("BEGIN EXCLUSIVE"));
            locked.set_value();
            never.get_future().wait_for(std::chrono::milliseconds(1200));
        });
        locked.get_future().wait();
        m_store->deleteContactList(account, anyType, anywhere);
        program.join();
        QCOMPARE(uids(), QString());
        QVERIFY(raw("PRAGMA schema_version") != version);
    }

    void manyThreadsInTurn()
    {
        // All thread objects stand at one address, so all connections bear one name; half of the threads do
        // not free theirs.
        std::optional<Worker> worker;
        for (int i = 1; i <= 300; ++i) {
            worker.emplace([&, i] {
                if (m_store->scopeBegin())
                    add(i);
                m_store->scopeEnd();
                if (i > 150)
                    m_store->freeStorageForThread();
            });
            worker->complete();
        }
        QCOMPARE(raw("SELECT count(*) FROM contacts"), s("300"));
        QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
        QCOMPARE(logged("[ERROR"), 0);
    }

    void badFiles_data()
    {
        const Rows<QString> row("message");
        row("no database", "Error creating database");
        row("a folder in its place", "Error opening database");
        row("folder cannot be made", "Error creating path ");
        row("read-only", "");
    }
    void badFiles()
    {
        QFETCH(QString, message);
        const QString what = s(QTest::currentDataTag());
        add(s("1"), s("n"));
        m_store.reset();
        const QString file = storeFile();
        const bool readable = what == s("read-only");
        if (readable) {
            QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
        } else {
            QVERIFY(QFile::remove(file));
        }
        if (what == s("no database")) {
            writeFile(file, QByteArray(5000, 'x'));
        } else if (what == s("a folder in its place")) {
            QVERIFY(QDir().mkpath(file));
        } else if (what == s("folder cannot be made")) {
            const QString blocker = m_dir->filePath(s("blocker"));
            writeFile(blocker, "");
            qputenv("APPDATA", blocker.toLocal8Bit());
        }

        m_store = std::make_unique<Store>();
        QVERIFY(m_log->text().contains(message));
        QCOMPARE(m_store->scopeBegin(), readable); // SQLite begins a transaction that can only read.
        if (readable)
            QVERIFY(onTheStores("PRAGMA query_only=1")); // for root, who may write every file
        QCOMPARE(add(2), 0U);
        m_store->scopeEnd();
        QCOMPARE(logged("Error to add contact (db insert)"), 1);
        QCOMPARE(m_store->addSource(s("new"), Store::SourceQuendra), 0U);
        QCOMPARE(logged("Error to add source (db insert)"), 1);
        m_store->updateContactInfo(1, 2, none, none, none, none, none, none);
        m_store->linkContactAndGroup(1, 1);
        m_store->unlinkGroup(1);
        m_store->addProperty(1, key(1), none);
        m_store->deleteContactsIfNotInUIDS(account, anyType, anywhere, {QString()});
        m_store->deleteContact(1);
        m_store->deleteSource(account);
        QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), readable ? 1 : 0);
        QCOMPARE(units(anyType, anywhere).contacts().size(), readable ? 1 : 0);
        QCOMPARE(m_store->getContactLastTimeStamp(1, anyType, anywhere), readable ? 1U : 0U);
        QString value = s("kept");
        QVERIFY(!m_store->getPropertyInfo(1, key(1), value));
        QCOMPARE(value, s("kept"));
        m_store.reset();
    }
};
QTEST_GUILESS_MAIN(StoreSharingTest)
#include "tst_storesharing.moc"
