// Outlook's contacts: the folder chosen, its contacts copied, against an Outlook in memory.

#include "contactlocalstorage.h"
#include "contactmanager.h"
#include "contactsoptionsoutlook.h"
#include "fakeoutlook.h"
#include "outlookcontact.h"
#include "outlookcontactprovider.h"
#include "outlookcontactproviderdisassemblethread.h"
#include "testkit.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QIcon>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <thread>

namespace {

const int mailItem = 43;
const int distributionList = 69;
const auto wrongFolder = QStringLiteral("outlookcontactprovider.cpp Incorrectly selected directory Outlook");

QString s(const char* text)
{
    return QString::fromUtf8(text);
}

FakeItem contact(int number)
{
    FakeItem item;
    item.entryID = QStringLiteral("I%1").arg(number);
    item.fullName = QStringLiteral("Name %1").arg(number);
    item.phone = QStringLiteral("1%1").arg(number);
    item.fax = QStringLiteral("2%1").arg(number);
    item.company = QStringLiteral("Company %1").arg(number);
    item.modified = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)).addSecs(number);
    return item;
}

FakeItem other(int itemClass)
{
    FakeItem item = contact(9000);
    item.itemClass = itemClass;
    return item;
}

QVector<FakeItem> contacts(int count)
{
    QVector<FakeItem> items;
    items.reserve(count);
    for (int i = 1; i <= count; ++i)
        items.append(contact(i));
    return items;
}

QString nameOf(const QSharedPointer<ContactUnit>& unit)
{
    const auto* contact = dynamic_cast<const OutlookContact*>(unit.data());
    return contact ? contact->name() : QString();
}

/// What a provider says, in order.
void record(ContactProvider* provider, QStringList* said)
{
    QObject::connect(provider, &ContactProvider::onSyncStart, [said] { said->append(s("start")); });
    QObject::connect(provider, &ContactProvider::onSyncStop, [said] { said->append(s("stop")); });
    QObject::connect(provider, &ContactProvider::syncedContacts,
                     [said](ContactList::Type type) { said->append(QStringLiteral("synced %1").arg(type)); });
    QObject::connect(provider, &ContactProvider::errorSyncedContacts,
                     [said](Task::Status status) { said->append(QStringLiteral("error %1").arg(status)); });
}

} // namespace

class TestOutlook : public QObject
{
    Q_OBJECT

    /// A manager with its Outlook provider, and what the provider said.
    struct World
    {
        explicit World(const FakeFolderPtr& folder = FakeFolderPtr())
        {
            manager->initOutlook(false);
            provider = qobject_cast<OutlookContactProvider*>(manager->providers().first().data());
            record(provider, said.get());
            if (folder)
                provider->setEntryID(folder->key(), false);
        }
        bool sync()
        {
            provider->syncContacts(ContactList::OutlookContacts, false);
            return settle();
        }
        bool settle()
        {
            return QTest::qWaitFor([this] { return !manager->isSync(); }, 120000);
        }
        /// The rows of a source, by uid.
        QMap<QString, QString> rows(unsigned int source) const
        {
            QMap<QString, QString> found;
            const auto ids = manager->storage()->getContactList(source, ContactLocalStorage::AnyType,
                                                                ContactLocalStorage::AnyLocation, 0, 0, 0);
            for (const quint32 id : ids) {
                quint32 ofSource = 0;
                quint32 timestamp = 0;
                ContactLocalStorage::ContactType type;
                ContactLocalStorage::ContactLocation location;
                QString uid, name, description, phone, fax, email, company;
                manager->storage()->getContactInfo(id, ofSource, type, location, uid, timestamp, name,
                                                   description, phone, fax, email, company);
                found.insert(uid, QStringLiteral("%1/%2 %3 %4|%5|%6|%7|%8|%9")
                                      .arg(type)
                                      .arg(location)
                                      .arg(timestamp)
                                      .arg(name, description, phone, fax, email, company));
            }
            return found;
        }

        const std::unique_ptr<QStringList> said{new QStringList};
        std::unique_ptr<ContactManager> manager{new ContactManager};
        QPointer<OutlookContactProvider> provider;
    };

    static QString row(const FakeItem& item)
    {
        return QStringLiteral("1/2 %1 %2||%3|%4||%5")
            .arg(item.modified.toSecsSinceEpoch())
            .arg(item.fullName, item.phone, item.fax, item.company);
    }

    QTemporaryDir m_folder;
    QSharedPointer<FakeOutlook> m_outlook;
    FakeFolderPtr m_mailbox, m_contacts, m_mail, m_team;

private Q_SLOTS:
    /// A mailbox: contacts, with those of the team in it, and mail.
    void init()
    {
        const QString folder = m_folder.filePath(QStringLiteral("%1-%2").arg(
            QString::fromLatin1(QTest::currentTestFunction()), QString::fromLatin1(QTest::currentDataTag())));
        QVERIFY(QDir().mkpath(folder));
        qputenv("APPDATA", QFile::encodeName(folder));

        m_outlook = QSharedPointer<FakeOutlook>::create();
        OutlookPort::setCurrent(m_outlook);
        m_mailbox = m_outlook->add(FakeFolderPtr(), s("Mailbox"), 0);
        m_mail = m_outlook->add(m_mailbox, s("Inbox"), 0);
        m_contacts = m_outlook->add(m_mailbox, s("Contacts"), OutlookFolder::contactItems);
        m_team = m_outlook->add(m_contacts, s("Team"), OutlookFolder::contactItems);
        m_outlook->defaultContacts = m_contacts;
    }
    void cleanup()
    {
        OutlookPort::setCurrent(QSharedPointer<OutlookPort>());
        // the worlds of the test are gone
        QVERIFY(m_outlook->isBalanced());
        QCOMPARE(m_outlook->violations(), 0);
    }

    // the provider
    void copies();
    void refusesChanges();
    void reads();
    void endsAtOnceWithoutFolder();
    void nothingToRead_data();
    void nothingToRead();
    void switchesFolder();
    void switchesWhileReading();
    void interrupted();
    void shrinksWhileRead();
    void largeFolder();
    void neverHalfRebuilt();
    void destroyedWhileReading_data();
    void destroyedWhileReading();
    void destroyedBySlot_data();
    void destroyedBySlot();
    void manager();

    // the folder chooser
    void withoutOutlook_data();
    void withoutOutlook();
    void tree();
    void choosing();
    void vanishedFolders();
    void keepsTheRulesOfModels();
    void documentedQuirks();
};

// --- The provider

void TestOutlook::copies()
{
    TestLog log;
    m_contacts->items = contacts(4);
    m_contacts->items[1].modified = QDateTime();
    m_contacts->items[2].modified = QDateTime(QDate(4501, 1, 1), QTime(0, 0)); // Outlook's "none"
    m_contacts->items.insert(1, other(distributionList));
    m_contacts->items.insert(2, other(mailItem));
    m_contacts->items.append(contact(50));
    m_contacts->items.last().fails = true;

    World world(m_contacts);
    const unsigned int source = world.provider->sourceId();
    QVERIFY(source != 0);
    QString name;
    ContactLocalStorage::SourceType kind;
    QVERIFY(world.manager->storage()->getSourceInfo(source, name, kind));
    QCOMPARE(name, m_contacts->key());
    QCOMPARE(kind, ContactLocalStorage::SourceOutlook);
    QVERIFY(world.sync());
    QCOMPARE(*world.said, QStringList({s("start"), s("stop"), s("synced 5")}));
    QCOMPARE(world.rows(source), (QMap<QString, QString>{{s("I1"), row(contact(1))},
                                                         {s("I2"), s("1/2 0 Name 2||12|22||Company 2")},
                                                         {s("I3"), s("1/2 0 Name 3||13|23||Company 3")},
                                                         {s("I4"), row(contact(4))}}));
    QStringList counts;
    const QStringList lines = log.messages(s("DEBUG"));
    for (const QString& line : lines) {
        if (line.startsWith(s("outlookcontactprovider.cpp")))
            counts.append(line.section(QLatin1Char(' '), 1));
    }
    QCOMPARE(counts, QStringList({s("sync count (1)"), s("sync count (0)")}));

    // one changed, one gone, one new, one back; two runs at a time are two ends
    m_contacts->items = contacts(3);
    m_contacts->items[0].fullName = s("Mary Poe");
    m_contacts->items.removeAt(1);
    m_contacts->items.append(contact(50));
    world.provider->syncContacts(ContactList::OutlookContacts, true);
    world.provider->syncContacts(ContactList::OutlookContacts, false);
    QVERIFY(world.settle());
    QCOMPARE(world.said->count(s("synced 5")), 3);
    QCOMPARE(world.said->count(s("stop")), 3);
    QCOMPARE(world.rows(source), (QMap<QString, QString>{{s("I1"), row(m_contacts->items.at(0))},
                                                         {s("I3"), row(contact(3))},
                                                         {s("I50"), row(contact(50))}}));
    QCOMPARE(log.messages(s("ERROR")), QStringList());
    QVERIFY(m_outlook->threadCount() > 1); // it was not read on this thread
    QCOMPARE(int(m_outlook->openSessions), 0);
}

void TestOutlook::refusesChanges()
{
    World world(m_contacts);
    OutlookContactProvider& provider = *world.provider;
    QCOMPARE(provider.type(), ContactProvider::OutlookProvider);
    QCOMPARE(provider.contactsTypeList(), QList<ContactList::Type>{ContactList::OutlookContacts});
    QVERIFY(!provider.isAddContactSupport(ContactList::OutlookContacts));
    QVERIFY(!provider.isModifyContactSupport(ContactList::OutlookContacts));
    QVERIFY(!provider.isDeleteContactSupport(ContactList::OutlookContacts));
    QStringList said;
    connect(&provider, &ContactProvider::errorAddedContact,
            [&said](Task::Status status) { said << QStringLiteral("add %1").arg(status); });
    connect(&provider, &ContactProvider::errorModifiedContact,
            [&said](Task::Status status) { said << QStringLiteral("modify %1").arg(status); });
    connect(&provider, &ContactProvider::errorDeletedContact,
            [&said](Task::Status status) { said << QStringLiteral("delete %1").arg(status); });
    provider.addContact(OutlookContact(), ContactList::OutlookContacts);
    provider.modifyContact(OutlookContact(), ContactList::OutlookContacts);
    provider.deleteContact(OutlookContact(), ContactList::OutlookContacts);
    QCOMPARE(said, QStringList({s("add 5"), s("modify 5"), s("delete 5")}));
    QVERIFY(world.rows(provider.sourceId()).isEmpty());
}

void TestOutlook::reads()
{
    TestLog log;
    m_contacts->items = contacts(5);
    World world(m_contacts);
    QVERIFY(world.sync());

    QStringList names;
    ContactList::Type book = ContactList::Unknown;
    connect(world.provider, &ContactProvider::gotContacts, [&](const ContactList& list) {
        book = list.contactsType();
        for (const auto& unit : list.contacts())
            names << nameOf(unit);
    });
    QList<Task::Status> errors;
    connect(world.provider, &ContactProvider::errorGotContacts,
            [&errors](Task::Status status) { errors << status; });
    world.provider->getContacts(ContactList::OutlookContacts, s("no such name"), 1, 2);
    QCOMPARE(names, QStringList({s("Name 2"), s("Name 3")}));
    QCOMPARE(book, ContactList::OutlookContacts);
    world.provider->getContacts(ContactList::GlobalContacts, QString(), 0, 0);
    QCOMPARE(errors, QList<Task::Status>{Task::NotSupported});
    QCOMPARE(names.size(), 2);

    ContactLocalStorage& storage = *world.manager->storage();
    const unsigned int source = world.provider->sourceId();
    const quint32 id = storage.getContact(source, ContactLocalStorage::TypeContact,
                                          ContactLocalStorage::LocationPersonal, s("I3"));
    const auto unit = world.manager->getContactById(id);
    const auto* third = dynamic_cast<const OutlookContact*>(unit.data());
    QVERIFY(third);
    QCOMPARE(third->uid(), s("I3"));
    QCOMPARE(third->name(), s("Name 3"));
    QCOMPARE(third->phone(), s("13"));
    QCOMPARE(third->fax(), s("23"));
    QCOMPARE(third->email(), QString());
    QCOMPARE(third->organization(), s("Company 3"));

    const QString none = s("");
    const auto addUnit = [&](unsigned int ofSource, ContactLocalStorage::ContactType type) {
        return storage.addContact(ofSource, type, ContactLocalStorage::LocationPersonal, s("77"), 1, none,
                                  none, none, none, none, none);
    };
    const quint32 group = addUnit(source, ContactLocalStorage::TypeGroup);
    QVERIFY(!world.provider->aggregateContact(group));
    QCOMPARE(log.messages(s("ERROR")), QStringList{s("outlookcontactprovider.cpp Unsuported contact type")});
    const quint32 foreign = addUnit(storage.addSource(s("a@b"), ContactLocalStorage::SourceQuendra),
                                    ContactLocalStorage::TypeContact);
    QVERIFY(!world.provider->aggregateContact(foreign));
    QVERIFY(!world.provider->aggregateContact(123456));

    // a copy drops contacts, and leaves alone what is none
    QVERIFY(world.sync());
    QCOMPARE(world.rows(source).size(), 6);
}

void TestOutlook::endsAtOnceWithoutFolder()
{
    World world;
    world.provider->syncContacts(ContactList::OutlookContacts, true);
    QCOMPARE(*world.said, QStringList({s("start"), s("stop"), s("synced 5")}));
    QVERIFY(!world.provider->isSync());

    // likewise for a book that it does not have
    world.provider->setEntryID(m_contacts->key(), false);
    world.said->clear();
    world.provider->syncContacts(ContactList::GlobalGroups, false);
    QCOMPARE(*world.said, QStringList({s("start"), s("stop"), s("synced 4")}));

    // and once the store is gone
    world.said->clear();
    delete world.manager->storage();
    world.provider->syncContacts(ContactList::OutlookContacts, false);
    QCOMPARE(*world.said, QStringList({s("start"), s("stop"), s("synced 5")}));
    const int asked = m_outlook->applications;
    world.provider->setEntryID(m_team->key(), true);
    QCOMPARE(world.provider->entryID(), m_contacts->key());
    QCOMPARE(int(m_outlook->applications), asked);
    int refused = 0;
    connect(world.provider, &ContactProvider::errorGotContacts, [&refused] { ++refused; });
    world.provider->getContacts(ContactList::OutlookContacts, QString(), 0, 0);
    QCOMPARE(refused, 1);
    QVERIFY(!world.provider->aggregateContact(1));
}

void TestOutlook::nothingToRead_data()
{
    QTest::addColumn<QString>("key"); // null: the contact folder, and then breakIt() of the tag
    QTest::addColumn<bool>("isLogged");
    QTest::newRow("no application") << QString() << false;
    QTest::newRow("no session") << QString() << true;
    QTest::newRow("logon fails") << QString() << true;
    QTest::newRow("folder gone") << QString() << true;
    QTest::newRow("no longer contacts") << QString() << true;
    QTest::newRow("no colon") << s("E-Contacts") << true;
    QTest::newRow("only a colon") << s(":") << true;
    QTest::newRow("mail folder") << s("E-Inbox:S:Mailbox") << true;
    QTest::newRow("wrong store") << s("E-Contacts:S") << true;
}

// Nothing that is wrong with Outlook is an error to the client, and the cache does not keep what is not
// there.
void TestOutlook::nothingToRead()
{
    QFETCH(QString, key);
    QFETCH(bool, isLogged);
    const QByteArray tag = QTest::currentDataTag();
    const auto breakIt = [&] {
        m_outlook->isInstalled = tag != "no application";
        m_outlook->hasSession = tag != "no session";
        m_outlook->logsOn = tag != "logon fails";
        m_contacts->isGone = tag == "folder gone";
        if (tag == "no longer contacts")
            m_contacts->itemType = 0;
    };
    TestLog log;
    m_contacts->items = contacts(3);
    const QStringList success{s("start"), s("stop"), s("synced 5")};
    {
        // wrong from the beginning
        breakIt();
        World world;
        world.provider->setEntryID(key.isNull() ? m_contacts->key() : key, true);
        QCOMPARE(world.provider->sourceId(), 0U);
        QCOMPARE(log.messages(s("ERROR")), isLogged ? QStringList{wrongFolder} : QStringList());
        QVERIFY(world.settle());
        QCOMPARE(*world.said, success);
    }
    m_outlook->isInstalled = m_outlook->hasSession = m_outlook->logsOn = true;
    m_contacts->isGone = false;
    m_contacts->itemType = OutlookFolder::contactItems;
    {
        // wrong by the second copy
        World world(m_contacts);
        QVERIFY(world.sync());
        QCOMPARE(world.rows(world.provider->sourceId()).size(), 3);
        const unsigned int source = world.provider->sourceId();
        breakIt();
        if (!key.isNull())
            world.provider->setEntryID(key, false);
        world.said->clear();
        QVERIFY(world.sync());
        QCOMPARE(*world.said, success);
        QVERIFY(world.rows(source).isEmpty());
    }
    QCOMPARE(int(m_outlook->openSessions), 0);
}

void TestOutlook::switchesFolder()
{
    m_contacts->items = contacts(3);
    m_team->items = {contact(7)};
    World world(m_contacts);
    QVERIFY(world.sync());
    const unsigned int first = world.provider->sourceId();
    int asked = m_outlook->applications;
    world.provider->setEntryID(m_contacts->key(), true);
    QCOMPARE(int(m_outlook->applications), asked);
    QVERIFY(!world.provider->isSync());
    QCOMPARE(world.rows(first).size(), 3);

    // the copy of the old one is gone before Outlook is asked for the new one
    m_outlook->isInstalled = false;
    world.provider->setEntryID(m_team->key(), false);
    QVERIFY(world.rows(first).isEmpty());
    QCOMPARE(world.manager->storage()->getSourceList(ContactLocalStorage::SourceOutlook).size(), 0);
    // the provider still has the source that is gone, into which nothing may be copied
    m_outlook->isInstalled = true;
    QCOMPARE(world.provider->sourceId(), first);
    QVERIFY(world.sync());
    QVERIFY(world.rows(first).isEmpty());

    world.provider->setEntryID(m_contacts->key(), false);
    world.provider->setEntryID(m_team->key(), true);
    QVERIFY(world.provider->isSync());
    QVERIFY(world.settle());
    const unsigned int second = world.provider->sourceId();
    QVERIFY(second != first);
    QCOMPARE(world.rows(second).keys(), QStringList{s("I7")});

    // no folder at all
    asked = m_outlook->applications;
    world.provider->setEntryID(QString(), true);
    QVERIFY(world.settle());
    QVERIFY(world.rows(second).isEmpty());
}

// The event loop does not wait until a large folder is read that nobody wants any more.
void TestOutlook::switchesWhileReading()
{
    m_contacts->items = contacts(2000);
    m_team->items = {contact(7)};
    World world(m_contacts);
    QVERIFY(world.sync());
    const unsigned int first = world.provider->sourceId();

    QSemaphore reading;
    m_outlook->beforeItem = [&reading](int number) {
        if (number != 100)
            return;
        reading.release();
        QElapsedTimer patience;
        patience.start();
        while (!QThread::currentThread()->isInterruptionRequested() && patience.elapsed() < 20000)
            std::this_thread::yield();
    };
    m_outlook->itemsRead = 0;
    world.said->clear();
    world.provider->syncContacts(ContactList::OutlookContacts, false);
    QVERIFY(reading.tryAcquire(1, 20000));
    world.provider->setEntryID(m_team->key(), true);
    QVERIFY(world.rows(first).isEmpty());
    QCOMPARE(int(m_outlook->itemsRead), 100);
    QVERIFY(world.settle());
    // one was running, so no other was begun
    QCOMPARE(*world.said, QStringList({s("start"), s("stop"), s("synced 5")}));
    QVERIFY(world.sync());
    QCOMPARE(world.rows(world.provider->sourceId()).keys(), QStringList{s("I7")});
    QVERIFY(world.rows(first).isEmpty());
}

// Not even for a moment is half a folder to be seen.
void TestOutlook::interrupted()
{
    m_contacts->items = contacts(10);
    World world(m_contacts);
    QVERIFY(world.sync());
    QPointer<OutlookContactProviderDisassembleThread> thread(new OutlookContactProviderDisassembleThread(
        world.manager->storage(), world.provider->sourceId(), world.provider));
    thread->setEntryID(m_contacts->key());
    m_outlook->beforeItem = [](int number) {
        if (number == 5)
            QThread::currentThread()->requestInterruption();
    };
    thread->start();
    QTRY_VERIFY(!thread);
    QVERIFY(world.rows(world.provider->sourceId()).isEmpty());
}

void TestOutlook::shrinksWhileRead()
{
    m_contacts->items = contacts(10);
    World world(m_contacts);
    m_outlook->beforeItem = [this](int number) {
        if (number == 4)
            m_contacts->items.resize(3); // the one that is asked for is gone as well
    };
    QVERIFY(world.sync());
    QCOMPARE(int(m_outlook->itemsRead), 4);
    QCOMPARE(world.rows(world.provider->sourceId()).keys(), QStringList({s("I1"), s("I2"), s("I3")}));
}

void TestOutlook::largeFolder()
{
    m_contacts->items = contacts(20000);
    for (int i = 0; i < m_contacts->items.size(); i += 10)
        m_contacts->items[i].itemClass = distributionList;
    World world(m_contacts);
    for (int run = 0; run < 2; ++run) {
        m_outlook->itemsRead = 0;
        QVERIFY(world.sync());
        QCOMPARE(int(m_outlook->itemsRead), 20000);
        const auto ids =
            world.manager->storage()->getContactList(world.provider->sourceId(), ContactLocalStorage::AnyType,
                                                     ContactLocalStorage::AnyLocation, 0, 0, 0);
        QCOMPARE(ids.size(), 18000);
    }
    const auto last =
        world.manager->storage()->getContact(world.provider->sourceId(), ContactLocalStorage::TypeContact,
                                             ContactLocalStorage::LocationPersonal, s("I20000"));
    QVERIFY(last != 0);
    QCOMPARE(nameOf(world.manager->getContactById(last)), s("Name 20000"));
}

// Whoever reads the store in another thread meets either the copy before or the one after.
void TestOutlook::neverHalfRebuilt()
{
    m_contacts->items = contacts(1000);
    World world(m_contacts);
    QVERIFY(world.sync());
    const unsigned int source = world.provider->sourceId();
    ContactLocalStorage& storage = *world.manager->storage();

    std::atomic<bool> stop{false};
    std::atomic<int> readings{0};
    QSet<int> seen;
    std::thread reader([&] {
        while (!stop) {
            seen.insert(storage
                            .getContactList(source, ContactLocalStorage::AnyType,
                                            ContactLocalStorage::AnyLocation, 0, 0, 0)
                            .size());
            ++readings;
        }
        storage.freeStorageForThread();
    });
    int paused = 0;
    m_outlook->beforeItem = [&](int number) {
        if (number != 1 && number != 400 && number != 999)
            return;
        // until it has been read twice in the middle of it
        const int goal = readings + 2;
        QElapsedTimer patience;
        patience.start();
        while (readings < goal && patience.elapsed() < 20000)
            std::this_thread::yield();
        paused += readings >= goal;
    };
    m_contacts->items.append(contact(1001));
    const bool first = world.sync();
    m_contacts->items.append(contact(1002));
    const bool second = world.sync();
    stop = true;
    reader.join();
    QVERIFY(first && second);
    QCOMPARE(paused, 6);
    QVERIFY(seen.subtract({1000, 1001, 1002}).isEmpty());
}

void TestOutlook::destroyedWhileReading_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<bool>("byManager");
    QTest::newRow("at the first item") << 1 << true;
    QTest::newRow("in the middle") << 150 << true;
    QTest::newRow("at the last item") << 300 << true;
    QTest::newRow("taken off the list") << 150 << false;
}

void TestOutlook::destroyedWhileReading()
{
    QFETCH(int, item);
    QFETCH(bool, byManager);
    m_contacts->items = contacts(300);
    QSemaphore reading;
    QSemaphore goOn; // the threads stand still until their end is settled
    m_outlook->beforeItem = [&](int number) {
        if (number == item) {
            reading.release();
            goOn.acquire();
        }
    };
    World world(m_contacts);
    // the second waits for the first
    world.provider->syncContacts(ContactList::OutlookContacts, false);
    world.provider->syncContacts(ContactList::OutlookContacts, false);
    QSignalSpy idle(world.manager.get(), &ContactManager::onSyncStop);
    int readBefore = 0;
    connect(world.provider, &ContactProvider::errorSyncedContacts,
            [&] { readBefore = m_outlook->itemsRead; });
    const unsigned int source = world.provider->sourceId();
    QVERIFY(reading.tryAcquire(1, 20000));
    if (byManager) {
        goOn.release(2);
        world.manager.reset();
    } else {
        world.manager->deleteProvider(world.provider.data());
        goOn.release(2);
        QTRY_VERIFY(!world.provider);
        QCOMPARE(idle.count(), 1);
        QVERIFY(!world.manager->isSync());
    }
    QVERIFY(!world.provider);
    const QStringList end{s("stop"), s("error 2")};
    QCOMPARE(*world.said, QStringList({s("start"), s("start")}) + end + end);

    // they were waited for before anything was said, and what they read is there, whole
    QCOMPARE(readBefore, 600);
    if (byManager)
        world.manager = std::make_unique<ContactManager>();
    QCOMPARE(world.rows(source).size(), 300);
}

void TestOutlook::destroyedBySlot_data()
{
    QTest::addColumn<int>("when");
    QTest::newRow("at the start") << 0;
    QTest::newRow("at the stop") << 1;
    QTest::newRow("at the end") << 2;
}

void TestOutlook::destroyedBySlot()
{
    QFETCH(int, when);
    // with a thread, and without one
    for (const FakeFolderPtr& folder : {m_contacts, m_mail}) {
        World world(folder);
        const auto destroy = [&world] { world.manager.reset(); };
        switch (when) {
        case 0:
            connect(world.provider, &ContactProvider::onSyncStart, destroy);
            break;
        case 1:
            connect(world.provider, &ContactProvider::onSyncStop, destroy);
            break;
        default:
            connect(world.provider, &ContactProvider::syncedContacts, destroy);
            break;
        }
        world.provider->syncContacts(ContactList::OutlookContacts, false);
        QTRY_VERIFY(!world.provider);
        QCOMPARE(world.said->first(), s("start"));
        QCOMPARE(world.said->count(s("stop")), 1);
        QCOMPARE(world.said->last(), when == 2 ? s("synced 5") : when == 0 ? s("error 2") : s("stop"));
    }
}

void TestOutlook::manager()
{
    m_contacts->items = contacts(2);
    m_team->items = {contact(7)};
    World world;
    ContactManager& manager = *world.manager;
    QCOMPARE(manager.outlookSourceId(), 0U);
    manager.initOutlook(true);
    QCOMPARE(manager.providers().size(), 1);
    manager.deleteProvider(world.provider.data());
    QTRY_VERIFY(!world.provider);

    // only kept, until there is a provider
    QSignalSpy changed(&manager, &ContactManager::changedContactProviderList);
    const int asked = m_outlook->applications;
    manager.setOutlookEntryID(m_contacts->key(), true);
    QCOMPARE(int(m_outlook->applications), asked);
    manager.initOutlook(true);
    QCOMPARE(changed.count(), 1);
    QVERIFY(manager.isOutlookSync());
    QVERIFY(world.settle());
    QVERIFY(!manager.isOutlookSync());
    const unsigned int source = manager.outlookSourceId();
    QCOMPARE(world.rows(source).size(), 2);

    const int before = m_outlook->applications;
    manager.initOutlook(true);
    QCOMPARE(manager.providers().size(), 1);
    QCOMPARE(int(m_outlook->applications), before);
    manager.setOutlookEntryID(m_team->key(), true);
    QVERIFY(world.settle());
    QVERIFY(world.rows(source).isEmpty());
    QCOMPARE(world.rows(manager.outlookSourceId()).keys(), QStringList{s("I7")});
}

// --- The folder chooser

void TestOutlook::withoutOutlook_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<bool>("session");
    QTest::newRow("not installed") << false << true;
    QTest::newRow("no session") << true << false;
    QTest::newRow("logon fails") << true << true;
}

void TestOutlook::withoutOutlook()
{
    QFETCH(bool, installed);
    QFETCH(bool, session);
    m_outlook->isInstalled = installed;
    m_outlook->hasSession = session;
    m_outlook->logsOn = false;
    ContactsOptionsOutlook model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), 0);
    QVERIFY(!model.index(0, 0).isValid());
    QCOMPARE(model.defaultEntryID(), QString());
    QVERIFY(!model.entryIDIsContact(m_contacts->key()));
    QVERIFY(!model.indexByEntryID(m_contacts->key()).isValid());
    model.setSelectedEntryID(m_contacts->key());
    QCOMPARE(model.selectedEntryID(), m_contacts->key());
}

void TestOutlook::tree()
{
    const auto archive = m_outlook->add(FakeFolderPtr(), s("Archive"), 0);
    const auto deep =
        m_outlook->add(m_outlook->add(m_mail, s("Old"), 0), s("Friends"), OutlookFolder::contactItems);
    m_outlook->add(m_mailbox, s("Sent"), 0);
    ContactsOptionsOutlook model;
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.columnCount(), 1);
    const QModelIndex mailbox = model.index(0, 0);
    QCOMPARE(model.data(mailbox).toString(), s("Mailbox"));
    QVERIFY(!model.index(1, 0).isValid()); // no contacts in it, yet counted
    QVERIFY(!model.index(2, 0).isValid());
    QVERIFY(!model.index(-1, 0).isValid());

    QCOMPARE(model.rowCount(mailbox), 3);
    const QModelIndex inbox = model.index(0, 0, mailbox);
    const QModelIndex contactsIndex = model.index(1, 0, mailbox);
    QVERIFY(!model.index(2, 0, mailbox).isValid());
    const QModelIndex old = model.index(0, 0, inbox);
    const QModelIndex friends = model.index(0, 0, old);
    QCOMPARE(model.entryIDByIndex(friends), deep->key());
    QCOMPARE(model.columnCount(friends), 0);
    QCOMPARE(model.rowCount(friends), 0);

    // up again, and the same indexes as before
    QCOMPARE(model.parent(friends), old);
    QCOMPARE(model.parent(old), inbox);
    QCOMPARE(model.parent(inbox), mailbox);
    QVERIFY(!model.parent(mailbox).isValid());
    QCOMPARE(model.index(1, 0, mailbox), contactsIndex);
    QCOMPARE(model.indexByEntryID(m_contacts->key()), contactsIndex);
    QVERIFY(!model.indexByEntryID(m_team->key()).isValid());
    QVERIFY(!model.indexByEntryID(QString()).isValid());
    QCOMPARE(model.entryIDByIndex(QModelIndex()), QString());

    // a folder keeps its index wherever it moves
    std::swap(m_mailbox->folders[0], m_mailbox->folders[1]);
    QCOMPARE(model.index(0, 0, mailbox), contactsIndex);

    QCOMPARE(model.data(friends).toString(), s("Friends"));
    QVERIFY(!model.data(friends, Qt::DecorationRole).value<QIcon>().pixmap(16).isNull());
    QVERIFY(!model.data(friends, Qt::EditRole).isValid());
    QVERIFY(!model.data(QModelIndex()).isValid());
    QCOMPARE(model.data(friends, Qt::CheckStateRole), QVariant(int(Qt::Unchecked)));
    QVERIFY(!model.data(old, Qt::CheckStateRole).isValid());
    QVERIFY(model.flags(friends) & Qt::ItemIsUserCheckable);
    QCOMPARE(model.flags(old), Qt::ItemIsSelectable | Qt::ItemIsEnabled);

    QCOMPARE(model.defaultEntryID(), m_contacts->key());
    m_outlook->defaultContacts.clear();
    QCOMPARE(model.defaultEntryID(), QString());
    QVERIFY(model.entryIDIsContact(m_team->key()));
    QVERIFY(!model.entryIDIsContact(archive->key()));
    QVERIFY(!model.entryIDIsContact(s("E-Team")));
    QVERIFY(!model.entryIDIsContact(QString()));
}

void TestOutlook::choosing()
{
    ContactsOptionsOutlook model;
    const auto isChecked = [&model](const QModelIndex& index) {
        return model.data(index, Qt::CheckStateRole).toInt() == Qt::Checked;
    };
    // before the tree has been there
    model.setSelectedEntryID(m_team->key());
    const QModelIndex mailbox = model.index(0, 0);
    const QModelIndex contactsIndex = model.index(1, 0, mailbox);
    const QModelIndex team = model.index(0, 0, contactsIndex);
    QVERIFY(isChecked(team));
    QVERIFY(!isChecked(contactsIndex));

    QStringList redrawn;
    connect(&model, &QAbstractItemModel::dataChanged, [&](const QModelIndex& from, const QModelIndex& to) {
        redrawn << model.data(from).toString();
        QCOMPARE(from, to);
    });
    QVERIFY(model.setData(contactsIndex, Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(redrawn, QStringList({s("Team"), s("Contacts")}));
    QCOMPARE(model.selectedEntryID(), m_contacts->key());
    QVERIFY(isChecked(contactsIndex));
    QVERIFY(!isChecked(team));

    QVERIFY(!model.setData(contactsIndex, Qt::Unchecked, Qt::CheckStateRole));
    QVERIFY(!model.setData(team, Qt::PartiallyChecked, Qt::CheckStateRole));
    QVERIFY(!model.setData(team, Qt::Checked, Qt::EditRole));
    QVERIFY(!model.setData(QModelIndex(), Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(model.selectedEntryID(), m_contacts->key());

    redrawn.clear();
    model.setSelectedEntryID(s("never shown:anywhere"));
    model.setSelectedEntryID(QString());
    QCOMPARE(redrawn, QStringList{s("Contacts")});
}

void TestOutlook::vanishedFolders()
{
    ContactsOptionsOutlook model;
    const QModelIndex mailbox = model.index(0, 0);
    const QModelIndex contactsIndex = model.index(1, 0, mailbox);
    const QModelIndex team = model.index(0, 0, contactsIndex);
    m_contacts->isGone = true;
    QVERIFY(!model.data(contactsIndex).isValid());
    QCOMPARE(model.rowCount(contactsIndex), 0);
    QCOMPARE(model.columnCount(contactsIndex), 0);
    QVERIFY(!model.index(0, 0, contactsIndex).isValid());
    QVERIFY(!model.index(1, 0, mailbox).isValid());
    QVERIFY(!model.parent(team).isValid());
    QVERIFY(!(model.flags(contactsIndex) & Qt::ItemIsUserCheckable));
    QCOMPARE(model.data(team).toString(), s("Team"));
}

namespace {

QStringList complaints;

void collect(QtMsgType, const QMessageLogContext& context, const QString& text)
{
    if (qstrcmp(context.category, "qt.modeltest") == 0)
        complaints << text;
}

} // namespace

// Where every folder leads to contacts there is nothing for the tester to object to.
void TestOutlook::keepsTheRulesOfModels()
{
    m_outlook->add(m_mail, s("Friends"), OutlookFolder::contactItems);
    m_outlook->add(m_outlook->add(FakeFolderPtr(), s("Archive"), 0), s("Past"), OutlookFolder::contactItems);
    ContactsOptionsOutlook model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    const QModelIndex mailbox = model.index(0, 0);
    const QModelIndex contactsIndex = model.index(1, 0, mailbox);
    QVERIFY(model.setData(contactsIndex, Qt::Checked, Qt::CheckStateRole));
    QVERIFY(model.setData(model.index(0, 0, contactsIndex), Qt::Checked, Qt::CheckStateRole));
}

// A folder without contacts is counted and has no index: the one rule that is broken, on purpose, since
// Outlook's count is the only one that can be had without searching every folder.
void TestOutlook::documentedQuirks()
{
    const auto previous = qInstallMessageHandler(collect);
    complaints.clear();
    {
        ContactsOptionsOutlook model;
        const QAbstractItemModelTester tester(&model,
                                              QAbstractItemModelTester::FailureReportingMode::Warning);
    }
    qInstallMessageHandler(previous);
    static const QRegularExpression invalidIndex(QStringLiteral("^FAIL! \\w+\\.isValid\\(\\) "));
    QVERIFY(!complaints.isEmpty());
    QCOMPARE(complaints.filter(invalidIndex), complaints);
}

QTEST_MAIN(TestOutlook)
#include "tst_outlook.moc"
