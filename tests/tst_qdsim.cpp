#include "shorthand.h"
#include "simwire.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <csignal>

namespace {

/// A submission in which every element that there is occurs.
QByteArray fullFax()
{
    return declared(
        "\n<schedule_fax>\n <sender>\n  <contact_url>http://fax/qdws/v1/users/alice</contact_url>\n  "
        "<username>alice</username>\n  <name>Alice &amp; Co</name>\n  "
        "<email_address>a@example.com</email_address>\n  <phone_number>1</phone_number>\n  "
        "<fax_number>2</fax_number>\n  <organization>O</organization>\n  "
        "<default_cover_page_enabled>true</default_cover_page_enabled>\n  <default_cover_page_name/>\n  "
        "<priority>3</priority>\n  <max_attempts>3</max_attempts>\n  <interval>300</interval>\n  "
        "<receipt>failure</receipt>\n  <receipt_attachment>pdf</receipt_attachment>\n  "
        "<print_receipt>never</print_receipt>\n  <print_receipt_printer></print_receipt_printer>\n  "
        "<print_receipt_first>false</print_receipt_first>\n  <fax_page_size>auto</fax_page_size>\n "
        "</sender>\n <cover_page>\n  <enabled>true</enabled>\n  <name>Standard</name>\n  "
        "<type>system</type>\n  <url>http://fax/c</url>\n  <subject>S</subject>\n  <comments>C</comments>\n "
        "</cover_page>\n <recipient>\n  <name>Bob</name>\n  <fax_number>100</fax_number>\n </recipient>\n "
        "<recipient>\n  <fax_number>200</fax_number>\n </recipient>\n <attachment>\n  "
        "<location>inline</location>\n  <name>a.txt</name>\n  <content_type>text/plain</content_type>\n  "
        "<content_transfer_encoding>base64</content_transfer_encoding>\n  <content>aGVsbG8=</content>\n "
        "</attachment>\n <attachment>\n  <location>external</location>\n  <url>http://x/y.pdf</url>\n "
        "</attachment>\n <schedule_all_at>2031-02-03T04:05:06</schedule_all_at>\n <priority>5</priority>\n "
        "<max_tries>1</max_tries>\n <try_interval>60</try_interval>\n <receipt>always</receipt>\n "
        "<receipt_attachment>tiff</receipt_attachment>\n <print_receipt>failure</print_receipt>\n "
        "<print_receipt_printer>Archive</print_receipt_printer>\n "
        "<print_receipt_first>true</print_receipt_first>\n "
        "<fax_page_size>a4</fax_page_size>\n</schedule_fax>\n");
}

QByteArray attachment(const QByteArray& name, const QByteArray& content)
{
    return " <attachment>\n  <location>inline</location>\n  <name>" + name +
           "</name>\n  <content_type>text/plain</content_type>\n  "
           "<content_transfer_encoding>base64</content_transfer_encoding>\n  <content>" +
           content.toBase64() + "</content>\n </attachment>\n";
}

/// A submission as short as can be, to these numbers.
QByteArray shortFax(const QByteArrayList& numbers, const QByteArray& attachments = QByteArray(),
                    const QByteArray& options = QByteArray())
{
    QByteArray recipients;
    for (const QByteArray& number : numbers)
        recipients += " <recipient>\n  <fax_number>" + number + "</fax_number>\n </recipient>\n";
    return declared(
        "\n<schedule_fax>\n <sender>\n  <default_cover_page_enabled>false</default_cover_page_enabled>\n  "
        "<default_cover_page_name></default_cover_page_name>\n </sender>\n <cover_page>\n  "
        "<enabled>false</enabled>\n </cover_page>\n" +
        recipients + attachments + options + "</schedule_fax>\n");
}

QByteArray fullProfile()
{
    return declared(
        "<user><contact_url>http://fax/qdws/v1/users/alice</contact_url><username>alice</username><name>A</"
        "name><email_address>e</email_address><phone_number>1</phone_number><fax_number>2</"
        "fax_number><organization>O</organization><default_cover_page_enabled>true</"
        "default_cover_page_enabled><default_cover_page_name>Urgent</default_cover_page_name><priority>0</"
        "priority><max_attempts>7</max_attempts><interval>20</interval><receipt>always</"
        "receipt><receipt_attachment>none</receipt_attachment><print_receipt>always</"
        "print_receipt><print_receipt_printer>Archive</print_receipt_printer><print_receipt_first>true</"
        "print_receipt_first><fax_page_size>legal</fax_page_size></user>");
}

QByteArray profileWith(const char* text, const char* instead)
{
    return fullProfile().replace(text, instead);
}

/// Two users, a clock that only the test moves, faxes to numbers with 999 fail.
SimOptions steppedOptions()
{
    SimOptions options;
    options.manualClock = true;
    options.failPattern = s("999");
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
    void refusesRequests_data()
    {
        const Rows<QByteArray, QByteArray, QByteArray, QByteArray, int, QString> row(
            "method", "target", "body", "contentType", "status", "reason");
        const QByteArray xml = QByteArrayLiteral("application/xml");
        row("no such path", "GET", "nosuch", {}, xml, 404, "no such path");
        row("wrong method", "POST", "about", "", xml, 405, "POST");
        row("somebody else", "PUT", "users/bob", profileWith("alice", "bob"), xml, 403, "somebody else");
        row("no content type", "GET", "about", {}, {}, 415, "content type");
        row("delete without content type", "DELETE", "ofax/1", {}, {}, 415, "content type");
        row("body of a get", "GET", "about", "x", xml, 400, "a body");
        row("query where none is", "GET", "about?a=b", {}, xml, 400, "a query");
        row("limits in other order", "GET", "inbound_log?limit=2&index=0", {}, xml, 400, "query");
        row("colons not escaped", "PUT", "outbound_log/1?at=2031-11-15T14:30:00", "", xml, 400, "query");
        row("no such day", "PUT", "outbound_log/1?at=2031-02-30T14%3A30%3A00", "", xml, 400, "no date");
        row("no such fax", "DELETE", "ofax/77", {}, xml, 404, "no fax");
        row("no declaration", "PUT", "users/alice", QByteArray(fullProfile()).remove(0, 38), xml, 400,
            "does not begin");
        row("profile on two lines", "PUT", "users/alice", profileWith("<name>", "\n<name>"), xml, 400,
            "one line");
        row("other document", "PUT", "users/alice", declared("<contact></contact>"), xml, 400,
            "not \"user\"");
        row("not xml", "PUT", "users/alice", declared("<user><name>A & B</name></user>"), xml, 400, "line 1");
        row("not utf-8", "PUT", "users/alice", profileWith(">A<", ">\xe4<"), xml, 400, "UTF-8");
        row("profile of another address", "PUT", "users/alice", profileWith("users/alice", "users/x"), xml,
            400, "address");
        row("profile without cover page", "PUT", "users/alice",
            profileWith("<default_cover_page_name>Urgent</default_cover_page_name>", ""), xml, 400,
            "default_cover_page_name");
        row("submission without indentation", "POST", "ofax", QByteArray(fullFax()).replace("\n ", "\n"), xml,
            400, "indented");
    }
    void refusesRequests()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, contentType);
        QFETCH(int, status);
        QFETCH(QString, reason);
        Started server(steppedOptions());
        Wire("POST", "/qdws/v1/ofax", shortFax({"5"})).send(server);
        Wire wire(method, "/qdws/v1/" + target, body);
        wire.contentType = contentType;
        const Wire::Answer answer = wire.send(server);
        QCOMPARE(answer.status, status);
        QCOMPARE(server.refusals().size(), 1);
        QVERIFY2(server.refusals().first().contains(reason), qPrintable(server.refusals().first()));
        QCOMPARE(server.faxes().size(), 1);
        QCOMPARE(server.faxes().first().state, s("pending"));
    }

    void refusesSubmissions_data()
    {
        // part:of the full submission
        const Rows<QByteArray, QByteArray, QString> row("part", "replacement", "reason");
        row("no sender", " <sender>", " <from>", "line");
        row("attribute", "<sender>", "<sender kind=\"a\">", "attributes");
        row("text beside elements", " <cover_page>", " hello <cover_page>", "text beside");
        row("empty field of a contact", "<name>Bob</name>", "<name></name>", "left out");
        row("contact out of order", "<name>Bob</name>\n  <fax_number>100</fax_number>",
            "<fax_number>100</fax_number>\n  <name>Bob</name>", "out of order");
        row("https address", "http://fax/qdws", "https://fax/qdws", "https");
        row("sender's defaults incomplete", "  <interval>300</interval>\n", "", "\"interval\" expected");
        row("cover page without enabled", "  <enabled>true</enabled>\n", "", "\"enabled\" expected");
        row("cover page behind recipients", "</recipient>\n <attachment>",
            "</recipient>\n <cover_page></cover_page>\n <attachment>", "out of order");
        row("attachment without name", "  <name>a.txt</name>\n", "", "\"name\" expected");
        row("unknown type", "text/plain", "text/html", "content_type");
        row("content not padded", "aGVsbG8=", "aGVsbG8", "base64");
        row("empty content", "aGVsbG8=", "", "base64");
        row("external with name", "<location>external</location>\n",
            "<location>external</location>\n  <name>y</name>\n", "\"url\" expected");
        row("no date", "2031-02-03T04:05:06", "2031-02-03 04:05:06", "schedule_all_at");
        row("priority too high", " <priority>5<", " <priority>6<", "0 to 5");
        row("default priority", " <priority>5<", " <priority>3<", "default");
        row("options out of order",
            " <receipt>always</receipt>\n <receipt_attachment>tiff</receipt_attachment>",
            " <receipt_attachment>tiff</receipt_attachment>\n <receipt>always</receipt>", "out of order");
        row("first page not true", "<print_receipt_first>true<", "<print_receipt_first>false<", "only ever");
        row("option twice", " <fax_page_size>a4</fax_page_size>\n",
            " <fax_page_size>a4</fax_page_size>\n <fax_page_size>a4</fax_page_size>\n", "repeated");
    }
    void refusesSubmissions()
    {
        QFETCH(QByteArray, part);
        QFETCH(QByteArray, replacement);
        QFETCH(QString, reason);
        Started server(steppedOptions());
        QVERIFY(fullFax().contains(part));
        QByteArray body = fullFax();
        body.replace(body.indexOf(part), part.size(), replacement);
        QCOMPARE(Wire("POST", "/qdws/v1/ofax", body).send(server).status, 400);
        QVERIFY2(server.refusals().value(0).contains(reason), qPrintable(server.refusals().value(0)));
        QVERIFY(server.faxes().isEmpty());
    }

    void knowsWhatItsVersionCanDo_data()
    {
        const Rows<QString, QString, bool, bool, bool> row("model", "version", "defaults", "receipts",
                                                           "pageSize");
        row("first with defaults", "ABC40X", "1.4", true, false, false);
        row("before them", "ABC40X", "1.3.9", false, false, false);
        row("other model", "ABC41X", "3.6.1", false, true, true);
        row("before receipts", "ABC40X", "3.2.7-beta", true, false, false);
        row("first with receipts", "ABC40X", "3.2.8", true, true, false);
        row("counts as 3.2.1", "ABC40X", "3.2.10", true, false, false);
    }
    void knowsWhatItsVersionCanDo()
    {
        QFETCH(bool, defaults);
        QFETCH(bool, receipts);
        QFETCH(bool, pageSize);
        QFETCH(QString, model);
        QFETCH(QString, version);
        SimOptions options;
        options.model = model;
        options.version = version;
        const Started server(options);
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
    }

    void keepsRequestsByteForByte()
    {
        SimOptions options;
        options.users = {someUser("a b+c/d:p%\xc3\xa4")};
        Started server(options);
        Wire wire("GET", "/qdws/v1/users/a%20b+c/d");
        wire.credentials = "a b+c/d:p%\xe4";
        wire.moreHeaders = "X-Thing:  a%20b; c \r\nx-thing: 2\r\n";
        QCOMPARE(wire.send(server).status, 200);
        const SimRequest request = server.requests(s("GET"), s("/qdws/v1/users/")).value(0);
        const QByteArray sent = wire.bytes(server);
        QCOMPARE(request.rawHead, sent);
        QCOMPARE(request.target, wire.target);
        QCOMPARE(request.path, s("/qdws/v1/users/a b+c/d"));
        QCOMPARE(request.user, s("a b+c/d"));
        QCOMPARE(request.header("X-THING"), QByteArrayLiteral("a%20b; c"));
        QVERIFY(!request.hasHeader("Cookie"));

        Wire put("PUT", "/qdws/v1/users/x", QByteArray("\0\xff\r\n\r\nGET /", 11));
        put.send(server);
        QCOMPARE(server.requests(s("PUT")).value(0).body, put.body);
        QCOMPARE(server.requestCount(), 2);
        server.clearRequests();
        QCOMPARE(server.requestCount(), 0);
    }

    void asksForCredentials()
    {
        Started server(steppedOptions());
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

    void movesFaxesThroughTheirStates()
    {
        Started server(steppedOptions());
        const Wire::Answer answer = Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2", "3"})).send(server);
        QCOMPARE(answer.count("fax_entry"), 3);
        QCOMPARE(answer.text("fax_entry_url"), server.url(s("/qdws/v1/ofax/1")).toString());
        QCOMPARE(states(server), s("pending pending pending"));
        QCOMPARE(Wire("GET", "/qdws/v1/outbound_status?pending_limit=2&sending_limit=2")
                     .send(server)
                     .count("fax_entry"),
                 2);
        server.step(1000);
        QCOMPARE(states(server), s("sending sending sending"));
        QCOMPARE(Wire("GET", "/qdws/v1/outbound_log").send(server).count("outbound_fax_entry"), 0);
        server.step(1000);
        QCOMPARE(states(server), s("sent sent sent"));
        QCOMPARE(Wire("GET", "/qdws/v1/outbound_status").send(server).count("fax_entry"), 0);
        QCOMPARE(Wire("GET", "/qdws/v1/ofax").send(server).count("fax_entry"), 0);
        QCOMPARE(Wire("GET", "/qdws/v1/ofax?complete_limit=2").send(server).count("fax_entry"), 2);
        const Wire::Answer log = Wire("GET", "/qdws/v1/outbound_log?limit=1").send(server);
        QCOMPARE(log.count("outbound_fax_entry"), 1);
        QCOMPARE(log.text("recipient_fax"), s("3")); // the newest
        QCOMPARE(log.text("status"), s("sent"));
    }

    void retriesBeforeItFails()
    {
        Started server(steppedOptions());
        const QByteArray twice = " <max_tries>2</max_tries>\n <try_interval>10</try_interval>\n";
        Wire("POST", "/qdws/v1/ofax", shortFax({"0999"}, {}, twice)).send(server);
        server.step(1000 + 1000);
        QCOMPARE(states(server), s("pending"));
        QCOMPARE(server.faxes().first().tryNumber, 1);
        server.step(9999);
        QCOMPARE(states(server), s("pending"));
        server.step(1);
        QCOMPARE(states(server), s("sending"));
        server.step(1000);
        QCOMPARE(states(server), s("failed"));
        QCOMPARE(server.faxes().first().tryNumber, 2);
        QCOMPARE(Wire("GET", "/qdws/v1/outbound_log").send(server).text("status"), s("failed"));
    }

    void abortsAndReschedules()
    {
        Started server(steppedOptions());
        Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2"})).send(server);
        QCOMPARE(Wire("PUT", "/qdws/v1/outbound_log/2?at=2099-01-01T00%3A00%3A00", "").send(server).status,
                 200);
        QCOMPARE(Wire("DELETE", "/qdws/v1/ofax/1").send(server).text("state"), s("aborted"));
        server.step(60000);
        QCOMPARE(states(server), s("aborted pending"));
        QCOMPARE(Wire("DELETE", "/qdws/v1/ofax/1").send(server).status, 409);
        QCOMPARE(Wire("PUT", "/qdws/v1/outbound_log/1?at=now", "").send(server).status, 409);
        QCOMPARE(Wire("PUT", "/qdws/v1/outbound_log/2?at=now", "").send(server).status, 200);
        server.step(2000);
        QCOMPARE(states(server), s("aborted sent"));
    }

    void storesAttachmentsUnderSafeNames()
    {
        QTemporaryDir folder;
        SimOptions options;
        options.spoolDir = folder.filePath(s("spool"));
        Started server(options);
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
                     QFileInfo(folder.filePath(s("spool/1"))).canonicalFilePath());
            paths.insert(stored[i].path);
        }
        QCOMPARE(paths.size(), names.size());
        QCOMPARE(QFileInfo(stored[0].path).fileName(), s("a.txt"));
    }

    void takesLargeDocuments()
    {
        QTemporaryDir folder;
        SimOptions options;
        options.spoolDir = folder.path();
        Started server(options);
        QByteArray document(100 << 20, '\0');
        for (int i = 0; i < document.size(); ++i)
            document[i] = static_cast<char>(i ^ (i >> 8) ^ (i >> 16));
        QCOMPARE(Wire("POST", "/qdws/v1/ofax", shortFax({"1"}, attachment("large.txt", document)))
                     .send(server)
                     .status,
                 200);
        QFile file(server.attachments(1).value(0).path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll() == document);
        const SimRequest request = server.requests().value(0);
        QVERIFY(request.bodySize > document.size());
        QCOMPARE(request.body.size(), 1 << 20); // the rest is not kept
    }

    void showsFaxesOnlyToTheirSender()
    {
        Started server(steppedOptions());
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

    void causesTrouble_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("whole");
        QTest::addColumn<QByteArray>("pattern"); // of the body
        QTest::addColumn<int>("faxes");          // that exist afterwards
        const auto row = [](const char* fault, int status, bool whole, const char* pattern, int faxes) {
            QTest::newRow(fault) << QString::fromLatin1(fault) << status << whole << QByteArray(pattern)
                                 << faxes;
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
    void causesTrouble()
    {
        QFETCH(QString, fault);
        QFETCH(int, status);
        QFETCH(bool, whole);
        QFETCH(QByteArray, pattern);
        QFETCH(int, faxes);
        Started server(steppedOptions());
        QVERIFY(server.addFault(fault));
        const QByteArray body =
            QByteArray(shortFax({"1"})).replace("<fax_number>", "<name>Bob</name>\n  <fax_number>");
        const Wire::Answer answer = Wire("POST", "/qdws/v1/ofax", body).send(server);
        QCOMPARE(answer.status, status);
        QCOMPARE(answer.isWhole, whole);
        QRegularExpression expected(QString::fromLatin1(pattern),
                                    QRegularExpression::DotMatchesEverythingOption);
        if (!fault.startsWith(s("deep")) && !fault.startsWith(s("huge"))) // too much for the matcher
            QVERIFY2(expected.match(QString::fromUtf8(answer.body)).hasMatch(),
                     answer.body.left(2000).constData());
        if (fault.startsWith(s("huge"))) {
            QCOMPARE(answer.body.size(), 2 << 20);
            QVERIFY(answer.body.endsWith("xxx</message></reply>"));
            QVERIFY(answer.body.startsWith(declared("\n<reply><message>xxx")));
        }
        if (fault.startsWith(s("deep")))
            QVERIFY(answer.body.count("<a>") == 100000 && answer.body.endsWith("</a></a>"));
        QCOMPARE(server.faxes().size(), faxes);
        QCOMPARE(server.requestCount(), 1);
        QVERIFY(server.requests().first().faulty);
        QCOMPARE(server.refusals(), QStringList());
        server.clearFaults();
        QCOMPARE(Wire("GET", "/qdws/v1/verify").send(server).text("message"), s("VERIFIED"));
    }

    void choosesWhatGoesWrong()
    {
        Started server;
        QVERIFY(server.addFault(s("status=500,path=/qdws/v1/a,method=GET,skip=1,times=2")));
        QVERIFY(server.addFault(s("status=501,method=DELETE")));
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

    void refusesUnknownFaults()
    {
        SimServer server;
        for (const char* fault :
             {"", "explode", "status", "status=9", "delay=-5", "cut,times=x", "cut,when=now"}) {
            QString error;
            QVERIFY2(!server.addFault(s(fault), &error) && !error.isEmpty(), fault);
        }
    }

    void speaksTls()
    {
        SimOptions options;
        options.tls = true;
        Started server(options);
        QSslSocket socket;
        Wire wire("GET", "/qdws/v1/users/alice");
        wire.keepAlive = true;
        const Wire::Answer answer = wire.send(server, &socket);
        QCOMPARE(answer.status, 200);
        QVERIFY(answer.text("user_url").startsWith(s("https://127.0.0.1:")));
        QCOMPARE(socket.peerCertificate().toPem(), QSslCertificate(server.certificate()).toPem());
        QVERIFY(socket.peerCertificate().isSelfSigned());
        QCOMPARE(wire.send(server, &socket).status, 200); // same connection
        QVERIFY(server.requests().first().secure);
    }

    void stopsAtOnce()
    {
        Started server;
        QSslSocket idle;
        Wire wire("GET", "/qdws/v1/about");
        wire.keepAlive = true;
        wire.send(server, &idle);
        QVERIFY(server.addFault(s("delay=600000")));
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

    void remembersItsState()
    {
        QTemporaryDir folder;
        SimOptions options = steppedOptions();
        options.stateDir = folder.filePath(s("state"));
        options.spoolDir = folder.filePath(s("spool"));
        options.contacts = 5;
        options.groups = 2;
        QStringList book;
        const auto written = [](const SimServer& server) {
            QStringList lines;
            for (const SimEntry& entry : server.book(s("alice"), true))
                lines.append(entry.uid + entry.members.join(QLatin1Char(' ')) +
                             QString::number(entry.changed));
            return lines;
        };
        {
            Started server(options);
            QCOMPARE(Wire("PUT", "/qdws/v1/users/alice", fullProfile()).send(server).status, 200);
            Wire("POST", "/qdws/v1/ofax", shortFax({"1", "2"}, attachment("a.txt", "hello"))).send(server);
            Wire("DELETE", "/qdws/v1/ofax/1").send(server);
            QCOMPARE(server.stepChanges(30).size(), 30);
            book = written(server);
        }
        options.contacts = 1000; // what was saved counts
        Started server(options);
        QCOMPARE(states(server), s("aborted pending"));
        QCOMPARE(server.user(s("alice")).coverPageName, s("Urgent"));
        QCOMPARE(server.attachments(2).value(0).size, qint64(5));
        QCOMPARE(written(server), book);
        Wire("POST", "/qdws/v1/ofax", shortFax({"3"})).send(server);
        QCOMPARE(server.faxes().last().id, quint64(3));
        server.step(5000);
        QCOMPARE(states(server), s("aborted sent sent"));
    }

    void refusesADamagedState()
    {
        QTemporaryDir folder;
        SimOptions options;
        options.stateDir = folder.path();
        const QString path = folder.filePath(s("qdsim.json"));
        writeFile(path, "{\"format\":1,\"users\":[{\"na");
        QString error;
        QVERIFY(!SimServer(options).start(&error));
        QVERIFY(error.contains(s("qdsim.json")));
        QCOMPARE(readFile(path).size(), 25);
    }

    void runsAsAProgram()
    {
        QProcess wrong;
        wrong.start(s(QDSIM_PROGRAM), {s("--speed"), s("fast")});
        QVERIFY(wrong.waitForFinished(20000));
        QCOMPARE(wrong.exitCode(), 2);
        QVERIFY(wrong.readAllStandardError().contains("--speed"));

        QTemporaryDir folder;
        QFile users(folder.filePath(s("users")));
        QVERIFY(users.open(QIODevice::WriteOnly));
        users.write("# nobody\n");
        users.close();
        wrong.start(s(QDSIM_PROGRAM), {s("--users"), users.fileName()});
        QVERIFY(wrong.waitForFinished(20000));
        QCOMPARE(wrong.exitCode(), 2);
        QVERIFY(wrong.readAllStandardError().contains("no users"));

        QProcess process;
        process.start(s(QDSIM_PROGRAM), {s("--users"), s("/dev/stdin"), s("--inbound"), s("3"), s("--fault"),
                                         s("status=418,path=/qdws/v1/about,times=1")});
        process.write("# people\nbob:word:admin\n"); // a pipe
        process.closeWriteChannel();
        QVERIFY(process.waitForReadyRead(20000));
        const QString line = QString::fromUtf8(process.readLine());
        const auto match =
            QRegularExpression(s("^qdsim listening on http://127\\.0\\.0\\.1:(\\d+)\n$")).match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        QSslSocket socket;
        socket.connectToHost(s("127.0.0.1"), match.captured(1).toUShort());
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
};
QTEST_GUILESS_MAIN(TestQdsim)
#include "tst_qdsim.moc"
