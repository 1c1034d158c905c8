// Every operation on the wire, and how each reply and each failure ends.

#include "attach.h"
#include "faxentry.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "scriptedserver.h"
#include "taskkit.h"
#include "tasks/taskabort.h"
#include "tasks/taskcheckpermissions.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetfaxuser.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "tasks/taskgetprinternames.h"
#include "tasks/taskgetquendrainfo.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskreschedule.h"
#include "tasks/taskschedule.h"
#include "tasks/taskverifylogin.h"
#include "testkit.h"

#include <QDomDocument>
#include <QMetaEnum>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QByteArray userXml = "<user><user_url>https://elsewhere/qdws/v1/users/7</user_url><name>Anna</name>"
                           "<default_cover_page_enabled>true</default_cover_page_enabled>"
                           "<default_cover_page_name>plain</default_cover_page_name></user>";

FaxUser anna()
{
    FaxUser user;
    QDomDocument document;
    document.setContent(userXml);
    user.readFax(document.documentElement(), 1);
    return user;
}

} // namespace

class TestTasks : public QObject
{
    Q_OBJECT

    struct Operation
    {
        Task::Type type;
        QByteArray sent; ///< Method and target.
        QByteArray signal;
        QByteArray good; ///< The content of a reply that ends in the done signal.
        bool authApart;  ///< Whether 401 is AuthError.
        QByteArray errorText;
        QByteArray request; ///< What the log says before the URL.
        QByteArray reply{}; ///< What it says before the body of a good reply; null: the body is not logged.
        QByteArray failed{"Reply:\r\n"}; ///< What it says before the body of a failed reply.
    };

    QList<Operation> operations() const
    {
        return {
            {Task::GetQuendraInfo, "GET /qdws/v1/about", SIGNAL(doneGetFaxInfo(QuendraInfo)),
             "<about><model>ABC40</model><version>3.6.1</version></about>", true,
             "taskgetquendrainfo.cpp TaskGetQuendraInfo: reply error! http code ",
             "TaskGetQuendraInfo request:\r\n", "TaskGetQuendraInfo reply:\r\n"},
            {Task::VerifyLogin, "GET /qdws/v1/verify", SIGNAL(doneVerifyLogin()),
             "<message>Verified</message>", true,
             "taskverifylogin.cpp TaskVerifyLogin: reschedule error! http code ",
             "TaskVerifyLogin request:\r\n"},
            {Task::GetFaxUser, "GET /qdws/v1/users/anna", SIGNAL(doneGetFaxUser(FaxUser)), userXml, false,
             "taskgetfaxuser.cpp TaskGetFaxUser: reply error! http code ", "TaskGetFaxUser request:\r\n",
             "TaskGetFaxUser reply:\r\n"},
            {Task::ModifyFaxUser, "PUT /qdws/v1/users/7", SIGNAL(doneModifyFaxUser(FaxUser)),
             "<message>Modified</message>", false,
             "taskmodifyfaxuser.cpp TaskModifyFaxUser: reply error! http code ",
             "TaskModifyFaxUser request:\r\n", "TaskModifyFaxUser reply:\r\n"},
            {Task::ChekPermissions, "GET /qdws/v1/user_options", SIGNAL(doneCheckPermissions(unsigned int)),
             "<message>Success</message><user_options><add_global>true</add_global></user_options>", true,
             "taskcheckpermissions.cpp TaskChekPermissions: response permission error! http code ",
             "Request:\r\n", "TaskChekPermissions reply:\r\n"},
            {Task::Schedule, "POST /qdws/v1/ofax",
             SIGNAL(doneFaxSchedule(BaseFaxEntry::FaxEntriesPtrListPtr)),
             "<fax_entry><state>pending</state></fax_entry>", false,
             "taskschedule.cpp TaskSchedule: reschedule error! http code ", "TaskSchedule request:\r\n"},
            {Task::Abort, "DELETE /qdws/v1/ofax/12", SIGNAL(doneAbort()),
             "<message>Attempting Abort</message>", true, "taskabort.cpp TaskAbort: reply error! http code ",
             "TaskAbort request:\r\n", "TaskAbort reply:\r\n", ""},
            {Task::Reschedule, "PUT /qdws/v1/outbound_log/12?at=now", SIGNAL(doneReschedule()),
             "<message>Attempting reschedule</message>", true,
             "taskreschedule.cpp TaskReschedule: reschedule error! http code ",
             "TaskReschedule request:\r\n"},
            {Task::GetFaxEntry, "GET /qdws/v1/ofax",
             SIGNAL(doneGetFaxEntry(BaseFaxEntry::FaxEntriesPtrListPtr)), "<message>Success</message>", true,
             "taskgetfaxentry.cpp TaskGetFaxEntry: reply error! http code ", "TaskGetFaxEntry request:\r\n",
             "TaskGetFaxEntry reply:\r\n"},
            {Task::GetInboundFaxEntry, "GET /qdws/v1/inbound_log",
             SIGNAL(doneGetInboundFaxEntry(InboundFaxEntriesPtrListPtr)), "<message>Success</message>", true,
             "taskgetinboundfaxentry.cpp TaskGetInboundFaxEntry: reply error! http code ",
             "TaskGetInboundFaxEntry request:\r\n", "TaskGetInboundFaxEntry reply:\r\n",
             "TaskGetInboundFaxEntry reply:\r\n"},
            {Task::GetOutboundFaxEntry, "GET /qdws/v1/outbound_log",
             SIGNAL(doneGetFaxEntry(BaseFaxEntry::FaxEntriesPtrListPtr)), "<message>Success</message>", true,
             "taskgetoutboundfaxentry.cpp TaskGetOutboundFaxEntry: reply error! http code ",
             "TaskGetOutboundFaxEntry request:\r\n", "TaskGetOutboundFaxEntry reply:\r\n"},
            {Task::GetCoverPages, "GET /qdws/v1/data/cover_pages",
             SIGNAL(doneGetCoverPages(CoverPageListPtr)), "", false,
             "taskgetcoverpages.cpp TaskGetContactsOids: reply error! http code ",
             "TaskGetCoverPages request:\r\n", "TaskGetCoverPages reply:\r\n"},
            {Task::GetPrinterNames, "GET /qdws/v1/data/printer_names",
             SIGNAL(doneGetPrinterNames(QStringListPtr)), "", false,
             "taskgetprinternames.cpp TaskGetPrinterNames: reply error! http code ",
             "TaskGetPrinterNames request:\r\n", "TaskGetPrinterNames reply:\r\n"},
        };
    }

    Operation operation(Task::Type type) const
    {
        const QList<Operation> all = operations();
        for (const Operation& operation : all) {
            if (operation.type == type)
                return operation;
        }
        return {};
    }

    QByteArray doneSignal(Task::Type type) const { return operation(type).signal; }

    /// What an operation logs at DEBUG: its request, and after it the body of the reply where it does.
    QStringList debugLines(const ScriptedServer& wire, Task::Type type, const QByteArray& answer,
                           int networkError, bool parsed) const
    {
        const Operation operation = this->operation(type);
        const QByteArray file = operation.errorText.left(operation.errorText.indexOf(' ') + 1);
        const QByteArray body = answer.mid(answer.indexOf("\r\n\r\n") + 4);
        QList<QByteArray> lines{file + operation.request + "http://anna@" + wire.address().toLatin1() +
                                wire.requests().first().target};
        const bool waitsForParsing = type == Task::ChekPermissions;
        if (networkError != 0 && !operation.failed.isEmpty())
            lines << file + operation.failed + body;
        else if (networkError == 0 && !operation.reply.isEmpty() && (parsed || !waitsForParsing))
            lines << file + operation.reply + body;
        QStringList texts;
        for (const QByteArray& line : qAsConst(lines))
            texts << QString::fromUtf8(line);
        return texts;
    }

    /// A task with parameters that let it be sent.
    Task* prepared(FaxServer& server, Task::Type type)
    {
        Task* task = server.addTask(type);
        const QUrl entry(QStringLiteral("http://elsewhere:9/qdws/v1/ofax/12"));
        if (auto* user = qobject_cast<TaskGetFaxUser*>(task))
            user->setUser(QStringLiteral("anna"));
        if (auto* modify = qobject_cast<TaskModifyFaxUser*>(task))
            modify->setUser(anna());
        if (auto* abort = qobject_cast<TaskAbort*>(task))
            abort->setFaxEntryUrl(entry);
        if (auto* reschedule = qobject_cast<TaskReschedule*>(task))
            reschedule->setFaxEntryUrl(entry);
        if (auto* schedule = qobject_cast<TaskSchedule*>(task))
            schedule->setFaxDocument(document());
        if (auto* queue = qobject_cast<TaskGetFaxEntry*>(task))
            queue->setTaskEntryType(TaskGetFaxEntry::EntryQueue);
        return task;
    }

    /// A fax to one recipient with one attachment.
    FaxDocument document(const QByteArray& attachment = "%PDF-1.4 nothing")
    {
        QFile file(m_folder.filePath(QStringLiteral("attachment")));
        file.open(QIODevice::WriteOnly);
        file.write(attachment);
        file.close();

        Contact recipient;
        recipient.setName(QStringLiteral("Bob & <Co>"));
        recipient.setFax(QStringLiteral("555"));
        DiskDataProvider data;
        data.setFileName(file.fileName());
        Content content;
        content.setType(Content::Pdf);
        content.setData(data);
        Attach attach;
        attach.setLocation(Attach::Inline);
        attach.setName(QStringLiteral("offer.pdf"));
        attach.setContent(content);
        FaxDocument fax;
        fax.recipients().addContact(recipient);
        fax.attachs().append(attach);
        return fax;
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    void operationEnds_data();
    void operationEnds();
    void content_data();
    void content();
    void limits_data();
    void limits();
    void addresses_data();
    void addresses();
    void credentials();
    void tls();
    void sentOnce_data();
    void sentOnce();
    void hostile_data();
    void hostile();
    void largeAttachment();
    void fixAmp_data();
    void fixAmp();
    void nothingToSend();
    void entriesOfASubmission();
    void userDocument();
    void entriesOfALog();
    void deletedFromASlot_data();
    void deletedFromASlot();
};

void TestTasks::operationEnds_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status"); // 0: the done signal
    QTest::addColumn<QStringList>("errors");

    const QByteArray about = "<about><model>m</model></about>";
    const QList<Operation> all = operations();
    for (const Operation& operation : all) {
        const QByteArray name = QMetaEnum::fromType<Task::Type>().valueToKey(operation.type);
        const auto row = [&](const char* fault, const QByteArray& answer, int status,
                             const QStringList& errors) {
            QTest::newRow((name + ", " + fault).constData())
                << int(operation.type) << answer << status << errors;
        };
        const auto netError = [&](int number) {
            const bool stop =
                operation.type == Task::GetCoverPages || operation.type == Task::GetPrinterNames;
            return QStringList{QString::fromLatin1(operation.errorText) + QString::number(number) +
                               (stop ? QStringLiteral(".") : QString())};
        };
        row("good", okReply(operation.good), 0, {});
        row("not XML", ScriptedServer::reply("<reply><message>Succ"), Task::InvalidReply, {});
        row("HTML", ScriptedServer::reply("<html><p>Welcome<br></html>"), Task::InvalidReply, {});
        row("empty", ScriptedServer::reply(""), Task::InvalidReply, {});
        row("401", ScriptedServer::reply("", "401 Unauthorized", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
            operation.authApart ? Task::AuthError : Task::Error, netError(204));
        row("403", ScriptedServer::reply("", "403 Forbidden"), Task::Error, netError(201));
        row("404", ScriptedServer::reply("<gone/>", "404 Not Found"), Task::Error, netError(203));
        row("500", ScriptedServer::reply("", "500 Oops"), Task::Error, netError(401));
        row("402", ScriptedServer::reply("", "402 Pay first"),
            operation.type == Task::Schedule ? Task::InvalidReply : Task::Error, netError(299));
    }
}

void TestTasks::operationEnds()
{
    QFETCH(int, type);
    QFETCH(QByteArray, answer);
    QFETCH(int, status);
    QFETCH(QStringList, errors);

    ScriptedServer wire;
    wire.setAnswer(answer);
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    TestLog log;
    Outcome outcome(prepared(server, Task::Type(type)), doneSignal(Task::Type(type)));
    int loggedBefore = -1;
    connect(outcome.task, &Task::errorExecute, this, [&](Task::Status said) {
        loggedBefore = log.messages(QStringLiteral("ERROR")).size();
        QCOMPARE(server.lastStatus(), said); // the bookkeeping comes first
    });
    QCOMPARE(int(outcome.task->type()), type);
    outcome.task->execute();
    outcome.task->execute(); // a task sends at most once
    QTRY_VERIFY(!outcome.task);

    QCOMPARE(wire.requests().size(), 1); // and credentials are not tried again after 401
    const WireRequest& request = wire.requests().first();
    QCOMPARE(request.method + ' ' + request.target, operation(Task::Type(type)).sent);
    QCOMPARE(request.header("Content-Type"), QByteArray("application/xml"));
    const QByteArray credentials = QByteArray("anna:se:cret").toBase64();
    QCOMPARE(request.header("Authorization"), "Basic " + credentials);
    QCOMPARE(request.header("Host"), wire.address().toLatin1());
    QVERIFY(!log.text().contains(QLatin1String("se:cret")));
    QVERIFY(!log.text().contains(QLatin1String(credentials)));

    QCOMPARE(outcome.done, status ? 0 : 1);
    QCOMPARE(outcome.errors, status ? QList<Task::Status>{Task::Status(status)} : QList<Task::Status>());
    QCOMPARE(int(server.lastStatus()), status ? status : int(Task::Ok));
    // these two speak before they log
    if (!errors.isEmpty())
        QCOMPARE(loggedBefore, type == Task::Abort || type == Task::Reschedule ? 0 : 1);
    const bool parsed = status != Task::InvalidReply;
    QCOMPARE(log.messages(QStringLiteral("DEBUG")),
             debugLines(wire, Task::Type(type), answer, errors.isEmpty() ? 0 : 1, parsed));
    QCOMPARE(server.isConnected(), status == 0);
    QCOMPARE(log.messages(QStringLiteral("ERROR")), errors);
}

void TestTasks::content_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");

    const auto row = [](const char* name, Task::Type type, const QByteArray& content, int status,
                        const char* error = nullptr) {
        QTest::newRow(name) << int(type) << content << status << QString::fromLatin1(error);
    };
    row("about missing", Task::GetQuendraInfo, "<abaut/>", Task::Error);
    row("about without version", Task::GetQuendraInfo, "<about><model>m</model></about>", Task::Error);
    row("verified, any case", Task::VerifyLogin, "<message>vERIFIED</message>", 0);
    row("not verified", Task::VerifyLogin, "<message>NOT VERIFIED</message>", Task::AuthError);
    row("no verdict", Task::VerifyLogin, "", Task::AuthError);
    row("user missing", Task::GetFaxUser, "", Task::Error,
        "taskgetfaxuser.cpp TaskGetFaxUser: invalid reply!");
    row("user unreadable", Task::GetFaxUser, "<user><name>A</name></user>", Task::Error,
        "taskgetfaxuser.cpp TaskGetFaxUser: invalid reply!");
    row("modified, lower case", Task::ModifyFaxUser, "<message>modified</message>", Task::Error,
        "taskmodifyfaxuser.cpp TaskModifyFaxUser: invalid reply");
    row("options refused", Task::ChekPermissions, "<message>No</message>", Task::Error,
        "taskcheckpermissions.cpp TaskChekPermissions: response permission error! response: "
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><reply><message>No</message></reply>");
    row("options unreadable", Task::ChekPermissions, "<message>Success</message><user_options/>", Task::Error,
        "taskcheckpermissions.cpp TaskChekPermissions: can not parse user options");
    row("no entry", Task::Schedule, "<message>Success</message>", Task::InvalidReply,
        "taskschedule.cpp TaskSchedule: invalid reply.");
    row("entry too deep", Task::Schedule, "<entries><fax_entry/></entries>", Task::InvalidReply,
        "taskschedule.cpp TaskSchedule: invalid reply.");
    row("abort, lower case", Task::Abort, "<message>attempting abort</message>", Task::Error,
        "taskabort.cpp TaskAbort: invalid reply!");
    row("reschedule refused", Task::Reschedule, "<message>No</message>", Task::Error,
        "taskreschedule.cpp TaskReschedule: reschedule error! response: "
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><reply><message>No</message></reply>");
    // the logs report what they have and then complain
    row("queue, message missing", Task::GetFaxEntry, "<fax_entry/>", 0,
        "taskgetfaxentry.cpp TaskGetFaxEntry: contains invalid reply!");
    row("inbound, message wrong", Task::GetInboundFaxEntry, "<message>success</message>", 0,
        "taskgetinboundfaxentry.cpp TaskGetInboundFaxEntry: contains invalid reply!");
    row("outbound, message wrong", Task::GetOutboundFaxEntry, "<message>Failure</message>", 0,
        "taskgetoutboundfaxentry.cpp TaskGetOutboundFaxEntry: contains invalid reply!");
}

void TestTasks::content()
{
    QFETCH(int, type);
    QFETCH(QByteArray, content);
    QFETCH(int, status);
    QFETCH(QString, error);

    ScriptedServer wire;
    wire.setAnswer(okReply(content));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    TestLog log;
    Outcome outcome(prepared(server, Task::Type(type)), doneSignal(Task::Type(type)));
    outcome.task->execute();
    QTRY_VERIFY(!outcome.task);
    QCOMPARE(outcome.done, status ? 0 : 1);
    QCOMPARE(outcome.errors, status ? QList<Task::Status>{Task::Status(status)} : QList<Task::Status>());
    QCOMPARE(log.messages(QStringLiteral("ERROR")), error.isEmpty() ? QStringList() : QStringList{error});
}

void TestTasks::limits_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("entryType");
    QTest::addColumn<int>("limit");
    QTest::addColumn<QByteArray>("target");

    QTest::newRow("queue") << int(Task::GetFaxEntry) << 1 << 25
                           << QByteArray("/qdws/v1/ofax?complete_limit=25");
    QTest::newRow("status") << int(Task::GetFaxEntry) << 2 << 25
                            << QByteArray("/qdws/v1/outbound_status?pending_limit=25&sending_limit=25");
    QTest::newRow("status, all") << int(Task::GetFaxEntry) << 2 << 0
                                 << QByteArray("/qdws/v1/outbound_status");
    QTest::newRow("nothing valid") << int(Task::GetFaxEntry) << 0 << 25 << QByteArray("/");
    QTest::newRow("inbound") << int(Task::GetInboundFaxEntry) << 0 << 3
                             << QByteArray("/qdws/v1/inbound_log?index=0&limit=3");
    QTest::newRow("inbound, all") << int(Task::GetInboundFaxEntry) << 0 << -1
                                  << QByteArray("/qdws/v1/inbound_log");
    QTest::newRow("outbound") << int(Task::GetOutboundFaxEntry) << 0 << 3
                              << QByteArray("/qdws/v1/outbound_log?limit=3");
}

void TestTasks::limits()
{
    QFETCH(int, type);
    QFETCH(int, entryType);
    QFETCH(int, limit);
    QFETCH(QByteArray, target);

    ScriptedServer wire;
    wire.setAnswer(okReply("<message>Success</message>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Outcome outcome(server.addTask(Task::Type(type)), doneSignal(Task::Type(type)));
    if (auto* task = qobject_cast<TaskGetFaxEntry*>(outcome.task)) {
        task->setCompleteLimit(limit);
        task->setTaskEntryType(TaskGetFaxEntry::TaskEntryType(entryType));
    } else if (auto* task = qobject_cast<TaskGetInboundFaxEntry*>(outcome.task)) {
        task->setCompleteLimit(limit);
    } else if (auto* task = qobject_cast<TaskGetOutboundFaxEntry*>(outcome.task)) {
        task->setCompleteLimit(limit);
    }
    outcome.task->execute();
    QTRY_COMPARE(outcome.done, 1);
    QCOMPARE(wire.requests().first().target, target);
}

void TestTasks::addresses_data()
{
    QTest::addColumn<QString>("address"); // %1: the port of a server that listens
    QTest::addColumn<bool>("reached");

    QTest::newRow("name and port") << QStringLiteral("localhost:%1") << true;
    QTest::newRow("IPv4 and port") << QStringLiteral("127.0.0.1:%1") << true;
    QTest::newRow("with blanks around") << QStringLiteral(" 127.0.0.1:%1\t") << true;
    QTest::newRow("port not a number") << QStringLiteral("127.0.0.1:%1x") << false;
    QTest::newRow("port too large") << QStringLiteral("127.0.0.1:1%1%1") << false;
    QTest::newRow("port 0") << QStringLiteral("127.0.0.1:0") << false;
    QTest::newRow("port empty") << QStringLiteral("127.0.0.1:") << false;
    QTest::newRow("port negative") << QStringLiteral("127.0.0.1:-%1") << false;
    QTest::newRow("with a path") << QStringLiteral("127.0.0.1:%1/x") << false;
    QTest::newRow("with a scheme") << QStringLiteral("http://127.0.0.1:%1") << false;
    QTest::newRow("with a user") << QStringLiteral("me@127.0.0.1:%1") << false;
    QTest::newRow("IPv6 without its end") << QStringLiteral("[::1:%1") << false;
    QTest::newRow("not quite IPv6") << QStringLiteral("[::g]:%1") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("a sentence") << QStringLiteral("my fax server") << false;
}

void TestTasks::addresses()
{
    QFETCH(QString, address);
    QFETCH(bool, reached);

    ScriptedServer wire;
    wire.setAnswer(okReply("<message>Verified</message>"));
    FaxManager manager(noContacts);
    BareServer server(manager, address.replace(QLatin1String("%1"), QString::number(wire.serverPort())));
    Outcome outcome(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    outcome.task->execute();
    QCOMPARE(outcome.isOver(), false); // nonsense ends like a server that is not there, later
    QTRY_VERIFY(!outcome.task);
    QCOMPARE(outcome.done, reached ? 1 : 0);
    QCOMPARE(wire.requests().size(), reached ? 1 : 0);
    QCOMPARE(int(server.lastStatus()), int(reached ? Task::Ok : Task::Error));
}

void TestTasks::credentials()
{
    ScriptedServer wire;
    wire.setAnswer(okReply("<message>Verified</message>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    server.setLogin(QString());
    server.setPassword(QString());
    Outcome without(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    without.task->execute();
    QTRY_COMPARE(without.done, 1);
    QVERIFY(wire.requests().last().header("Authorization").isNull());

    // Latin-1, as the service takes it
    server.setLogin(QStringLiteral("j\u00f6rg"));
    server.setPassword(QStringLiteral("p\u00e4ss w@rd/%20"));
    Outcome with(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    with.task->execute();
    QTRY_COMPARE(with.done, 1);
    QCOMPARE(wire.requests().last().header("Authorization"),
             "Basic " + QByteArray("j\xf6rg:p\xe4ss w@rd/%20").toBase64());

    // a login with a slash and a blank is part of a path here
    Outcome user(server.addTask(Task::GetFaxUser), SIGNAL(doneGetFaxUser(FaxUser)));
    static_cast<TaskGetFaxUser*>(user.task.data())->setUser(QStringLiteral("a b/c"));
    user.task->execute();
    QTRY_VERIFY(user.isOver());
    QCOMPARE(wire.requests().last().target, QByteArray("/qdws/v1/users/a%20b/c"));
}

void TestTasks::tls()
{
    ScriptedServer wire(true);
    wire.setAnswer(okReply("<message>Verified</message>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address(), true);
    Outcome outcome(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    outcome.task->execute();
    QTRY_VERIFY(!outcome.task);
    QCOMPARE(outcome.done, 1);

    // the wrong protocol, both ways
    for (const bool secure : {false, true}) {
        ScriptedServer other(!secure);
        BareServer wrong(manager, other.address(), secure);
        Outcome failure(wrong.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
        failure.task->execute();
        QTRY_VERIFY_WITH_TIMEOUT(!failure.task, 20000);
        QCOMPARE(failure.errors, QList<Task::Status>{Task::Error});
    }
}

void TestTasks::sentOnce_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("hangUp");
    QTest::addColumn<bool>("reused");

    using HangUp = ScriptedServer::HangUp;
    for (const Task::Type type : {Task::Schedule, Task::ModifyFaxUser}) {
        for (const HangUp hangUp :
             {HangUp::AfterHead, HangUp::InsideBody, HangUp::AfterBody, HangUp::InsideReply}) {
            for (const bool reused : {false, true}) {
                QTest::addRow("%s, hang-up %d, %s connection",
                              QMetaEnum::fromType<Task::Type>().valueToKey(type), int(hangUp),
                              reused ? "reused" : "fresh")
                    << int(type) << int(hangUp) << reused;
            }
        }
    }
}

void TestTasks::sentOnce()
{
    QFETCH(int, type);
    QFETCH(int, hangUp);
    QFETCH(bool, reused);

    ScriptedServer wire;
    wire.setAnswer(okReply("<message>Verified</message>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    if (reused) {
        Outcome first(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
        first.task->execute();
        QTRY_COMPARE(first.done, 1);
    }
    wire.setHangUp(ScriptedServer::HangUp(hangUp));
    Outcome outcome(prepared(server, Task::Type(type)), doneSignal(Task::Type(type)));
    outcome.task->execute();
    QTRY_VERIFY(!outcome.task);
    QCOMPARE(outcome.done, 0);
    QCOMPARE(outcome.errors, QList<Task::Status>{Task::Error});
    // a second request, were there one, would come on a connection of its own; this one comes after it
    wire.setHangUp(ScriptedServer::HangUp::Never);
    Outcome after(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    after.task->execute();
    QTRY_COMPARE(after.done, 1);
    QCOMPARE(wire.requests().size(), reused ? 3 : 2);
}

void TestTasks::hostile_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");

    const int levels = 1000000;
    QTest::newRow("a million levels")
        << ScriptedServer::reply(QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels))
        << int(Task::InvalidReply);
    QTest::newRow("levels behind a quoted comment")
        << ScriptedServer::reply("<a b=\"<!--\">" + QByteArray("<a>").repeated(levels))
        << int(Task::InvalidReply);
    QTest::newRow("levels behind an entity that looks like a comment")
        << ScriptedServer::reply("<!DOCTYPE a [<!ENTITY x \"<!--\">]>" + QByteArray("<a>").repeated(levels))
        << int(Task::InvalidReply);
    QTest::newRow("many siblings are no depth")
        << okReply("<message>Verified</message>" +
                   QByteArray("<a x='>'/><b></b><!-- <c> --><![CDATA[<d>]]>").repeated(300))
        << 0;
    QTest::newRow("entities that grow")
        << ScriptedServer::reply(
               "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
               "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]><r><message>&c;</message></r>")
        << int(Task::InvalidReply);
    QTest::newRow("levels behind a parameter entity")
        << ScriptedServer::reply("<!DOCTYPE a [<!ENTITY % x \"<?p \"> %x; <!-- ?> ]>" +
                                 QByteArray("<a>").repeated(levels))
        << int(Task::InvalidReply);
    QTest::newRow("ends before the levels")
        << ScriptedServer::reply("<!DOCTYPE a [<!ENTITY % x \"<!--\"> %x; " +
                                 QByteArray("</a>").repeated(levels) + " --> ]>" +
                                 QByteArray("<a>").repeated(levels))
        << int(Task::InvalidReply);
    QTest::newRow("a document type of no more than a name")
        << ScriptedServer::reply("<!DOCTYPE r><r><message>Verified</message></r>") << 0;
    const auto deflated = [](const QByteArray& body) {
        return ScriptedServer::reply(qCompress(body, 1).mid(4), "200 OK", "Content-Encoding: deflate\r\n");
    };
    QTest::newRow("more elements than memory")
        << deflated("<r>" + QByteArray("<a/>").repeated(3000000) + "</r>") << int(Task::InvalidReply);
    QTest::newRow("more attributes than memory")
        << deflated("<r " + QByteArray("a=''").repeated(3000000) + "/>") << int(Task::InvalidReply);
    QTest::newRow("nothing but ampersands")
        << deflated(QByteArray(20 * 1024 * 1024, '&')) << int(Task::InvalidReply);
    QTest::newRow("redirect elsewhere")
        << ScriptedServer::reply("", "302 Found", "Location: http://127.0.0.2:9/\r\n")
        << int(Task::InvalidReply);
    // 300 MB of blanks in 300 kB
    QByteArray bomb = qCompress(QByteArray(300 * 1024 * 1024, ' '), 1).mid(4);
    QTest::newRow("a bomb") << ScriptedServer::reply(bomb, "200 OK", "Content-Encoding: deflate\r\n")
                            << int(Task::Error);
}

void TestTasks::hostile()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, status);

    ScriptedServer wire;
    wire.setAnswer(answer);
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Outcome outcome(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    outcome.task->execute();
    QTRY_VERIFY_WITH_TIMEOUT(!outcome.task, 30000);
    QCOMPARE(outcome.errors, status ? QList<Task::Status>{Task::Status(status)} : QList<Task::Status>());
    QCOMPARE(outcome.done, status ? 0 : 1);
}

void TestTasks::largeAttachment()
{
    // texts that could be mistaken for what stands in for the file's bytes
    QByteArray bytes;
    for (int i = 0; i < 3 * 1024 * 1024; ++i)
        bytes.append(char((i * 131) ^ (i >> 7)));
    FaxDocument fax = document(bytes);
    fax.attachs().append(fax.attachs().first());
    CoverPage cover;
    cover.setSubject(QStringLiteral("<content>x</content> & 'quotes'"));
    fax.setCoverPage(cover);

    ScriptedServer wire;
    wire.setAnswer(okReply("<fax_entry><state>pending</state></fax_entry>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Outcome outcome(server.addTask(Task::Schedule), doneSignal(Task::Schedule));
    static_cast<TaskSchedule*>(outcome.task.data())->setFaxDocument(fax);
    outcome.task->execute();
    QTRY_COMPARE(outcome.done, 1);

    // what the DOM itself would have written
    QDomDocument expected;
    expected.appendChild(expected.createProcessingInstruction(
        QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"utf-8\"")));
    QDomElement root = expected.createElement(QStringLiteral("schedule_fax"));
    expected.appendChild(root);
    QDomElement sender = expected.createElement(QStringLiteral("sender"));
    root.appendChild(sender);
    fax.renameDuplicateAttachments();
    server.user().writeFax(expected, sender, 1);
    fax.writeFax(expected, root, 1);
    fax.faxSchedule().writeFax(expected, root, 1);
    QVERIFY(wire.requests().first().body == expected.toByteArray(1));
}

void TestTasks::fixAmp_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("fixed");

    const auto row = [](const char* data, const char* fixed) {
        QTest::newRow(data) << QByteArray(data) << QString::fromUtf8(fixed);
    };
    row("nothing", "nothing");
    row("Tom & Jerry &amp; co", "Tom &amp; Jerry &amp; co");
    row("&lt;&gt;&apos;&quot;&amp;", "&lt;&gt;&apos;&quot;&amp;");
    row("&&amp;&", "&amp;&amp;&amp;");
    row("&amp &AMP; &ampx;", "&amp;amp &amp;AMP; &amp;ampx;");
    row("&#65;", "&amp;#65;");
    row("\xc3\xbc & \xe2\x82\xac", "\xc3\xbc &amp; \xe2\x82\xac");
    row("", "");
}

void TestTasks::fixAmp()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, fixed);

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
    FaxManager manager(noContacts);
    BareServer server(manager, QString());
    Probe probe(server);
    QCOMPARE(probe.fixAmp(data), fixed);
}

void TestTasks::nothingToSend()
{
    ScriptedServer wire;
    wire.setAnswer(okReply(""));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());

    // no parameter: no request and no outcome
    for (const Task::Type type : {Task::ModifyFaxUser, Task::Abort, Task::Reschedule}) {
        Outcome silent(server.addTask(type), doneSignal(type));
        silent.task->execute();
        QVERIFY(!silent.isOver());
        QVERIFY(silent.task);
    }
    // a fax to nobody cannot be written
    Outcome nobody(server.addTask(Task::Schedule), doneSignal(Task::Schedule));
    nobody.task->execute();
    nobody.task->execute();
    QCOMPARE(nobody.errors, QList<Task::Status>{Task::InvalidReply});
    QTRY_VERIFY(!nobody.task);
    QCOMPARE(wire.requests().size(), 0);

    // the server goes first: its tasks go with it, silently
    auto* doomed = new BareServer(manager, wire.address());
    Outcome lost(doomed->addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    lost.task->execute();
    delete doomed;
    QVERIFY(!lost.task);
    QVERIFY(!lost.isOver());
}

void TestTasks::entriesOfASubmission()
{
    ScriptedServer wire;
    wire.setAnswer(
        okReply("<fax_entry><state>pending</state><fax_entry_url>http://h/qdws/v1/ofax/1</fax_entry_url>"
                "</fax_entry><other/><fax_entry><state>Sending</state></fax_entry>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    auto* task = static_cast<TaskSchedule*>(prepared(server, Task::Schedule));
    BaseFaxEntry::FaxEntriesPtrListPtr entries;
    connect(task, &TaskSchedule::doneFaxSchedule, this,
            [&entries](const BaseFaxEntry::FaxEntriesPtrListPtr& list) { entries = list; });
    task->execute();
    QTRY_VERIFY(entries);
    QCOMPARE(entries->size(), 2);
    QCOMPARE(int(entries->at(0)->state()), 2);
    QCOMPARE(entries->at(0)->entryUrl().path(), QStringLiteral("/qdws/v1/ofax/1"));
    QCOMPARE(int(entries->at(1)->state()), 3);

    // the time of a reschedule is UTC, its colons encoded
    auto* later = static_cast<TaskReschedule*>(server.addTask(Task::Reschedule));
    later->setFaxEntryUrl(entries->at(0)->entryUrl());
    later->setDateTime(QDateTime(QDate(2026, 11, 15), QTime(9, 5, 7), Qt::OffsetFromUTC, 3600));
    Outcome outcome(later, SIGNAL(doneReschedule()));
    later->execute();
    QTRY_VERIFY(outcome.isOver());
    QCOMPARE(wire.requests().last().target, QByteArray("/qdws/v1/outbound_log/1?at=2026-11-15T08%3A05%3A07"));
    QCOMPARE(wire.requests().last().body, QByteArray());
}

void TestTasks::userDocument()
{
    ScriptedServer wire;
    wire.setAnswer(okReply("<message>Modified</message>"));
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    QuendraInfo info;
    info.setModel(QStringLiteral("ABC40"));
    info.setVersion(QStringLiteral("3.2.7"));
    info.computeProtocolVersion();
    server.setInfo(info);
    Outcome outcome(prepared(server, Task::ModifyFaxUser), doneSignal(Task::ModifyFaxUser));
    outcome.task->execute();
    QTRY_COMPARE(outcome.done, 1);
    QCOMPARE(wire.requests().first().body,
             QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\"?><user>"
                        "<contact_url>http://elsewhere/qdws/v1/users/7</contact_url><name>Anna</name>"
                        "<default_cover_page_enabled>true</default_cover_page_enabled>"
                        "<default_cover_page_name>plain</default_cover_page_name><priority>3</priority>"
                        "<max_attempts>3</max_attempts><interval>300</interval><receipt>failure</receipt>"
                        "<receipt_attachment>pdf</receipt_attachment></user>"));
}

void TestTasks::entriesOfALog()
{
    ScriptedServer wire;
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    TestLog log;
    // a refusal that brings entries all the same
    wire.setAnswer(okReply("<message>Failure</message>"
                           "<inbound_fax_entry><filename>a.tif</filename></inbound_fax_entry><other/>"
                           "<inbound_fax_entry><filename>b.tif</filename></inbound_fax_entry>"));
    auto* inbound = static_cast<TaskGetInboundFaxEntry*>(server.addTask(Task::GetInboundFaxEntry));
    QStringList files;
    int loggedBefore = -1;
    connect(inbound, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry, this,
            [&](const InboundFaxEntriesPtrListPtr& entries) {
                for (const auto& entry : *entries)
                    files << entry->filename();
                loggedBefore = log.messages(QStringLiteral("ERROR")).size();
            });
    inbound->execute();
    QTRY_COMPARE(files, QStringList({QStringLiteral("a.tif"), QStringLiteral("b.tif")}));
    QCOMPARE(loggedBefore, 0); // the list first, then the complaint
    QCOMPARE(log.messages(QStringLiteral("ERROR")).size(), 1);

    wire.setAnswer(okReply("<file><enabled>true</enabled><name>a</name></file><file><name>b</name></file>"
                           "<file><enabled>false</enabled></file>"));
    auto* pages = static_cast<TaskGetCoverPages*>(server.addTask(Task::GetCoverPages));
    QStringList names;
    connect(pages, &TaskGetCoverPages::doneGetCoverPages, this, [&names](const CoverPageListPtr& list) {
        for (const CoverPage& page : *list)
            names << page.name();
    });
    pages->execute();
    QTRY_COMPARE(names, QStringList({QStringLiteral("a"), QString()}));
}

void TestTasks::deletedFromASlot_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("good");
    QTest::addColumn<bool>("wholeManager");

    const QList<Operation> all = operations();
    for (const Operation& operation : all) {
        for (const bool good : {false, true}) {
            for (const bool wholeManager : {false, true}) {
                QTest::addRow("%s, %s, %s", QMetaEnum::fromType<Task::Type>().valueToKey(operation.type),
                              good ? "done" : "401", wholeManager ? "manager" : "server")
                    << int(operation.type) << good << wholeManager;
            }
        }
    }
}

void TestTasks::deletedFromASlot()
{
    QFETCH(int, type);
    QFETCH(bool, good);
    QFETCH(bool, wholeManager);

    // whoever hears the outcome, or what the server makes of it, may end the server or the manager at once
    const TestLog log;
    for (const bool fromServer : {false, true}) {
        ScriptedServer wire;
        wire.setAnswer(good ? okReply(operation(Task::Type(type)).good)
                            : ScriptedServer::reply("", "401 No"));
        QPointer<FaxManager> manager = new FaxManager(noContacts);
        QPointer<BareServer> server = new BareServer(*manager, wire.address());
        const auto end = [&] {
            if (wholeManager)
                delete manager;
            else
                delete server;
        };
        Outcome outcome(prepared(*server, Task::Type(type)), doneSignal(Task::Type(type)));
        if (fromServer)
            connect(server, &FaxServer::changedConnected, this, end);
        else
            outcome.onOver = end;
        outcome.task->execute();
        QTRY_VERIFY(!server);
        QVERIFY(!outcome.task);
        delete manager;
    }
}

QTEST_GUILESS_MAIN(TestTasks)
#include "tst_tasks.moc"
