// The contact books of a server in the client's cache: synchronised, changed, removed in the middle.

#include "quendracontactprovider.h"
#include "silentworld.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

class TestContacts : public QObject
{
    Q_OBJECT

    /// Everything the store holds of this server must be what the server holds.
    bool compare(const ContactWorld& world, const SimServer& sim, ContactProvider* provider, const char* when)
    {
        for (const bool global : {false, true}) {
            for (const bool groups : {false, true}) {
                const BookContent here = world.stored(provider->sourceId(), global, groups);
                const BookContent there = ContactWorld::onServer(sim, s("alice"), global, groups);
                if (here == there)
                    continue;
                qWarning("%s: the %s %s differ: %d here, %d there", when, global ? "global" : "personal",
                         groups ? "groups" : "contacts", here.size(), there.size());
                for (auto it = there.begin(); it != there.end(); ++it) {
                    if (here.value(it.key()) != it.value())
                        qWarning() << it.key() << "here" << here.value(it.key()) << "there" << it.value();
                }
                for (auto it = here.begin(); it != here.end(); ++it) {
                    if (!there.contains(it.key()))
                        qWarning() << it.key() << "is only here:" << it.value();
                }
                return false;
            }
        }
        return true;
    }

    /// Rows that belong to no source, and memberships of no contact.
    int orphans()
    {
        int found = -1;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(s("QSQLITE"), s("orphans"));
            db.setDatabaseName(qEnvironmentVariable("APPDATA") +
                               s("/Quendra Client Software/Contacts/contacts.sqlite"));
            if (db.open()) {
                QSqlQuery query(db);
                query.exec(QStringLiteral(
                    "SELECT (SELECT count(*) FROM contacts WHERE source NOT IN (SELECT id FROM "
                    "sources)) + (SELECT count(*) FROM groups WHERE contact NOT IN (SELECT id FROM "
                    "contacts) OR contactgroup NOT IN (SELECT id FROM contacts))"));
                if (query.next())
                    found = query.value(0).toInt();
            }
        }
        QSqlDatabase::removeDatabase(s("orphans"));
        return found;
    }

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

    void firstSynchronisation()
    {
        SynchronisedWorld all(30, 4);
        QVERIFY(all.isReady);
        QVERIFY(compare(all.world, all.sim, all.provider, "after login"));
        QCOMPARE(all.world.counts->providerStarts, 4);
        QCOMPARE(all.world.counts->errors, 0);
        QVERIFY(all.world.counts->isPaired());
        QCOMPARE(all.world.counts->starts, 1); // one busy time for four books
        // an empty cache asks for the whole book at once
        QCOMPARE(all.sim.requestCount(QString(), s("/qdws/v1/contact_oids")), 0);
        QCOMPARE(all.sim.refusals(), QStringList());

        // a server from the settings does not synchronise by itself
        all.sim.clearRequests();
        all.server->verifyUser(false);
        QVERIFY(all.world.settleLogin(all.server));
        QCOMPARE(all.sim.requestCount(QString(), s("/qdws/v1/contact")), 0);
    }

    void incremental()
    {
        SynchronisedWorld all(30, 4);
        QVERIFY(all.isReady);

        const SimBookId personal{s("alice"), false};
        const QString gone = all.sim.book(personal.owner).at(3).uid;
        SimEntry changed = all.sim.book(personal.owner).at(4);
        changed.person.name = s("Tom & \"Jerry\" <%_'\u20ac\U0001f600>");
        QVERIFY(all.sim.deleteEntry(personal, gone));
        QVERIFY(all.sim.modifyEntry(personal, changed));
        all.sim.clearRequests();
        QVERIFY(all.world.sync(all.provider, false));
        QVERIFY(compare(all.world, all.sim, all.provider, "after changes"));
        QCOMPARE(all.sim.requestCount(QString(), s("/qdws/v1/contact_oids/")), 2);
        int sinceLastTime = 0;
        const auto requests = all.sim.requests(s("GET"), s("/qdws/v1/contacts/"));
        for (const SimRequest& request : requests)
            sinceLastTime += request.query.startsWith("query_time=");
        QCOMPARE(sinceLastTime, 2);
    }

    void emptiedBook()
    {
        SynchronisedWorld all(5, 0);
        QVERIFY(all.isReady);
        const auto entries = all.sim.book(s("alice"));
        for (const SimEntry& entry : entries)
            all.sim.deleteEntry({s("alice"), false}, entry.uid);
        QVERIFY(all.world.sync(all.provider, false));
        QVERIFY(compare(all.world, all.sim, all.provider, "an emptied book"));
    }

    void changesThroughTheProvider()
    {
        SynchronisedWorld all(3, 1);
        QVERIFY(all.isReady);

        QuendraContact contact;
        contact.setName(s("New One"));
        contact.setFax(s("555"));
        QUrl url;
        connect(all.provider, &ContactProvider::addedContact, this,
                [&url](const ContactUnit& unit, ContactList::Type) {
                    if (const auto* single = dynamic_cast<const QuendraContact*>(&unit))
                        url = single->url();
                });
        all.provider->addContact(contact, ContactList::PersonalContacts);
        QTRY_VERIFY(!url.isEmpty());
        QVERIFY(compare(all.world, all.sim, all.provider, "added"));

        contact.setUrl(url);
        contact.setName(s("Newer One"));
        int modified = 0;
        connect(all.provider, &ContactProvider::modifiedContact, this, [&modified] { ++modified; });
        all.provider->modifyContact(contact, ContactList::PersonalContacts);
        QTRY_COMPARE(modified, 1);
        QVERIFY(compare(all.world, all.sim, all.provider, "modified"));

        // what is read back from the cache can be sent to the server as it is
        const auto found =
            all.world.contacts->storage()->quickSearch(s("newer"), 10, all.provider->sourceId(), 0);
        QCOMPARE(found.size(), 1);
        const auto unit = all.world.contacts->getContactById(found.firstKey());
        QVERIFY(unit);
        QCOMPARE(dynamic_cast<QuendraContact&>(*unit).url(), url);

        QuendraContactGroup group;
        group.setName(s("Team"));
        group.addContact(*unit);
        int added = 0;
        connect(all.provider, &ContactProvider::addedContact, this, [&added] { ++added; });
        all.provider->addContact(group, ContactList::PersonalGroups);
        QTRY_COMPARE(added, 1);
        QVERIFY(all.world.sync(all.provider, false));
        QVERIFY(compare(all.world, all.sim, all.provider, "a group of it"));

        int deleted = 0;
        connect(all.provider, &ContactProvider::deletedContact, this, [&deleted] { ++deleted; });
        all.provider->deleteContact(*unit, ContactList::PersonalContacts);
        QTRY_COMPARE(deleted, 1);
        QVERIFY(all.world.sync(all.provider, false));
        QVERIFY(compare(all.world, all.sim, all.provider, "deleted"));
    }

    void addedInTheMiddle()
    {
        // with groups: their members must stay members
        SynchronisedWorld all(400, 5);
        QVERIFY(all.isReady);
        QuendraContact contact;
        contact.setName(s("In the middle"));
        for (const bool full : {true, false}) {
            // the download waits while the contact is added
            all.sim.addFault(s("delay=150,method=GET,path=/qdws/v1/contacts/alice,times=1"));
            int added = 0;
            const QObject context;
            connect(all.provider, &ContactProvider::addedContact, &context, [&added] { ++added; });
            all.provider->syncContacts(ContactList::PersonalContacts, full);
            all.provider->addContact(contact, ContactList::PersonalContacts);
            QVERIFY(all.world.settle());
            QTRY_COMPARE(added, 1);
            QVERIFY(compare(all.world, all.sim, all.provider, full ? "full" : "incremental"));
        }
    }

    void overlappingRuns()
    {
        SynchronisedWorld all(20, 0);
        QVERIFY(all.isReady);

        // the first run's list of identifiers drips in until the second run is over, and does not know the
        // new contact
        all.sim.addFault(s("drip=4,path=/qdws/v1/contact_oids/alice,times=1"));
        all.provider->syncContacts(ContactList::PersonalContacts, false);
        const auto isDripping = [&all] {
            const auto replies = all.world.faxes->nam().findChildren<QNetworkReply*>();
            return std::any_of(replies.begin(), replies.end(), [](const QNetworkReply* reply) {
                return !reply->isFinished() && reply->url().path().contains(QLatin1String("contact_oids")) &&
                       reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
            });
        };
        QVERIFY(spinUntil(isDripping));
        SimEntry entry;
        entry.person.name = s("From elsewhere");
        all.sim.addEntry({s("alice"), false}, entry);
        QVERIFY(isDripping());
        all.provider->syncContacts(ContactList::PersonalContacts, false);
        QVERIFY(all.world.settle());
        QVERIFY(compare(all.world, all.sim, all.provider, "two runs at once"));
    }

    void knownWhenAsked_data()
    {
        // see SilentWorld::play()
        const Rows<QString, QString> row("steps", "content");
        row("a member stored since the list was asked for", //
            "has 11@11; ask; ask-groups; groups 12 50 20; list 11; changes 13 20", "11@11 20@13 50>20");
        row("the newest removed since", "has 11@11 12@12 13@13 14@14; ask; remove 14; list 11 12; changes 15",
            "11@11 12@12");
        row("the run's own deleter takes the newest, and the clock was set back",
            "has 11@11 14@14; ask; list 11; changes 5 20", "11@11 20@5");
        row("an identifier that is no number", "has x12@10 10@10; ask-all; add 77; all 12 11 x12",
            "x12@12 77@0 11@12");
        row("a list with one deletes nothing", "has x12@10 10@10; ask; list 11 x12; changes 12 11",
            "x12@10 10@10 11@12");
        row("added since, and the second half fails", "has 11@11; ask; add 20; list 11; fail", "11@11 20@0");
        row("older than another run", //
            "has 11@11 12@11; ask-all; ask; list 11 14 15; changes 13 11; remove 15; all 12 11 12 14 15",
            "11@13 14@12");
        row("removed since", "has 11@11; ask-all; remove 11; all 12 11 12", "12@12");
    }
    void knownWhenAsked()
    {
        QFETCH(QString, steps);
        SilentWorld silent;
        const auto all = steps.split(s("; "));
        for (const QString& step : all) {
            QVERIFY2(silent.play(step), qPrintable(step));
            QVERIFY(spinUntil([&] { return silent.provider->findChildren<QThread*>().isEmpty(); }));
        }
        QTEST(silent.content(), "content");
        QVERIFY(!silent.provider->isSync());
        QVERIFY(silent.world.counts->isPaired());
    }

    void askedWhileItEnds()
    {
        SimServer sim(SynchronisedWorld::books(3, 0));
        QVERIFY(sim.start());
        bool asked = false;
        {
            ContactWorld world;
            const QPointer<FaxServer> server = world.add(sim);
            QVERIFY(world.settleLogin(server));
            const auto found = world.contacts->storage()->quickSearch(QString(), 1, 0, 0);
            QCOMPARE(found.size(), 1);
            server->contactProvider()->syncContacts(ContactList::PersonalContacts, true);
            connect(world.contacts, &ContactManager::onSyncStop, this, [&, manager = world.contacts] {
                asked = manager->getContactById(found.firstKey()).isNull();
            });
            delete world.contacts;
        }
        QVERIFY(asked);
    }

    void refusals()
    {
        ContactWorld world;
        ContactProvider* provider = world.contacts->addProvider(ContactProvider::QuendraProvider);
        world.watch(provider);
        QList<int> errors;
        const auto note = [&errors](Task::Status status) { errors << int(status); };
        connect(provider, &ContactProvider::errorAddedContact, this, note);
        connect(provider, &ContactProvider::errorModifiedContact, this, note);
        connect(provider, &ContactProvider::errorDeletedContact, this, note);
        connect(provider, &ContactProvider::errorGotContacts, this, note);
        connect(provider, &ContactProvider::errorSyncedContacts, this, note);
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
        connect(linked, &ContactProvider::errorAddedContact, this, note);
        connect(linked, &ContactProvider::errorGotContacts, this, note);
        connect(linked, &ContactProvider::errorSyncedContacts, this, note);
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
        QVERIFY(compare(world, sim, linked, "after a wrong password"));
    }

    void pages()
    {
        SynchronisedWorld all(25, 2);
        QVERIFY(all.isReady);
        QList<int> sizes;
        connect(all.provider, &ContactProvider::gotContacts, this, [&sizes](const ContactList& list) {
            sizes << list.contacts().size();
            QCOMPARE(list.contactsType(), ContactList::GlobalContacts);
        });
        for (const unsigned int offset : {0U, 10U, 20U, 30U})
            all.provider->getContacts(ContactList::GlobalContacts, s("unused"), offset, 10);
        QCOMPARE(sizes, QList<int>({10, 10, 5, 0}));
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

        // one that goes in the middle of two synchronisations closes both
        SimServer sim(SynchronisedWorld::books(5, 0));
        QVERIFY(sim.start());
        const QPointer<FaxServer> server = world.add(sim);
        QVERIFY(world.settleLogin(server));
        const QPointer<ContactProvider> busy = server->contactProvider();
        busy->syncContacts(ContactList::PersonalContacts, true);
        busy->syncContacts(ContactList::GlobalContacts, true);
        const unsigned int source = busy->sourceId();
        const int errors = world.counts->errors;
        world.faxes->deleteServer(server);
        QTRY_VERIFY(!busy);
        QCOMPARE(world.counts->errors, errors + 2);
        QVERIFY(world.counts->isPaired());
        QVERIFY(!contacts.isSync());
        QCOMPARE(world.stored(source, false, false).size(), 0);
        QCOMPARE(orphans(), 0);
    }

    void modelBased()
    {
        const quint32 seed = 20261122;
        constexpr int rounds = 250;
        QRandomGenerator random(seed);
        SimOptions options = SynchronisedWorld::books(40, 6);
        options.seed = seed;
        SimServer sim(options);
        QVERIFY(sim.start());
        ContactWorld world;
        QPointer<FaxServer> server = world.add(sim);
        QVERIFY(world.settleLogin(server));

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
                    int added = 0;
                    const QObject context;
                    connect(provider, &ContactProvider::addedContact, &context, [&added] { ++added; });
                    provider->addContact(contact, random.bounded(2) ? ContactList::PersonalContacts
                                                                    : ContactList::GlobalContacts);
                    QVERIFY(spinUntil([&added] { return added == 1; }));
                } else if (what < 97) {
                    // something that the cache knows, changed or deleted through the provider
                    const auto found =
                        world.contacts->storage()->quickSearch(QString(), 200, provider->sourceId(), 0);
                    if (found.isEmpty())
                        continue;
                    const auto unit =
                        world.contacts->getContactById(found.keys().at(random.bounded(found.size())));
                    QVERIFY(unit);
                    auto* contact = dynamic_cast<QuendraContact*>(unit.data());
                    if (!contact)
                        continue;
                    const auto book = contact->url().path().contains(QLatin1String("global"))
                                          ? ContactList::GlobalContacts
                                          : ContactList::PersonalContacts;
                    int ended = 0;
                    const QObject context;
                    const auto end = [&ended] { ++ended; };
                    connect(provider, &ContactProvider::modifiedContact, &context, end);
                    connect(provider, &ContactProvider::deletedContact, &context, end);
                    connect(provider, &ContactProvider::errorModifiedContact, &context,
                            end); // gone on the server
                    connect(provider, &ContactProvider::errorDeletedContact, &context, end);
                    if (what < 90) {
                        contact->setFax(QString::number(operations));
                        provider->modifyContact(*contact, book);
                    } else {
                        provider->deleteContact(*contact, book);
                    }
                    QVERIFY(spinUntil([&ended] { return ended == 1; }));
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
            QVERIFY2(compare(world, sim, server->contactProvider(), "a round"),
                     qPrintable(s("round %1, operation %2, seed %3").arg(round).arg(operations).arg(seed)));
            QVERIFY(world.counts->isPaired());
        }
        qInfo("%d operations in %d rounds, seed %u", operations, rounds, seed);
        // what the cache still knew and the server did not was not found; nothing else was refused
        const QStringList refusals = sim.refusals();
        for (const QString& refusal : refusals)
            QVERIFY2(refusal.contains(QLatin1String(": 404 ")), qPrintable(refusal));
        QCOMPARE(orphans(), 0);
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
                switch (time % 5) {
                case 0: // the server
                    world.faxes->deleteServer(server);
                    QTRY_VERIFY(!server);
                    break;
                case 1: // its provider
                    world.contacts->deleteProvider(server->contactProvider());
                    QTRY_VERIFY(!server->contactProvider());
                    break;
                case 2: // the manager of contacts, while servers live
                    delete world.contacts;
                    QTest::qWait(1);
                    break;
                case 3: // a provider that waits for the event loop when the manager goes
                    world.contacts->deleteProvider(server->contactProvider());
                    delete world.contacts;
                    break;
                default: // everything
                    break;
                }
            }
            QVERIFY(counts->isPaired());
            QCOMPARE(orphans(), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestContacts)
#include "tst_contacts.moc"
