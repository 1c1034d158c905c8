// Outlook's contacts: the folder copied into the store, and what the provider says of it.

#include "outlookcontact.h"
#include "outlookworld.h"
#include "testkit.h"

#include <QSignalSpy>

class TestOutlook : public OutlookTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { newOutlook(); }
    void cleanup() { leaveOutlook(); }

    void copies()
    {
        TestLog log;
        m_contacts->items = {contact(1), contact(9, distributionList), contact(8, 43), contact(2), contact(3),
                             contact(50)};
        m_contacts->items[3].modified = QDateTime();
        m_contacts->items[4].modified = QDateTime(QDate(4501, 1, 1), QTime(0, 0)); // Outlook's "none"
        m_contacts->items[5].fails = true;
        m_outlook->beforeItem = [this](int) { QVERIFY(thread() != QThread::currentThread()); };
        World world(m_contacts);
        const quint32 source = world.provider->sourceId();
        QCOMPARE(onStore(s("SELECT type||' '||name FROM sources")), QStringList{s("2 ") + m_contacts->key()});
        QVERIFY(world.sync());
        QCOMPARE(*world.said, success);
        QCOMPARE(world.rows(source), QStringList({row(contact(1)), s("I2: 1/2 0 Name 2||12|22||Company 2"),
                                                  s("I3: 1/2 0 Name 3||13|23||Company 3")}));
        const QString logged = s("outlookcontactprovider.cpp sync count (%1)");
        QCOMPARE(log.messages(s("DEBUG")).filter(s("outlookcontactprovider.cpp")),
                 QStringList({logged.arg(1), logged.arg(0)}));

        // one changed, one gone, one new, one back; two runs at a time are two ends
        m_contacts->items = {contact(1), contact(3), contact(50)};
        m_contacts->items[0].fullName = s("Mary Poe");
        world.provider->syncContacts(contactBook, true);
        world.provider->syncContacts(contactBook, false);
        QVERIFY(world.settle());
        QCOMPARE(world.said->count(s("synced 5")), 3);
        QCOMPARE(world.said->count(s("stop")), 3);
        QCOMPARE(world.rows(source),
                 QStringList({row(m_contacts->items.at(0)), row(contact(3)), row(contact(50))}));
        QCOMPARE(log.messages(s("ERROR")), QStringList());
        QCOMPARE(int(m_outlook->openSessions), 0);
    }

    void refusesChanges()
    {
        World world(m_contacts);
        OutlookContactProvider& provider = *world.provider;
        QCOMPARE(provider.type(), ContactProvider::OutlookProvider);
        QCOMPARE(provider.contactsTypeList(), QList<ContactList::Type>{contactBook});
        QVERIFY(!provider.isAddContactSupport(contactBook) && !provider.isModifyContactSupport(contactBook) &&
                !provider.isDeleteContactSupport(contactBook));
        provider.addContact(OutlookContact(), contactBook);
        provider.modifyContact(OutlookContact(), contactBook);
        provider.deleteContact(OutlookContact(), contactBook);
        QCOMPARE(*world.said, QStringList({s("add 5"), s("modify 5"), s("delete 5")}));
        QVERIFY(world.ids(provider.sourceId()).isEmpty());
    }

    void reads()
    {
        TestLog log;
        m_contacts->items = contacts(5);
        World world(m_contacts);
        QVERIFY(world.sync());
        world.said->clear();
        connect(world.provider, &ContactProvider::gotContacts, [&world](const ContactList& list) {
            world.said->append(QStringLiteral("got of %1").arg(list.contactsType()));
            for (const auto& each : list.contacts())
                world.said->append(dynamic_cast<const OutlookContact&>(*each).name());
        });
        world.provider->getContacts(contactBook, s("no such name"), 1, 2);
        world.provider->getContacts(ContactList::GlobalContacts, QString(), 0, 0);
        QCOMPARE(*world.said, QStringList({s("got of 5"), s("Name 2"), s("Name 3"), s("get 4")}));

        ContactLocalStorage& storage = *world.manager->storage();
        const quint32 source = world.provider->sourceId();
        const auto add = [&](quint32 ofSource, ContactLocalStorage::ContactType type) {
            return storage.addContact(ofSource, type, ContactLocalStorage::LocationPersonal, s("77"), 1,
                                      s("N"), s("D"), s("P"), s("F"), s("E"), s("O"));
        };
        // of every field, those too that Outlook's contacts leave empty
        const auto unit = world.manager->getContactById(add(source, ContactLocalStorage::TypeContact));
        const auto* read = dynamic_cast<const OutlookContact*>(unit.data());
        QVERIFY(read);
        QCOMPARE(QStringList({read->uid(), read->name(), read->phone(), read->fax(), read->email(),
                              read->organization()}),
                 QStringList({s("77"), s("N"), s("P"), s("F"), s("E"), s("O")}));
        QVERIFY(!world.provider->aggregateContact(add(source, ContactLocalStorage::TypeGroup)));
        QCOMPARE(log.messages(s("ERROR")),
                 QStringList{s("outlookcontactprovider.cpp Unsuported contact type")});
        const quint32 other = storage.addSource(s("a@b"), ContactLocalStorage::SourceQuendra);
        for (const quint32 foreign : {add(other, ContactLocalStorage::TypeContact), 123456U})
            QVERIFY(!world.provider->aggregateContact(foreign));

        // a copy drops contacts, and leaves alone what is none
        QVERIFY(world.sync());
        QCOMPARE(world.ids(source).size(), 6);
    }

    void endsAtOnceWithoutFolder()
    {
        World world;
        const auto ends = [&world](ContactList::Type book, const QString& end) {
            world.said->clear();
            world.provider->syncContacts(book, true);
            QCOMPARE(*world.said, QStringList({s("start"), s("stop"), end}));
            QVERIFY(!world.provider->isSync());
            QVERIFY(!world.provider->isStored());
        };
        ends(contactBook, s("synced 5"));
        // likewise for a book that it does not have
        world.provider->setEntryID(m_contacts->key(), false);
        ends(ContactList::GlobalGroups, s("synced 4"));

        // and once the store is gone
        QVERIFY(world.sync());
        QVERIFY(world.provider->isStored());
        delete world.manager->storage();
        ends(contactBook, s("synced 5"));
        const int asked = m_outlook->applications;
        world.provider->setEntryID(m_team->key(), true);
        QCOMPARE(world.provider->entryID(), m_contacts->key());
        QCOMPARE(int(m_outlook->applications), asked);
        world.said->clear();
        world.provider->getContacts(contactBook, QString(), 0, 0);
        QCOMPARE(*world.said, QStringList{s("get 4")});
        QVERIFY(!world.provider->aggregateContact(1));
    }

    void nothingToRead_data()
    {
        // no key: the contact folder, and what the tag says of it
        const Rows<QString> row("key");
        row("no application", {});
        row("no session", {});
        row("logon fails", {});
        row("folder gone", {});
        row("no longer contacts", {});
        row("no colon", "E-Contacts");
        row("only a colon", ":");
        row("mail folder", "E-Inbox:S:Mailbox");
        row("wrong store", "E-Contacts:S");
    }

    // Nothing that is wrong with Outlook is an error to the client, and the cache does not keep what is not
    // there.
    void nothingToRead()
    {
        QFETCH(QString, key);
        const QByteArray tag = QTest::currentDataTag();
        const auto set = [&](bool broken) {
            m_outlook->isInstalled = !broken || tag != "no application";
            m_outlook->hasSession = !broken || tag != "no session";
            m_outlook->logsOn = !broken || tag != "logon fails";
            m_contacts->isGone = broken && tag == "folder gone";
            m_contacts->itemType = broken && tag == "no longer contacts" ? 0 : OutlookFolder::contactItems;
        };
        const QString refused = s("outlookcontactprovider.cpp Incorrectly selected directory Outlook");
        TestLog log;
        m_contacts->items = contacts(3);
        {
            // wrong from the beginning
            set(true);
            World world;
            world.provider->setEntryID(key.isNull() ? m_contacts->key() : key, true);
            QCOMPARE(world.provider->sourceId(), 0U);
            QCOMPARE(log.messages(s("ERROR")),
                     tag == "no application" ? QStringList() : QStringList{refused});
            QVERIFY(world.settle());
            QCOMPARE(*world.said, success);
        }
        {
            // wrong by the second copy
            set(false);
            World world(m_contacts);
            const quint32 source = world.provider->sourceId();
            QVERIFY(world.sync());
            QCOMPARE(world.ids(source).size(), 3);
            QVERIFY(world.provider->isStored() && world.provider->isRead());
            set(true);
            if (!key.isNull())
                world.provider->setEntryID(key, false);
            world.said->clear();
            QVERIFY(world.sync());
            QCOMPARE(*world.said, success);
            QVERIFY(world.ids(source).isEmpty());
            QVERIFY(!world.provider->isRead());
        }
        QCOMPARE(int(m_outlook->openSessions), 0);
    }

    // Nor is a store that cannot be written; the provider tells who asks, and what was copied before stays.
    void unwritableStore()
    {
        m_contacts->items = contacts(3);
        World world(m_contacts);
        QVERIFY(world.sync());
        QVERIFY(world.provider->isStored());
        QCOMPARE(onStore(s("CREATE TRIGGER full BEFORE INSERT ON contacts WHEN new.uid = 'I3' "
                           "BEGIN SELECT RAISE(ABORT, 'full'); END")),
                 QStringList());
        m_contacts->items[0].fullName = s("Mary Poe");
        world.said->clear();
        QVERIFY(world.sync());
        QCOMPARE(*world.said, success);
        QVERIFY(!world.provider->isStored());
        QCOMPARE(world.rows(world.provider->sourceId()).first(), row(contact(1)));
        m_contacts->items.removeLast();
        QVERIFY(world.sync());
        QVERIFY(world.provider->isStored());
    }

    void switchesFolder()
    {
        m_contacts->items = contacts(3);
        World world(m_contacts);
        QVERIFY(world.sync());
        const quint32 first = world.provider->sourceId();
        int asked = m_outlook->applications;
        world.provider->setEntryID(m_contacts->key(), true);
        QCOMPARE(int(m_outlook->applications), asked);
        QVERIFY(!world.provider->isSync());
        QCOMPARE(world.ids(first).size(), 3);

        // the copy of the old one is gone before Outlook is asked for the new one
        m_outlook->isInstalled = false;
        world.provider->setEntryID(m_team->key(), false);
        QVERIFY(world.ids(first).isEmpty());
        QVERIFY(world.manager->storage()->getSourceList(ContactLocalStorage::SourceOutlook).isEmpty());
        // the provider still has the source that is gone, into which nothing may be copied
        m_outlook->isInstalled = true;
        QCOMPARE(world.provider->sourceId(), first);
        QVERIFY(world.sync());
        QVERIFY(world.ids(first).isEmpty());
        QVERIFY(!world.provider->isStored());

        world.provider->setEntryID(m_contacts->key(), false);
        world.provider->setEntryID(m_team->key(), true);
        QVERIFY(world.provider->isSync());
        QVERIFY(world.settle());
        const quint32 second = world.provider->sourceId();
        QVERIFY(second != first);
        QCOMPARE(world.rows(second), QStringList{row(contact(7))});

        // no folder at all
        asked = m_outlook->applications;
        world.provider->setEntryID(QString(), false);
        QCOMPARE(int(m_outlook->applications), asked);
        QVERIFY(world.ids(second).isEmpty());
    }

    void manager()
    {
        m_contacts->items = contacts(2);
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
        const quint32 source = manager.outlookSourceId();
        QCOMPARE(world.ids(source).size(), 2);

        const int before = m_outlook->applications;
        manager.initOutlook(true);
        QCOMPARE(manager.providers().size(), 1);
        QCOMPARE(int(m_outlook->applications), before);
        manager.setOutlookEntryID(m_team->key(), true);
        QVERIFY(world.settle());
        QVERIFY(world.ids(source).isEmpty());
        QCOMPARE(world.rows(manager.outlookSourceId()), QStringList{row(contact(7))});
    }
};

QTEST_MAIN(TestOutlook)
#include "tst_outlook.moc"
