// The configured servers: their state, their list and their place in the settings file.

#include "contact.h"
#include "contactmanager.h"
#include "faxdocument.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "quendrastorage.h"
#include "scriptedserver.h"
#include "serveraddress_p.h"
#include "serverversion_p.h"
#include "shorthand.h"

#include <QDomDocument>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QPointer<ContactManager> noContacts;

/// Opens what a subclass may use.
class OpenServer : public FaxServer
{
public:
    explicit OpenServer(FaxManager& manager)
        : FaxServer(manager)
    {}
    using FaxServer::setConnected;
    using FaxServer::setLastStatus;
};

/// A service that verifies everybody and says what a real one says.
QByteArray answerLogin(const WireRequest& request, const QByteArray& model, const QByteArray& version)
{
    QByteArray content;
    if (request.target.endsWith("/verify"))
        content = "<message>Verified</message>";
    else if (request.target.endsWith("/about"))
        content = "<about><model>" + model + "</model><version>" + version + "</version></about>";
    else if (request.target.contains("/users/"))
        content =
            "<user><name>Anna</name><default_cover_page_enabled>false</default_cover_page_enabled>"
            "<default_cover_page_name/><priority>5</priority><max_attempts>7</max_attempts>"
            "<interval>60</interval><receipt>never</receipt><receipt_attachment>tiff</receipt_attachment>"
            "</user>";
    else if (request.target.endsWith("/cover_pages"))
        content = "<file><enabled>true</enabled><name>plain</name></file><file/>";
    else if (request.target.endsWith("/printer_names"))
        content = "<printer> left </printer>";
    return ScriptedServer::reply("<reply>" + content + "</reply>");
}

QByteArray saved(const IQuendraStorage& object)
{
    QDomDocument document;
    QDomElement root = document.createElement(s("settings"));
    document.appendChild(root);
    object.writeStorage(document, root, 1);
    return document.toByteArray(1);
}

/// What a slot does to a server that is being added.
enum End { ManagerDestroyed, ServerDestroyed, ServerDeleted };

} // namespace

class TestServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qRegisterMetaType<Task::Status>("Task::Status");
        qRegisterMetaType<QuendraInfo>("QuendraInfo");
    }

    void statusFollowsOutcomes()
    {
        FaxManager manager(noContacts);
        OpenServer server(manager);
        QStringList events;
        connect(&server, &FaxServer::changedConnected, this, [&](bool on) { events << s("c%1").arg(on); });
        connect(&server, &FaxServer::changedLastStatus, this,
                [&](Task::Status status) { events << s("s%1").arg(int(status)); });
        const auto seen = [&events] {
            const QString text = events.join(QLatin1Char(' '));
            events.clear();
            return text;
        };

        server.slotDone();
        server.slotDone();
        QCOMPARE(seen(), s("c1 s1"));
        server.slotError(Task::InvalidReply);
        QCOMPARE(seen(), s("s7"));
        QVERIFY(server.isConnected());
        server.slotError(Task::Error);
        server.slotError(Task::Error);
        QCOMPARE(seen(), s("c0 s2"));
        server.slotError(Task::AuthError);
        QCOMPARE(seen(), s("c0 s3"));
        server.slotError(Task::Status(6));
        QCOMPARE(seen(), s("s6"));
        server.setLastStatus(Task::Ok);
        QCOMPARE(seen(), s("c1 s1"));
        server.setLastStatus(Task::Unknown);
        QCOMPARE(seen(), s("c0 s0"));
        server.setConnected(false);
        QCOMPARE(seen(), s("c0"));
    }

    void setters()
    {
        FaxManager manager(noContacts);
        OpenServer server(manager);
        QSignalSpy changes(&server, &FaxServer::changedLastStatus);
        const auto resets = [&server](auto set) {
            server.setLastStatus(Task::Ok);
            set();
            const bool reset = server.lastStatus() == Task::Unknown;
            set();
            return reset && server.lastStatus() == Task::Unknown;
        };
        QVERIFY(resets([&] { server.setAddress(s("h")); }));
        QVERIFY(resets([&] { server.setLogin(s("l")); }));
        QVERIFY(resets([&] { server.setPassword(s("p")); }));
        QVERIFY(resets([&] { server.setUseSSL(true); }));
        QCOMPARE(changes.count(), 4); // those of Ok; a reset is silent
        server.setLastStatus(Task::Ok);
        server.setAddress(s("h"));
        QCOMPARE(server.lastStatus(), Task::Ok);
    }

    void userIsTakenOver()
    {
        FaxManager manager(noContacts);
        OpenServer server(manager);
        QuendraInfo info;
        info.setVersion(s("3.6.1"));
        server.setInfo(info);
        FaxUser user;
        QuendraContact contact;
        contact.setName(s("Anna"));
        user.setContact(contact);
        user.setDefaultCoverPage(s("plain"));
        user.useCoverPage(true);
        FaxUserScheduleOptions options;
        options.setPriority(FaxUserScheduleOptions::Priority5);
        user.setScheduleOptions(options);

        FaxUser told;
        connect(&server, &FaxServer::changedFaxUser, this, [&told](const FaxUser& user) { told = user; });
        server.setUser(user);
        for (const FaxUser& taken : {server.user(), told}) {
            QCOMPARE(taken.contact().name(), s("Anna"));
            QCOMPARE(taken.defaultCoverpage(), s("plain"));
            QVERIFY(taken.isUsedCoverPage());
            QCOMPARE(taken.faxScheduleOptions().priority(), FaxUserScheduleOptions::Priority5);
            QVERIFY(taken.isSupportReceiptOptions());
        }
    }

    void version_data()
    {
        const Rows<int> row("number");
        row("3.2.7", 302070);
        row("3.2.7-beta", 302070);
        row("3.2.8", 302080);
        row("3.2.10", 302010);
        row("3.2.1", 302010);
        row("3.6", 306000);
        row("3.6.1", 306010);
        row("3.71.123", 307112);
        row("", 0);
        row("x.y.z", 0);
        row("1..2.9", 100020);
        row("99999999999.1", 1000);
        row("2147483647.0.0", 210000);
    }
    void version()
    {
        QFETCH(int, number);
        QCOMPARE(versionNumber(s(QTest::currentDataTag())), number);
    }

    void addresses_data()
    {
        const Rows<QString> row("url"); // of an address; empty: refused
        row("fax.example.org", "http://fax.example.org/x");
        row("fax.example.org:8080", "http://fax.example.org:8080/x");
        row("::1", "http://[::1]/x");
        row("[::1]", "http://[::1]/x");
        row("[::1]:8080", "http://[::1]:8080/x");
        row("2001:db8::7", "http://[2001:db8::7]/x");
        row("2001:db8::7:8080", "http://[2001:db8::7:8080]/x"); // all host
        row("[::1]8080", "");
        row("[127.0.0.1]:80", "");
        row("::g", "");
        row(":80", "");
        row("a b", "");
        row("host:65536", "");
        row("host:+80", "");
    }
    void addresses()
    {
        QFETCH(QString, url);
        QUrl built;
        built.setScheme(s("http"));
        built.setPath(s("/x"));
        const bool accepted = setServerAddress(built, s(QTest::currentDataTag())) && built.isValid();
        QCOMPARE(accepted, !url.isEmpty());
        if (accepted)
            QCOMPARE(built.toString(), url);
    }

    void preambule()
    {
        FaxManager manager(noContacts);
        OpenServer server(manager);
        server.setAddress(s("123456789012345"));
        QuendraInfo info;
        QCOMPARE(server.getServerPreambule(), s("123456789012345"));
        info.setModel(s("M40"));
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
        ScriptedServer wire;
        wire.setAnswer([](const WireRequest& request) { return answerLogin(request, "ABC40", "3.6.1"); });
        FaxManager manager(noContacts);
        const QPointer<FaxServer> server = manager.addServer(wire.address(), false, s("anna"), s("x"));
        QCOMPARE(server->lastStatus(), Task::Unknown);
        QSignalSpy infoChanged(server, &FaxServer::changedQuendraInfo);
        QSignalSpy userChanged(server, &FaxServer::changedFaxUser);
        QVERIFY(userChanged.wait());
        QCOMPARE(infoChanged.count(), 1);
        QCOMPARE(wire.requests().size(), 3);
        QCOMPARE(wire.requests().last().target, QByteArray("/qdws/v1/users/anna"));
        QCOMPARE(server->info().protocolVersion(), 2);
        QCOMPARE(server->user().contact().name(), s("Anna"));
        QCOMPARE(int(server->user().faxScheduleOptions().priority()), 5);
        QVERIFY(server->user().isSupportReceiptOptions());
        QVERIFY(server->isConnected());
        FaxDocument fax; // a new one begins with the user's options
        fax.setFaxSchedule(server->user().faxScheduleOptions());
        QCOMPARE(fax.faxSchedule().maxTries(), 7);

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
        ScriptedServer wire;
        wire.setAnswer([](const WireRequest& request) { return answerLogin(request, "ABC41", "3.2.7"); });
        FaxManager manager(noContacts);
        const QPointer<FaxServer> server = manager.addServer(wire.address(), false, s("anna"), s("x"));
        QSignalSpy userChanged(server, &FaxServer::changedFaxUser);
        QVERIFY(userChanged.wait());
        QCOMPARE(int(server->user().faxScheduleOptions().priority()), 3);
        QVERIFY(!server->user().isSupportReceiptOptions());

        // too old for printers: nobody is asked
        const int before = wire.requests().size();
        QSignalSpy failed(server, &FaxServer::errorRetrievePrintersList);
        server->updatePrinternamesList();
        server->updateCoverpagesList();
        QSignalSpy pages(server, &FaxServer::changedCoverPagesList);
        QVERIFY(pages.wait());
        QCOMPARE(wire.requests().size(), before + 1);
        QCOMPARE(failed.count(), 0);
    }

    void lists()
    {
        ScriptedServer wire;
        wire.setAnswer([](const WireRequest& request) { return answerLogin(request, "ABC40", "3.2.8"); });
        FaxManager manager(noContacts);
        OpenServer server(manager);
        server.setAddress(wire.address());
        QuendraInfo info;
        info.setVersion(s("3.2.8"));
        server.setInfo(info);
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
        wire.setAnswer(ScriptedServer::reply("", "500 Oops"));
        server.updateCoverpagesList();
        server.updatePrinternamesList();
        QTRY_COMPARE(noPages.count() + noPrinters.count(), 2);
        QCOMPARE(server.coverPagesCount(), 1); // the old list stays
    }

    void everyType()
    {
        FaxManager manager(noContacts);
        OpenServer server(manager);
        for (int type = -1; type <= 18; ++type) {
            Task* task = server.addTask(Task::Type(type));
            QCOMPARE(task != nullptr, type >= 0 && type <= 17);
            if (!task)
                continue;
            QCOMPARE(int(task->type()), type);
            QCOMPARE(task->parent(), &server);
            // every one keeps the server's status current
            Q_EMIT task->errorExecute(Task::Status(100 + type));
            QCOMPARE(int(server.lastStatus()), 100 + type);
        }
    }

    void list()
    {
        FaxManager manager(noContacts);
        QSignalSpy changed(&manager, &FaxManager::changedFaxServerList);
        QVERIFY(!manager.defaultServer());
        QCOMPARE(manager.defaultServerIndex(), -1);
        QList<QPointer<FaxServer>> servers;
        for (const char* name : {"a", "b", "c", "d"})
            servers << manager.addServer(s("127.0.0.1:1"), false, QString::fromLatin1(name), QString());
        QCOMPARE(changed.count(), 4);
        QVERIFY(manager.isDefaultServer(servers[0]));
        QCOMPARE(manager.getServerByUID(s("c@127.0.0.1:1")), servers[2]);
        QVERIFY(!manager.getServerByUID(s("C@127.0.0.1:1")));

        manager.setDefaultServer(servers[2]);
        manager.setUserServer(servers[3]);
        QCOMPARE(changed.count(), 5);
        QCOMPARE(manager.usertServer(), servers[3]);

        // one below the default: the default stays the same server, the user's index is left where it was
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

    void slotsMayEndAServerThatIsBeingAdded_data()
    {
        const Rows<int> row("end");
        row("manager destroyed", ManagerDestroyed);
        row("server destroyed", ServerDestroyed);
        row("server deleted", ServerDeleted);
    }
    void slotsMayEndAServerThatIsBeingAdded()
    {
        QFETCH(int, end);
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
        const QPointer<FaxServer> ended = manager->addServer(s("127.0.0.1:1"), false, s("anna"), s("x"));
        QTRY_VERIFY(!ended);
        QCOMPARE(!manager, end == ManagerDestroyed);
        if (manager) {
            QVERIFY(manager->servers().isEmpty());
            QCOMPARE(manager->defaultServerIndex(), -1);
            QVERIFY(manager->isDefaultServer(manager->addServer(s("127.0.0.1:1"), false, s("bob"), s("x"))));
            delete manager;
        }
    }

    void routing()
    {
        FaxManager manager(noContacts);
        for (const char* name : {"a", "b", "c"})
            manager.addServer(s("127.0.0.1:1"), false, QString::fromLatin1(name), QString());
        manager.setUserServer(manager.servers().at(1));
        QSignalSpy defaultChanged(&manager, &FaxManager::changedDefaultFaxServerStatus);
        QSignalSpy userChanged(&manager, &FaxManager::changedUserFaxServerStatus);
        manager.servers().at(2)->slotDone();
        QCOMPARE(defaultChanged.count() + userChanged.count(), 0);
        manager.servers().at(1)->slotDone();
        QCOMPARE(userChanged.count(), 1);
        manager.servers().at(0)->slotDone();
        QCOMPARE(defaultChanged.count(), 1);
        // both at once is the default's affair only
        manager.setUserServer(manager.servers().at(0));
        manager.servers().at(0)->slotError(Task::Error);
        QCOMPARE(defaultChanged.count(), 2);
        QCOMPARE(userChanged.count(), 1);
    }

    void roundTrip()
    {
        FaxManager manager(noContacts);
        manager.addServer(s("127.0.0.1:1"), false, s("anna"), s("p\u00e4ss & <w>"));
        const QPointer<FaxServer> second = manager.addServer(s("[::1]:1"), true, s("bob"), QString());
        manager.setDefaultServer(second);
        QuendraInfo info;
        info.setModel(s("ABC40"));
        info.setVersion(s("3.6.1"));
        info.setUptime(s("1 day"));
        info.computeProtocolVersion();
        second->setInfo(info);

        QDomDocument document;
        QVERIFY(document.setContent(saved(manager)));
        QVERIFY(!saved(manager).contains("p\u00e4ss"));
        const QDomElement root = document.documentElement();
        QCOMPARE(root.elementsByTagName(s("server")).size(), 2);
        QVERIFY(!root.firstChildElement().hasAttribute(s("default")));
        QCOMPARE(root.lastChildElement().attribute(s("default")), s("true"));

        FaxManager other(noContacts);
        QSignalSpy changed(&other, &FaxManager::changedFaxServerList);
        QVERIFY(other.readStorage(root, 1));
        QCOMPARE(changed.count(), 3); // two added, one made the default
        QCOMPARE(other.servers().size(), 2);
        QCOMPARE(other.defaultServerIndex(), 1);
        for (int i = 0; i < 2; ++i) {
            const FaxServer& before = *manager.servers().at(i);
            const FaxServer& after = *other.servers().at(i);
            QCOMPARE(after.genUID(), before.genUID());
            QCOMPARE(after.useSSL(), before.useSSL());
            QCOMPARE(after.info().model(), before.info().model());
            QCOMPARE(after.info().protocolVersion(), before.info().protocolVersion());
            QVERIFY(after.info().uptime().isEmpty());
        }
        QCOMPARE(other.servers().at(0)->password(), s("p\u00e4ss & <w>"));
        QVERIFY(other.servers().at(1)->user().isSupportReceiptOptions());

        // nothing configured is a configuration
        QVERIFY(other.readStorage(QDomElement(), 1));
        QCOMPARE(other.servers().size(), 2);
    }

    void damagedFragments_data()
    {
        const Rows<QByteArray, int> addRow("fragment", "servers");
        const QByteArray rest = "<about><model>m</model><version>1</version></about><user/>";
        const auto row = [&](const char* name, const QByteArray& fragment, int servers) {
            addRow(name, QByteArray("<settings><server>" + fragment + "</server></settings>"), servers);
        };
        const QByteArray good =
            "<connection><address>127.0.0.1:1</address><login>l</login><password>plain</password>"
            "</connection>";
        row("whole", good + rest, 1);
        row("no connection", rest, 0);
        row("no password", "<connection><address>a</address><login>l</login></connection>" + rest, 0);
        row("no about", good + "<user/>", 0);
        row("no user", good + "<about/>", 0);
        row("about unreadable", good + "<about/><user/>", 1);
    }
    void damagedFragments()
    {
        QFETCH(QByteArray, fragment);
        QFETCH(int, servers);

        QDomDocument document;
        QVERIFY(document.setContent(fragment));
        FaxManager manager(noContacts);
        QVERIFY(manager.readStorage(document.documentElement(), 1));
        QCOMPARE(manager.servers().size(), servers);
        if (servers)
            QCOMPARE(manager.servers().first()->password(), s("plain")); // did not decipher
        QTRY_COMPARE(manager.findChildren<FaxServer*>().size(), servers);
    }

    void fileRoundTrip()
    {
        QTemporaryDir folder;
        QuendraStorage storage(folder.filePath(s("settings.xml")));
        FaxManager manager(noContacts);
        manager.addServer(s("127.0.0.1:1"), false, s("anna"), s("secret"));
        QVERIFY(storage.Save(manager));
        FaxManager other(noContacts);
        QVERIFY(storage.Load(other));
        QCOMPARE(other.servers().size(), 1);
        QCOMPARE(other.defaultServer()->password(), s("secret"));
#ifdef Q_OS_UNIX
        // a file that others could read, as one written by an editor
        QVERIFY(QFile::setPermissions(storage.filename(), QFile::ReadOwner | QFile::WriteOwner |
                                                              QFile::ReadGroup | QFile::ReadOther));
        QVERIFY(storage.Save(manager));
        QVERIFY(!(QFile::permissions(storage.filename()) & (QFile::ReadGroup | QFile::ReadOther)));
#endif
    }
};

QTEST_GUILESS_MAIN(TestServer)
#include "tst_server.moc"
