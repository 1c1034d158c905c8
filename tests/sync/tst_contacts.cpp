// The contact books of a server in the client's cache: synchronised, changed, removed in the middle.

#include "quendracontactprovider.h"
#include "silentworld.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

class TestContacts : public QObject
{
    Q_OBJECT

    /// What the store and the server do not agree on.
    static QStringList differences(const ContactWorld& world, const SimServer& sim, ContactProvider* provider)
    {
        QStringList found;
        for (const int book : {0, 1, 2, 3}) {
            const BookContent here = world.stored(provider->sourceId(), book & 1, book & 2);
            const BookContent there = ContactWorld::onServer(sim, s("alice"), book & 1, book & 2);
            for (const QString& uid : here.keys() + there.keys()) {
                if (here.value(uid) != there.value(uid))
                    found += s("book %1, %2: %3, not %4").arg(book).arg(uid, here[uid], there[uid]);
            }
        }
        return found;
    }
    static QStringList differences(const SynchronisedWorld& all)
    {
        return differences(all.world, all.sim, all.provider);
    }

    /// The number of rows that belong to no source, and of memberships of no contact.
    static QStringList orphans()
    {
        return OtherProgram(s("SELECT (SELECT count(*) FROM contacts WHERE source NOT IN (SELECT id FROM "
                              "sources)) + (SELECT count(*) FROM groups WHERE contact NOT IN (SELECT id FROM "
                              "contacts) OR contactgroup NOT IN (SELECT id FROM contacts))"))
            .rows();
    }

    /// Whether a call is answered once, by one of the signals.
    template <typename Call, typename... Signals>
    static bool isAnswered(ContactProvider* provider, Call call, Signals... signals_)
    {
        int count = 0;
        const QObject context;
        (connect(provider, signals_, &context, [&count] { ++count; }), ...);
        call();
        return spinUntil([&count] { return count == 1; });
    }

    const QStringList m_none;
    QTemporaryDir m_folder;
    int m_stores{0};

private Q_SLOTS:
    void init()
    {
        // a store of its own for each test
        const QString folder = m_folder.filePath(QString::number(++m_stores));
        QDir().mkpath(folder);
        qputenv("APPDATA", QFile::encodeName(folder));
    }

    void fullAndIncremental()
    {
        SynchronisedWorld all(30, 4);
        QVERIFY(all.isReady);
        QCOMPARE(differences(all), m_none);
        QCOMPARE(all.world.counts->providerStarts, 4);
        QCOMPARE(all.world.counts->errors, 0);
        QVERIFY(all.world.counts->isPaired());
        QCOMPARE(all.world.counts->starts, 1); // one busy time for four books
        // an empty cache asks for the whole book at once
        QCOMPARE(all.sim.requestCount(QString(), s("/qdws/v1/contact_oids")), 0);
        QCOMPARE(all.sim.refusals(), QStringList());

        QList<int> pages;
        connect(all.provider, &ContactProvider::gotContacts, this, [&pages](const ContactList& page) {
            pages << page.contactsType() << page.contacts().size();
        });
        for (const unsigned int offset : {0U, 25U, 30U})
            all.provider->getContacts(ContactList::GlobalContacts, s("unused"), offset, 10);
        QCOMPARE(pages, QList<int>({3, 10, 3, 5, 3, 0}));

        // a server from the settings does not synchronise by itself
        all.sim.clearRequests();
        all.server->verifyUser(false);
        QVERIFY(all.world.settleLogin(all.server));
        QCOMPARE(all.sim.requestCount(QString(), s("/qdws/v1/contact")), 0);

        // the second time only what changed is asked for
        const SimBookId personal{s("alice"), false};
        SimEntry changed = all.sim.book(personal.owner).at(4);
        changed.person.name = s("Tom & \"Jerry\" <%_'\u20ac\U0001f600>");
        QVERIFY(all.sim.deleteEntry(personal, all.sim.book(personal.owner).at(3).uid));
        QVERIFY(all.sim.modifyEntry(personal, changed));
        QVERIFY(all.world.sync(all.provider, false));
        QCOMPARE(differences(all), m_none);
        QCOMPARE(all.sim.requestCount(QString(), s("/qdws/v1/contact_oids/")), 2);
        const auto requests = all.sim.requests(s("GET"), s("/qdws/v1/contacts/"));
        QCOMPARE(std::count_if(requests.begin(), requests.end(),
                               [](const SimRequest& sent) { return sent.query.startsWith("query_time="); }),
                 2);
    }

    void groupOfCachedUnits()
    {
        SynchronisedWorld all(3, 1);
        QVERIFY(all.isReady);
        // what is read back from the cache can be sent to the server as it is
        ContactManager& contacts = *all.world.contacts;
        const auto unit = contacts.getContactById(contacts.storage()->quickSearch({}, 1, 0, 0).firstKey());
        QuendraContactGroup group;
        group.setName(s("Team"));
        group.addContact(*unit);
        const auto add = [&] { all.provider->addContact(group, ContactList::PersonalGroups); };
        QVERIFY(isAnswered(all.provider, add, &ContactProvider::addedContact));
        QVERIFY(all.world.sync(all.provider, false));
        QCOMPARE(differences(all), m_none);

        const auto remove = [&] { all.provider->deleteContact(*unit, ContactList::PersonalContacts); };
        QVERIFY(isAnswered(all.provider, remove, &ContactProvider::deletedContact));
        QVERIFY(all.world.sync(all.provider, false));
        QCOMPARE(differences(all), m_none);
    }

    void knownWhenAsked_data()
    {
        // see SilentWorld::play()
        const Rows<QString, QString> row;
        row("a member stored since the list was asked for", //
            "has 11@11; ask; ask-groups; groups 12 50 20; list 11; changes 13 20", "11@11 20@13 50>20");
        row("emptied", "has 11@11 12@11; ask; list ; changes 12", "");
        row("added while the list comes", "has 11@11; ask; add 20; list 11; changes 12", "11@11 20@0");
        row("two runs, the second sees more", //
            "has 11@11; ask; ask; list 11 12; changes 13 12; list 11; changes 14", "11@11 12@13");
        row("the newest removed since", "has 11@11 12@12 13@13 14@14; ask; remove 14; list 11 12; changes 15",
            "11@11 12@12");
        row("the run's own deleter takes the newest, and the clock was set back",
            "has 11@11 14@14; ask; list 11; changes 5 20", "11@11 20@5");
        row("an identifier that is no number", "has x12@10 10@10; ask-all; add 77; all 12 11 x12",
            "x12@12 77@0 11@12");
        row("a list with one deletes nothing, a reply does", //
            "has x12@10 10@10; ask; list 10 x9; ask-all; changes 11; all 12 11", "10@10 11@12");
        row("one that is added and no number", "has x12@10 10@10; ask-all; add x77; all 12 11 x12",
            "x12@12 x77@0 11@12");
        row("a list with one deletes nothing", "has x12@10 10@10; ask; list 11 x12; changes 12 11",
            "x12@10 10@10 11@12");
        row("added since, and the second half fails", "has 11@11; ask; add 20; list 11; fail", "11@11 20@0");
        row("older than another run", //
            "has 11@11 12@11; ask-all; ask; list 11 14 15; changes 13 11; remove 15; all 12 11 12 14 15",
            "11@13 14@11");
        row("removed since", "has 11@11; ask-all; remove 11; all 12 11 12", "12@11");
        row("removed since the first run began", "ask-all; remove 11; all 12 11 12; ask; all 13 11=new 12",
            "12@13 11@13=new");
        row("a member removed since", "has 20@11; ask-groups; remove 20; groups 12 50 20 21", "21@0 50>21");
        row("removed since from another book", "ask-groups; remove 11; groups 12 11 20", "20@0 11>20");
        row("newer than another run", "has 11@11; ask-all; ask; list 11; changes 12 11; all 13 11 20",
            "11@13 20@13");
        row("older, and no list that is newer", //
            "has 11@11; ask; ask-all; list 11 20; changes 13 11; all 12 11 20", "11@13");
        row("taken by a later list", "has 11@11 12@11; ask-all; ask; list 11; all 12 11 12; changes 13",
            "11@11");
        row("a member taken by a later list",
            "has 20@11; ask-groups; ask; list ; changes 13; groups 12 50 20; ask; all 14", "");
        row("a member that no list takes", "has 11@11; ask-groups; ask; list 11; changes 12; groups 13 50 20",
            "11@11 20@0 50>20");
        row("a member is newer than its group", //
            "has 20@11; ask-groups; ask; list 20; changes 13 20=new; groups 12 50 20=old", "20@13=new 50>20");
        row("a member, and the clock was set back", "has 20@14; ask-groups; groups 5 50 20=new",
            "20@14=new 50>20");
    }
    void knownWhenAsked()
    {
        const auto [steps, content] = cells<QString, QString>();
        SilentWorld silent;
        const auto all = steps.split(s("; "));
        for (const QString& step : all) {
            QVERIFY2(silent.play(step), qPrintable(step));
            QVERIFY(spinUntil([&] { return silent.provider->findChildren<QThread*>().isEmpty(); }));
        }
        QCOMPARE(silent.content(), content);
        QVERIFY(!silent.provider->isSync());
        QVERIFY(silent.world.counts->isPaired());
    }

    void anotherServerLinkedMeanwhile()
    {
        SilentWorld silent;
        for (const char* step : {"has 11@11", "ask", "ask-all"})
            QVERIFY(silent.play(s(step)));
        ScriptedServer wire;
        const auto other = silent.world.faxes->addServer(wire.address(), false, s("bob"), QString());
        auto* const provider = qobject_cast<QuendraContactProvider*>(silent.provider);
        provider->linkFaxServer(other);
        for (const char* step : {"list ", "all 12 12"})
            QVERIFY(silent.play(s(step)));
        QVERIFY(spinUntil([&] { return provider->findChildren<QThread*>().isEmpty(); }));
        QCOMPARE(silent.content(), s("11@11"));
        QVERIFY(!provider->isSync());
    }

    void deleterFailsAfterItsRun()
    {
        SilentWorld silent;
        const auto hasEnded = [&] { return silent.provider->findChildren<QThread*>().isEmpty(); };
        for (const char* step : {"has 11@11 12@11", "ask"})
            QVERIFY(silent.play(s(step)));
        {
            const OtherProgram lock(s("BEGIN IMMEDIATE"));
            QVERIFY(lock.works());
            silent.play(s("list 11")); // false: its own bracket cannot begin either
            QVERIFY(silent.play(s("fail")));
            QVERIFY(!silent.provider->isSync());
            QVERIFY(spinUntil(hasEnded));
        }
        for (const char* step : {"ask", "list 11", "changes 13 20"}) {
            QVERIFY(silent.play(s(step)));
            QVERIFY(spinUntil(hasEnded));
        }
        QCOMPARE(silent.content(), s("11@11 20@13"));
        QVERIFY(
            qobject_cast<QuendraContactProvider*>(silent.provider)->isStored(ContactList::PersonalContacts));
    }

    void sourceRemovedBeforeAReplyIsStored()
    {
        SilentWorld silent;
        for (const char* step : {"has 1@1", "ask-all"})
            QVERIFY(silent.play(s(step)));
        silent.storage->scopeBegin(); // the thread that stores waits
        QVERIFY(silent.play(s("all 12 1 2")));
        silent.storage->deleteSource(silent.provider->sourceId());
        QVERIFY(silent.storage->scopeEnd());
        QVERIFY(spinUntil([&] { return silent.provider->findChildren<QThread*>().isEmpty(); }));
        QCOMPARE(silent.content(), QString());
    }

    void askedWhileItEnds()
    {
        SilentWorld silent;
        QVERIFY(silent.play(s("has 1@1")) && silent.play(s("ask")));
        bool asked = false;
        ContactManager* const contacts = silent.world.contacts;
        connect(contacts, &ContactManager::onSyncStop, this,
                [&] { asked = contacts->getContactById(1).isNull(); });
        delete contacts;
        QVERIFY(asked);
    }

    void refusals()
    {
        ContactWorld world;
        ContactProvider* provider = world.contacts->addProvider(ContactProvider::QuendraProvider);
        world.watch(provider);
        QList<int> errors;
        const auto note = [&errors](Task::Status status) { errors << int(status); };
        const auto watch = [&](ContactProvider* which) {
            for (const auto error :
                 {&ContactProvider::errorAddedContact, &ContactProvider::errorModifiedContact,
                  &ContactProvider::errorDeletedContact, &ContactProvider::errorGotContacts,
                  &ContactProvider::errorSyncedContacts})
                connect(which, error, this, note);
        };
        watch(provider);
        const QuendraContact contact;
        // not linked to a server
        provider->addContact(contact, ContactList::PersonalContacts);
        provider->modifyContact(contact, ContactList::PersonalContacts);
        provider->deleteContact(contact, ContactList::PersonalContacts);
        provider->getContacts(ContactList::PersonalContacts, QString(), 0, 0);
        provider->syncContacts(ContactList::PersonalContacts, true);
        QCOMPARE(errors, QList<int>({2, 2, 2, 2, 2}));
        QVERIFY(world.counts->isPaired());

        // linked, but not its book; and what the user may not do
        SimUser reader;
        reader.name = s("alice");
        reader.password = s("secret");
        SimOptions options = SynchronisedWorld::books(2, 0);
        options.users = {reader};
        SimServer sim(options);
        QVERIFY(sim.start());
        const QPointer<FaxServer> server = world.add(sim);
        QVERIFY(world.settleLogin(server));
        ContactProvider* linked = server->contactProvider();
        errors.clear();
        watch(linked);
        linked->getContacts(ContactList::OutlookContacts, QString(), 0, 0);
        linked->syncContacts(ContactList::OutlookContacts, false);
        QCOMPARE(errors, QList<int>({2, 2}));
        linked->addContact(contact, ContactList::GlobalContacts);
        QTRY_COMPARE(errors.size(), 3);
        QCOMPARE(errors.last(), int(Task::AccessDenied));

        // a login that is refused at the time of a synchronisation fails it, and is tried again before the
        // next
        server->setPassword(s("wrong"));
        QVERIFY(world.sync(linked, true));
        QCOMPARE(server->lastStatus(), Task::AuthError);
        QVERIFY(world.counts->isPaired());
        server->setPassword(s("secret"));
        QVERIFY(world.sync(linked, true));
        QCOMPARE(differences(world, sim, linked), m_none);
    }

    void manager()
    {
        ContactWorld world;
        ContactManager& contacts = *world.contacts;
        QSignalSpy changed(&contacts, &ContactManager::changedContactProviderList);
        QVERIFY(!contacts.addProvider(ContactProvider::Type(7)));
        QCOMPARE(contacts.providers().size(), 1);
        const QPointer<ContactProvider> provider = contacts.addProvider(ContactProvider::QuendraProvider);
        QCOMPARE(changed.count(), 2);
        contacts.deleteProvider(provider);
        contacts.deleteProvider(provider);
        QCOMPARE(changed.count(), 3);
        QTRY_VERIFY(!provider);
        contacts.deleteProvider(provider); // a dead entry matches a dead argument: the null one above
        QCOMPARE(changed.count(), 4);
        QVERIFY(!contacts.getContactById(12345));

        QuickSearchResalt result{{1, s("not yet")}};
        connect(&contacts, &ContactManager::resultOfQuickSearch, this,
                [&result](const QuickSearchResalt& found) { result = found; });
        contacts.quickSearch(s("nobody"), 10, 0, 0);
        QVERIFY(result.isEmpty());
        QCOMPARE(contacts.outlookSourceId(), 0U);
        QVERIFY(!contacts.isOutlookSync());
    }

    void removedInTheMiddle()
    {
        SilentWorld silent;
        QVERIFY(silent.play(s("has 1@1")) && silent.play(s("ask")) && silent.play(s("ask-groups")));
        const QPointer<ContactProvider> busy = silent.provider;
        silent.world.faxes->deleteServer(silent.server);
        QTRY_VERIFY(!busy);
        QCOMPARE(silent.world.counts->errors, 2);
        QVERIFY(silent.world.counts->isPaired());
        QVERIFY(!silent.world.contacts->isSync());
        QCOMPARE(silent.content(), QString());
    }

    void modelBased()
    {
        // QDCORE_SEED tries another run
        const quint32 seed =
            qEnvironmentVariableIsSet("QDCORE_SEED") ? qEnvironmentVariableIntValue("QDCORE_SEED") : 20261122;
        const int rounds = isWine() ? 50 : 250; // there it takes several times as long
        QRandomGenerator random(seed);
        SynchronisedWorld all(40, 6, seed);
        QVERIFY(all.isReady);
        auto& [sim, world, server, unused, isReady] = all;

        int operations = 0;
        for (int round = 0; round < rounds; ++round) {
            const int steps = random.bounded(1, 16);
            for (int step = 0; step < steps; ++step, ++operations) {
                ContactProvider* provider = server->contactProvider();
                const int what = random.bounded(100);
                if (what < 50) {
                    sim.stepChanges(1);
                } else if (what < 60) {
                    provider->syncContacts(provider->contactsTypeList().at(random.bounded(4)),
                                           random.bounded(2) == 0);
                    if (random.bounded(2) == 0)
                        QVERIFY(world.settle());
                } else if (what < 75) {
                    QuendraContact contact;
                    contact.setName(s("added %1").arg(operations));
                    const auto book =
                        random.bounded(2) ? ContactList::PersonalContacts : ContactList::GlobalContacts;
                    const auto add = [&] { provider->addContact(contact, book); };
                    QVERIFY(isAnswered(provider, add, &ContactProvider::addedContact));
                } else if (what < 97) {
                    // something that the cache knows, changed or deleted through the provider
                    const auto found = world.contacts->storage()
                                           ->quickSearch(QString(), 200, provider->sourceId(), 0)
                                           .keys();
                    const auto unit = world.contacts->getContactById(
                        found.value(int(random.bounded(200)) % (found.size() + 1)));
                    auto* contact = dynamic_cast<QuendraContact*>(unit.data());
                    if (!contact)
                        continue;
                    const auto book = contact->url().path().contains(QLatin1String("global"))
                                          ? ContactList::GlobalContacts
                                          : ContactList::PersonalContacts;
                    contact->setFax(QString::number(operations));
                    const auto change = [&] {
                        what < 90 ? provider->modifyContact(*contact, book)
                                  : provider->deleteContact(*contact, book);
                    };
                    QVERIFY(isAnswered(provider, change, &ContactProvider::modifiedContact,
                                       &ContactProvider::errorModifiedContact, // gone on the server
                                       &ContactProvider::deletedContact,
                                       &ContactProvider::errorDeletedContact));
                } else {
                    QVERIFY(world.settle());
                    world.faxes->deleteServer(server);
                    QTRY_VERIFY(!server);
                    server = world.add(sim);
                    QVERIFY(world.settleLogin(server));
                }
            }
            QVERIFY(world.settle());
            // a full run fetches everything and deletes nothing, so the one that follows is the one that
            // counts
            if (random.bounded(8) == 0)
                QVERIFY(world.sync(server->contactProvider(), true));
            QVERIFY(world.sync(server->contactProvider(), false));
            QCOMPARE(differences(world, sim, server->contactProvider()), m_none);
            QVERIFY(world.counts->isPaired());
        }
        qInfo("%d operations in %d rounds, seed %u", operations, rounds, seed);
        // what the cache still knew and the server did not was not found; nothing else was refused
        QCOMPARE(sim.refusals().filter(QRegularExpression(s("^(?!.*: 404 )"))), m_none);
        QCOMPARE(orphans(), {s("0")});
    }

    void endsAtAnyMoment()
    {
        QRandomGenerator random(7);
        SimServer sim(SynchronisedWorld::books(150, 3));
        QVERIFY(sim.start());
        for (int time = 0; time < 100; ++time) {
            QSharedPointer<SyncCounts> counts;
            {
                ContactWorld world;
                counts = world.counts;
                const QPointer<FaxServer> server = world.add(sim);
                const int turns = random.bounded(120);
                for (int turn = 0; turn < turns; ++turn)
                    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 1);
                if (time % 5 == 0) {
                    world.faxes->deleteServer(server);
                    QTRY_VERIFY(!server);
                } else if (time % 5 == 1) {
                    world.contacts->deleteProvider(server->contactProvider());
                    QTRY_VERIFY(!server->contactProvider());
                } else if (time % 5 == 2) { // while servers live
                    delete world.contacts;
                    QTest::qWait(1);
                } else if (time % 5 == 3) { // while a provider waits for the event loop
                    world.contacts->deleteProvider(server->contactProvider());
                    delete world.contacts;
                }
            }
            QVERIFY(counts->isPaired());
            QCOMPARE(orphans(), {s("0")});
        }
    }
};

QTEST_GUILESS_MAIN(TestContacts)
#include "tst_contacts.moc"
