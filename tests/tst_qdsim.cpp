#include "simwire.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>

#include <csignal>
#include <mutex>

namespace {

/// A submission in which every element that there is occurs.
QByteArray fullFax()
{
    return declared(
        "\n<schedule_fax>\n <sender>\n"
        "  <contact_url>http://fax/qdws/v1/users/alice</contact_url>\n  <username>alice</username>\n"
        "  <name>Alice &amp; Co</name>\n  <email_address>a@example.com</email_address>\n"
        "  <phone_number>1</phone_number>\n  <fax_number>2</fax_number>\n  <organization>O</organization>\n"
        "  <default_cover_page_enabled>true</default_cover_page_enabled>\n"
        "  <default_cover_page_name/>\n"
        "  <priority>3</priority>\n  <max_attempts>3</max_attempts>\n  <interval>300</interval>\n"
        "  <receipt>failure</receipt>\n  <receipt_attachment>pdf</receipt_attachment>\n"
        "  <print_receipt>never</print_receipt>\n  <print_receipt_printer></print_receipt_printer>\n"
        "  <print_receipt_first>false</print_receipt_first>\n  <fax_page_size>auto</fax_page_size>\n"
        " </sender>\n"
        " <cover_page>\n  <enabled>true</enabled>\n  <name>Standard</name>\n  <type>system</type>\n"
        "  <url>http://fax/c</url>\n  <subject>S</subject>\n  <comments>C</comments>\n </cover_page>\n"
        " <recipient>\n  <name>Bob</name>\n  <fax_number>100</fax_number>\n </recipient>\n"
        " <recipient>\n  <fax_number>200</fax_number>\n </recipient>\n"
        " <attachment>\n  <location>inline</location>\n  <name>a.txt</name>\n"
        "  <content_type>text/plain</content_type>\n"
        "  <content_transfer_encoding>base64</content_transfer_encoding>\n"
        "  <content>aGVsbG8=</content>\n </attachment>\n"
        " <attachment>\n  <location>external</location>\n  <url>http://x/y.pdf</url>\n </attachment>\n"
        " <schedule_all_at>2031-02-03T04:05:06</schedule_all_at>\n <priority>5</priority>\n"
        " <max_tries>1</max_tries>\n <try_interval>60</try_interval>\n <receipt>always</receipt>\n"
        " <receipt_attachment>tiff</receipt_attachment>\n <print_receipt>failure</print_receipt>\n"
        " <print_receipt_printer>Archive</print_receipt_printer>\n"
        " <print_receipt_first>true</print_receipt_first>\n <fax_page_size>a4</fax_page_size>\n"
        "</schedule_fax>\n");
}

QByteArray attachment(const QByteArray& name, const QByteArray& content)
{
    return " <attachment>\n  <location>inline</location>\n  <name>" + name +
           "</name>\n  <content_type>text/plain</content_type>\n"
           "  <content_transfer_encoding>base64</content_transfer_encoding>\n  <content>" +
           content.toBase64() + "</content>\n </attachment>\n";
}

/// A submission as short as can be, to these numbers.
QByteArray shortFax(const QByteArrayList& numbers, const QByteArray& attachments = QByteArray(),
                    const QByteArray& options = QByteArray())
{
    QByteArray recipients;
    for (const QByteArray& number : numbers)
        recipients += " <recipient>\n  <fax_number>" + number + "</fax_number>\n </recipient>\n";
    return declared("\n<schedule_fax>\n <sender>\n"
                    "  <default_cover_page_enabled>false</default_cover_page_enabled>\n"
                    "  <default_cover_page_name></default_cover_page_name>\n </sender>\n"
                    " <cover_page>\n  <enabled>false</enabled>\n </cover_page>\n" +
                    recipients + attachments + options + "</schedule_fax>\n");
}

QByteArray fullProfile()
{
    return declared(
        "<user><contact_url>http://fax/qdws/v1/users/alice</contact_url><username>alice</username>"
        "<name>A</name><email_address>e</email_address><phone_number>1</phone_number>"
        "<fax_number>2</fax_number><organization>O</organization>"
        "<default_cover_page_enabled>true</default_cover_page_enabled>"
        "<default_cover_page_name>Urgent</default_cover_page_name><priority>0</priority>"
        "<max_attempts>7</max_attempts><interval>20</interval><receipt>always</receipt>"
        "<receipt_attachment>none</receipt_attachment><print_receipt>always</print_receipt>"
        "<print_receipt_printer>Archive</print_receipt_printer>"
        "<print_receipt_first>true</print_receipt_first><fax_page_size>legal</fax_page_size></user>");
}

SimUser someUser(const char* text)
{
    SimUser user;
    QString error;
    SimUser::parse(QString::fromLatin1(text), &user, &error);
    return user;
}

/// Two users, a clock that only the test moves, faxes to numbers with 999 fail.
SimOptions steppedOptions()
{
    SimOptions options;
    options.manualClock = true;
    options.failPattern = QStringLiteral("999");
    options.users = {someUser("alice:secret:global"), someUser("bob:word"), someUser("root:r:admin"),
                     someUser("mute:m:nosend")};
    return options;
}

/// The states of all faxes, oldest first.
QString states(const SimServer& server)
{
    QStringList states;
    for (const SimFax& fax : server.faxes())
        states.append(fax.state);
    return states.join(QLatin1Char(' '));
}

} // namespace

class TestQdsim : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void answersEveryRoute_data();
    void answersEveryRoute();
    void refusesRequests_data();
    void refusesRequests();
    void refusesSubmissions_data();
    void refusesSubmissions();
    void knowsWhatItsVersionCanDo_data();
    void knowsWhatItsVersionCanDo();
    void keepsProfiles();
    void keepsRequestsByteForByte();
    void asksForCredentials();
    void movesFaxesThroughTheirStates();
    void retriesBeforeItFails();
    void waitsForAFutureTime();
    void abortsAndReschedules();
    void storesAttachmentsUnderSafeNames();
    void takesLargeDocuments();
    void showsFaxesOnlyToTheirSender();
    void causesTrouble_data();
    void causesTrouble();
    void choosesWhatGoesWrong();
    void refusesUnknownFaults_data();
    void refusesUnknownFaults();
    void speaksTls();
    void logsWhatIsNoRequest_data();
    void logsWhatIsNoRequest();
    void servesManyConnections();
    void stopsAtOnce();
    void listensOnIpv6();
    void refusesAPortInUse();
    void remembersItsState();
    void refusesADamagedState();
    void runsAsAProgram();
};

void TestQdsim::answersEveryRoute_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("message");
    const auto row = [](const char* method, const char* target, const char* message,
                        const QByteArray& body = {}) {
        QTest::addRow("%s %s", method, target)
            << QByteArray(method) << QByteArray(target) << body << QString::fromLatin1(message);
    };
    row("GET", "/qdws/v1/about", "");
    row("GET", "/qdws/v1/verify", "VERIFIED");
    row("GET", "/qdws/v1/user_options", "Success");
    row("GET", "/qdws/v1/users/alice", "Success");
    row("PUT", "/qdws/v1/users/alice", "Modified", fullProfile());
    row("POST", "/qdws/v1/ofax", "Success", fullFax());
    row("GET", "/qdws/v1/ofax", "Success");
    row("GET", "/qdws/v1/ofax?complete_limit=3", "Success");
    row("GET", "/qdws/v1/ofax/1", "Success");
    row("PUT", "/qdws/v1/outbound_log/1?at=now", "Attempting reschedule", "");
    row("PUT", "/qdws/v1/outbound_log/1?at=2031-11-15T14%3A30%3A00", "Attempting reschedule", "");
    row("DELETE", "/qdws/v1/ofax/1", "Attempting Abort");
    row("GET", "/qdws/v1/outbound_status", "Success");
    row("GET", "/qdws/v1/outbound_status?pending_limit=25&sending_limit=25", "Success");
    row("GET", "/qdws/v1/outbound_log?limit=5", "Success");
    row("GET", "/qdws/v1/inbound_log?index=0&limit=5", "Success");
    row("GET", "/qdws/v1/data/cover_pages", "Success");
    row("GET", "/qdws/v1/data/printer_names", "Success");
}

void TestQdsim::answersEveryRoute()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, body);
    QFETCH(QString, message);
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    QCOMPARE(Wire("POST", "/qdws/v1/ofax", shortFax({"5"})).send(server).status, 200);
    const Wire::Answer answer = Wire(method, target, body).send(server);
    QCOMPARE(server.refusals(), QStringList());
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.text("message"), message);
    QVERIFY(answer.body.startsWith("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<reply>"));
}

void TestQdsim::refusesRequests_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("reason");
    const QByteArray xml = QByteArrayLiteral("application/xml");
    const auto row = [](const char* name, const char* method, const char* target, const QByteArray& body,
                        const QByteArray& type, int status, const char* reason) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(target) << body << type << status
                            << QString::fromLatin1(reason);
    };
    row("root", "GET", "/", {}, xml, 404, "no such path");
    row("other version", "GET", "/qdws/v2/about", {}, xml, 404, "no such path");
    row("slash too much", "GET", "/qdws/v1/about/", {}, xml, 404, "no such path");
    row("wrong method", "POST", "/qdws/v1/about", "", xml, 405, "POST");
    row("user without name", "GET", "/qdws/v1/users/", {}, xml, 404, "no such path");
    row("unknown user", "GET", "/qdws/v1/users/nobody", {}, xml, 403, "somebody else");
    row("somebody else", "PUT", "/qdws/v1/users/bob",
        QByteArray(fullProfile()).replace("users/alice", "users/bob").replace(">alice<", ">bob<"), xml, 403,
        "somebody else");
    row("no content type", "GET", "/qdws/v1/about", {}, {}, 415, "content type");
    row("content type with charset", "GET", "/qdws/v1/verify", {}, xml + "; charset=utf-8", 415,
        "content type");
    row("delete without content type", "DELETE", "/qdws/v1/ofax/1", {}, {}, 415, "content type");
    row("body of a get", "GET", "/qdws/v1/about", "x", xml, 400, "a body");
    row("body of a reschedule", "PUT", "/qdws/v1/outbound_log/1?at=now", "x", xml, 400, "a body");
    row("query where none is", "GET", "/qdws/v1/about?a=b", {}, xml, 400, "a query");
    row("empty query", "GET", "/qdws/v1/ofax?", {}, xml, 400, "empty query");
    row("limit 0", "GET", "/qdws/v1/ofax?complete_limit=0", {}, xml, 400, "query");
    row("two limits", "GET", "/qdws/v1/outbound_status?pending_limit=2&sending_limit=3", {}, xml, 400,
        "query");
    row("limits in other order", "GET", "/qdws/v1/inbound_log?limit=2&index=0", {}, xml, 400, "query");
    row("reschedule without time", "PUT", "/qdws/v1/outbound_log/1", "", xml, 400, "query");
    row("colons not escaped", "PUT", "/qdws/v1/outbound_log/1?at=2031-11-15T14:30:00", "", xml, 400, "query");
    row("no such day", "PUT", "/qdws/v1/outbound_log/1?at=2031-02-30T14%3A30%3A00", "", xml, 400, "no date");
    row("no such fax", "DELETE", "/qdws/v1/ofax/77", {}, xml, 404, "no fax");
    row("fax that is no number", "GET", "/qdws/v1/ofax/one", {}, xml, 404, "no fax");
    row("no declaration", "PUT", "/qdws/v1/users/alice", QByteArray(fullProfile()).remove(0, 38), xml, 400,
        "does not begin");
    row("other declaration", "PUT", "/qdws/v1/users/alice",
        QByteArray(fullProfile()).replace("utf-8", "UTF-8"), xml, 400, "does not begin");
    row("profile on two lines", "PUT", "/qdws/v1/users/alice",
        QByteArray(fullProfile()).replace("<name>", "\n<name>"), xml, 400, "one line");
    row("other document", "PUT", "/qdws/v1/users/alice", declared("<contact></contact>"), xml, 400,
        "not \"user\"");
    row("not xml", "PUT", "/qdws/v1/users/alice", declared("<user><name>A & B</name></user>"), xml, 400,
        "line 1");
    row("not utf-8", "PUT", "/qdws/v1/users/alice", QByteArray(fullProfile()).replace(">A<", ">\xe4<"), xml,
        400, "UTF-8");
    row("profile of another address", "PUT", "/qdws/v1/users/alice",
        QByteArray(fullProfile()).replace("users/alice", "users/x"), xml, 400, "address");
    row("profile of another name", "PUT", "/qdws/v1/users/alice",
        QByteArray(fullProfile()).replace(">alice<", ">eve<"), xml, 400, "name");
    row("profile without cover page", "PUT", "/qdws/v1/users/alice",
        QByteArray(fullProfile()).replace("<default_cover_page_name>Urgent</default_cover_page_name>", ""),
        xml, 400, "default_cover_page_name");
    row("submission on one line", "POST", "/qdws/v1/ofax", QByteArray(fullFax()).replace("\n", ""), xml, 400,
        "indented");
    row("submission without indentation", "POST", "/qdws/v1/ofax", QByteArray(fullFax()).replace("\n ", "\n"),
        xml, 400, "indented");
}

void TestQdsim::refusesRequests()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, contentType);
    QFETCH(int, status);
    QFETCH(QString, reason);
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    Wire("POST", "/qdws/v1/ofax", shortFax({"5"})).send(server);
    Wire wire(method, target, body);
    wire.contentType = contentType;
    const Wire::Answer answer = wire.send(server);
    QCOMPARE(answer.status, status);
    QCOMPARE(server.refusals().size(), 1);
    QVERIFY2(server.refusals().first().contains(reason), qPrintable(server.refusals().first()));
    QCOMPARE(server.faxes().size(), 1);
    QCOMPARE(server.faxes().first().state, QStringLiteral("pending"));
}

void TestQdsim::refusesSubmissions_data()
{
    QTest::addColumn<QByteArray>("part"); // of the full submission
    QTest::addColumn<QByteArray>("replacement");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const char* part, const char* replacement, const char* reason) {
        QTest::newRow(name) << QByteArray(part) << QByteArray(replacement) << QString::fromLatin1(reason);
    };
    row("no sender", " <sender>", " <from>", "line");
    row("attribute", "<sender>", "<sender kind=\"a\">", "attributes");
    row("comment", " <cover_page>", " <!-- c --> <cover_page>", "besides texts");
    row("text beside elements", " <cover_page>", " hello <cover_page>", "text beside");
    row("something behind", "</schedule_fax>", "</schedule_fax><!-- end -->", "besides the document");
    row("empty field of a contact", "<name>Bob</name>", "<name></name>", "left out");
    row("contact out of order", "<name>Bob</name>\n  <fax_number>100</fax_number>",
        "<fax_number>100</fax_number>\n  <name>Bob</name>", "out of order");
    row("https address", "http://fax/qdws", "https://fax/qdws", "https");
    row("capital boolean", "<default_cover_page_enabled>true", "<default_cover_page_enabled>True",
        "none of true, false");
    row("sender's defaults incomplete", "  <interval>300</interval>\n", "", "\"interval\" expected");
    row("cover page without enabled", "  <enabled>true</enabled>\n", "", "\"enabled\" expected");
    row("empty subject", "<subject>S</subject>", "<subject/>", "left out");
    row("cover page behind recipients", "</recipient>\n <attachment>",
        "</recipient>\n <cover_page></cover_page>\n <attachment>", "out of order");
    row("unknown location", "<location>inline<", "<location>inside<", "none of inline, external");
    row("attachment without name", "  <name>a.txt</name>\n", "", "\"name\" expected");
    row("unknown type", "text/plain", "text/html", "content_type");
    row("other encoding", ">base64<", ">8bit<", "base64");
    row("line break in content", "aGVsbG8=", "aGVs\nbG8=", "base64");
    row("content not padded", "aGVsbG8=", "aGVsbG8", "base64");
    row("empty content", "aGVsbG8=", "", "base64");
    row("external with name", "<location>external</location>\n",
        "<location>external</location>\n  <name>y</name>\n", "\"url\" expected");
    row("no date", "2031-02-03T04:05:06", "2031-02-03 04:05:06", "schedule_all_at");
    row("date with zone", "2031-02-03T04:05:06", "2031-02-03T04:05:06Z", "schedule_all_at");
    row("priority too high", " <priority>5<", " <priority>6<", "0 to 5");
    row("priority with a sign", " <priority>5<", " <priority>+5<", "0 to 5");
    row("default priority", " <priority>5<", " <priority>3<", "default");
    row("default tries", "<max_tries>1<", "<max_tries>3<", "default");
    row("default receipt", "<receipt>always<", "<receipt>failure<", "default");
    row("capital receipt", "<receipt>always<", "<receipt>Always<", "none of always");
    row("options out of order", " <receipt>always</receipt>\n <receipt_attachment>tiff</receipt_attachment>",
        " <receipt_attachment>tiff</receipt_attachment>\n <receipt>always</receipt>", "out of order");
    row("first page not true", "<print_receipt_first>true<", "<print_receipt_first>false<", "only ever");
    row("unknown page size", "<fax_page_size>a4<", "<fax_page_size>a5<", "none of auto");
    row("option twice", " <fax_page_size>a4</fax_page_size>\n",
        " <fax_page_size>a4</fax_page_size>\n <fax_page_size>a4</fax_page_size>\n", "repeated");
}

void TestQdsim::refusesSubmissions()
{
    QFETCH(QByteArray, part);
    QFETCH(QByteArray, replacement);
    QFETCH(QString, reason);
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    QVERIFY(fullFax().contains(part));
    QByteArray body = fullFax();
    body.replace(body.indexOf(part), part.size(), replacement);
    QCOMPARE(Wire("POST", "/qdws/v1/ofax", body).send(server).status, 400);
    QVERIFY2(server.refusals().value(0).contains(reason), qPrintable(server.refusals().value(0)));
    QVERIFY(server.faxes().isEmpty());
}

void TestQdsim::knowsWhatItsVersionCanDo_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("defaults");
    QTest::addColumn<bool>("receipts");
    QTest::addColumn<bool>("pageSize");
    const auto row = [](const char* model, const char* version, bool defaults, bool receipts, bool pageSize) {
        QTest::addRow("%s %s", model, version)
            << QString::fromLatin1(model) << QString::fromLatin1(version) << defaults << receipts << pageSize;
    };
    row("ABC40X", "1.4", true, false, false);
    row("ABC40X", "1.3.9", false, false, false);
    row("ABC40X", "1", true, false, false);
    row("ABC41X", "3.6.1", false, true, true);
    row("ABC40X", "3.2.7-beta", true, false, false);
    row("ABC40X", "3.2.8", true, true, false);
    row("ABC40X", "3.2.10", true, false, false); // counts as 3.2.1
    row("ABC40X", "3.6", true, true, false);
}

void TestQdsim::knowsWhatItsVersionCanDo()
{
    QFETCH(QString, model);
    QFETCH(QString, version);
    QFETCH(bool, defaults);
    QFETCH(bool, receipts);
    QFETCH(bool, pageSize);
    SimOptions options;
    options.model = model;
    options.version = version;
    SimServer server(options);
    QVERIFY(server.start());
    const QByteArray user = Wire("GET", "/qdws/v1/users/alice").send(server).body;
    QCOMPARE(user.contains("<max_attempts>"), defaults);
    QCOMPARE(user.contains("<print_receipt>"), defaults && receipts);
    QCOMPARE(user.contains("<fax_page_size>"), defaults && pageSize);
    const auto statusWith = [&server](const QByteArray& option) {
        return Wire("POST", "/qdws/v1/ofax", shortFax({"5"}, {}, option)).send(server).status;
    };
    QCOMPARE(statusWith(" <print_receipt>always</print_receipt>\n"), receipts ? 200 : 400);
    QCOMPARE(statusWith(" <fax_page_size>auto</fax_page_size>\n"), pageSize ? 200 : 400);
    QCOMPARE(Wire("GET", "/qdws/v1/data/printer_names").send(server).status, receipts ? 200 : 404);
    const Wire::Answer about = Wire("GET", "/qdws/v1/about").send(server);
    QCOMPARE(about.text("model"), model);
    QCOMPARE(about.text("version"), version);
}

void TestQdsim::keepsProfiles()
{
    SimServer server;
    QVERIFY(server.start());
    QCOMPARE(Wire("PUT", "/qdws/v1/users/alice", fullProfile()).send(server).status, 200);
    const Wire::Answer answer = Wire("GET", "/qdws/v1/users/alice").send(server);
    QCOMPARE(answer.text("user_url"), server.url(QStringLiteral("/qdws/v1/users/alice")).toString());
    QByteArray expected = fullProfile().mid(fullProfile().indexOf("<name>"));
    expected.chop(7); // "</user>"
    QVERIFY2(answer.body.contains(expected), answer.body.constData());
    QCOMPARE(server.user(QStringLiteral("alice")).defaults.pageSize, QStringLiteral("legal"));
}

void TestQdsim::keepsRequestsByteForByte()
{
    SimOptions options;
    options.users = {someUser("a b+c/d:p%\xe4")};
    SimServer server(options);
    QVERIFY(server.start());
    Wire wire("GET", "/qdws/v1/users/a%20b+c/d");
    wire.credentials = "a b+c/d:p%\xe4";
    wire.moreHeaders = "X-Thing:  a%20b; c \r\nx-thing: 2\r\n";
    QCOMPARE(wire.send(server).status, 200);
    const SimRequest request =
        server.requests(QStringLiteral("GET"), QStringLiteral("/qdws/v1/users/")).value(0);
    const QByteArray sent = wire.bytes(server);
    QCOMPARE(request.rawHead, sent);
    QCOMPARE(request.target, wire.target);
    QCOMPARE(request.path, QStringLiteral("/qdws/v1/users/a b+c/d"));
    QCOMPARE(request.user, QStringLiteral("a b+c/d"));
    QCOMPARE(request.header("X-THING"), QByteArrayLiteral("a%20b; c"));
    QVERIFY(!request.hasHeader("Cookie"));

    Wire put("PUT", "/qdws/v1/users/x", QByteArray("\0\xff\r\n\r\nGET /", 11));
    put.send(server);
    QCOMPARE(server.requests(QStringLiteral("PUT")).value(0).body, put.body);
    QCOMPARE(server.requestCount(), 2);
    server.clearRequests();
    QCOMPARE(server.requestCount(), 0);
}

void TestQdsim::asksForCredentials()
{
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    const QByteArrayList wrong = {QByteArray(),   "alice:Secret",  "alice",
                                  "Alice:secret", "nobody:secret", "bob:"};
    for (const QByteArray& credentials : wrong) {
        Wire wire("GET", "/qdws/v1/verify");
        wire.credentials = credentials;
        const Wire::Answer answer = wire.send(server);
        QCOMPARE(answer.status, 401);
        QVERIFY(answer.head.contains("WWW-Authenticate: Basic realm=\"qdws\"\r\n"));
    }
    Wire lowerCase("GET", "/qdws/v1/verify");
    lowerCase.credentials = QByteArray();
    lowerCase.moreHeaders = "Authorization: basic " + QByteArray("alice:secret").toBase64() + "\r\n";
    QCOMPARE(lowerCase.send(server).status, 401);
    Wire mute("POST", "/qdws/v1/ofax", shortFax({"5"}));
    mute.credentials = "mute:m";
    QCOMPARE(mute.send(server).status, 403);
}

void TestQdsim::movesFaxesThroughTheirStates()
{
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    const Wire::Answer answer = Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2", "3"})).send(server);
    QCOMPARE(answer.count("fax_entry"), 3);
    QCOMPARE(answer.text("fax_entry_url"), server.url(QStringLiteral("/qdws/v1/ofax/1")).toString());
    QCOMPARE(states(server), QStringLiteral("pending pending pending"));
    QCOMPARE(Wire("GET", "/qdws/v1/outbound_status?pending_limit=2&sending_limit=2")
                 .send(server)
                 .count("fax_entry"),
             2);
    server.step(1000);
    QCOMPARE(states(server), QStringLiteral("sending sending sending"));
    QCOMPARE(Wire("GET", "/qdws/v1/outbound_log").send(server).count("outbound_fax_entry"), 0);
    server.step(1000);
    QCOMPARE(states(server), QStringLiteral("sent sent sent"));
    QCOMPARE(Wire("GET", "/qdws/v1/outbound_status").send(server).count("fax_entry"), 0);
    QCOMPARE(Wire("GET", "/qdws/v1/ofax").send(server).count("fax_entry"), 0);
    QCOMPARE(Wire("GET", "/qdws/v1/ofax?complete_limit=2").send(server).count("fax_entry"), 2);
    const Wire::Answer log = Wire("GET", "/qdws/v1/outbound_log?limit=1").send(server);
    QCOMPARE(log.count("outbound_fax_entry"), 1);
    QCOMPARE(log.text("recipient_fax"), QStringLiteral("3")); // the newest
    QCOMPARE(log.text("status"), QStringLiteral("sent"));
}

void TestQdsim::retriesBeforeItFails()
{
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    const QByteArray twice = " <max_tries>2</max_tries>\n <try_interval>10</try_interval>\n";
    Wire("POST", "/qdws/v1/ofax", shortFax({"0999"}, {}, twice)).send(server);
    server.step(1000 + 1000);
    QCOMPARE(states(server), QStringLiteral("pending"));
    QCOMPARE(server.faxes().first().tryNumber, 1);
    server.step(9999);
    QCOMPARE(states(server), QStringLiteral("pending"));
    server.step(1);
    QCOMPARE(states(server), QStringLiteral("sending"));
    server.step(1000);
    QCOMPARE(states(server), QStringLiteral("failed"));
    QCOMPARE(server.faxes().first().tryNumber, 2);
    QCOMPARE(Wire("GET", "/qdws/v1/outbound_log").send(server).text("status"), QStringLiteral("failed"));

    // One large step passes through everything that lies between, with the times it would have had.
    const qint64 begin = server.now();
    Wire("POST", "/qdws/v1/ofax", shortFax({"999"}, {}, twice)).send(server);
    server.step(3600000);
    QCOMPARE(server.faxes().last().state, QStringLiteral("failed"));
    QCOMPARE(server.faxes().last().endTime, begin + 1000 + 1000 + 10000 + 1000);
}

void TestQdsim::waitsForAFutureTime()
{
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    const QDateTime at = QDateTime::fromMSecsSinceEpoch(server.now() / 1000 * 1000, Qt::UTC).addSecs(7200);
    const QString text = at.toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    const QByteArray option = " <schedule_all_at>" + text.toLatin1() + "</schedule_all_at>\n";
    const Wire::Answer answer = Wire("POST", "/qdws/v1/ofax", shortFax({"1"}, {}, option)).send(server);
    QCOMPARE(answer.text("schedule_all_at"), text);
    server.step(at.toMSecsSinceEpoch() - server.now());
    QCOMPARE(states(server), QStringLiteral("pending"));
    server.step(1000);
    QCOMPARE(states(server), QStringLiteral("sending"));
}

void TestQdsim::abortsAndReschedules()
{
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2"})).send(server);
    QCOMPARE(Wire("PUT", "/qdws/v1/outbound_log/2?at=2099-01-01T00%3A00%3A00", "").send(server).status, 200);
    QCOMPARE(Wire("DELETE", "/qdws/v1/ofax/1").send(server).text("state"), QStringLiteral("aborted"));
    server.step(60000);
    QCOMPARE(states(server), QStringLiteral("aborted pending"));
    QCOMPARE(Wire("DELETE", "/qdws/v1/ofax/1").send(server).status, 409);
    QCOMPARE(Wire("PUT", "/qdws/v1/outbound_log/1?at=now", "").send(server).status, 409);
    QCOMPARE(Wire("PUT", "/qdws/v1/outbound_log/2?at=now", "").send(server).status, 200);
    server.step(2000);
    QCOMPARE(states(server), QStringLiteral("aborted sent"));
}

void TestQdsim::storesAttachmentsUnderSafeNames()
{
    QTemporaryDir folder;
    SimOptions options;
    options.spoolDir = folder.filePath(QStringLiteral("spool"));
    SimServer server(options);
    QVERIFY(server.start());
    const QByteArray longName = QByteArray(300, 'n') + ".txt";
    const QByteArrayList names = {"a.txt", "a.txt",    "../../b.txt", "/etc/passwd",
                                  "",      "c\\d.txt", "..",          longName};
    QByteArray attachments;
    for (int i = 0; i < names.size(); ++i)
        attachments += attachment(names[i], "content " + QByteArray::number(i));
    QCOMPARE(Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2"}, attachments)).send(server).status, 200);
    const QVector<SimAttachment> stored = server.attachments(2);
    QCOMPARE(stored.size(), names.size());
    QSet<QString> paths;
    for (int i = 0; i < stored.size(); ++i) {
        QCOMPARE(stored[i].name.toUtf8(), names[i]);
        QFile file(stored[i].path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), "content " + QByteArray::number(i));
        QCOMPARE(QFileInfo(file).canonicalPath(),
                 QFileInfo(folder.filePath(QStringLiteral("spool/1"))).canonicalFilePath());
        paths.insert(stored[i].path);
    }
    QCOMPARE(paths.size(), names.size());
    QCOMPARE(QFileInfo(stored[0].path).fileName(), QStringLiteral("a.txt"));
}

void TestQdsim::takesLargeDocuments()
{
    QTemporaryDir folder;
    SimOptions options;
    options.spoolDir = folder.path();
    SimServer server(options);
    QVERIFY(server.start());
    QByteArray document(100 << 20, '\0');
    for (int i = 0; i < document.size(); ++i)
        document[i] = static_cast<char>(i ^ (i >> 8) ^ (i >> 16));
    QCOMPARE(
        Wire("POST", "/qdws/v1/ofax", shortFax({"1"}, attachment("large.txt", document))).send(server).status,
        200);
    QFile file(server.attachments(1).value(0).path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll() == document);
    const SimRequest request = server.requests().value(0);
    QVERIFY(request.bodySize > document.size());
    QCOMPARE(request.body.size(), 1 << 20); // the rest is not kept
}

void TestQdsim::showsFaxesOnlyToTheirSender()
{
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    Wire("POST", "/qdws/v1/ofax", shortFax({"1"})).send(server);
    const auto as = [&server](const char* credentials, const char* method, const char* target) {
        Wire wire(method, target);
        wire.credentials = credentials;
        return wire.send(server);
    };
    QCOMPARE(as("bob:word", "GET", "/qdws/v1/ofax").count("fax_entry"), 0);
    QCOMPARE(as("bob:word", "GET", "/qdws/v1/ofax/1").status, 403);
    QCOMPARE(as("bob:word", "DELETE", "/qdws/v1/ofax/1").status, 403);
    QCOMPARE(as("root:r", "GET", "/qdws/v1/ofax").count("fax_entry"), 1);
    QCOMPARE(as("root:r", "DELETE", "/qdws/v1/ofax/1").status, 200);
}

void TestQdsim::causesTrouble_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("whole");
    QTest::addColumn<QByteArray>("pattern"); // of the body
    QTest::addColumn<int>("faxes");          // that exist afterwards
    const auto row = [](const char* fault, int status, bool whole, const char* pattern, int faxes) {
        QTest::newRow(fault) << QString::fromLatin1(fault) << status << whole << QByteArray(pattern) << faxes;
    };
    row("delay=10", 200, true, "<fax_entry>.*</reply>$", 1);
    row("hangup-early", 0, false, "^$", 0);
    row("hangup", 0, false, "^$", 1);
    row("cut=10", 200, false, "^<\\?xml vers$", 1);
    row("cut", 200, false, "^<\\?xml.*<fax_entry>", 1);
    row("drip=0", 200, true, "</reply>$", 1);
    row("status=503", 503, true, "<reply>", 0);
    row("status=401", 401, true, "<reply>", 0);
    row("truncated", 200, true, "<fax_entry>((?!</reply>).)*$", 1);
    row("notxml", 200, true, "^This is not XML", 1);
    row("html", 200, true, "^<!DOCTYPE html>", 1);
    row("message=Fail & <ure>", 200, true, "<message>Fail &amp; &lt;ure&gt;</message>", 1);
    row("nomessage", 200, true, "<reply><fax_entry>", 1);
    row("ampersand", 200, true, "<name>Bob & co</name>", 1);
    row("empty", 200, true, "^$", 1);
    row("huge=2", 200, true, "^<\\?xml.*<reply><message>x*</message></reply>$", 1);
    row("deep=100000", 200, true, "^<\\?xml[^>]*>\\s*(<a>)+(</a>)+$", 1);
    row("body=<a/>", 200, true, "^<a/>$", 1);
}

void TestQdsim::causesTrouble()
{
    QFETCH(QString, fault);
    QFETCH(int, status);
    QFETCH(bool, whole);
    QFETCH(QByteArray, pattern);
    QFETCH(int, faxes);
    SimServer server(steppedOptions());
    QVERIFY(server.start());
    QVERIFY(server.addFault(fault));
    const QByteArray body =
        QByteArray(shortFax({"1"})).replace("<fax_number>", "<name>Bob</name>\n  <fax_number>");
    const Wire::Answer answer = Wire("POST", "/qdws/v1/ofax", body).send(server);
    QCOMPARE(answer.status, status);
    QCOMPARE(answer.isWhole, whole);
    QRegularExpression expected(QString::fromLatin1(pattern), QRegularExpression::DotMatchesEverythingOption);
    if (!fault.startsWith(QLatin1String("deep")) &&
        !fault.startsWith(QLatin1String("huge"))) // too much for the matcher
        QVERIFY2(expected.match(QString::fromUtf8(answer.body)).hasMatch(),
                 answer.body.left(2000).constData());
    if (fault.startsWith(QLatin1String("huge"))) {
        QCOMPARE(answer.body.size(), 2 << 20);
        QVERIFY(answer.body.endsWith("xxx</message></reply>"));
        QVERIFY(answer.body.startsWith(declared("\n<reply><message>xxx")));
    }
    if (fault.startsWith(QLatin1String("deep")))
        QVERIFY(answer.body.count("<a>") == 100000 && answer.body.endsWith("</a></a>"));
    QCOMPARE(server.faxes().size(), faxes);
    QCOMPARE(server.requestCount(), 1);
    QVERIFY(server.requests().first().faulty);
    QCOMPARE(server.refusals(), QStringList());
    server.clearFaults();
    QCOMPARE(Wire("GET", "/qdws/v1/verify").send(server).text("message"), QStringLiteral("VERIFIED"));
}

void TestQdsim::choosesWhatGoesWrong()
{
    SimServer server;
    QVERIFY(server.start());
    QVERIFY(server.addFault(QStringLiteral("status=500,path=/qdws/v1/a,method=GET,skip=1,times=2")));
    QVERIFY(server.addFault(QStringLiteral("status=501,method=DELETE")));
    const auto status = [&server](const char* method, const char* target) {
        return Wire(method, target).send(server).status;
    };
    QCOMPARE(status("GET", "/qdws/v1/about"), 200); // skipped
    QCOMPARE(status("GET", "/qdws/v1/verify"), 200);
    QCOMPARE(status("GET", "/qdws/v1/about"), 500);
    QCOMPARE(status("DELETE", "/qdws/v1/ofax/1"), 501);
    QCOMPARE(status("GET", "/qdws/v1/about"), 500);
    QCOMPARE(status("GET", "/qdws/v1/about"), 200);
    QCOMPARE(status("DELETE", "/qdws/v1/ofax/1"), 501);
}

void TestQdsim::refusesUnknownFaults_data()
{
    QTest::addColumn<QString>("fault");
    for (const char* fault :
         {"", "explode", "status", "status=abc", "status=9", "delay=-5", "cut,times=x", "cut,when=now"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void TestQdsim::refusesUnknownFaults()
{
    QFETCH(QString, fault);
    SimServer server;
    QString error;
    QVERIFY(!server.addFault(fault, &error));
    QVERIFY(!error.isEmpty());
}

void TestQdsim::speaksTls()
{
    SimOptions options;
    options.tls = true;
    SimServer server(options);
    QVERIFY(server.start());
    QSslSocket socket;
    Wire wire("GET", "/qdws/v1/users/alice");
    wire.keepAlive = true;
    const Wire::Answer answer = wire.send(server, &socket);
    QCOMPARE(answer.status, 200);
    QVERIFY(answer.text("user_url").startsWith(QLatin1String("https://127.0.0.1:")));
    QCOMPARE(socket.peerCertificate().toPem(), QSslCertificate(server.certificate()).toPem());
    QVERIFY(socket.peerCertificate().isSelfSigned());
    QCOMPARE(wire.send(server, &socket).status, 200); // same connection
    QVERIFY(server.requests().first().secure);

    SimServer plainServer; // and the other way round
    QVERIFY(plainServer.start());
    QSslSocket encrypted;
    encrypted.connectToHostEncrypted(options.bind, plainServer.port());
    QVERIFY(!encrypted.waitForEncrypted(20000));
    QVERIFY(encrypted.state() == QAbstractSocket::UnconnectedState || encrypted.waitForDisconnected(20000));

    QTcpSocket plain; // and who speaks plain HTTP to it gets no answer
    plain.connectToHost(options.bind, server.port());
    plain.write(wire.bytes(server));
    QVERIFY(plain.waitForDisconnected(20000));
    QCOMPARE(server.requestCount(), 2);
}

void TestQdsim::logsWhatIsNoRequest_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("line");
    QTest::newRow("not HTTP") << QByteArray("HELO there\r\n\r\n") << QStringLiteral("malformed");
    QTest::newRow("long target") << "GET /" + QByteArray(9000, 'a') + " HTTP/1.1\r\n\r\n"
                                 << QStringLiteral("too long");
    QTest::newRow("TLS") << QByteArray("\x16\x03\x01\x02\x00", 5) << QStringLiteral("TLS on a plain port");
}

void TestQdsim::logsWhatIsNoRequest()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, line);
    SimServer server;
    QStringList lines;
    std::mutex mutex;
    server.setLog([&](const QString& text) {
        const std::lock_guard<std::mutex> lock(mutex);
        lines.append(text);
    });
    QVERIFY(server.start());
    QTcpSocket socket;
    socket.connectToHost(server.options().bind, server.port());
    socket.write(bytes);
    QVERIFY(socket.waitForReadyRead(20000) || socket.state() == QAbstractSocket::UnconnectedState);
    server.stop();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().contains(line), qPrintable(lines.first()));
}

void TestQdsim::servesManyConnections()
{
    SimServer server;
    QVERIFY(server.start());
    std::vector<std::unique_ptr<QSslSocket>> sockets;
    Wire wire("GET", "/qdws/v1/about");
    wire.keepAlive = true;
    for (int i = 0; i < 100; ++i) {
        sockets.push_back(std::make_unique<QSslSocket>());
        QCOMPARE(wire.send(server, sockets.back().get()).status, 200);
    }
    for (const auto& socket : sockets)
        QCOMPARE(wire.send(server, socket.get()).status, 200);
    QCOMPARE(server.requestCount(), 200);
}

void TestQdsim::stopsAtOnce()
{
    SimServer server;
    QVERIFY(server.start());
    QSslSocket idle;
    Wire wire("GET", "/qdws/v1/about");
    wire.keepAlive = true;
    wire.send(server, &idle);
    QVERIFY(server.addFault(QStringLiteral("delay=600000")));
    QSslSocket waiting;
    Wire::connectTo(server, &waiting);
    waiting.write(wire.bytes(server));
    QVERIFY(waiting.waitForBytesWritten(20000));
    QVERIFY(server.waitForRequests(2, 20000));
    QElapsedTimer timer;
    timer.start();
    server.stop();
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(idle.state() == QAbstractSocket::UnconnectedState || idle.waitForDisconnected(20000));
}

void TestQdsim::listensOnIpv6()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHostIPv6))
        QSKIP("this machine has no IPv6 loopback");
    probe.close();
    SimOptions options;
    options.bindIpv6 = true;
    SimServer server(options);
    QVERIFY(server.start());
    QSslSocket socket;
    socket.connectToHost(QStringLiteral("::1"), server.port());
    QVERIFY(socket.waitForConnected(20000));
    QCOMPARE(Wire("GET", "/qdws/v1/about").send(server, &socket).status, 200);
    options.bind = QStringLiteral("::1");
    options.bindIpv6 = false;
    SimServer other(options);
    QVERIFY(other.start());
    QCOMPARE(other.address(), QStringLiteral("[::1]:%1").arg(other.port()));
}

void TestQdsim::refusesAPortInUse()
{
    SimServer server;
    QVERIFY(server.start());
    SimOptions options;
    options.port = server.port();
    SimServer other(options);
    QString error;
    QVERIFY(!other.start(&error));
    QVERIFY(error.contains(QString::number(options.port)));
}

void TestQdsim::remembersItsState()
{
    QTemporaryDir folder;
    SimOptions options = steppedOptions();
    options.stateDir = folder.filePath(QStringLiteral("state"));
    options.spoolDir = folder.filePath(QStringLiteral("spool"));
    options.contacts = 5;
    options.groups = 2;
    QVector<SimEntry> book;
    {
        SimServer server(options);
        QVERIFY(server.start());
        QCOMPARE(Wire("PUT", "/qdws/v1/users/alice", fullProfile()).send(server).status, 200);
        Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2"}, attachment("a.txt", "hello"))).send(server);
        Wire("DELETE", "/qdws/v1/ofax/1").send(server);
        QCOMPARE(server.stepChanges(30).size(), 30);
        book = server.book(QStringLiteral("alice"), true);
    }
    options.contacts = 1000; // what was saved counts
    SimServer server(options);
    QString error;
    QVERIFY2(server.start(&error), qPrintable(error));
    QCOMPARE(states(server), QStringLiteral("aborted pending"));
    QCOMPARE(server.user(QStringLiteral("alice")).coverPageName, QStringLiteral("Urgent"));
    QCOMPARE(server.attachments(2).value(0).size, qint64(5));
    const QVector<SimEntry> restored = server.book(QStringLiteral("alice"), true);
    QCOMPARE(restored.size(), book.size());
    for (int i = 0; i < book.size(); ++i) {
        QCOMPARE(restored[i].uid, book[i].uid);
        QCOMPARE(restored[i].members, book[i].members);
        QCOMPARE(restored[i].changed, book[i].changed);
    }
    Wire("POST", "/qdws/v1/ofax", shortFax({"3"})).send(server);
    QCOMPARE(server.faxes().last().id, quint64(3));
    server.step(5000);
    QCOMPARE(states(server), QStringLiteral("aborted sent sent"));
}

void TestQdsim::refusesADamagedState()
{
    QTemporaryDir folder;
    SimOptions options;
    options.stateDir = folder.path();
    QFile file(folder.filePath(QStringLiteral("qdsim.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"format\":1,\"users\":[{\"na");
    file.close();
    const qint64 size = file.size();
    {
        SimServer server(options);
        QString error;
        QVERIFY(!server.start(&error));
        QVERIFY(error.contains(QLatin1String("qdsim.json")));
    }
    QCOMPARE(QFileInfo(file).size(), size);
}

void TestQdsim::runsAsAProgram()
{
    QProcess wrong;
    wrong.start(QStringLiteral(QDSIM_PROGRAM), {QStringLiteral("--speed"), QStringLiteral("fast")});
    QVERIFY(wrong.waitForFinished(20000));
    QCOMPARE(wrong.exitCode(), 2);
    QVERIFY(wrong.readAllStandardError().contains("--speed"));

    QTemporaryDir folder;
    QFile users(folder.filePath(QStringLiteral("users")));
    QVERIFY(users.open(QIODevice::WriteOnly));
    users.write("# people\nbob:word:admin\n");
    users.close();
    QProcess process;
    process.start(QStringLiteral(QDSIM_PROGRAM),
                  {QStringLiteral("--users"), users.fileName(), QStringLiteral("--inbound"),
                   QStringLiteral("3"), QStringLiteral("--fault"),
                   QStringLiteral("status=418,path=/qdws/v1/about,times=1")});
    QVERIFY(process.waitForReadyRead(20000));
    const QString line = QString::fromUtf8(process.readLine());
    const auto match =
        QRegularExpression(QStringLiteral("^qdsim listening on http://127\\.0\\.0\\.1:(\\d+)\n$"))
            .match(line);
    QVERIFY2(match.hasMatch(), qPrintable(line));
    QSslSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), match.captured(1).toUShort());
    QVERIFY(socket.waitForConnected(20000));
    const SimServer anyServer; // only names the host
    Wire wire("GET", "/qdws/v1/about");
    wire.credentials = "bob:word";
    wire.keepAlive = true;
    QCOMPARE(wire.send(anyServer, &socket).status, 418);
    QCOMPARE(wire.send(anyServer, &socket).status, 200);
    wire.target = "/qdws/v1/inbound_log";
    QCOMPARE(wire.send(anyServer, &socket).count("inbound_fax_entry"), 3);
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.readAllStandardError().contains("GET /qdws/v1/inbound_log"));
}

QTEST_GUILESS_MAIN(TestQdsim)
#include "tst_qdsim.moc"
