#include "contact.h"
#include "contactgroup.h"
#include "contactlocalstorage.h"
#include "contactsdeleterthread.h"
#include "logger.h"
#include "quendracontact.h"
#include "quendracontactproviderdisassemblethread.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStorageInfo>
#include <QTemporaryDir>
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

/// The rows of a query as one text, run on a connection of its own.
QString rawRows(const QString& file, const QString& text)
{
    QString result;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("raw"));
        database.setDatabaseName(file);
        QSqlQuery query(database);
        if (!database.open() || !query.exec(text))
            result = QStringLiteral("failed");
        while (query.next()) {
            for (int i = 0; i < query.record().count(); ++i)
                result +=
                    (query.isNull(i) ? QStringLiteral("NULL") : query.value(i).toString()) + QLatin1Char('|');
            result += QLatin1Char('\n');
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("raw"));
    return result;
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
            parts += unit ? static_cast<const Contact*>(unit.data())->name() : QStringLiteral("null");
    }
    return parts.join(QLatin1Char(' '));
}

/// Another program at the file: a transaction begun by a statement, until it ends.
class OtherProgram
{
public:
    OtherProgram(const QString& file, const char* statement)
    {
        auto database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other"));
        database.setDatabaseName(file);
        database.open();
        m_query = QSqlQuery(database);
        m_works = m_query.exec(QLatin1String(statement));
    }
    ~OtherProgram()
    {
        m_query.exec(QStringLiteral("ROLLBACK"));
        m_query = QSqlQuery();
        QSqlDatabase::removeDatabase(QStringLiteral("other"));
    }
    Q_DISABLE_COPY(OtherProgram)
    bool works() const { return m_works; }
    bool exec(const char* statement) { return m_query.exec(QLatin1String(statement)) && m_query.next(); }

private:
    QSqlQuery m_query;
    bool m_works{false};
};

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

private Q_SLOTS:
    void init();
    void cleanup();
    void schema();
    void sources();
    void addAndUpdate_data();
    void addAndUpdate();
    void oddTexts_data();
    void oddTexts();
    void lists_data();
    void lists();
    void units();
    void deleteNotIn_data();
    void deleteNotIn();
    void deleteMany_data();
    void deleteMany();
    void search_data();
    void search();
    void bracketChangesNothing_data();
    void bracketChangesNothing();
    void bracketFindsTheFirst();
    void nestedBrackets();
    void bracketKeepsOthersOut();
    void deletionsInABracket();
    void failedWrite_data();
    void failedWrite();
    void bracketThatCannotBegin();
    void bracketThatCannotCommit();
    void lockedForLong();
    void manyThatCannotBeCounted();
    void longListOfIds();
    void manyThreadsInTurn_data();
    void manyThreadsInTurn();
    void eightThreadsAtOnce();
    void connectionIsMadeAnew();
    void badFiles_data();
    void badFiles();

private:
    quint32 add(const QString& uid, const QString& name, Store::ContactType type = Store::TypeContact,
                Store::ContactLocation location = Store::LocationPersonal, quint32 source = 0,
                quint32 timestamp = 1)
    {
        return m_store->addContact(source ? source : m_source, type, location, uid, timestamp, name, none,
                                   none, none, none, none);
    }
    QString file() const
    {
        return m_dir->filePath(QStringLiteral("Quendra Client Software/Contacts/contacts.sqlite"));
    }
    QString raw(const char* text) const { return rawRows(file(), QLatin1String(text)); }
    QString everything() const
    {
        return raw("SELECT * FROM sources") + raw("SELECT * FROM contacts") +
               raw("SELECT * FROM properties") + raw("SELECT * FROM groups");
    }
    /// Runs a statement on the store's own connection of this thread, the only one that is open.
    static bool onTheStores(const char* text)
    {
        return QSqlQuery(QSqlDatabase::database(QSqlDatabase::connectionNames().constFirst()))
            .exec(QLatin1String(text));
    }
    /// How often a text stands in the log.
    int logged(const char* text) const
    {
        QFile log(Logger::inst().currentFile());
        return !log.fileName().isEmpty() && log.open(QIODevice::ReadOnly) ? log.readAll().count(text) : 0;
    }
    void newStore()
    {
        m_store.reset();
        m_dir = std::make_unique<QTemporaryDir>();
        qputenv("APPDATA", m_dir->path().toLocal8Bit());
        Logger::inst().setLocation(QDir(m_dir->filePath(QStringLiteral("Logs"))));
        m_store = std::make_unique<Store>();
        m_source = m_store->addSource(QStringLiteral("user@fax"), Store::SourceQuendra);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Store> m_store;
    quint32 m_source{0};
};

Q_DECLARE_METATYPE(QList<quint32>)

void ContactStoreTest::init()
{
    newStore();
    QCOMPARE(m_source, 1U);
}

void ContactStoreTest::cleanup()
{
    m_store.reset();
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
    Logger::inst().setLevel(Logger::ERROR);
    Logger::inst().releaseLogFile();
}

void ContactStoreTest::schema()
{
    QCOMPARE(raw("SELECT type, name FROM sqlite_master WHERE name NOT LIKE 'sqlite%' ORDER BY rowid"),
             QStringLiteral("table|contacts|\ntable|sources|\ntable|properties|\ntable|groups|\n"
                            "trigger|delete_source|\ntrigger|delete_contact|\n"));
    const QString before = everything();
    m_store.reset();
    m_store = std::make_unique<Store>();
    QCOMPARE(everything(), before);
    QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
    QVERIFY(QSqlDatabase::connectionNames().first().startsWith(QStringLiteral("contacts.sqlite:0x")));

    // A table that got lost is made again, and the others stay.
    m_store.reset();
    QCOMPARE(raw("DROP TABLE groups"), QString());
    m_store = std::make_unique<Store>();
    QCOMPARE(everything(), before);
}

void ContactStoreTest::sources()
{
    QCOMPARE(m_store->addSource(QStringLiteral("user@fax"), Store::SourceQuendra), 1U);
    QCOMPARE(m_store->addSource(QStringLiteral("user@fax"), Store::SourceOutlook), 2U);
    QCOMPARE(m_store->addSource(QString(), Store::SourceQuendra), 3U);
    QCOMPARE(m_store->addSource(QString(), Store::SourceQuendra), 3U);
    QCOMPARE(m_store->getSource(QStringLiteral("User@fax"), Store::SourceQuendra), 0U);
    QCOMPARE(m_store->getSourceList(Store::AnySource, 1, 1), QList<quint32>({1, 2, 3}));
    QCOMPARE(m_store->getSourceList(Store::SourceQuendra), QList<quint32>({1, 3}));

    QString name = QStringLiteral("kept");
    Store::SourceType type = Store::AnySource;
    QVERIFY(!m_store->getSourceInfo(7, name, type));
    QCOMPARE(name, QStringLiteral("kept"));
    QVERIFY(m_store->getSourceInfo(2, name, type));
    QCOMPARE(name, QStringLiteral("user@fax"));
    QCOMPARE(type, Store::SourceOutlook);
    m_store->deleteSource(QStringLiteral("user@fax"), Store::SourceOutlook);
    m_store->deleteSource(QStringLiteral("nobody"), Store::SourceOutlook);
    QCOMPARE(m_store->getSourceList(Store::AnySource), QList<quint32>({1, 3}));
    // Ids are never used again, so a provider that still holds one finds nothing.
    m_store->deleteSource(3);
    QCOMPARE(m_store->addSource(QString(), Store::SourceQuendra), 4U);
}

void ContactStoreTest::addAndUpdate_data()
{
    QTest::addColumn<bool>("bracket");
    QTest::newRow("by itself") << false;
    QTest::newRow("in a bracket") << true;
}

void ContactStoreTest::addAndUpdate()
{
    QFETCH(bool, bracket);
    if (bracket)
        QVERIFY(m_store->scopeBegin());
    const auto store = [this](quint32 timestamp, const QString& name, const QString& phone) {
        return m_store->addContact(m_source, Store::TypeContact, Store::LocationGlobal, QStringLiteral("7"),
                                   timestamp, name, none, phone, QStringLiteral("f"), QStringLiteral("e"),
                                   QStringLiteral("o"));
    };
    const quint32 other = add(QStringLiteral("7"), QStringLiteral("the same uid in another book"));
    const quint32 id = store(4000000000U, QStringLiteral("n"), QStringLiteral("p"));
    QVERIFY(id != other);
    QCOMPARE(store(0, QStringLiteral("N"), none), id);
    QCOMPARE(m_store->getContact(m_source, Store::TypeContact, Store::LocationGlobal, QStringLiteral("7")),
             id);
    QCOMPARE(m_store->getContact(m_source, Store::TypeGroup, Store::LocationGlobal, QStringLiteral("7")), 0U);

    quint32 source = 0, timestamp = 0;
    Store::ContactType type{};
    Store::ContactLocation location{};
    QString uid, name, description, phone, fax, email, organization;
    const auto info = [&](quint32 contact) {
        return m_store->getContactInfo(contact, source, type, location, uid, timestamp, name, description,
                                       phone, fax, email, organization);
    };
    QVERIFY(info(id));
    QCOMPARE(timestamp, 4000000000U);
    QCOMPARE((QStringList{uid, name, description, phone, fax, email, organization}).join(QLatin1Char('|')),
             QStringLiteral("7|N|||f|e|o"));
    QCOMPARE(type, Store::TypeContact);
    QCOMPARE(location, Store::LocationGlobal);
    QCOMPARE(source, m_source);
    QVERIFY(!info(99));
    QCOMPARE(m_store->getContactLastTimeStamp(m_source, Store::AnyType, Store::AnyLocation), 4000000000U);
    QCOMPARE(m_store->getContactLastTimeStamp(m_source, Store::TypeContact, Store::LocationPersonal), 1U);
    QCOMPARE(m_store->getContactLastTimeStamp(m_source, Store::TypeGroup, Store::AnyLocation), 0U);

    QString value;
    const auto key = static_cast<Store::PropertyType>(3000000000U);
    QVERIFY(!m_store->getPropertyInfo(id, key, value));
    m_store->addProperty(id, key, QStringLiteral("a"));
    m_store->addProperty(id, key, none);
    m_store->addProperty(id, static_cast<Store::PropertyType>(1), QStringLiteral("b"));
    QVERIFY(m_store->getPropertyInfo(id, key, value));
    QCOMPARE(value, QString());
    m_store->deleteProperty(id, static_cast<Store::PropertyType>(1));
    if (bracket)
        m_store->scopeEnd();
    QCOMPARE(raw("SELECT * FROM properties"), QStringLiteral("%1|3000000000||\n").arg(id));
    m_store->deleteContact(m_source, Store::TypeContact, Store::LocationGlobal, QStringLiteral("7"));
    QCOMPARE(raw("SELECT id FROM contacts") + raw("SELECT * FROM properties"),
             QStringLiteral("%1|\n").arg(other));
}

void ContactStoreTest::oddTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    QTest::newRow("quotes") << QStringLiteral("O'Hara \"; DROP TABLE contacts; --");
    QTest::newRow("wildcards") << QStringLiteral("100%_?1");
    QTest::newRow("NUL") << QString(QLatin1String("a\0b", 3));
    QTest::newRow("emoji") << QString::fromUtf8("\xF0\x9F\x93\xA0 Stra\xC3\x9F"
                                                "e");
    QTest::newRow("half a pair") << QString(QChar(0xD83D)) + QLatin1Char('x');
    QTest::newRow("byte order mark") << QString(QChar(0xFEFF)) + QLatin1Char('x');
    QTest::newRow("swapped byte order mark") << QString(QChar(0xFFFE)) + QLatin1Char('x');
    QTest::newRow("1 MB") << QString(1 << 20, QLatin1Char('x'));
}

void ContactStoreTest::oddTexts()
{
    QFETCH(QString, text);
    const auto store = [&] {
        return m_store->addContact(m_source, Store::TypeContact, Store::LocationPersonal, text, 1, text, text,
                                   text, text, text, text);
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
    QCOMPARE(m_store->getContact(m_source, Store::TypeContact, Store::LocationPersonal, text), again);
    if (text.isValidUtf16() && text.indexOf(QChar(0xFEFF)) && text.indexOf(QChar(0xFFFE)))
        QCOMPARE(m_store->quickSearch(none, 0, 0, 0).value(again), text);
}

void ContactStoreTest::lists_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("location");
    QTest::addColumn<quint32>("group");
    QTest::addColumn<uint>("offset");
    QTest::addColumn<uint>("limit");
    QTest::addColumn<QList<quint32>>("ids");

    const auto row = [](const char* name, int type, int location, quint32 group, uint offset, uint limit,
                        const QList<quint32>& ids) {
        QTest::newRow(name) << type << location << group << offset << limit << ids;
    };
    // 1 to 4 are contacts, 5 and 6 groups; the even ones are global; 2, 3 and 6 are members of 5.
    row("all", 0, 0, 0, 0, 0, {1, 2, 3, 4, 5, 6});
    row("an offset without limit does nothing", 0, 0, 0, 3, 0, {1, 2, 3, 4, 5, 6});
    row("page", 0, 0, 0, 2, 3, {3, 4, 5});
    row("beyond the end", 0, 0, 0, 6, 3, {});
    row("largest limit", 0, 0, 0, 0, 4294967295U, {1, 2, 3, 4, 5, 6});
    row("type", 1, 0, 0, 0, 0, {1, 2, 3, 4});
    row("location", 0, 1, 0, 0, 0, {2, 4, 6});
    row("both", 1, 1, 0, 0, 0, {2, 4});
    row("both, page", 1, 1, 0, 1, 1, {4});
    row("group", 0, 0, 5, 0, 0, {2, 3, 6});
    row("group, page", 0, 0, 5, 1, 1, {3});
    row("group and type", 1, 0, 5, 0, 0, {2, 3});
    row("group and location", 0, 1, 5, 0, 0, {2, 6});
    row("group and location, page", 0, 1, 5, 1, 9, {6});
    row("the group does not count beside both", 1, 1, 5, 0, 0, {2, 4});
    row("unknown group", 0, 0, 9, 0, 0, {});
}

void ContactStoreTest::lists()
{
    QFETCH(int, type);
    QFETCH(int, location);
    QFETCH(quint32, group);
    QFETCH(uint, offset);
    QFETCH(uint, limit);
    QFETCH(QList<quint32>, ids);

    for (int i = 1; i <= 6; ++i) {
        add(QString::number(i), QString::number(i), i < 5 ? Store::TypeContact : Store::TypeGroup,
            i % 2 ? Store::LocationPersonal : Store::LocationGlobal);
    }
    add(QStringLiteral("1"), QStringLiteral("7"), Store::TypeContact, Store::LocationGlobal,
        m_store->addSource(QStringLiteral("other"), Store::SourceOutlook));
    for (const quint32 member : {2U, 3U, 6U, 7U, 3U})
        m_store->linkContactAndGroup(member, 5);
    const auto t = static_cast<Store::ContactType>(type);
    const auto l = static_cast<Store::ContactLocation>(location);
    QCOMPARE(m_store->getContactList(m_source, t, l, group, offset, limit), ids);

    int calls = 0;
    const QString names =
        spelled(m_store->getContactList(makeUnit, m_source, t, l, group, offset, limit, &calls));
    QStringList expected;
    for (const quint32 id : ids)
        expected += QString::number(id);
    const QRegularExpression members(QStringLiteral("\\((\\d( |\\(\\))*)*\\)"));
    QCOMPARE(QString(names).remove(members), expected.join(QLatin1Char(' ')));
    QVERIFY(calls >= ids.size());
}

void ContactStoreTest::units()
{
    const quint32 a = add(QStringLiteral("1"), QStringLiteral("a"));
    const quint32 lost = add(QStringLiteral("null"), QStringLiteral("lost"));
    const quint32 g = add(QStringLiteral("2"), QStringLiteral("g"), Store::TypeGroup);
    const quint32 h = add(QStringLiteral("3"), QStringLiteral("h"), Store::TypeGroup);
    const quint32 self = add(QStringLiteral("4"), QStringLiteral("self"), Store::TypeGroup);
    add(QStringLiteral("5"), QStringLiteral("odd kind"), static_cast<Store::ContactType>(9));
    for (const auto& link : {qMakePair(a, g), qMakePair(lost, g), qMakePair(h, g), qMakePair(g, h),
                             qMakePair(a, h), qMakePair(self, self), qMakePair(99U, g)})
        m_store->linkContactAndGroup(link.first, link.second);

    int calls = 0;
    const ContactList list =
        m_store->getContactList(makeUnit, m_source, Store::AnyType, Store::LocationPersonal, 0, 0, 0, &calls);
    // Groups that contain each other end where they meet again. A member that is null is lost with its copy.
    QCOMPARE(spelled(list), QStringLiteral("a null g(a h(a g())) h(a g(a h())) self(self()) odd kind"));
    QCOMPARE(list.contactsType(), ContactList::Unknown);

    m_store->unlinkContact(a);
    m_store->unlinkContactAndGroup(lost, g);
    m_store->unlinkContactAndGroup(0, 0);
    QCOMPARE(raw("SELECT * FROM groups"),
             QStringLiteral("%2|%1|\n%1|%2|\n%3|%3|\n99|%1|\n").arg(g).arg(h).arg(self));
    m_store->unlinkGroup(g);
    m_store->deleteContact(self);
    QCOMPARE(raw("SELECT * FROM groups"), QStringLiteral("%1|%2|\n").arg(g).arg(h));
}

void ContactStoreTest::deleteNotIn_data()
{
    QTest::addColumn<QStringList>("uids");
    QTest::addColumn<QString>("left");

    const auto row = [](const char* name, const QStringList& uids, const char* left) {
        QTest::newRow(name) << uids << QString(QLatin1String(left));
    };
    const QString twelve = QStringLiteral("12");
    const char* const all = "12|\n15|\n17|\nabc|\n";
    row("no list", {}, all);
    row("two stay", {twelve, QStringLiteral("15")}, "12|\n15|\n");
    row("leading zero", {twelve, QStringLiteral("0015")}, all);
    row("zero", {twelve, QStringLiteral("0")}, "12|\n");
    row("empty book", {QString()}, "");
    row("an empty one among others", {twelve, QString()}, all);
    row("blank", {QStringLiteral(" 12")}, all);
    row("letters", {twelve, QStringLiteral("abc")}, all);
    row("sign", {QStringLiteral("-1")}, all);
    row("quoted", {QStringLiteral("'12'")}, all);
    row("SQL", {QStringLiteral("12); DELETE FROM sources; --")}, all);
    row("SQL without blanks", {QStringLiteral("12)OR(1=1")}, all);
    row("other digits", {QString(QChar(0x0661))}, all);
    row("18 digits", {twelve, QStringLiteral("123456789012345678")}, "12|\n");
    row("19 digits", {twelve, QStringLiteral("1234567890123456789")}, all);
}

void ContactStoreTest::deleteNotIn()
{
    QFETCH(QStringList, uids);
    for (const char* uid : {"12", "15", "17", "abc"})
        add(QLatin1String(uid), none);
    add(QStringLiteral("18"), none, Store::TypeContact, Store::LocationGlobal);
    add(QStringLiteral("18"), none, Store::TypeGroup);
    m_store->deleteContactsIfNotInUIDS(m_source, Store::TypeContact, Store::LocationPersonal, uids);
    QTEST(raw("SELECT uid FROM contacts WHERE type=1 AND location=2"), "left");
    QCOMPARE(raw("SELECT uid FROM contacts WHERE uid='18'"), QStringLiteral("18|\n18|\n"));
    QCOMPARE(raw("SELECT id FROM sources"), QStringLiteral("1|\n"));
}

void ContactStoreTest::deleteMany_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("bracket");
    for (const int count : {1, 32, 33}) {
        QTest::addRow("%d", count) << count << false;
        QTest::addRow("%d in a bracket", 10 * count) << 10 * count << true;
    }
}

void ContactStoreTest::deleteMany()
{
    QFETCH(int, count);
    QFETCH(bool, bracket);
    const QString triggers = raw("SELECT sql FROM sqlite_master WHERE type='trigger' ORDER BY name");
    const quint32 kept = m_store->addSource(QStringLiteral("kept"), Store::SourceQuendra);
    const quint32 group =
        add(QStringLiteral("1"), QStringLiteral("g"), Store::TypeGroup, Store::LocationGlobal, kept);
    const auto key = static_cast<Store::PropertyType>(1);
    m_store->linkContactAndGroup(group, group);
    m_store->addProperty(group, key, QStringLiteral("p"));
    const QString before = everything();

    const QVector<std::function<void(quint32)>> deletions = {
        [this](quint32 source) { m_store->deleteSource(source); },
        [this](quint32 source) { m_store->deleteContactList(source, Store::AnyType, Store::AnyLocation); },
        [this](quint32 source) {
            m_store->deleteContactList(source, Store::TypeContact, Store::AnyLocation);
        },
        [this](quint32 source) {
            m_store->deleteContactList(source, Store::AnyType, Store::LocationPersonal);
        },
        [this](quint32 source) {
            m_store->deleteContactsIfNotInUIDS(source, Store::TypeContact, Store::LocationPersonal,
                                               {QStringLiteral("0")});
        },
    };
    for (const auto& deletion : deletions) {
        const quint32 source = m_store->addSource(QStringLiteral("victim"), Store::SourceOutlook);
        if (bracket)
            m_store->scopeBegin();
        for (int i = 1; i <= count; ++i) {
            const quint32 id =
                add(QString::number(i), none, Store::TypeContact, Store::LocationPersonal, source);
            m_store->linkContactAndGroup(id, group);
            m_store->linkContactAndGroup(group, id);
            m_store->addProperty(id, key, none);
        }
        deletion(source);
        // The bracket knows that they are gone.
        QCOMPARE(
            m_store->getContact(source, Store::TypeContact, Store::LocationPersonal, QStringLiteral("1")),
            0U);
        if (bracket)
            m_store->scopeEnd();
        m_store->deleteSource(source);
        QCOMPARE(everything(), before);
    }
    QCOMPARE(raw("SELECT sql FROM sqlite_master WHERE type='trigger' ORDER BY name"), triggers);
}

void ContactStoreTest::search_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<uint>("limit");
    QTest::addColumn<quint32>("source1");
    QTest::addColumn<quint32>("source2");
    QTest::addColumn<QList<quint32>>("ids");

    const auto row = [](const char* name, const char* text, uint limit, quint32 source1, quint32 source2,
                        const QList<quint32>& ids) {
        QTest::newRow(name) << QString::fromUtf8(text) << limit << source1 << source2 << ids;
    };
    row("everywhere", "ann", 0, 0, 0, {1, 2, 3});
    row("everything", "", 0, 0, 0, {1, 2, 3, 4, 5});
    row("case of ASCII", "HANNA", 0, 0, 0, {2});
    row("case beyond ASCII", "\xC3\x84", 0, 0, 0, {});
    row("wildcards", "a%_", 0, 0, 0, {1, 2, 3, 4});
    row("no quoting needed", "'", 0, 0, 0, {});
    row("limit", "ann", 2, 0, 0, {1, 2});
    row("one source", "ann", 0, 1, 0, {1, 2});
    row("one source, limit", "ann", 1, 1, 0, {1});
    row("the second alone does not count", "ann", 0, 0, 2, {1, 2, 3});
    row("the second alone with a limit", "ann", 10, 0, 2, {});
    row("two sources", "ann", 0, 3, 2, {3});
    row("two sources, limit", "ann", 2, 2, 1, {1, 2});
    row("too long a pattern", QByteArray(60000, 'a').constData(), 0, 0, 0, {});
}

void ContactStoreTest::search()
{
    QFETCH(QString, text);
    QFETCH(uint, limit);
    QFETCH(quint32, source1);
    QFETCH(quint32, source2);
    const quint32 second = m_store->addSource(QStringLiteral("second"), Store::SourceQuendra);
    add(QStringLiteral("1"), QStringLiteral("Anna"));
    add(QStringLiteral("2"), QStringLiteral("Hanna"), Store::TypeGroup);
    add(QStringLiteral("1"), QStringLiteral("Joanna"), Store::TypeContact, Store::LocationPersonal, second);
    add(QStringLiteral("2"), QStringLiteral("a%"), Store::TypeContact, Store::LocationPersonal, second);
    add(QStringLiteral("3"), QString::fromUtf8("\xC3\xA4"), Store::TypeContact, Store::LocationPersonal,
        second);
    const QMap<quint32, QString> found = m_store->quickSearch(text, limit, source1, source2);
    QTEST(found.keys(), "ids");
    if (found.contains(3))
        QCOMPARE(found.value(3), QStringLiteral("Joanna"));
}

void ContactStoreTest::bracketChangesNothing_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 5; ++seed)
        QTest::addRow("%u", seed) << seed;
}

void ContactStoreTest::bracketChangesNothing()
{
    // The same random operations by themselves and in brackets: what a bracket remembers and keeps back may
    // show neither in the results nor in the file.
    QFETCH(quint32, seed);
    const auto run = [&](bool brackets) {
        newStore();
        QRandomGenerator random(seed);
        const auto number = [&random](int limit) { return quint32(random.bounded(limit)); };
        const auto key = static_cast<Store::PropertyType>(1);
        QStringList results;
        int inBracket = 0;
        for (int i = 0; i < 700; ++i) {
            if (brackets && inBracket == 0)
                m_store->scopeBegin();
            const quint32 id = 1 + number(90);
            const quint32 other = 1 + number(90);
            const auto type = static_cast<Store::ContactType>(1 + number(2));
            const auto location = static_cast<Store::ContactLocation>(1 + number(2));
            const QString uid = QString::number(number(120));
            const quint32 what = number(100);
            if (what < 45)
                results +=
                    QString::number(add(uid, QString::number(i), type, location, 0, number(3) * quint32(i)));
            else if (what < 65)
                m_store->linkContactAndGroup(id, other);
            else if (what < 70)
                m_store->unlinkContactAndGroup(number(2) ? id : 0, number(2) ? other : 0);
            else if (what < 75)
                m_store->updateContactInfo(id, number(2), uid, uid, uid, uid, uid, uid);
            else if (what < 79)
                m_store->deleteContact(id);
            else if (what < 82)
                m_store->deleteContact(m_source, type, location, uid);
            else if (what < 83)
                m_store->deleteContactsIfNotInUIDS(m_source, type, location, {uid, QStringLiteral("5")});
            else if (what < 86)
                m_store->addProperty(id, key, uid);
            else if (what < 90)
                results += QString::number(m_store->getContact(m_source, type, location, uid));
            else if (what < 93)
                results += QString::number(m_store->getContactLastTimeStamp(m_source, type, location));
            else if (what < 96)
                results += QString::number(m_store->quickSearch(uid, 0, 0, 0).size());
            else
                results += QString::number(
                    m_store->getContactList(m_source, type, Store::AnyLocation, id, 0, 0).size());
            inBracket = (inBracket + 1) % 140;
            if (brackets && inBracket == 0)
                m_store->scopeEnd();
        }
        return results.join(QLatin1Char(' ')) + QLatin1Char('\n') + everything();
    };
    const QString plain = run(false);
    QVERIFY(plain.count(QLatin1Char('\n')) > 120);
    QCOMPARE(run(true), plain);
}

void ContactStoreTest::bracketFindsTheFirst()
{
    // Rows that another program left: several with one uid, one without any.
    QCOMPARE(raw("INSERT INTO contacts(uid, type, location, source) VALUES(NULL, 1, 2, 1), ('7', 1, 2, 1), "
                 "('7', 1, 2, 1)"),
             QString());
    m_store->scopeBegin();
    QCOMPARE(add(QStringLiteral("7"), QStringLiteral("n")), 2U);
    QCOMPARE(m_store->getContact(m_source, Store::TypeContact, Store::LocationPersonal, none), 0U);
    m_store->deleteContact(2);
    QCOMPARE(add(QStringLiteral("7"), QStringLiteral("n")), 3U);
    // The database takes a byte order mark off.
    const quint32 marked = add(QChar(0xFEFF) + QStringLiteral("8"), none);
    QCOMPARE(add(QStringLiteral("8"), none), marked);
    m_store->scopeEnd();
}

void ContactStoreTest::nestedBrackets()
{
    Logger::inst().setLevel(Logger::DEBUG);
    m_store->scopeEnd(); // of nothing
    QVERIFY(m_store->scopeBegin());
    QVERIFY(m_store->scopeBegin());
    add(QStringLiteral("1"), none);
    m_store->scopeEnd();
    QCOMPARE(raw("SELECT uid FROM contacts"), QString());
    add(QStringLiteral("2"), none);
    m_store->scopeEnd();
    QCOMPARE(raw("SELECT uid FROM contacts"), QStringLiteral("1|\n2|\n"));
    for (const char* line : {"Transaction mutex locked", "Transaction commit started",
                             "Transaction commit finished", "Transaction mutex unlocked"})
        QCOMPARE(logged(line), 2);
    QCOMPARE(logged("[ERROR"), 0);

    // A thread that gives up its connection in the middle takes back what it wrote, and leaves no lock.
    m_store->scopeBegin();
    add(QStringLiteral("3"), none);
    m_store->freeStorageForThread();
    m_store->scopeEnd();
    std::thread([this] {
        add(QStringLiteral("4"), none);
        m_store->freeStorageForThread();
    }).join();
    QCOMPARE(raw("SELECT uid FROM contacts"), QStringLiteral("1|\n2|\n4|\n"));
}

void ContactStoreTest::bracketKeepsOthersOut()
{
    // A large bracket: readers see the state before it, writers wait for its end.
    std::promise<void> begun;
    std::promise<void> goOn;
    std::thread worker([&] {
        m_store->scopeBegin();
        for (int i = 1; i <= 20000; ++i)
            add(QString::number(i), QString(100, QLatin1Char('x')));
        begun.set_value();
        goOn.get_future().wait();
        m_store->scopeEnd();
        m_store->freeStorageForThread();
    });
    begun.get_future().wait();
    QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), 0);
    QCOMPARE(m_store->getContact(m_source, Store::TypeContact, Store::LocationPersonal, QStringLiteral("1")),
             0U);
    auto deleted = std::async(std::launch::async, [&] {
        m_store->deleteContact(m_source, Store::TypeContact, Store::LocationPersonal, QStringLiteral("1"));
        m_store->freeStorageForThread();
    });
    QVERIFY(deleted.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout);
    goOn.set_value();
    worker.join();
    deleted.wait();
    QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), 19999);
}

void ContactStoreTest::deletionsInABracket()
{
    // What the bracket knows of 20,000 others stays known.
    m_store->scopeBegin();
    QElapsedTimer timer;
    timer.start();
    for (int i = 1; i <= 20000; ++i)
        add(QString::number(i), none);
    const qint64 adding = timer.restart();
    for (int i = 1; i <= 200; ++i)
        m_store->deleteContact(m_source, Store::TypeContact, Store::LocationPersonal, QString::number(i));
    const qint64 deleting = timer.elapsed();
    m_store->scopeEnd();
    QCOMPARE(raw("SELECT count(*) FROM contacts"), QStringLiteral("19800|\n"));
    QVERIFY2(deleting < adding,
             qPrintable(QStringLiteral("%1 ms, adding took %2").arg(deleting).arg(adding)));
}

void ContactStoreTest::failedWrite_data()
{
    QTest::addColumn<QString>("refused");
    const auto row = [](const char* name, const char* refused) {
        QTest::newRow(name) << QString(QLatin1String(refused));
    };
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

void ContactStoreTest::failedWrite()
{
    // Whatever fails in a bracket, and however SQLite goes on, the book is stored whole or not at all.
    QFETCH(QString, refused);
    std::optional<SmallDisk> disk;
    if (qstrcmp(QTest::currentDataTag(), "full disk") == 0) {
        m_store.reset();
        disk.emplace(QFileInfo(file()).path());
        if (!disk->works())
            QSKIP("Only root may mount a small disk.");
        m_store = std::make_unique<Store>();
        m_source = m_store->addSource(QStringLiteral("user@fax"), Store::SourceQuendra);
    }
    const bool hasNoPages = qstrcmp(QTest::currentDataTag(), "no more pages") == 0;
    const auto key = static_cast<Store::PropertyType>(2);
    const quint32 group = add(QStringLiteral("g"), none, Store::TypeGroup);
    m_store->scopeBegin();
    for (int i = 1; i <= 300; ++i)
        add(QString::number(i), QString(1000, QLatin1Char('o')));
    for (int i = 1; i <= 40; ++i)
        add(i == 40 ? QStringLiteral("many") : QString::number(i), none, Store::TypeGroup,
            Store::LocationGlobal);
    add(QStringLiteral("few"), none, Store::TypeContact, Store::LocationGlobal);
    m_store->linkContactAndGroup(2, group);
    m_store->addProperty(2, key, none);
    m_store->scopeEnd();
    const QString before = everything();
    if (!refused.isEmpty())
        QCOMPARE(rawRows(file(), QStringLiteral("CREATE TRIGGER refuse BEFORE %1 BEGIN "
                                                "SELECT RAISE(ABORT, 'refused'); END")
                                     .arg(refused)),
                 QString());

    // Returns the id of the last contact and whether the bracket inside still ran.
    const auto storeBook = [&] {
        m_store->scopeBegin();
        for (int i = 1; i <= 600; ++i) {
            const quint32 id = add(QString::number(i), QString(1000, QLatin1Char('n')), Store::TypeContact,
                                   Store::LocationPersonal, 0, 2);
            m_store->linkContactAndGroup(id, group);
        }
        m_store->unlinkContact(2);
        m_store->addProperty(3, static_cast<Store::PropertyType>(3), none);
        m_store->deleteProperty(2, key);
        m_store->addSource(QStringLiteral("another"), Store::SourceOutlook);
        m_store->deleteContact(m_source, Store::TypeContact, Store::LocationPersonal, QStringLiteral("7"));
        m_store->deleteContactList(m_source, Store::TypeContact, Store::LocationGlobal);
        m_store->deleteContactList(m_source, Store::TypeGroup, Store::LocationGlobal);
        const bool inner = m_store->scopeBegin();
        const quint32 last = add(QStringLiteral("last"), none);
        m_store->scopeEnd();
        m_store->linkContactAndGroup(group, group);
        m_store->scopeEnd();
        return qMakePair(last, inner);
    };
    if (hasNoPages)
        QVERIFY(onTheStores("PRAGMA max_page_count=180"));
    if (disk)
        QVERIFY(disk->fill(100 * 1024));
    const bool atTheEnd = refused.endsWith(QLatin1String("'last'"));
    QCOMPARE(storeBook(), qMakePair(atTheEnd ? 643U : 0U, atTheEnd));
    QCOMPARE(everything(), before);
    QVERIFY(logged("Error to add contact (db insert)") > 0);

    // The next one repairs it.
    QCOMPARE(raw("DROP TRIGGER IF EXISTS refuse"), QString());
    QVERIFY(onTheStores("PRAGMA max_page_count=1073741823"));
    if (disk)
        QVERIFY(QFile::remove(disk->ballast()));
    QVERIFY(storeBook().second);
    QCOMPARE(raw("SELECT count(*), sum(timestamp), max(id) FROM contacts"),
             QStringLiteral("601|1200|643|\n"));
    QCOMPARE(raw("SELECT count(*) FROM groups"), QStringLiteral("599|\n"));
    QCOMPARE(raw("SELECT * FROM properties"), QStringLiteral("3|3||\n"));
    m_store.reset();
}

void ContactStoreTest::bracketThatCannotBegin()
{
    // Another program has the file: the bracket says so, and its end is still due.
    const quint32 known = add(QStringLiteral("1"), QStringLiteral("old"));
    const QString before = everything();
    QVERIFY(onTheStores("PRAGMA busy_timeout=100"));
    {
        const OtherProgram other(file(), "BEGIN EXCLUSIVE");
        QVERIFY(other.works());
        QVERIFY(!m_store->scopeBegin());
    }
    // What would be written now would be part of a book.
    QVERIFY(!m_store->scopeBegin());
    QCOMPARE(add(QStringLiteral("1"), QStringLiteral("new")), 0U);
    QCOMPARE(add(QStringLiteral("2"), none), 0U);
    QCOMPARE(logged("Error to add contact (db insert)"), 2);
    m_store->updateContactInfo(known, 2, none, none, none, none, none, none);
    m_store->linkContactAndGroup(known, known);
    m_store->addProperty(known, static_cast<Store::PropertyType>(1), none);
    m_store->deleteContactsIfNotInUIDS(m_source, Store::AnyType, Store::AnyLocation, {QString()});
    m_store->deleteContact(known);
    m_store->deleteSource(m_source);
    QCOMPARE(everything(), before);
    QCOMPARE(m_store->getContact(m_source, Store::TypeContact, Store::LocationPersonal, QStringLiteral("1")),
             known);
    m_store->scopeEnd();
    m_store->scopeEnd();
    std::thread([this] {
        m_store->scopeBegin();
        add(QStringLiteral("2"), none);
        m_store->scopeEnd();
        m_store->freeStorageForThread();
    }).join();
    QCOMPARE(raw("SELECT uid FROM contacts"), QStringLiteral("1|\n2|\n"));
}

void ContactStoreTest::bracketThatCannotCommit()
{
    // Another program reads all the time: the end of the bracket takes everything back, and leaves neither a
    // transaction nor the mutex.
    add(QStringLiteral("1"), none);
    add(QStringLiteral("2"), none);
    QVERIFY(onTheStores("PRAGMA busy_timeout=100"));
    {
        OtherProgram other(file(), "BEGIN");
        QVERIFY(other.exec("SELECT uid FROM contacts"));
        QVERIFY(m_store->scopeBegin());
        QCOMPARE(add(QStringLiteral("3"), none), 3U);
        QCOMPARE(logged("[ERROR"), 0);
        m_store->scopeEnd();
        QCOMPARE(logged("Error to add contact (db insert)"), 1);
        QVERIFY(m_store->scopeBegin());
        m_store->scopeEnd();
    }
    std::thread([this] {
        add(QStringLiteral("4"), none);
        m_store->freeStorageForThread();
    }).join();
    QCOMPARE(raw("SELECT uid FROM contacts"), QStringLiteral("1|\n2|\n4|\n"));
}

void ContactStoreTest::lockedForLong()
{
    // Another program has the file for longer than SQLite's patience, which is 5 s (or for as long as
    // QDCORE_LOCK_SECONDS says): a worker waits once and
    // not for each contact, leaves the book as it was, and says that it is done. The next one stores it all.
    qRegisterMetaType<ContactList::Type>();
    for (const char* uid : {"1", "2", "9"})
        add(QLatin1String(uid), QStringLiteral("old"));
    const QString before = everything();
    ContactList book;
    book.setContactsType(ContactList::PersonalContacts);
    QStringList uids;
    for (int i = 1; i <= 4; ++i) {
        uids.append(QString::number(i));
        const auto contact = QSharedPointer<QuendraContact>::create();
        contact->setUrl(QUrl(QStringLiteral("https://fax/user/contacts/%1").arg(i)));
        contact->setName(QStringLiteral("new"));
        book.contacts().append(contact);
    }
    const QPointer<Store> storage(m_store.get());
    const auto synchronise = [&] {
        auto* const deleter = new ContactsDeleterThread(storage, m_source, Store::TypeContact,
                                                        Store::LocationPersonal, uids, nullptr);
        auto* const writer = new QuendraContactProviderDisassembleThread(storage, m_source, nullptr);
        writer->setContacts(book, 7);
        QSignalSpy deleted(deleter, &ContactsDeleterThread::doneContactsDeletion);
        QSignalSpy stored(writer, &QuendraContactProviderDisassembleThread::doneDisassembleContactFromThread);
        QPointer<QThread> threads[] = {deleter, writer};
        deleter->start();
        writer->start();
        const bool done = QTest::qWaitFor([&] { return deleted.count() && stored.count(); }, 18000);
        return QTest::qWaitFor([&] { return !threads[0] && !threads[1]; }, 60000) && done;
    };
    {
        const OtherProgram other(file(), "BEGIN IMMEDIATE");
        QVERIFY(other.works());
        const QDeadlineTimer longest(1000 * qEnvironmentVariableIntValue("QDCORE_LOCK_SECONDS"));
        do {
            QVERIFY(synchronise());
            QCOMPARE(everything(), before);
        } while (!longest.hasExpired());
    }
    QVERIFY(synchronise());
    QCOMPARE(raw("SELECT uid, name, timestamp FROM contacts ORDER BY uid"),
             QStringLiteral("1|new|7|\n2|new|7|\n3|new|7|\n4|new|7|\n"));
}

void ContactStoreTest::manyThatCannotBeCounted()
{
    // Another program lets go of the file after the counting was given up. Taken for few, the rows would go
    // one by one; the schema's version tells that they did not.
    for (int i = 1; i <= 40; ++i)
        add(QString::number(i), none);
    const QString version = raw("PRAGMA schema_version");
    QVERIFY(onTheStores("PRAGMA busy_timeout=1000"));
    std::promise<void> locked;
    std::promise<void> never;
    std::thread program([&] {
        const OtherProgram other(file(), "BEGIN EXCLUSIVE");
        locked.set_value();
        never.get_future().wait_for(std::chrono::milliseconds(1200));
    });
    locked.get_future().wait();
    m_store->deleteContactList(m_source, Store::AnyType, Store::AnyLocation);
    program.join();
    QCOMPARE(raw("SELECT count(*) FROM contacts"), QStringLiteral("0|\n"));
    QVERIFY(raw("PRAGMA schema_version") != version);
}

void ContactStoreTest::longListOfIds()
{
    // 2 MB of a statement.
    QStringList uids;
    for (int i = 0; i < 100000; ++i)
        uids.append(QString::number(100000000000000000 + i));
    m_store->scopeBegin();
    for (int i = 0; i < 50; ++i)
        add(QString::number(i), none);
    add(uids.constLast(), none);
    m_store->scopeEnd();
    m_store->deleteContactsIfNotInUIDS(m_source, Store::TypeContact, Store::LocationPersonal, uids);
    QCOMPARE(raw("SELECT uid FROM contacts"), uids.constLast() + QStringLiteral("|\n"));
}

void ContactStoreTest::manyThreadsInTurn_data()
{
    QTest::addColumn<bool>("frees");
    QTest::newRow("each frees its connection") << true;
    QTest::newRow("none does") << false;
}

void ContactStoreTest::manyThreadsInTurn()
{
    // All thread objects stand at one address, so all connections bear one name.
    QFETCH(bool, frees);
    std::optional<Worker> worker;
    for (int i = 1; i <= 300; ++i) {
        worker.emplace([&, i] {
            if (m_store->scopeBegin())
                add(QString::number(i), none);
            m_store->scopeEnd();
            if (frees)
                m_store->freeStorageForThread();
        });
        worker->complete();
    }
    QCOMPARE(m_store->getContactList(m_source, Store::AnyType, Store::AnyLocation, 0, 0, 0).size(), 300);
    if (frees)
        QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
    QCOMPARE(logged("[ERROR"), 0);
}

void ContactStoreTest::eightThreadsAtOnce()
{
    std::vector<std::thread> workers;
    for (int t = 0; t < 8; ++t) {
        workers.emplace_back([this, t] {
            const quint32 source = m_store->addSource(QString::number(t), Store::SourceQuendra);
            for (int part = 0; part < 4; ++part) {
                m_store->scopeBegin();
                for (int i = 0; i < 100; ++i)
                    add(QString::number(part * 100 + i), none, Store::TypeContact, Store::LocationPersonal,
                        source);
                m_store->scopeEnd();
                add(QString::number(1000 + part), none, Store::TypeGroup, Store::LocationPersonal, source);
                m_store->quickSearch(QStringLiteral("x"), 10, 0, 0);
            }
            m_store->deleteContactList(source, Store::TypeContact, Store::AnyLocation);
            m_store->freeStorageForThread();
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    QCOMPARE(raw("SELECT count(*), count(DISTINCT source) FROM contacts"), QStringLiteral("32|8|\n"));
    QCOMPARE(raw("SELECT count(*) FROM sqlite_master WHERE type='trigger'"), QStringLiteral("2|\n"));
    QCOMPARE(logged("[ERROR"), 0);
}

void ContactStoreTest::connectionIsMadeAnew()
{
    QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
    m_store->freeStorageForThread();
    m_store->freeStorageForThread();
    QCOMPARE(QSqlDatabase::connectionNames().size(), 0);
    QVERIFY(add(QStringLiteral("1"), none));

    // Two stores on one thread have one connection; each goes on when the other is gone.
    auto second = std::make_unique<Store>();
    QVERIFY(second->getContact(m_source, Store::TypeContact, Store::LocationPersonal, QStringLiteral("1")));
    second.reset();
    QVERIFY(add(QStringLiteral("2"), none));
}

void ContactStoreTest::badFiles_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("message");
    QTest::newRow("no database") << "text"
                                 << "Error creating database";
    QTest::newRow("a folder in its place") << "folder"
                                           << "Error opening database";
    QTest::newRow("folder cannot be made") << "blocked"
                                           << "Error creating path ";
    QTest::newRow("read-only") << "read-only"
                               << "";
}

void ContactStoreTest::badFiles()
{
    QFETCH(QString, what);
    QFETCH(QString, message);
    add(QStringLiteral("1"), QStringLiteral("n"));
    m_store.reset();
    std::optional<SmallDisk> disk;
    QFile database(file());
    if (what == QLatin1String("read-only")) {
        QVERIFY(database.setPermissions(QFile::ReadOwner));
        if (database.open(QIODevice::ReadWrite)) { // root may write everything
            database.close();
            disk.emplace(QFileInfo(file()).path(), true);
            if (!disk->works())
                QSKIP("This user may write everything, and mount nothing.");
        }
    } else {
        QVERIFY(database.remove());
    }
    if (what == QLatin1String("text")) {
        QVERIFY(database.open(QIODevice::WriteOnly));
        database.write(QByteArray(5000, 'x'));
        database.close();
    } else if (what == QLatin1String("folder")) {
        QVERIFY(QDir().mkpath(file()));
    } else if (what == QLatin1String("blocked")) {
        QFile blocker(m_dir->filePath(QStringLiteral("blocker")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        qputenv("APPDATA", blocker.fileName().toLocal8Bit());
    }

    m_store = std::make_unique<Store>();
    if (!message.isEmpty())
        QVERIFY(logged(message.toLatin1().constData()));
    const bool readable = what == QLatin1String("read-only");
    QCOMPARE(m_store->scopeBegin(), readable); // SQLite begins a transaction that can only read.
    QCOMPARE(add(QStringLiteral("2"), none), 0U);
    m_store->scopeEnd();
    QCOMPARE(logged("Error to add contact (db insert)"), 1);
    QCOMPARE(m_store->addSource(QStringLiteral("new"), Store::SourceQuendra), 0U);
    QCOMPARE(logged("Error to add source (db insert)"), 1);
    m_store->linkContactAndGroup(1, 1);
    m_store->unlinkGroup(1);
    m_store->addProperty(1, static_cast<Store::PropertyType>(1), none);
    m_store->deleteContactsIfNotInUIDS(1, Store::AnyType, Store::AnyLocation, {QString()});
    m_store->deleteSource(1);
    QCOMPARE(m_store->quickSearch(none, 0, 0, 0).size(), readable ? 1 : 0);
    int calls = 0;
    QCOMPARE(m_store->getContactList(makeUnit, 1, Store::AnyType, Store::AnyLocation, 0, 0, 0, &calls)
                 .contacts()
                 .size(),
             readable ? 1 : 0);
    QCOMPARE(m_store->getContactLastTimeStamp(1, Store::AnyType, Store::AnyLocation), readable ? 1U : 0U);
    QString value = QStringLiteral("kept");
    QVERIFY(!m_store->getPropertyInfo(1, static_cast<Store::PropertyType>(1), value));
    QCOMPARE(value, QStringLiteral("kept"));
    m_store.reset();
}

QTEST_GUILESS_MAIN(ContactStoreTest)
#include "tst_contactstore.moc"
