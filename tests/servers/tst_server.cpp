// The configured servers: their state, their list and their place in the settings file.

#include "contact.h"
#include "contactmanager.h"
#include "quendrastorage.h"
#include "serveraddress_p.h"
#include "serverversion_p.h"
#include "shorthand.h"
#include "taskkit.h"
#include "tasks/operationtable_p.h"
#include "xmltext.h"

#include <QMetaEnum>
#include <QSignalSpy>

#include <algorithm>

namespace {

/// Makes protected functions public.
class OpenServer : public FaxServer
{
public:
    explicit OpenServer(FaxManager& manager)
        : FaxServer(manager)
    {}
    using FaxServer::setConnected;
    using FaxServer::setLastStatus;
};

/// Adds a server at an address where nothing listens.
QPointer<FaxServer> add(FaxManager& manager, const char* login, const char* password = "")
{
    return manager.addServer(s("127.0.0.1:1"), false, s(login), s(password));
}

QuendraInfo infoOf(const char* version, const char* model = "")
{
    QuendraInfo info;
    info.setVersion(s(version));
    info.setModel(s(model));
    info.computeProtocolVersion();
    return info;
}

/// Answers the requests of a login as a server does, accepting every user.
QByteArray answerLogin(const WireRequest& request, const QByteArray& model, const QByteArray& version)
{
    QByteArray content;
    if (request.target.endsWith("/verify"))
        content = "<message>Verified</message>";
    else if (request.target.endsWith("/about"))
        content = "<about><model>" + model + "</model><version>" + version + "</version></about>";
    else if (request.target.contains("/users/"))
        content = tag("user",
                      elements("name=Anna default_cover_page_enabled=true default_cover_page_name=plain "
                               "priority=5 max_attempts=7 interval=60 receipt=never receipt_attachment=tiff"))
                      .toUtf8();
    else if (request.target.endsWith("/cover_pages"))
        content = "<file><enabled>true</enabled><name>plain</name></file><file/>";
    else if (request.target.endsWith("/printer_names"))
        content = "<printer> left </printer>";
    return okReply(content);
}

} // namespace

class TestServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsCanBeQueuedAndRecorded()
    {
        TaskWorld world; // its server registers the types
        const auto check = [](const QMetaMethod& signal) {
            for (int i = 0; i < signal.parameterCount(); ++i) {
                const QByteArray name = signal.parameterTypes().at(i);
                // parameterType() registers the type itself, where it can; pointers to objects need no more
                const int type = name.endsWith('*') ? signal.parameterType(i) : QMetaType::type(name);
                QVERIFY2(type != QMetaType::UnknownType || name == "ContactUnit", // which is abstract
                         signal.methodSignature().constData());
            }
        };
        forEachOperation(
            [&](const WebOperation&, auto... done) { (check(QMetaMethod::fromSignal(done)), ...); });
        for (const QMetaObject* type : {&Task::staticMetaObject, &FaxServer::staticMetaObject}) {
            for (int i = QObject::staticMetaObject.methodCount(); i < type->methodCount(); ++i) {
                if (type->method(i).methodType() == QMetaMethod::Signal)
                    check(type->method(i));
            }
        }
    }

    void statusFollowsOutcomes()
    {
        TaskWorld world;
        OpenServer server(world.manager);
        QStringList events;
        connect(&server, &FaxServer::changedConnected, this, [&](bool on) { events << s("c%1").arg(on); });
        connect(&server, &FaxServer::changedLastStatus, this,
                [&](Task::Status status) { events << s("s%1").arg(int(status)); });
        const auto after = [&events, &server](Task::Status outcome) {
            events.clear();
            server.slotError(outcome);
            return events.join(QLatin1Char(' '));
        };

        server.slotDone();
        server.slotDone();
        QCOMPARE(events, (QStringList{s("c1"), s("s1")}));
        QCOMPARE(after(Task::InvalidReply), s("s7"));
        QVERIFY(server.isConnected());
        QCOMPARE(after(Task::Error), s("c0 s2"));
        QCOMPARE(after(Task::Error), QString());
        QCOMPARE(after(Task::AuthError), s("c0 s3"));
        QCOMPARE(after(Task::Status(6)), s("s6"));
        QCOMPARE(after(Task::Ok), s("c1 s1"));
        events.clear();
        server.setLastStatus(Task::Unknown);
        server.setConnected(false);
        QCOMPARE(events, (QStringList{s("c0"), s("s0"), s("c0")}));
    }

    void setters()
    {
        TaskWorld world;
        OpenServer server(world.manager);
        QSignalSpy changes(&server, &FaxServer::changedLastStatus);
        const std::initializer_list<std::function<void()>> setters = {
            [&] { server.setAddress(s("h")); }, [&] { server.setLogin(s("l")); },
            [&] { server.setPassword(s("p")); }, [&] { server.setUseSSL(true); }};
        for (const auto& set : setters) {
            for (const Task::Status after : {Task::Unknown, Task::Ok}) { // then to the same value
                server.setLastStatus(Task::Ok);
                set();
                QCOMPARE(server.lastStatus(), after);
            }
        }
        QCOMPARE(changes.count(), 5); // to Ok only; a reset emits nothing

        FaxUser user;
        user.setDefaultCoverPage(s("plain"));
        QSignalSpy told(&server, &FaxServer::changedFaxUser);
        server.setUser(user);
        for (const FaxUser& taken : {server.user(), told.first().first().value<FaxUser>()})
            QCOMPARE(taken.defaultCoverpage(), s("plain"));
    }

    void version()
    {
        const std::pair<const char*, int> numbers[] = {
            {"3.2.7", 302070}, {"3.2.7-beta", 302070}, {"3.2.8", 302080},       {"3.2.10", 302010},
            {"3.6", 306000},   {"3.6.1", 306010},      {"3.71.123", 307112},    {"", 0},
            {"x.y.z", 0},      {"1..2.9", 100020},     {"99999999999.1", 1000}, {"2147483647.0.0", 210000}};
        for (const auto& [text, number] : numbers)
            QVERIFY2(versionNumber(s(text)) == number, text);
    }

    void addresses()
    {
        const std::pair<const char*, const char*> addresses[] = {
            {"fax.example.org", "fax.example.org"},
            {"fax.example.org:8080", "fax.example.org:8080"},
            {"::1", "[::1]"},
            {" [::1]\t", "[::1]"},
            {"[::1]:8080", "[::1]:8080"},
            {"2001:db8::7:8080", "[2001:db8::7:8080]"}}; // ambiguous: taken as a host without a port
        for (const auto& [address, expected] : addresses) {
            QUrl url(s("http:/x"));
            QVERIFY2(setServerAddress(url, s(address)), address);
            QCOMPARE(url.toString(), s("http://%1/x").arg(s(expected)));
        }
        for (const char* address : {"[::1]8080", "[127.0.0.1]:80", "::g", "[::g]:80", "[::1:80", ":80", "a b",
                                    "my fax server", "", "host:65536", "host:+80", "host:-80", "host:80x",
                                    "host:0", "host:", "host:80/x", "http://host:80", "me@host:80"}) {
            QUrl url(s("http:/x"));
            QVERIFY2(!setServerAddress(url, s(address)), address);
        }
    }

    void preambule()
    {
        TaskWorld world;
        FaxServer& server = world.server;
        server.setAddress(s("123456789012345"));
        QCOMPARE(server.getServerPreambule(), s("123456789012345"));
        QuendraInfo info = infoOf("", "M40");
        server.setInfo(info);
        QCOMPARE(server.getServerPreambule(), s("123456789012345 : M40"));
        info.setDescription(s("Lobby"));
        server.setInfo(info);
        server.setAddress(s("1234567890123456"));
        QCOMPARE(server.getServerPreambule(), s("Lobby (123456789012345... : M40)"));

        server.setLogin(s("Anna"));
        server.setAddress(s("Fax.Example.ORG"));
        QCOMPARE(server.genUID(), s("anna@fax.example.org"));
    }

    void loginChain()
    {
        TaskWorld world;
        ScriptedServer& wire = world.wire;
        wire.setAnswer([](const WireRequest& request) { return answerLogin(request, "ABC40", "3.6.1"); });
        FaxServer* const server = &world.server;
        server->verifyUser(false);
        QCOMPARE(server->lastStatus(), Task::Unknown);
        QSignalSpy infoChanged(server, &FaxServer::changedQuendraInfo);
        QSignalSpy userChanged(server, &FaxServer::changedFaxUser);
        QVERIFY(userChanged.wait());
        QCOMPARE(infoChanged.count(), 1);
        QCOMPARE(wire.requests().size(), 3);
        QCOMPARE(wire.requests().last().target, QByteArray("/qdws/v1/users/anna"));
        QCOMPARE(server->info().protocolVersion(), 2);
        QCOMPARE(server->user().contact().name(), s("Anna"));
        QCOMPARE(server->user().defaultCoverpage(), s("plain"));
        QVERIFY(server->user().isUsedCoverPage());
        QCOMPARE(int(server->user().faxScheduleOptions().priority()), 5);
        QVERIFY(server->user().isSupportReceiptOptions());
        QVERIFY(server->isConnected());

        // a refusal ends the chain at its first step
        wire.setAnswer(ScriptedServer::reply("<r><message>no</message></r>"));
        QSignalSpy statusChanged(server, &FaxServer::changedLastStatus);
        server->verifyUser(true);
        QCOMPARE(server->lastStatus(), Task::Unknown);
        QVERIFY(statusChanged.wait());
        QCOMPARE(server->lastStatus(), Task::AuthError);
        QCOMPARE(wire.requests().size(), 4);
    }

    void protocolOneKeepsSchedule()
    {
        TaskWorld world;
        world.wire.setAnswer(
            [](const WireRequest& request) { return answerLogin(request, "ABC41", "3.2.7"); });
        FaxServer* const server = &world.server;
        server->verifyUser(false);
        QSignalSpy userChanged(server, &FaxServer::changedFaxUser);
        QVERIFY(userChanged.wait());
        QCOMPARE(int(server->user().faxScheduleOptions().priority()), 3);
        QVERIFY(!server->user().isSupportReceiptOptions());

        // too old for printers: no request is sent
        const int before = world.wire.requests().size();
        server->updatePrinternamesList();
        server->updateCoverpagesList();
        QSignalSpy pages(server, &FaxServer::changedCoverPagesList);
        QVERIFY(pages.wait());
        QCOMPARE(world.wire.requests().size(), before + 1);
    }

    void lists()
    {
        TaskWorld world;
        world.wire.setAnswer([](const WireRequest& request) { return answerLogin(request, "", ""); });
        FaxServer& server = world.server;
        server.setInfo(infoOf("3.2.8"));
        QCOMPARE(server.coverPagesCount(), 0);
        QVERIFY(server.coverPage(0).name().isEmpty());

        QSignalSpy pages(&server, &FaxServer::changedCoverPagesList);
        QSignalSpy printers(&server, &FaxServer::changedPrintersList);
        server.updateCoverpagesList();
        server.updatePrinternamesList();
        QTRY_COMPARE(pages.count() + printers.count(), 2);
        QCOMPARE(server.coverPagesCount(), 1);
        QCOMPARE(server.coverPage(0).name(), s("plain"));
        for (const int index : {-1, 1, 2})
            QVERIFY(server.coverPage(index).name().isEmpty());
        QVERIFY(server.defaultCoverPage().name().isEmpty());
        QCOMPARE(server.printersList(), QStringList{s(" left ")});

        QSignalSpy noPages(&server, &FaxServer::errorRetrieveCoverpageList);
        QSignalSpy noPrinters(&server, &FaxServer::errorRetrievePrintersList);
        world.wire.setAnswer(ScriptedServer::reply("", "500 Oops"));
        server.updateCoverpagesList();
        server.updatePrinternamesList();
        QTRY_COMPARE(noPages.count() + noPrinters.count(), 2);
        QCOMPARE(server.coverPagesCount(), 1); // the old list stays
    }

    void typesOutsideAreRefused()
    {
        TaskWorld world;
        QVERIFY(!world.server.addTask(Task::Type(-1)));
        const int end = QMetaEnum::fromType<Task::Type>().keyCount();
        QVERIFY(!world.server.addTask(Task::Type(end)));
        QCOMPARE(world.server.addTask(Task::Type(end - 1))->parent(), &world.server);
    }

    void list()
    {
        FaxManager manager(noContacts);
        QSignalSpy changed(&manager, &FaxManager::changedFaxServerList);
        QVERIFY(!manager.defaultServer());
        QList<QPointer<FaxServer>> servers;
        for (const char* name : {"a", "b", "c", "d"})
            servers << add(manager, name);
        QCOMPARE(changed.count(), 4);
        QVERIFY(manager.isDefaultServer(servers[0]));
        QCOMPARE(manager.getServerByUID(s("c@127.0.0.1:1")), servers[2]);
        QVERIFY(!manager.getServerByUID(s("C@127.0.0.1:1")));

        manager.setDefaultServer(servers[2]);
        manager.setUserServer(servers[3]);
        manager.setUserServer(nullptr); // a server that is not in the list changes nothing
        QCOMPARE(changed.count(), 5);
        QCOMPARE(manager.usertServer(), servers[3]);

        // one with a lower index than the default: the default server stays, the user's index is not adjusted
        manager.deleteServer(servers[0]);
        QCOMPARE(manager.defaultServer(), servers[2]);
        QCOMPARE(manager.userServerIndex(), 3);
        QVERIFY(!manager.isUserServerPresent());
        QTRY_VERIFY(!servers[0]);
        // the default itself: the first becomes it
        manager.deleteServer(servers[2]);
        QCOMPARE(manager.defaultServer(), servers[1]);
        manager.deleteServer(servers[1]);
        manager.deleteServer(manager.servers().first());
        QCOMPARE(manager.defaultServerIndex(), -1);
        manager.deleteServer(nullptr);
        manager.setDefaultServer(nullptr);
        manager.clearUserServer();
        QCOMPARE(manager.userServerIndex(), -1);
        QTRY_VERIFY(manager.findChildren<FaxServer*>().isEmpty());
    }

    void slotsMayEndAServerThatIsBeingAdded()
    {
        enum { ManagerDestroyed, ServerDestroyed, ServerDeleted };
        for (const int end : {ManagerDestroyed, ServerDestroyed, ServerDeleted}) {
            ContactManager contacts;
            QPointer<FaxManager> manager = new FaxManager(&contacts);
            QMetaObject::Connection ending;
            ending = connect(&contacts, &ContactManager::changedContactProviderList, this, [&] {
                disconnect(ending);
                auto* server = manager->findChild<FaxServer*>();
                if (end == ManagerDestroyed)
                    delete manager;
                else if (end == ServerDestroyed)
                    delete server;
                else
                    manager->deleteServer(server);
            });
            const QPointer<FaxServer> ended = add(*manager, "anna");
            QTRY_VERIFY(!ended);
            QCOMPARE(!manager, end == ManagerDestroyed);
            QVERIFY(contacts.providers().isEmpty());
            if (!manager)
                continue;
            QVERIFY(manager->servers().isEmpty());
            QVERIFY(manager->isDefaultServer(add(*manager, "bob")));
            delete manager;
        }
    }

    void onlyWhatIsAddedSynchronises()
    {
        ScriptedServer wire;
        wire.setAnswer(&serve);
        const auto asked = [&wire](const char* what) {
            const auto& all = wire.requests();
            return std::count_if(all.begin(), all.end(), [what](const WireRequest& request) {
                return request.target.contains(what);
            });
        };
        ContactManager contacts;
        FaxManager manager(&contacts);
        manager.addServer(wire.address(), false, s("anna"), s("x"));
        QTRY_VERIFY(asked("/contact") && asked("/users/") && !contacts.isSync());
        QTemporaryDir folder;
        QuendraStorage storage(folder.filePath(s("settings.xml")));
        QVERIFY(storage.Save(manager));
        manager.deleteServer(manager.defaultServer());
        const auto before = asked("/contact");
        QVERIFY(storage.Load(manager));
        QTRY_COMPARE(asked("/users/"), 2);
        QVERIFY(!contacts.isSync());
        QCOMPARE(asked("/contact"), before);

        // users are read again only from servers whose last request succeeded
        const QPointer<FaxServer> server = manager.defaultServer();
        QTRY_VERIFY(server->findChildren<Task*>().isEmpty());
        server->slotError(Task::AuthError);
        manager.updateContacts();
        server->slotDone();
        manager.updateContacts();
        QTRY_VERIFY(server->findChildren<Task*>().isEmpty());
        QCOMPARE(asked("/users/"), 3);
    }

    void routing()
    {
        FaxManager manager(noContacts);
        for (const char* name : {"a", "b", "c"})
            add(manager, name);
        manager.setUserServer(manager.servers().at(1));
        QSignalSpy defaultChanged(&manager, &FaxManager::changedDefaultFaxServerStatus);
        QSignalSpy userChanged(&manager, &FaxManager::changedUserFaxServerStatus);
        manager.servers().at(2)->slotDone();
        QCOMPARE(defaultChanged.count() + userChanged.count(), 0);
        manager.servers().at(1)->slotDone();
        QCOMPARE(userChanged.count(), 1);
        manager.servers().at(0)->slotDone();
        QCOMPARE(defaultChanged.count(), 1);
        // for a server that is both, only the default's signal is emitted
        manager.setUserServer(manager.servers().at(0));
        manager.servers().at(0)->slotError(Task::Error);
        QCOMPARE(defaultChanged.count(), 2);
        QCOMPARE(userChanged.count(), 1);
    }

    void roundTrip()
    {
        FaxManager manager(noContacts);
        add(manager, "anna", "p\u00e4ss & <w>");
        const QPointer<FaxServer> second = manager.addServer(s("[::1]:1"), true, s("bob"), QString());
        manager.setDefaultServer(second);
        QuendraInfo info = infoOf("3.6.1", "ABC40");
        info.setUptime(s("1 day"));
        second->setInfo(info);

        QTemporaryDir folder;
        QuendraStorage storage(folder.filePath(s("settings.xml")));
        writeFile(storage.filename(), "");
        const QFile::Permissions others = QFile::ReadGroup | QFile::ReadOther;
        QVERIFY(QFile::setPermissions(storage.filename(), QFile::ReadOwner | QFile::WriteOwner | others));
        QVERIFY(storage.Save(manager));
#ifdef Q_OS_UNIX
        QVERIFY(!(QFile::permissions(storage.filename()) & others));
#endif
        const QByteArray written = readFile(storage.filename());
        QVERIFY(!written.contains("p\u00e4ss"));
        QDomDocument document;
        QVERIFY(document.setContent(written));
        const QDomElement root = document.documentElement();
        QCOMPARE(root.elementsByTagName(s("server")).size(), 2);
        QVERIFY(!root.firstChildElement().hasAttribute(s("default")));
        QCOMPARE(root.lastChildElement().attribute(s("default")), s("true"));

        FaxManager other(noContacts);
        QSignalSpy changed(&other, &FaxManager::changedFaxServerList);
        QVERIFY(storage.Load(other));
        QCOMPARE(changed.count(), 3); // two added, one made the default
        QCOMPARE(other.servers().size(), 2);
        QCOMPARE(other.defaultServerIndex(), 1);
        for (int i = 0; i < 2; ++i) {
            const FaxServer& before = *manager.servers().at(i);
            const FaxServer& after = *other.servers().at(i);
            QVERIFY(after.genUID() == before.genUID() && after.useSSL() == before.useSSL());
            QCOMPARE(after.info().model(), before.info().model());
            QCOMPARE(after.info().protocolVersion(), before.info().protocolVersion());
            QVERIFY(after.info().uptime().isEmpty());
        }
        QCOMPARE(other.servers().at(0)->password(), s("p\u00e4ss & <w>"));
        QVERIFY(other.servers().at(1)->user().isSupportReceiptOptions());

        // an empty configuration is valid
        QVERIFY(other.readStorage(QDomElement(), 1));
        QCOMPARE(other.servers().size(), 2);

        for (int left : {2, 3}) { // a slot destroys the manager while it reads
            QPointer<FaxManager> reading = new FaxManager(noContacts);
            connect(reading, &FaxManager::changedFaxServerList, this, [&] {
                if (--left == 0)
                    delete reading;
            });
            QVERIFY(reading->readStorage(root, 1));
            QVERIFY(!reading);
        }
    }

    void damagedFragments()
    {
        const QByteArray rest = "<about><model>m</model><version>1</version></about><user/>";
        const QByteArray good =
            "<connection><address>127.0.0.1:1</address><login>l</login><password>plain</password>"
            "</connection>";
        const std::pair<QByteArray, int> fragments[] = {
            {good + rest, 1},
            {rest, 0},
            {"<connection><address>a</address><login>l</login></connection>" + rest, 0},
            {good + "<user/>", 0},
            {good + "<about/>", 0},
            {good + "<about/><user/>", 1}};
        for (const auto& [fragment, servers] : fragments) {
            QDomDocument document;
            QVERIFY(document.setContent("<settings><server>" + fragment + "</server></settings>"));
            FaxManager manager(noContacts);
            QVERIFY(manager.readStorage(document.documentElement(), 1));
            QCOMPARE(manager.servers().size(), servers);
            if (servers)
                QCOMPARE(manager.servers().first()->password(), s("plain")); // was not enciphered
            QTRY_COMPARE(manager.findChildren<FaxServer*>().size(), servers);
        }
    }
};

QTEST_GUILESS_MAIN(TestServer)
#include "tst_server.moc"
