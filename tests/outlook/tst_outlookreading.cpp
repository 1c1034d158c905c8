// What happens while Outlook's contacts are read: by the worker, to the store, and to the provider.

#include "outlookcontactproviderdisassemblethread.h"
#include "outlookworld.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>

class TestOutlookReading : public OutlookTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { newOutlook(); }
    void cleanup() { leaveOutlook(); }

    // The event loop does not wait until a large folder is read that nobody wants any more.
    void switchesWhileReading()
    {
        m_contacts->items = contacts(2000);
        World world(m_contacts);
        QVERIFY(world.sync());
        QCOMPARE(int(m_outlook->itemsRead), 2000); // each item once
        const quint32 first = world.provider->sourceId();

        QSemaphore reading;
        m_outlook->beforeItem = [&reading](int number) {
            if (number != 100)
                return;
            reading.release();
            QVERIFY(
                QTest::qWaitFor([] { return QThread::currentThread()->isInterruptionRequested(); }, 20000));
        };
        m_outlook->itemsRead = 0;
        world.said->clear();
        world.provider->syncContacts(contactBook, false);
        QVERIFY(reading.tryAcquire(1, 20000));
        world.provider->setEntryID(m_team->key(), true);
        QVERIFY(world.ids(first).isEmpty());
        QCOMPARE(int(m_outlook->itemsRead), 100);
        QVERIFY(world.settle());
        QCOMPARE(*world.said, success); // one was running, so no other was begun
        QVERIFY(world.sync());
        QCOMPARE(world.rows(world.provider->sourceId()), QStringList{row(contact(7))});
        QVERIFY(world.ids(first).isEmpty());
    }

    void workerAlone()
    {
        m_contacts->items = contacts(10);
        World world(m_contacts);
        QVERIFY(world.sync());
        const quint32 source = world.provider->sourceId();
        ContactLocalStorage& storage = *world.manager->storage();
        QList<ContactList::Type> done;
        bool wasStored = true;
        bool wasRead = true;
        const auto run = [&](ContactList::Type type, ContactLocalStorage* into) {
            QPointer<OutlookContactProviderDisassembleThread> thread(
                new OutlookContactProviderDisassembleThread(into, source, this));
            thread->setContactsType(type);
            thread->setEntryID(m_contacts->key());
            connect(thread, &OutlookContactProviderDisassembleThread::doneDisassembleContactFromThread, this,
                    [&done](ContactList::Type book) { done.append(book); });
            connect(thread, &OutlookContactProviderDisassembleThread::copied, this,
                    [&](bool isStored, bool isRead) { wasStored = isStored, wasRead = isRead; });
            m_outlook->itemsRead = 0;
            thread->start();
            QTRY_VERIFY(!thread); // it deletes itself
            // what it posted before that comes later: waiting deletes first
            QCoreApplication::sendPostedEvents();
        };
        // of any other type it drops groups, and reads nothing
        storage.addContact(source, ContactLocalStorage::TypeGroup, ContactLocalStorage::LocationPersonal,
                           s("G"), 1, s("G"), {}, {}, {}, {}, {});
        run(ContactList::PersonalGroups, &storage);
        QCOMPARE(world.ids(source).size(), 10);
        QCOMPARE(int(m_outlook->itemsRead), 0);
        run(contactBook, nullptr); // the store has gone before it began
        QVERIFY(!wasStored && !wasRead);
        QCOMPARE(world.ids(source).size(), 10);

        // interrupted, it leaves nothing, and does not say that it has read the folder
        wasRead = true;
        m_outlook->beforeItem = [](int number) {
            if (number == 5)
                QThread::currentThread()->requestInterruption();
        };
        run(contactBook, &storage);
        QVERIFY(world.ids(source).isEmpty());
        QVERIFY(!wasRead);
        QCOMPARE(done, QList<ContactList::Type>({ContactList::PersonalGroups, contactBook, contactBook}));
    }

    // What Outlook gave until then is there, and the next copy is whole.
    void outlookFails()
    {
        m_contacts->items = contacts(5);
        World world(m_contacts);
        m_outlook->beforeItem = [this](int number) { m_contacts->isGone = number == 3; };
        QVERIFY(world.sync());
        QCOMPARE(*world.said, success);
        QVERIFY(world.provider->isStored() && !world.provider->isRead());
        const quint32 source = world.provider->sourceId();
        QCOMPARE(world.rows(source), QStringList({row(contact(1)), row(contact(2)), row(contact(3))}));
        m_contacts->isGone = false;
        m_outlook->beforeItem = nullptr;
        QVERIFY(world.sync());
        QVERIFY(world.provider->isRead());
        QCOMPARE(world.ids(source).size(), 5);
    }

    void destroyedWhileReading()
    {
        m_contacts->items = contacts(300);
        for (const bool byManager : {true, false}) {
            QSemaphore reading;
            QSemaphore goOn; // the threads stand still until their end is settled
            m_outlook->beforeItem = [&](int number) {
                if (number == 150) {
                    reading.release();
                    goOn.acquire();
                }
            };
            m_outlook->itemsRead = 0;
            World world(m_contacts);
            // the second waits for the first
            world.provider->syncContacts(contactBook, false);
            world.provider->syncContacts(contactBook, false);
            QSignalSpy idle(world.manager.get(), &ContactManager::onSyncStop);
            int readBefore = 0;
            connect(world.provider, &ContactProvider::errorSyncedContacts,
                    [&] { readBefore = m_outlook->itemsRead; });
            const quint32 source = world.provider->sourceId();
            QVERIFY(reading.tryAcquire(1, 20000));
            if (byManager) {
                goOn.release(2);
                world.manager.reset();
                world.manager = std::make_unique<ContactManager>();
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
            QCOMPARE(world.ids(source).size(), 300);
        }
    }

    void destroyedBySlot()
    {
        const auto destroyedAt = [this](auto signal, const char* last) {
            for (const FakeFolderPtr& folder : {m_contacts, m_fake->mail}) { // with a thread, and without one
                World world(folder);
                connect(world.provider, signal, [&world] { world.manager.reset(); });
                world.provider->syncContacts(contactBook, false);
                QTRY_VERIFY(!world.provider);
                QCOMPARE(world.said->first(), s("start"));
                QCOMPARE(world.said->count(s("stop")), 1);
                QCOMPARE(world.said->last(), s(last));
            }
        };
        destroyedAt(&ContactProvider::onSyncStart, "error 2");
        destroyedAt(&ContactProvider::onSyncStop, "stop");
        destroyedAt(&ContactProvider::syncedContacts, "synced 5");
    }
};

QTEST_MAIN(TestOutlookReading)
#include "tst_outlookreading.moc"
