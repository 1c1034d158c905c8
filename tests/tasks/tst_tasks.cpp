// Every operation on the wire, and how each reply and each failure ends.

#include "faxentry.h"
#include "faxkit.h"
#include "shorthand.h"
#include "taskkit.h"
#include "tasks/operationtable_p.h"

#include <QDomDocument>
#include <QHostInfo>
#include <QMetaEnum>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslConfiguration>

class TestTasks : public QObject
{
    Q_OBJECT

    /// The log texts of an operation.
    struct Log
    {
        QByteArray errorText;
        QByteArray request; ///< The text before the URL.
        QByteArray reply{}; ///< The text before the body of a good reply; null: the body is not logged.
        QByteArray failed{"Reply:\r\n"}; ///< The text before the body of a failed reply.
    };

    static QByteArray nameOf(Task::Type type)
    {
        return QByteArray("Task") + QMetaEnum::fromType<Task::Type>().valueToKey(type);
    }
    /// The prefix of an operation's log lines.
    static QByteArray fileOf(Task::Type type)
    {
        return type == Task::ChekPermissions ? "taskcheckpermissions.cpp " : nameOf(type).toLower() + ".cpp ";
    }

    static Log logOf(Task::Type type)
    {
        const QByteArray name = nameOf(type);
        const QByteArray begin = fileOf(type);
        Log log{begin + name + ": reply error! http code ", name + " request:\r\n", name + " reply:\r\n"};
        // exceptions
        if (type == Task::VerifyLogin || type == Task::Schedule || type == Task::Reschedule)
            log = {begin + name + ": reschedule error! http code ", log.request};
        else if (type == Task::ChekPermissions)
            log = {begin + name + ": response permission error! http code ", "Request:\r\n", log.reply};
        else if (type == Task::Abort)
            log.failed = "";
        else if (type == Task::GetInboundFaxEntry)
            log.failed = log.reply;
        else if (type == Task::GetCoverPages)
            log.errorText = begin + "TaskGetContactsOids: reply error! http code ";
        return log;
    }

    /// The DEBUG lines of an operation: its request and, for some operations and outcomes, the body of the
    /// reply.
    QStringList debugLines(const ScriptedServer& wire, Task::Type type, const QByteArray& answer,
                           int networkError, bool parsed) const
    {
        const Log log = logOf(type);
        const QByteArray file = fileOf(type);
        const QByteArray body = answer.mid(answer.indexOf("\r\n\r\n") + 4);
        QStringList lines{s(file + log.request + "http://anna@" + wire.address().toLatin1() +
                            wire.requests().first().target)};
        const bool waitsForParsing = type == Task::ChekPermissions;
        if (networkError != 0 && !log.failed.isEmpty())
            lines << s(file + log.failed + body);
        else if (networkError == 0 && !log.reply.isEmpty() && (parsed || !waitsForParsing))
            lines << s(file + log.reply + body);
        return lines;
    }

    /// The expected mapping: stated here independently for the operations that applications rely on; for
    /// later ones that of the table.
    static ErrorMapping errorsOf(const Operation& operation)
    {
        static const QList<QByteArray> authIsApart = {
            "GetQuendraInfo",      "VerifyLogin", "GetContacts", "GetFaxEntry",    "GetInboundFaxEntry",
            "GetOutboundFaxEntry", "Abort",       "Reschedule",  "ChekPermissions"};
        if (operation.type > Task::GetPrinterNames)
            return operation.row.errors;
        if (operation.isChange() && operation.name.endsWith("Contact"))
            return ErrorMapping::Contact;
        if (operation.type == Task::Schedule)
            return ErrorMapping::ContentApart;
        return authIsApart.contains(operation.name) ? ErrorMapping::AuthApart : ErrorMapping::AlwaysError;
    }

private Q_SLOTS:
    void operationEnds_data()
    {
        // error: 0 is no network error
        const Rows<int, QByteArray, Task::Status, int> addRow;
        QCOMPARE(operations().size(), QMetaEnum::fromType<Task::Type>().keyCount() + 1);
        for (int index = 0; index < operations().size(); ++index) {
            const Operation& operation = operations().at(index);
            if (operation.name == "GetContacts of groups")
                continue; // more than one request
            const ErrorMapping errors = errorsOf(operation);
            const bool isContact = errors == ErrorMapping::Contact;
            const auto row = [&](const char* fault, const QByteArray& answer, Task::Status status,
                                 int error = 0) {
                addRow((operation.name + ", " + fault).constData(), index, answer, status, error);
            };
            const auto refusal = [&](const char* http, int error, Task::Status status,
                                     Task::Status contactStatus = Task::Error) {
                row(http, ScriptedServer::reply("<gone/>", http, "WWW-Authenticate: Basic realm=\"x\"\r\n"),
                    isContact ? contactStatus : status, error);
            };
            row("good", okReply(operation.good), Task::Ok);
            row("not XML", ScriptedServer::reply("<reply><message>Succ"), Task::InvalidReply);
            row("HTML", ScriptedServer::reply("<html><p>Welcome<br></html>"), Task::InvalidReply);
            row("empty", ScriptedServer::reply(""), Task::InvalidReply);
            refusal("401 Unauthorized", 204,
                    errors == ErrorMapping::AuthApart ? Task::AuthError : Task::Error);
            refusal("403 Forbidden", 201, Task::Error, Task::AccessDenied);
            refusal("404 Not Found", 203, Task::Error, Task::NotFound);
            refusal("405 Not Allowed", 202, Task::Error, Task::NotPermitted);
            refusal("500 Oops", 401, Task::Error);
            refusal("402 Pay first", 299,
                    errors == ErrorMapping::ContentApart ? Task::InvalidReply : Task::Error,
                    Task::InvalidReply);
        }
    }
    void operationEnds()
    {
        const auto [index, answer, status, error] = cells<int, QByteArray, Task::Status, int>();
        const Operation& operation = operations().at(index);
        const Task::Type type = operation.type;

        TaskWorld world(answer);
        TestLog log;
        Outcome outcome(operation.make(world.server));
        int loggedBefore = -1;
        connect(outcome.task, &Task::errorExecute, this, [&](Task::Status said) {
            loggedBefore = log.messages(s("ERROR")).size();
            QCOMPARE(world.server.lastStatus(), said); // the server's bookkeeping slot runs first
        });
        QUrl url;
        connect(&world.manager.nam(), &QNetworkAccessManager::finished, this, [&url](QNetworkReply* reply) {
            url = reply->request().url();
            reply->deleteLater(); // the usual idiom of applications
        });
        QCOMPARE(outcome.task->type(), type);
        outcome.task->execute();
        QCOMPARE(outcome.run(), status); // a task sends at most once

        QCOMPARE(world.wire.requests().size(), 1); // and credentials are not tried again after 401
        const WireRequest& request = world.wire.requests().first();
        QCOMPARE(request.method + ' ' + request.target, operation.request);
        QCOMPARE(request.header("Content-Type"), QByteArray("application/xml"));
        const QByteArray credentials = QByteArray("anna:se:cret").toBase64();
        QCOMPARE(request.header("Authorization"), "Basic " + credentials);
        QCOMPARE(request.header("Host"), world.wire.address().toLatin1());
        // the access manager takes them from the URL, and does not disclose them
        QCOMPARE(url.userName(), s("anna"));
        QCOMPARE(url.password(QUrl::FullyDecoded), s("se:cret"));
        QVERIFY(!request.raw.contains("cret"));
        QVERIFY(!log.text().contains(QLatin1String("cret")));
        QVERIFY(!log.text().contains(QLatin1String(credentials)));

        QCOMPARE(world.server.lastStatus(), status);
        QCOMPARE(world.server.isConnected(), status == Task::Ok);
        // these emit before they log
        const bool speaksFirst = type == Task::Abort || type == Task::Reschedule ||
                                 (type == Task::GetContacts && status == Task::AuthError);
        if (error)
            QCOMPARE(loggedBefore, speaksFirst ? 0 : 1);
        QCOMPARE(log.messages(s("DEBUG")),
                 debugLines(world.wire, type, answer, error, status != Task::InvalidReply));
        const bool stop = type == Task::GetCoverPages || type == Task::GetPrinterNames;
        const QString text = s(logOf(type).errorText) + QString::number(error) + s(stop ? "." : "");
        QCOMPARE(log.messages(s("ERROR")), error ? QStringList{text} : QStringList());
    }

    void content()
    {
        const char* const complaint = "contains invalid reply!"; // logged after the entries are emitted
        const std::tuple<Task::Type, const char*, Task::Status, const char*> replies[] = {
            {Task::GetQuendraInfo, "<abaut/>", Task::Error, ""},
            {Task::GetQuendraInfo, "<about><model>m</model></about>", Task::Error, ""},
            {Task::VerifyLogin, "<message>vERIFIED</message>", Task::Ok, ""},
            {Task::VerifyLogin, "<message>Verified</message><message>No</message>", Task::Ok, ""},
            {Task::VerifyLogin, "<message>NOT VERIFIED</message>", Task::AuthError, ""},
            {Task::VerifyLogin, "", Task::AuthError, ""},
            {Task::GetFaxUser, "", Task::Error, "invalid reply!"},
            {Task::GetFaxUser, "<user><name>A</name></user>", Task::Error, "invalid reply!"},
            {Task::ModifyFaxUser, "<message>modified</message>", Task::Error, "invalid reply"},
            {Task::ChekPermissions, "<message>No</message>", Task::Error,
             "response permission error! response: "},
            {Task::ChekPermissions, "<message>Success</message><user_options/><message>No</message>",
             Task::Error, "can not parse user options"},
            {Task::ChekPermissions, "<message>Success</message><user_options/>", Task::Error,
             "can not parse user options"},
            {Task::Schedule, "<message>Success</message>", Task::InvalidReply, "invalid reply."},
            {Task::Schedule, "<entries><fax_entry/></entries>", Task::InvalidReply, "invalid reply."},
            {Task::Abort, "<message>attempting abort</message>", Task::Error, "invalid reply!"},
            {Task::Reschedule, "<message>No</message>", Task::Error, "reschedule error! response: "},
            {Task::GetFaxEntry, "<fax_entry/>", Task::Ok, complaint},
            {Task::GetInboundFaxEntry, "<message>success</message>", Task::Ok, complaint},
            {Task::GetOutboundFaxEntry, "<message>Failure</message>", Task::Ok, complaint}};
        for (const auto& [type, content, status, error] : replies) {
            TaskWorld world(okReply(content));
            TestLog log;
            QVERIFY2(world.run(operation(type)) == status, content);
            QString line = s(fileOf(type) + nameOf(type) + ": " + error);
            if (line.endsWith(s("response: "))) // and the reply
                line += s("<?xml version=\"1.0\" encoding=\"utf-8\"?><reply>%1</reply>").arg(s(content));
            QCOMPARE(log.messages(s("ERROR")), *error ? QStringList{line} : QStringList());
        }
    }

    void limits()
    {
        TaskWorld world(okReply("<message>Success</message>"));
        const auto target = [&world](auto* task, int limit) {
            task->setCompleteLimit(limit);
            return Outcome(task).run() == Task::Ok ? world.wire.requests().last().target : "failed";
        };
        const auto queue = [&](TaskGetFaxEntry::TaskEntryType type, int limit) {
            auto* task = static_cast<TaskGetFaxEntry*>(world.server.addTask(Task::GetFaxEntry));
            task->setTaskEntryType(type);
            return target(task, limit);
        };
        const auto status = TaskGetFaxEntry::EntryOutboundStatus;
        QCOMPARE(queue(TaskGetFaxEntry::EntryNone, 25), QByteArray("/"));
        QCOMPARE(queue(TaskGetFaxEntry::EntryQueue, 25), QByteArray("/qdws/v1/ofax?complete_limit=25"));
        QCOMPARE(queue(status, 25), QByteArray("/qdws/v1/outbound_status?pending_limit=25&sending_limit=25"));
        QCOMPARE(queue(status, 0), QByteArray("/qdws/v1/outbound_status"));
        const auto inbound = [&] { return new TaskGetInboundFaxEntry(world.server); };
        QCOMPARE(target(inbound(), 3), QByteArray("/qdws/v1/inbound_log?index=0&limit=3"));
        QCOMPARE(target(inbound(), -1), QByteArray("/qdws/v1/inbound_log"));
        QCOMPARE(target(new TaskGetOutboundFaxEntry(world.server), 3),
                 QByteArray("/qdws/v1/outbound_log?limit=3"));
    }

    void addresses()
    {
        for (const char* address : {"localhost:%1", "127.0.0.1:%1x", "[::1:%1"}) {
            const bool reached = address[0] == 'l';
            if (reached && QHostInfo::fromName(s("localhost")).addresses().isEmpty())
                continue; // the name cannot be resolved here
            TaskWorld world(okReply("<message>Verified</message>"));
            world.server.setAddress(s(address).arg(world.wire.serverPort()));
            Outcome outcome(world.server.addTask(Task::VerifyLogin));
            outcome.task->execute();
            QCOMPARE(outcome.isOver(), false); // an invalid address fails asynchronously too
            QCOMPARE(outcome.run(), reached ? Task::Ok : Task::Error);
            QCOMPARE(world.wire.requests().size(), reached ? 1 : 0);
            QCOMPARE(world.server.lastStatus(), outcome.ends.first());
        }
    }

    void credentials()
    {
        TaskWorld world(okReply("<message>Verified</message>"));
        world.server.setLogin(QString());
        world.server.setPassword(QString());
        QCOMPARE(world.run(), Task::Ok);
        QVERIFY(world.wire.requests().last().header("Authorization").isNull());

        // Latin-1, as the service expects
        world.server.setLogin(s("j\u00f6rg"));
        world.server.setPassword(s("p\u00e4ss w@rd/%20"));
        QCOMPARE(world.run(), Task::Ok);
        QCOMPARE(world.wire.requests().last().header("Authorization"),
                 "Basic " + QByteArray("j\xf6rg:p\xe4ss w@rd/%20").toBase64());

        // a login with a slash and a blank, as part of a path
        auto* user = static_cast<TaskGetFaxUser*>(world.server.addTask(Task::GetFaxUser));
        user->setUser(s("a b/c"));
        QCOMPARE(Outcome(user).run(), Task::Error); // the reply contains no user
        QCOMPARE(world.wire.requests().last().target, QByteArray("/qdws/v1/users/a%20b/c"));
    }

    void tls()
    {
        if (!ScriptedServer::canTls())
            QSKIP("Needs openssl to make a certificate.");
        TaskWorld world(okReply("<message>Verified</message>"), true);
        QSslConfiguration sent;
        connect(&world.manager.nam(), &QNetworkAccessManager::finished, this,
                [&sent](QNetworkReply* reply) { sent = reply->request().sslConfiguration(); });
        QCOMPARE(world.run(), Task::Ok);
        // the certificate is requested but not verified; all else is the application's default configuration
        QSslConfiguration expected = QSslConfiguration::defaultConfiguration();
        expected.setPeerVerifyMode(QSslSocket::QueryPeer);
        QVERIFY(sent == expected);
    }

    void largeAttachment()
    {
        // the cover page has text that could be mistaken for the placeholder of the file's content
        QByteArray bytes;
        for (int i = 0; i < 3 * 1024 * 1024; ++i)
            bytes.append(char((i * 131) ^ (i >> 7)));
        const QTemporaryDir folder;
        const QString file = folder.filePath(s("attachment"));
        writeFile(file, bytes);
        FaxDocument fax;
        fax.recipients().addContact(personAt(QString()));
        const Attach attach = inlineAttach(s("offer.pdf"), contentOf(Content::Pdf, file));
        fax.attachs() << attach << attach;
        CoverPage cover;
        cover.setSubject(s("<content>x</content> & 'quotes'"));
        fax.setCoverPage(cover);

        TaskWorld world(okReply("<fax_entry><state>pending</state></fax_entry>"));
        auto* task = static_cast<TaskSchedule*>(world.server.addTask(Task::Schedule));
        task->setFaxDocument(fax);
        QCOMPARE(Outcome(task).run(60), Task::Ok);

        // the same document, serialised by the DOM
        QDomDocument expected;
        expected.appendChild(
            expected.createProcessingInstruction(s("xml"), s("version=\"1.0\" encoding=\"utf-8\"")));
        QDomElement root = expected.createElement(s("schedule_fax"));
        expected.appendChild(root);
        QDomElement sender = expected.createElement(s("sender"));
        root.appendChild(sender);
        fax.renameDuplicateAttachments();
        world.server.user().writeFax(expected, sender, 1);
        fax.writeFax(expected, root, 1);
        fax.faxSchedule().writeFax(expected, root, 1);
        QVERIFY(world.wire.requests().first().body == expected.toByteArray(1));
    }

    void fixAmp()
    {
        struct Probe : Task
        {
            using Task::fixAmp;
            explicit Probe(FaxServer& server)
                : Task(server)
            {}
            void execute() override {}
            void onFinished() override {}
            Task::Type type() override { return Task::VerifyLogin; }
        };
        TaskWorld world;
        Probe probe(world.server);
        const std::pair<const char*, const char*> texts[] = {
            {"Tom & Jerry &amp; co", "Tom &amp; Jerry &amp; co"},
            {"&lt;&gt;&apos;&quot;&amp;", "&lt;&gt;&apos;&quot;&amp;"},
            {"&&amp;&", "&amp;&amp;&amp;"},
            {"&amp &AMP; &ampx;", "&amp;amp &amp;AMP; &amp;ampx;"},
            {"&#65; \xc3\xbc", "&amp;#65; \xc3\xbc"},
            {"", ""}};
        for (const auto& [text, fixed] : texts)
            QCOMPARE(probe.fixAmp(text), s(fixed));
    }

    void nothingToSend()
    {
        TaskWorld world(okReply(""));

        // no parameter: no request and no outcome
        for (const Task::Type type : {Task::ModifyFaxUser, Task::Abort, Task::Reschedule}) {
            Outcome silent(world.server.addTask(type));
            silent.task->execute();
            QVERIFY(!silent.isOver());
            QVERIFY(silent.task);
        }
        // a fax to nobody cannot be written
        Outcome nobody(world.server.addTask(Task::Schedule));
        nobody.task->execute();
        QCOMPARE(nobody.run(), Task::InvalidReply);
        QCOMPARE(world.wire.requests().size(), 0);
    }

    void rescheduleInUtc()
    {
        useBerlinTime();
        TaskWorld world(okReply(""));
        auto* later = static_cast<TaskReschedule*>(world.server.addTask(Task::Reschedule));
        later->setFaxEntryUrl(QUrl(s("http://h/qdws/v1/ofax/1")));
        later->setDateTime(QDateTime(QDate(2026, 11, 15), QTime(9, 5, 7), Qt::OffsetFromUTC, 3600));
        QCOMPARE(Outcome(later).run(), Task::Error);
        QCOMPARE(world.wire.requests().last().target,
                 QByteArray("/qdws/v1/outbound_log/1?at=2026-11-15T08%3A05%3A07"));
        QCOMPARE(world.wire.requests().last().body, QByteArray());
    }

    void userDocument()
    {
        TaskWorld world(okReply("<message>Modified</message>"));
        QCOMPARE(world.run(operation(Task::ModifyFaxUser)), Task::Ok);
        QCOMPARE(world.wire.requests().first().body,
                 QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\"?><user>"
                            "<contact_url>http://elsewhere:9/qdws/v1/users/7</contact_url><name>Anna</name>"
                            "<default_cover_page_enabled>true</default_cover_page_enabled>"
                            "<default_cover_page_name>plain</default_cover_page_name></user>"));
    }

    void entriesOfALog()
    {
        TaskWorld world;
        TestLog log;
        // a refusal that nevertheless contains entries
        world.wire.setAnswer(
            okReply("<message>Failure</message>"
                    "<inbound_fax_entry><filename>a.tif</filename></inbound_fax_entry><other/>"
                    "<inbound_fax_entry><filename>b.tif</filename></inbound_fax_entry>"));
        auto* inbound = static_cast<TaskGetInboundFaxEntry*>(world.server.addTask(Task::GetInboundFaxEntry));
        QStringList files;
        int loggedBefore = -1;
        connect(inbound, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry, this,
                [&](const InboundFaxEntriesPtrListPtr& entries) {
                    for (const auto& entry : *entries)
                        files << entry->filename();
                    loggedBefore = log.messages(s("ERROR")).size();
                });
        QCOMPARE(Outcome(inbound).run(), Task::Ok);
        QCOMPARE(files, QStringList({s("a.tif"), s("b.tif")}));
        QCOMPARE(loggedBefore, 0); // the list is emitted first, then the error is logged
        QCOMPARE(log.messages(s("ERROR")).size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestTasks)
#include "tst_tasks.moc"
