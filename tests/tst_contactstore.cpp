#include "contact.h"
#include "contactgroup.h"
#include "contactrow_p.h"
#include "contactsdeleterthread.h"
#include "quendracontact.h"
#include "quendracontactproviderdisassemblethread.h"
#include "shorthand.h"
#include "storefile.h"
#include "testkit.h"

#include <QRandomGenerator>
#include <QStorageInfo>
#include <QThread>
#include <QtTest>

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>
#endif

using Store = ContactLocalStorage;

namespace {

const QString none;
const quint32 account = 1; ///< The source that every test begins with.
const auto people = Store::TypeContact;
const auto groups = Store::TypeGroup;
const auto global = Store::LocationGlobal;
const auto personal = Store::LocationPersonal;
const auto anyType = Store::AnyType;
const auto anywhere = Store::AnyLocation;

Store::PropertyType key(quint32 number)
{
    return static_cast<Store::PropertyType>(number);
}

ContactUnitPtr makeUnit(Store::ContactType type, Store::ContactLocation, const QString& uid,
                        const QString& name, const QString& description, const QString&, const QString& fax,
                        const QString&, const QString&, ContactList members, void* userData)
{
    ++*static_cast<int*>(userData);
    if (uid == QLatin1String("null"))
        return ContactUnitPtr();
    if (type == Store::TypeGroup) {
        const auto group = QSharedPointer<ContactGroup>::create();
        group->setName(name);
        group->setDescription(description);
        group->setContacts(members);
        return group;
    }
    const auto contact = QSharedPointer<Contact>::create();
    contact->setName(name);
    contact->setFax(fax);
    return contact;
}

/// A list as a text: names, with the members of groups in parentheses.
QString spelled(const ContactList& list)
{
    QStringList parts;
    for (const ContactUnitPtr& unit : list.contacts()) {
        if (const auto* group = dynamic_cast<const ContactGroup*>(unit.data()))
            parts += group->name() + QLatin1Char('(') + spelled(group->contacts()) + QLatin1Char(')');
        else
            parts += unit ? static_cast<const Contact*>(unit.data())->name() : s("null");
    }
    return parts.join(QLatin1Char(' '));
}

QString spelled(const QList<quint32>& ids)
{
    QStringList parts;
    for (const quint32 id : ids)
        parts += QString::number(id);
    return parts.join(QLatin1Char(' '));
}

/// A disk of 4 MB on a folder, or the folder made read-only, in a namespace of the calling thread. Needs the
/// rights of root.
class SmallDisk
{
public:
    explicit SmallDisk(const QString& folder, bool readOnly = false)
        : m_folder(folder)
    {
#ifdef Q_OS_LINUX
        m_usual = open("/proc/thread-self/ns/mnt", O_RDONLY | O_CLOEXEC);
        const QByteArray path = m_folder.toLocal8Bit();
        m_works =
            m_usual >= 0 && unshare(CLONE_NEWNS) == 0 &&
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            (readOnly ? mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
                            mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0
                      : mount("tmpfs", path, "tmpfs", 0, "size=4m") == 0);
#else
        Q_UNUSED(readOnly)
#endif
    }
    ~SmallDisk()
    {
#ifdef Q_OS_LINUX
        if (m_works)
            umount2(m_folder.toLocal8Bit(), MNT_DETACH);
        if (m_usual >= 0) {
            setns(m_usual, CLONE_NEWNS);
            close(m_usual);
        }
#endif
    }
    Q_DISABLE_COPY(SmallDisk)
    bool works() const
    {
        return m_works;
    }
    QString ballast() const
    {
        return m_folder + QStringLiteral("/ballast");
    }
    /// Leaves so many bytes free.
    bool fill(qint64 free) const
    {
        QFile file(ballast());
        const qint64 size = QStorageInfo(m_folder).bytesAvailable() - free;
        return file.open(QIODevice::WriteOnly) && file.write(QByteArray(int(size), 'x')) == size;
    }

private:
    QString m_folder;
    int m_usual{-1};
    bool m_works{false};
};

/// A thread of Qt's, for its object: the store tells threads apart by the addresses of these.
class Worker : public QThread
{
public:
    explicit Worker(std::function<void()> work)
        : m_work(std::move(work))
    {}
    /// Runs the work, and comes back when it is done; by a promise, since ThreadSanitizer does not see Qt's
    /// own wait.
    void complete()
    {
        start();
        m_done.get_future().wait();
        wait();
    }

protected:
    void run() override
    {
        m_work();
        m_done.set_value();
    }

private:
    std::function<void()> m_work;
    std::promise<void> m_done;
};

} // namespace

/// The contact cache: what is in the tables, what threads do to each other, what bad files do.
class ContactStoreTest : public QObject
{
    Q_OBJECT

    quint32 add(const QString& uid, const QString& name = none, Store::ContactType type = people,
                Store::ContactLocation location = personal, quint32 source = account, quint32 timestamp = 1)
    {
        return m_store->addContact(source, type, location, uid, timestamp, name, none, none, none, none,
                                   none);
    }
    quint32 add(int uid, const QString& name = none) { return add(QString::number(uid), name); }
    /// The id of one of the people in the account's own book.
    quint32 find(const QString& uid, quint32 source = account) const
    {
        return m_store->getContact(source, people, personal, uid);
    }
    ContactList units(Store::ContactType type, Store::ContactLocation location, quint32 group = 0,
                      uint offset = 0, uint limit = 0)
    {
        return m_store->getContactList(makeUnit, account, type, location, group, offset, limit, &m_units);
    }
    static QString raw(const QString& text) { return OtherProgram(text).rows().join(QLatin1Char(' ')); }
    static QString raw(const char* text) { return raw(s(text)); }
    static QString uids() { return raw("SELECT uid FROM contacts"); }
    static QString everything()
    {
        return raw("SELECT * FROM sources") + s("\n") + raw("SELECT * FROM contacts") + s("\n") +
               raw("SELECT * FROM properties") + s("\n") + raw("SELECT * FROM groups");
    }
    /// Runs a statement on the store's own connection of this thread, the only one that is open.
    static bool onTheStores(const char* text)
    {
        return QSqlQuery(QSqlDatabase::database(QSqlDatabase::connectionNames().constFirst())).exec(s(text));
    }
    int logged(const char* text) const { return m_log->text().count(s(text)); }
    /// To where nothing can be written; whatever comes through shows.
    void writeInEveryWay()
    {
        m_store->updateContactInfo(1, 2, none, none, none, none, none, none);
        m_store->linkContactAndGroup(1, 1);
        m_store->unlinkGroup(1);
        m_store->addProperty(1, key(1), none);
        m_store->deleteContactsIfNotInUIDS(account, anyType, anywhere, {QString()});
        m_store->deleteContact(1);
        m_store->deleteSource(account);
    }
    void inAThread(const std::function<void()>& work)
    {
        std::thread([&] {
            work();
            m_store->freeStorageForThread();
        }).join();
    }
    void openStore()
    {
        m_store = std::make_unique<Store>();
        m_store->addSource(s("user@fax"), Store::SourceQuendra);
    }
    void newStore()
    {
        m_store.reset();
        m_dir = std::make_unique<QTemporaryDir>();
        qputenv("APPDATA", m_dir->path().toLocal8Bit());
        m_log.emplace();
        openStore();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::optional<TestLog> m_log;
    std::unique_ptr<Store> m_store;
    int m_units{0}; ///< How often makeUnit() was called.

private Q_SLOTS:
    void init() { newStore(); }

    void cleanup()
    {
        m_store.reset();
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
        m_log.reset();
    }

    void schema()
    {
        QCOMPARE(raw("SELECT type, name FROM sqlite_master WHERE name NOT LIKE 'sqlite%' ORDER BY rowid"),
                 s("table|contacts table|sources table|properties table|groups trigger|delete_source "
                   "trigger|delete_contact"));
        const QString before = everything();
        m_store.reset();
        QCOMPARE(raw("DROP TABLE groups"), QString());
        m_store = std::make_unique<Store>(); // a table that got lost is made again, and the others stay
        QCOMPARE(everything(), before);
    }

    void connections()
    {
        QVERIFY(QSqlDatabase::connectionNames().first().startsWith(s("contacts.sqlite:0x")));
        m_store->freeStorageForThread();
        m_store->freeStorageForThread();
        QCOMPARE(QSqlDatabase::connectionNames().size(), 0);
        QVERIFY(add(1));

        // Two stores on one thread have one connection; each goes on when the other is gone.
        auto second = std::make_unique<Store>();
        QVERIFY(second->getContact(account, people, personal, s("1")));
        QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
        second.reset();
        QVERIFY(add(2));
    }

    void sources()
    {
        const QString name = s("user@fax");
        QCOMPARE(m_store->addSource(name, Store::SourceQuendra), account);
        QCOMPARE(m_store->addSource(name, Store::SourceOutlook), 2U);
        QCOMPARE(m_store->addSource(none, Store::SourceQuendra), 3U);
        QCOMPARE(m_store->addSource(none, Store::SourceQuendra), 3U);
        QCOMPARE(m_store->getSource(s("User@fax"), Store::SourceQuendra), 0U);
        QCOMPARE(spelled(m_store->getSourceList(Store::AnySource, 1, 1)), s("1 2 3"));
        QCOMPARE(spelled(m_store->getSourceList(Store::SourceQuendra)), s("1 3"));

        QString found = s("kept");
        Store::SourceType type = Store::AnySource;
        QVERIFY(!m_store->getSourceInfo(7, found, type));
        QCOMPARE(found, s("kept"));
        QVERIFY(m_store->getSourceInfo(2, found, type));
        QCOMPARE(found, name);
        QCOMPARE(type, Store::SourceOutlook);
        m_store->deleteSource(name, Store::SourceOutlook);
        m_store->deleteSource(s("nobody"), Store::SourceOutlook);
        QCOMPARE(spelled(m_store->getSourceList(Store::AnySource)), s("1 3"));
        // Ids are never used again, so a provider that still holds one finds nothing.
        m_store->deleteSource(3);
        QCOMPARE(m_store->addSource(none, Store::SourceQuendra), 4U);
    }

    void addAndUpdate_data()
    {
        const Rows<bool> row("bracket");
        row("by itself", false);
        row("in a bracket", true);
    }
    void addAndUpdate()
    {
        QFETCH(bool, bracket);
        if (bracket)
            QVERIFY(m_store->scopeBegin());
        const auto store = [this](quint32 timestamp, const char* name, const QString& phone) {
            return m_store->addContact(account, people, global, s("7"), timestamp, s(name), none, phone,
                                       s("f"), s("e"), s("o"));
        };
        const quint32 other = add(7, s("the same uid in another book"));
        const quint32 id = store(4000000000U, "n", s("p"));
        QVERIFY(id != other);
        QCOMPARE(store(0, "N", none), id);
        QCOMPARE(m_store->getContact(account, people, global, s("7")), id);
        QCOMPARE(m_store->getContact(account, groups, global, s("7")), 0U);

        const auto row = ContactRow::read(m_store.get(), id).value();
        QCOMPARE((QStringList{row.uid, row.name, row.description, row.phone, row.fax, row.email,
                              row.organization, QString::number(row.timestamp)})
                     .join(QLatin1Char('|')),
                 s("7|N|||f|e|o|4000000000"));
        QVERIFY(row.type == people && row.location == global && row.source == account);
        QVERIFY(!ContactRow::read(m_store.get(), 99));
        QCOMPARE(m_store->getContactLastTimeStamp(account, anyType, anywhere), 4000000000U);
        QCOMPARE(m_store->getContactLastTimeStamp(account, people, personal), 1U);
        QCOMPARE(m_store->getContactLastTimeStamp(account, groups, anywhere), 0U);

        QString value;
        const auto large = key(3000000000U);
        QVERIFY(!m_store->getPropertyInfo(id, large, value));
        m_store->addProperty(id, large, s("a"));
        m_store->addProperty(id, large, none);
        m_store->addProperty(id, key(1), s("b"));
        QVERIFY(m_store->getPropertyInfo(id, key(1), value));
        QCOMPARE(value, s("b"));
        m_store->deleteProperty(id, key(1));
        if (bracket)
            m_store->scopeEnd();
        QCOMPARE(raw("SELECT * FROM properties"), s("%1|3000000000|").arg(id));
        m_store->deleteContact(account, people, global, s("7"));
        QCOMPARE(raw("SELECT id FROM contacts") + raw("SELECT * FROM properties"), QString::number(other));
    }

    void oddTexts_data()
    {
        const Rows<QString> row("text");
        row("null", none);
        row("quotes", "O'Hara \"; DROP TABLE contacts; --");
        row("wildcards", "100%_?1");
        row("NUL", QString(QLatin1String("a\0b", 3)));
        row("emoji", "\U0001F4E0 Stra\u00DFe");
        row("half a pair", QString(QChar(0xD83D)) + QLatin1Char('x'));
        row("byte order mark", QString(QChar(0xFEFF)) + QLatin1Char('x'));
        row("swapped byte order mark", QString(QChar(0xFFFE)) + QLatin1Char('x'));
        row("1 MB", QString(1 << 20, QLatin1Char('x')));
    }
    void oddTexts()
    {
        QFETCH(QString, text);
        const auto store = [&] {
            return m_store->addContact(account, people, personal, text, 1, text, text, text, text, text,
                                       text);
        };
        const quint32 id = store();
        QVERIFY(id);
        QCOMPARE(store(), id);
        m_store->scopeBegin();
        QCOMPARE(store(), id);
        m_store->deleteContact(id);
        const quint32 again = store();
        QVERIFY(again > id);
        QCOMPARE(store(), again);
        m_store->scopeEnd();
        QCOMPARE(find(text), again);
        if (text.isValidUtf16() && text.indexOf(QChar(0xFEFF)) && text.indexOf(QChar(0xFFFE)))
            QCOMPARE(m_store->quickSearch(none, 0, 0, 0).value(again), text);
    }

    void lists_data()
    {
        const Rows<int, int, quint32, uint, uint, QString> row("type", "location", "group", "offset", "limit",
                                                               "ids");
        // 1 to 4 are contacts, 5 and 6 groups; the even ones are global; 2, 3 and 6 are members of 5.
        row("all", 0, 0, 0, 0, 0, "1 2 3 4 5 6");
        row("an offset without limit does nothing", 0, 0, 0, 3, 0, "1 2 3 4 5 6");
        row("page", 0, 0, 0, 2, 3, "3 4 5");
        row("beyond the end", 0, 0, 0, 6, 3, "");
        row("largest limit", 0, 0, 0, 0, 4294967295U, "1 2 3 4 5 6");
        row("type", 1, 0, 0, 0, 0, "1 2 3 4");
        row("location", 0, 1, 0, 0, 0, "2 4 6");
        row("both", 1, 1, 0, 0, 0, "2 4");
        row("both, page", 1, 1, 0, 1, 1, "4");
        row("group", 0, 0, 5, 0, 0, "2 3 6");
        row("group, page", 0, 0, 5, 1, 1, "3");
        row("group and type", 1, 0, 5, 0, 0, "2 3");
        row("group and location", 0, 1, 5, 0, 0, "2 6");
        row("group and location, page", 0, 1, 5, 1, 9, "6");
        row("the group does not count beside both", 1, 1, 5, 0, 0, "2 4");
        row("unknown group", 0, 0, 9, 0, 0, "");
    }
    void lists()
    {
        QFETCH(int, type);
        QFETCH(int, location);
        QFETCH(quint32, group);
        QFETCH(uint, offset);
        QFETCH(uint, limit);
        QFETCH(QString, ids);
        for (int i = 1; i <= 6; ++i) {
            const QString text = QString::number(i);
            add(text, text, i < 5 ? people : groups, i % 2 ? personal : global);
        }
        add(s("1"), s("7"), people, global, m_store->addSource(s("other"), Store::SourceOutlook));
        for (const quint32 member : {2U, 3U, 6U, 7U, 3U})
            m_store->linkContactAndGroup(member, 5);
        const auto t = static_cast<Store::ContactType>(type);
        const auto l = static_cast<Store::ContactLocation>(location);
        QCOMPARE(spelled(m_store->getContactList(account, t, l, group, offset, limit)), ids);
        const QRegularExpression members(s("\\((\\d( |\\(\\))*)*\\)"));
        QCOMPARE(spelled(units(t, l, group, offset, limit)).remove(members), ids);
    }

    void unitsAndLinks()
    {
        const quint32 a = add(s("1"), s("a"));
        const quint32 lost = add(s("null"), s("lost"));
        const quint32 g = add(s("2"), s("g"), groups);
        const quint32 h = add(s("3"), s("h"), groups);
        const quint32 self = add(s("4"), s("self"), groups);
        add(s("5"), s("odd kind"), static_cast<Store::ContactType>(9));
        for (const auto& [member, group] : std::initializer_list<std::pair<quint32, quint32>>{
                 {a, g}, {lost, g}, {h, g}, {g, h}, {a, h}, {self, self}, {99, g}})
            m_store->linkContactAndGroup(member, group);

        // Groups that contain each other end where they meet again. A member that is null is lost with its
        // copy.
        const ContactList list = units(anyType, personal);
        QCOMPARE(spelled(list), s("a null g(a h(a g())) h(a g(a h())) self(self()) odd kind"));
        QCOMPARE(list.contactsType(), ContactList::Unknown);

        const char* const links = "SELECT * FROM groups";
        m_store->unlinkContact(a);
        m_store->unlinkContactAndGroup(lost, g);
        m_store->unlinkContactAndGroup(0, 0);
        QCOMPARE(raw(links), s("%2|%1 %1|%2 %3|%3 99|%1").arg(g).arg(h).arg(self));
        m_store->unlinkGroup(g);
        m_store->deleteContact(self);
        QCOMPARE(raw(links), s("%1|%2").arg(g).arg(h));
    }

    void deleteNotIn_data()
    {
        const Rows<QString, QString> row("uids", "left"); // uids with "|" between them
        const char* const all = "12 15 17 abc";
        row("two stay", "12|15", "12 15");
        row("leading zero", "12|0015", all);
        row("zero", "12|0", "12");
        row("empty book", "", "");
        row("an empty one among others", "12|", all);
        row("blank", " 12", all);
        row("letters", "12|abc", all);
        row("sign", "-1", all);
        row("quoted", "'12'", all);
        row("SQL", "12); DELETE FROM sources; --", all);
        row("SQL without blanks", "12)OR(1=1", all);
        row("other digits", "\u0661", all);
        row("18 digits", "12|123456789012345678", "12");
        row("19 digits", "12|1234567890123456789", all);
        row("2 MB", s("100000000000000000|").repeated(100000) + s("12"), "12");
    }
    void deleteNotIn()
    {
        QFETCH(QString, uids);
        for (const char* uid : {"12", "15", "17", "abc"})
            add(s(uid));
        add(s("18"), none, people, global);
        add(s("18"), none, groups);
        m_store->deleteContactsIfNotInUIDS(account, people, personal, {}); // no list: nothing goes
        QCOMPARE(raw("SELECT count(*) FROM contacts"), s("6"));
        m_store->deleteContactsIfNotInUIDS(account, people, personal, uids.split(QLatin1Char('|')));
        QTEST(raw("SELECT uid FROM contacts WHERE type=1 AND location=2"), "left");
        QCOMPARE(raw("SELECT uid FROM contacts WHERE uid='18'"), s("18 18"));
        QCOMPARE(raw("SELECT id FROM sources"), s("1"));
    }

    void deleteMany_data()
    {
        const Rows<int, bool> row("count", "bracket");
        for (const int count : {1, 32, 33}) {
            row(qPrintable(QString::number(count)), count, false);
            row(qPrintable(s("%1 in a bracket").arg(10 * count)), 10 * count, true);
        }
    }
    void deleteMany()
    {
        QFETCH(int, count);
        QFETCH(bool, bracket);
        const char* const triggers = "SELECT sql FROM sqlite_master WHERE type='trigger' ORDER BY name";
        const QString triggersBefore = raw(triggers);
        const quint32 kept = m_store->addSource(s("kept"), Store::SourceQuendra);
        const quint32 group = add(s("1"), s("g"), groups, global, kept);
        m_store->linkContactAndGroup(group, group);
        m_store->addProperty(group, key(1), s("p"));
        const QString before = everything();

        const std::initializer_list<void (*)(Store&, quint32)> deletions = {
            [](Store& store, quint32 source) { store.deleteSource(source); },
            [](Store& store, quint32 source) { store.deleteContactList(source, anyType, anywhere); },
            [](Store& store, quint32 source) { store.deleteContactList(source, people, anywhere); },
            [](Store& store, quint32 source) { store.deleteContactList(source, anyType, personal); },
            [](Store& store, quint32 source) {
                store.deleteContactsIfNotInUIDS(source, people, personal, {s("0")});
            },
        };
        for (const auto& deletion : deletions) {
            const quint32 source = m_store->addSource(s("victim"), Store::SourceOutlook);
            if (bracket)
                m_store->scopeBegin();
            for (int i = 1; i <= count; ++i) {
                const quint32 id = add(QString::number(i), none, people, personal, source);
                m_store->linkContactAndGroup(id, group);
                m_store->linkContactAndGroup(group, id);
                m_store->addProperty(id, key(1), none);
            }
            deletion(*m_store, source);
            QCOMPARE(find(s("1"), source), 0U); // the bracket knows that they are gone
            if (bracket)
                m_store->scopeEnd();
            m_store->deleteSource(source);
            QCOMPARE(everything(), before);
        }
        QCOMPARE(raw(triggers), triggersBefore);
    }

    void search_data()
    {
        const Rows<QString, uint, quint32, quint32, QString> row("text", "limit", "source1", "source2",
                                                                 "names");
        row("everywhere", "ann", 0, 0, 0, "Anna Hanna Joanna");
        row("everything", "", 0, 0, 0, "Anna Hanna Joanna a% \u00E4");
        row("case of ASCII", "HANNA", 0, 0, 0, "Hanna");
        row("case beyond ASCII", "\u00C4", 0, 0, 0, "");
        row("wildcards", "a%_", 0, 0, 0, "Anna Hanna Joanna a%");
        row("no quoting needed", "'", 0, 0, 0, "");
        row("limit", "ann", 2, 0, 0, "Anna Hanna");
        row("one source", "ann", 0, 1, 0, "Anna Hanna");
        row("one source, limit", "ann", 1, 1, 0, "Anna");
        row("the second alone does not count", "ann", 0, 0, 2, "Anna Hanna Joanna");
        row("the second alone with a limit", "ann", 10, 0, 2, "");
        row("two sources", "ann", 0, 3, 2, "Joanna");
        row("two sources, limit", "ann", 2, 2, 1, "Anna Hanna");
        row("too long a pattern", QString(60000, QLatin1Char('a')), 0, 0, 0, "");
    }
    void search()
    {
        QFETCH(QString, text);
        QFETCH(uint, limit);
        QFETCH(quint32, source1);
        QFETCH(quint32, source2);
        const quint32 second = m_store->addSource(s("second"), Store::SourceQuendra);
        add(s("1"), s("Anna"));
        add(s("2"), s("Hanna"), groups);
        for (const char* name : {"Joanna", "a%", "\u00E4"})
            add(s(name), s(name), people, personal, second);
        const QMap<quint32, QString> found = m_store->quickSearch(text, limit, source1, source2);
        QTEST(QStringList(found.values()).join(QLatin1Char(' ')), "names");
    }

    void bracketChangesNothing_data()
    {
        const Rows<quint32> row("seed");
        for (quint32 seed = 1; seed <= 5; ++seed)
            row(qPrintable(QString::number(seed)), seed);
    }
    void bracketChangesNothing()
    {
        // The same random operations by themselves and in brackets: what a bracket remembers and keeps back
        // may show neither in the results nor in the file.
        QFETCH(quint32, seed);
        const auto run = [&](bool brackets) {
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
        const QString plain = run(false);
        QVERIFY(raw("SELECT id FROM contacts").count(QLatin1Char(' ')) > 50);
        QCOMPARE(run(true), plain);
    }

    void bracketFindsTheFirst()
    {
        // Rows that another program left: several with one uid, one without any.
        QCOMPARE(raw("INSERT INTO contacts(uid, type, location, source) VALUES(NULL, 1, 2, 1), "
                     "('7', 1, 2, 1), ('7', 1, 2, 1)"),
                 QString());
        m_store->scopeBegin();
        QCOMPARE(add(7), 2U);
        QCOMPARE(find(none), 0U);
        m_store->deleteContact(2);
        QCOMPARE(add(7), 3U);
        // The database takes a byte order mark off.
        const quint32 marked = add(QChar(0xFEFF) + s("8"));
        QCOMPARE(add(8), marked);
        m_store->scopeEnd();
    }

    void nestedBrackets()
    {
        m_store->scopeEnd(); // of nothing
        QVERIFY(m_store->scopeBegin());
        QVERIFY(m_store->scopeBegin());
        add(1);
        m_store->scopeEnd();
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
        qint64 adding = 0;
        qint64 deleting = 0;
        std::promise<void> begun;
        std::promise<void> goOn;
        std::thread worker([&] {
            m_store->scopeBegin();
            QElapsedTimer timer;
            timer.start();
            for (int i = 1; i <= size; ++i)
                add(i, QString(100, QLatin1Char('x')));
            adding = timer.restart();
            for (int i = 2; i <= 201; ++i)
                m_store->deleteContact(account, people, personal, QString::number(i));
            deleting = timer.elapsed();
            begun.set_value();
            goOn.get_future().wait();
            m_store->scopeEnd();
            m_store->freeStorageForThread();
        });
        begun.get_future().wait();
        const int foundWithin = m_store->quickSearch(none, 0, 0, 0).size() + int(find(s("1")));
        auto deleted = std::async(std::launch::async, [&] {
            m_store->deleteContact(account, people, personal, s("1"));
            m_store->freeStorageForThread();
        });
        const auto wait = deleted.wait_for(std::chrono::milliseconds(50));
        goOn.set_value();
        worker.join();
        deleted.wait();
        QCOMPARE(foundWithin, 0);
        QVERIFY(wait == std::future_status::timeout);
        QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), size - 201);
        // What the bracket knows of the others stays known when one goes.
        QVERIFY2(deleting < adding, qPrintable(s("%1 ms, adding took %2").arg(deleting).arg(adding)));
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
        row("full disk", "");
    }
    void failedWrite()
    {
        // Whatever fails in a bracket, and however SQLite goes on, the book is stored whole or not at all.
        QFETCH(QString, refused);
        std::optional<SmallDisk> disk;
        if (qstrcmp(QTest::currentDataTag(), "full disk") == 0) {
            m_store.reset();
            disk.emplace(QFileInfo(storeFile()).path());
            if (!disk->works())
                QSKIP("Only root may mount a small disk.");
            openStore();
        }
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
        if (!refused.isEmpty())
            QCOMPARE(raw(s("CREATE TRIGGER refuse BEFORE %1 BEGIN SELECT RAISE(ABORT, 'refused'); END")
                             .arg(refused)),
                     QString());
        else
            QVERIFY(disk ? disk->fill(100 * 1024) : onTheStores("PRAGMA max_page_count=180"));
        const bool atTheEnd = refused.endsWith(s("'last'"));
        QCOMPARE(storeBook(), qMakePair(atTheEnd ? 643U : 0U, atTheEnd));
        QCOMPARE(everything(), before);
        QVERIFY(logged("Error to add contact (db insert)") > 0);

        // The next one repairs it.
        QCOMPARE(raw("DROP TRIGGER IF EXISTS refuse"), QString());
        QVERIFY(onTheStores("PRAGMA max_page_count=1073741823"));
        if (disk)
            QVERIFY(QFile::remove(disk->ballast()));
        QVERIFY(storeBook().second);
        QCOMPARE(raw("SELECT count(*), sum(timestamp), max(id) FROM contacts"), s("601|1200|643"));
        QCOMPARE(raw("SELECT count(*) FROM groups"), s("599"));
        QCOMPARE(raw("SELECT * FROM properties"), s("3|3|"));
        m_store.reset();
    }

    void bracketThatCannotBegin()
    {
        // Another program has the file: the bracket says so, and its end is still due.
        const quint32 known = add(s("1"), s("old"));
        const QString before = everything();
        QVERIFY(onTheStores("PRAGMA busy_timeout=100"));
        {
            const OtherProgram other(s("BEGIN EXCLUSIVE"));
            QVERIFY(other.works());
            QVERIFY(!m_store->scopeBegin());
        }
        // What would be written now would be part of a book.
        QVERIFY(!m_store->scopeBegin());
        QCOMPARE(add(s("1"), s("new")) + add(2), 0U);
        QCOMPARE(logged("Error to add contact (db insert)"), 2);
        writeInEveryWay();
        QCOMPARE(everything(), before);
        QCOMPARE(find(s("1")), known);
        m_store->scopeEnd();
        m_store->scopeEnd();
        inAThread([this] {
            m_store->scopeBegin();
            add(2);
            m_store->scopeEnd();
        });
        QCOMPARE(uids(), s("1 2"));
    }

    void bracketThatCannotCommit()
    {
        // Another program reads all the time: the end of the bracket takes everything back, and leaves
        // neither a transaction nor the mutex.
        add(1);
        add(2);
        QVERIFY(onTheStores("PRAGMA busy_timeout=100"));
        {
            OtherProgram reader(s("SELECT uid FROM contacts"));
            QVERIFY(reader.next());
            QVERIFY(m_store->scopeBegin());
            QCOMPARE(add(3), 3U);
            QCOMPARE(logged("[ERROR"), 0);
            m_store->scopeEnd();
            QCOMPARE(logged("Error to add contact (db insert)"), 1);
            QVERIFY(m_store->scopeBegin());
            m_store->scopeEnd();
        }
        inAThread([this] { add(4); });
        QCOMPARE(uids(), s("1 2 4"));
    }

    void lockedForLong()
    {
        // Another program has the file for longer than SQLite's patience, which is 5 s (or for as long as
        // QDCORE_LOCK_SECONDS says): a worker waits once and not for each contact, leaves the book as it
        // was, and says that it is done. The next one stores it all.
        qRegisterMetaType<ContactList::Type>();
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
        const QPointer<Store> storage(m_store.get());
        const auto synchronise = [&] {
            auto* const deleter = new ContactsDeleterThread(storage, account, people, personal, ids, nullptr);
            auto* const writer = new QuendraContactProviderDisassembleThread(storage, account, nullptr);
            writer->setContacts(book, 7);
            QSignalSpy deleted(deleter, &ContactsDeleterThread::doneContactsDeletion);
            QSignalSpy stored(writer,
                              &QuendraContactProviderDisassembleThread::doneDisassembleContactFromThread);
            QPointer<QThread> threads[] = {deleter, writer};
            deleter->start();
            writer->start();
            const bool done = spinUntil([&] { return deleted.count() && stored.count(); }, 18);
            return spinUntil([&] { return !threads[0] && !threads[1]; }, 60) && done;
        };
        {
            const OtherProgram other(s("BEGIN IMMEDIATE"));
            QVERIFY(other.works());
            const QDeadlineTimer longest(1000 * qEnvironmentVariableIntValue("QDCORE_LOCK_SECONDS"));
            do {
                QVERIFY(synchronise());
                QCOMPARE(everything(), before);
            } while (!longest.hasExpired());
        }
        QVERIFY(synchronise());
        QCOMPARE(raw("SELECT uid, name, timestamp FROM contacts ORDER BY uid"),
                 s("1|new|7 2|new|7 3|new|7 4|new|7"));
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

    void manyThreadsInTurn_data()
    {
        const Rows<bool> row("frees");
        row("each frees its connection", true);
        row("none does", false);
    }
    void manyThreadsInTurn()
    {
        // All thread objects stand at one address, so all connections bear one name.
        QFETCH(bool, frees);
        std::optional<Worker> worker;
        for (int i = 1; i <= 300; ++i) {
            worker.emplace([&, i] {
                if (m_store->scopeBegin())
                    add(i);
                m_store->scopeEnd();
                if (frees)
                    m_store->freeStorageForThread();
            });
            worker->complete();
        }
        QCOMPARE(raw("SELECT count(*) FROM contacts"), s("300"));
        if (frees)
            QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
        QCOMPARE(logged("[ERROR"), 0);
    }

    void eightThreadsAtOnce()
    {
        std::vector<std::thread> workers;
        for (int t = 0; t < 8; ++t) {
            workers.emplace_back([this, t] {
                const quint32 source = m_store->addSource(QString::number(t), Store::SourceQuendra);
                for (int part = 0; part < 4; ++part) {
                    m_store->scopeBegin();
                    for (int i = 0; i < 100; ++i)
                        add(QString::number(part * 100 + i), none, people, personal, source);
                    m_store->scopeEnd();
                    add(QString::number(1000 + part), none, groups, personal, source);
                    m_store->quickSearch(s("x"), 10, 0, 0);
                }
                m_store->deleteContactList(source, people, anywhere);
                m_store->freeStorageForThread();
            });
        }
        for (std::thread& worker : workers)
            worker.join();
        QCOMPARE(raw("SELECT count(*), count(DISTINCT source) FROM contacts"), s("32|8"));
        QCOMPARE(raw("SELECT count(*) FROM sqlite_master WHERE type='trigger'"), s("2"));
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
        std::optional<SmallDisk> disk;
        const QString file = storeFile();
        const bool readable = what == s("read-only");
        if (readable) {
            QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
            if (QFile(file).open(QIODevice::ReadWrite)) { // root may write everything
                disk.emplace(QFileInfo(file).path(), true);
                if (!disk->works())
                    QSKIP("This user may write everything, and mount nothing.");
            }
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
        QCOMPARE(add(2), 0U);
        m_store->scopeEnd();
        QCOMPARE(logged("Error to add contact (db insert)"), 1);
        QCOMPARE(m_store->addSource(s("new"), Store::SourceQuendra), 0U);
        QCOMPARE(logged("Error to add source (db insert)"), 1);
        writeInEveryWay();
        QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), readable ? 1 : 0);
        QCOMPARE(units(anyType, anywhere).contacts().size(), readable ? 1 : 0);
        QCOMPARE(m_store->getContactLastTimeStamp(1, anyType, anywhere), readable ? 1U : 0U);
        QString value = s("kept");
        QVERIFY(!m_store->getPropertyInfo(1, key(1), value));
        QCOMPARE(value, s("kept"));
        m_store.reset();
    }
};
QTEST_GUILESS_MAIN(ContactStoreTest)
#include "tst_contactstore.moc"
