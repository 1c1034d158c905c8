#include "shorthand.h"
#include "simwire.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QUdpSocket>
#include <QtTest/QtTest>

#include <csignal>

namespace {

QByteArray attachment(const QByteArray& name, const QByteArray& content)
{
    return block("attachment", fields("location=inline", 2) + "  <name>" + name + "</name>\n" +
                                   fields("content_type=text/plain content_transfer_encoding=base64", 2) +
                                   "  <content>" + content.toBase64() + "</content>\n");
}

/// A submission in which every element that there is occurs.
QByteArray fullFax()
{
    return submission(
        block("sender",
              fields("contact_url=http://fax/qdws/v1/users/alice username=alice name=Alice&amp;Co "
                     "email_address=a@example.com phone_number=1 fax_number=2 organization=O "
                     "default_cover_page_enabled=true",
                     2) +
                  "  <default_cover_page_name/>\n" +
                  fields("priority=3 max_attempts=3 interval=300 receipt=failure receipt_attachment=pdf "
                         "print_receipt=never print_receipt_printer= print_receipt_first=false "
                         "fax_page_size=auto",
                         2)) +
        block("cover_page",
              fields("enabled=true name=Standard type=system url=http://fax/c subject=S comments=C", 2)) +
        block("recipient", fields("name=Bob fax_number=100", 2)) +
        block("recipient", fields("fax_number=200", 2)) + attachment("a.txt", "hello") +
        block("attachment", fields("location=external url=http://x/y.pdf", 2)) +
        fields("schedule_all_at=2031-02-03T04:05:06 priority=5 max_tries=1 try_interval=60 receipt=always "
               "receipt_attachment=tiff print_receipt=failure print_receipt_printer=Archive "
               "print_receipt_first=true fax_page_size=a4",
               1));
}

QByteArray fullProfile()
{
    return declared("<user>" +
                    fields("contact_url=http://fax/qdws/v1/users/alice username=alice name=A email_address=e "
                           "phone_number=1 fax_number=2 organization=O default_cover_page_enabled=true "
                           "default_cover_page_name=Urgent priority=0 max_attempts=7 interval=20 "
                           "receipt=always receipt_attachment=none print_receipt=always "
                           "print_receipt_printer=Archive print_receipt_first=true fax_page_size=legal") +
                    "</user>");
}

QByteArray profileWith(const char* text, const char* instead)
{
    return fullProfile().replace(text, instead);
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
        row("somebody else's profile", "GET", "users/bob", {}, xml, 403, "somebody else");
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
        row("submission without indentation", "POST", "ofax", fullFax().replace("\n ", "\n"), xml, 400,
            "indented");
        const auto submission = [&](const char* name, const char* part, const char* replacement,
                                    const char* reason) {
            QByteArray body = fullFax();
            const int at = body.indexOf(part);
            QVERIFY2(at > 0, name);
            row(name, "POST", "ofax", body.replace(at, int(qstrlen(part)), replacement), xml, 400, reason);
        };
        submission("no sender", " <sender>", " <from>", "line");
        submission("attribute", "<sender>", "<sender kind=\"a\">", "attributes");
        submission("text beside elements", " <cover_page>", " hello <cover_page>", "text beside");
        submission("empty field of a contact", "<name>Bob</name>", "<name></name>", "left out");
        submission("contact out of order", "<name>Bob</name>\n  <fax_number>100</fax_number>",
                   "<fax_number>100</fax_number>\n  <name>Bob</name>", "out of order");
        submission("https address", "http://fax/qdws", "https://fax/qdws", "https");
        submission("sender's defaults incomplete", "  <interval>300</interval>\n", "",
                   "\"interval\" expected");
        submission("cover page without enabled", "  <enabled>true</enabled>\n", "", "\"enabled\" expected");
        submission("cover page behind recipients", "</recipient>\n <attachment>",
                   "</recipient>\n <cover_page></cover_page>\n <attachment>", "out of order");
        submission("attachment without name", "  <name>a.txt</name>\n", "", "\"name\" expected");
        submission("unknown type", "text/plain", "text/html", "content_type");
        submission("content not padded", "aGVsbG8=", "aGVsbG8", "base64");
        submission("empty content", "aGVsbG8=", "", "base64");
        submission("external with name", "<location>external</location>\n",
                   "<location>external</location>\n  <name>y</name>\n", "\"url\" expected");
        submission("no date", "2031-02-03T04:05:06", "2031-02-03 04:05:06", "schedule_all_at");
        submission("priority too high", " <priority>5<", " <priority>6<", "0 to 5");
        submission("default priority", " <priority>5<", " <priority>3<", "default");
        submission("options out of order",
                   " <receipt>always</receipt>\n <receipt_attachment>tiff</receipt_attachment>",
                   " <receipt_attachment>tiff</receipt_attachment>\n <receipt>always</receipt>",
                   "out of order");
        submission("first page not true", "<print_receipt_first>true<", "<print_receipt_first>false<",
                   "only ever");
        submission("option twice", " <fax_page_size>a4</fax_page_size>\n",
                   " <fax_page_size>a4</fax_page_size>\n <fax_page_size>a4</fax_page_size>\n", "repeated");
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
        ask(server, "POST", "ofax", shortFax({"5"}));
        Wire wire(method, "/qdws/v1/" + target, body);
        wire.contentType = contentType;
        QCOMPARE(wire.send(server).status, status);
        QCOMPARE(server.refusals().size(), 1);
        QVERIFY2(server.refusals().first().contains(reason), qPrintable(server.refusals().first()));
        QCOMPARE(server.faxes().size(), 1);
        QCOMPARE(server.faxes().first().state, s("pending"));
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
        const QByteArray user = get(server, "users/alice").body;
        QCOMPARE(user.contains("<max_attempts>"), defaults);
        QCOMPARE(user.contains("<print_receipt>"), defaults && receipts);
        QCOMPARE(user.contains("<fax_page_size>"), defaults && pageSize);
        const auto statusWith = [&server](const QByteArray& option) {
            return ask(server, "POST", "ofax", shortFax({"5"}, {}, option)).status;
        };
        QCOMPARE(statusWith(" <print_receipt>always</print_receipt>\n"), receipts ? 200 : 400);
        QCOMPARE(statusWith(" <fax_page_size>auto</fax_page_size>\n"), pageSize ? 200 : 400);
        QCOMPARE(get(server, "data/printer_names").status, receipts ? 200 : 404);
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

    void recordsExchanges()
    {
        QTemporaryDir folder;
        SimOptions options;
        options.users = {someUser("alice:secret"), someUser("bob:word")};
        options.recordDir = folder.filePath(s("a/b"));
        options.clockStart = qint64(1794753000000); // 2026-11-15T14:30:00
        options.inbound = 1;
        options.discoveryAddress = s("127.0.0.1");
        options.discoveryPort = 0;
        Started server(options);
        get(server, "about");
        ask(server, "POST", "ofax", shortFax({"1"}));
        get(server, "about");
        ask(server, "GET", "users/../x", {}, "bob:wrong");
        Wire odd("GET", "/other");
        odd.credentials = {};
        odd.moreHeaders = "AUTHORIZATION: secret\r\n";
        odd.send(server);
        get(server, "documents/inbound/1/" + server.inbound().value(0).filename.toLatin1());
        QVERIFY(server.addFault(s("hangup,times=1")) && server.addFault(s("cut=10,times=1")));
        get(server, "verify");
        get(server, "verify");
        QUdpSocket socket;
        socket.writeDatagram("DISCOVER\n", QHostAddress(QHostAddress::LocalHost), server.discoveryPort());
        QVERIFY(socket.waitForReadyRead(20000));
        server.stop();

        const QDir records(options.recordDir);
        const QStringList names{
            s("0001-GET-about.txt"),    s("0002-POST-ofax.txt"),
            s("0003-GET-about.txt"),    s("0004-GET-users_.._x.txt"),
            s("0005-GET-_other.txt"),   s("0006-GET-documents_inbound_1_fax00001.pdf.txt"),
            s("0007-GET-verify.txt"),   s("0008-GET-verify.txt"),
            s("0009-UDP-discovery.txt")};
        QCOMPARE(records.entryList(QDir::Files, QDir::Name), names);
        QByteArrayList texts;
        for (const QString& name : names) {
            texts.append(readFile(records.filePath(name)));
            for (const char* credentials : {"alice:secret", "bob:wrong"})
                QVERIFY2(!texts.last().contains(QByteArray(credentials).toBase64()), qPrintable(name));
            QVERIFY2(!texts.last().contains("secret"), qPrintable(name));
        }
        const QByteArray head = "Host: " + server.address().toLatin1() +
                                "\nAuthorization: Basic (credentials)\nContent-Type: application/xml\n";
        const auto about = [&](const QByteArray& uptime) {
            const QByteArray body = declared("\n<reply><about><model>QDF40X</model>") +
                                    fields("version=3.6.1 serial=SIM-000001 hostname=qdsim") +
                                    "<description>Simulated fax server</description>"
                                    "<channels>4</channels><uptime>0 days 00:00:" +
                                    uptime + "</uptime></about></reply>";
            return "GET /qdws/v1/about HTTP/1.1\n" + head +
                   "\nHTTP/1.1 200\nContent-Type: application/xml\nContent-Length: " +
                   QByteArray::number(body.size()) + "\n\n" + body + '\n';
        };
        QCOMPARE(s(texts[0]), s(about("00")));
        QCOMPARE(s(texts[2]), s(about("01"))); // a submission lies between
        QVERIFY(texts[1].contains('\n' + shortFax({"1"}) + "\nHTTP/1.1 200\n"));
        QVERIFY(texts[3].contains("\nHTTP/1.1 401\nWWW-Authenticate: Basic"));
        QVERIFY(texts[4].contains("\nAUTHORIZATION: (credentials)\n"));
        QVERIFY(QRegularExpression(s("\nContent-Type: application/pdf\n.*\n\n\\(\\d+ bytes\\)\n$"))
                    .match(s(texts[5]))
                    .hasMatch());
        QVERIFY(texts[6].endsWith("\n\n(connection closed)\n"));
        QVERIFY(texts[7].endsWith("</reply>\n(connection closed after 10 bytes)\n"));
        QVERIFY(texts[8].startsWith("DISCOVER\n\n200 OK\ninet_addr: "));

        QString error;
        QVERIFY(!SimServer(options).start(&error));
        QVERIFY(error.contains(s("not empty")));
    }

    void asksForCredentials()
    {
        Started server(steppedOptions());
        for (const char* credentials : {static_cast<const char*>(nullptr), "alice:Secret", "alice",
                                        "Alice:secret", "nobody:secret", "bob:"}) {
            const Wire::Answer answer = ask(server, "GET", "verify", {}, credentials);
            QCOMPARE(answer.status, 401);
            QVERIFY(answer.head.contains("WWW-Authenticate: Basic realm=\"qdws\"\r\n"));
        }
        Wire lowerCase("GET", "/qdws/v1/verify");
        lowerCase.credentials = QByteArray();
        lowerCase.moreHeaders = "Authorization: basic " + QByteArray("alice:secret").toBase64() + "\r\n";
        QCOMPARE(lowerCase.send(server).status, 401);
        QCOMPARE(ask(server, "POST", "ofax", shortFax({"5"}), "mute:m").status, 403);
    }

    void movesFaxesThroughTheirStates()
    {
        Started server(steppedOptions());
        const Wire::Answer answer = ask(server, "POST", "ofax", shortFax({"1", "2", "3"}));
        QCOMPARE(answer.count("fax_entry"), 3);
        QCOMPARE(answer.text("fax_entry_url"), server.url(s("/qdws/v1/ofax/1")).toString());
        QCOMPARE(states(server), s("pending pending pending"));
        QCOMPARE(get(server, "outbound_status?pending_limit=2&sending_limit=2").count("fax_entry"), 2);
        server.step(1000);
        QCOMPARE(states(server), s("sending sending sending"));
        QCOMPARE(get(server, "outbound_log").count("outbound_fax_entry"), 0);
        server.step(1000);
        QCOMPARE(states(server), s("sent sent sent"));
        QCOMPARE(get(server, "outbound_status").count("fax_entry"), 0);
        QCOMPARE(get(server, "ofax").count("fax_entry"), 0);
        QCOMPARE(get(server, "ofax?complete_limit=2").count("fax_entry"), 2);
        const Wire::Answer log = get(server, "outbound_log?limit=1");
        QCOMPARE(log.count("outbound_fax_entry"), 1);
        QCOMPARE(log.text("recipient_fax"), s("3")); // the newest
        QCOMPARE(log.text("status"), s("sent"));
    }

    void retriesBeforeItFails()
    {
        Started server(steppedOptions());
        const QByteArray twice = " <max_tries>2</max_tries>\n <try_interval>10</try_interval>\n";
        ask(server, "POST", "ofax", shortFax({"0999"}, {}, twice));
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
        QCOMPARE(get(server, "outbound_log").text("status"), s("failed"));
    }

    void abortsAndReschedules()
    {
        Started server(steppedOptions());
        ask(server, "POST", "ofax", shortFax({"1", "2"}));
        QCOMPARE(ask(server, "PUT", "outbound_log/2?at=2099-01-01T00%3A00%3A00", "").status, 200);
        QCOMPARE(ask(server, "DELETE", "ofax/1").text("state"), s("aborted"));
        server.step(60000);
        QCOMPARE(states(server), s("aborted pending"));
        QCOMPARE(ask(server, "DELETE", "ofax/1").status, 409);
        QCOMPARE(ask(server, "PUT", "outbound_log/1?at=now", "").status, 409);
        QCOMPARE(ask(server, "PUT", "outbound_log/2?at=now", "").status, 200);
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
        QCOMPARE(ask(server, "POST", "ofax", shortFax({"1", "2"}, attachments)).status, 200);
        const QVector<SimAttachment> stored = server.attachments(2);
        QCOMPARE(stored.size(), names.size());
        QSet<QString> paths;
        for (int i = 0; i < stored.size(); ++i) {
            QCOMPARE(stored[i].name.toUtf8(), names[i]);
            QCOMPARE(readFile(stored[i].path), "content " + QByteArray::number(i));
            QCOMPARE(QFileInfo(stored[i].path).canonicalPath(),
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
        QCOMPARE(ask(server, "POST", "ofax", shortFax({"1"}, attachment("large.txt", document))).status, 200);
        QVERIFY(readFile(server.attachments(1).value(0).path) == document);
        const SimRequest request = server.requests().value(0);
        QVERIFY(request.bodySize > document.size());
        QCOMPARE(request.body.size(), 1 << 20); // the rest is not kept
    }

    void showsFaxesOnlyToTheirSender()
    {
        Started server(steppedOptions());
        ask(server, "POST", "ofax", shortFax({"1"}));
        QCOMPARE(ask(server, "GET", "ofax", {}, "bob:word").count("fax_entry"), 0);
        QCOMPARE(ask(server, "GET", "ofax/1", {}, "bob:word").status, 403);
        QCOMPARE(ask(server, "DELETE", "ofax/1", {}, "bob:word").status, 403);
        QCOMPARE(ask(server, "GET", "ofax", {}, "root:r").count("fax_entry"), 1);
        QCOMPARE(ask(server, "DELETE", "ofax/1", {}, "root:r").status, 200);
    }

    void showsItsCertificate()
    {
        SimOptions options;
        options.tls = true;
        const Started server(options);
        QSslSocket socket;
        Wire::connectTo(server, &socket);
        QCOMPARE(socket.peerCertificate().toPem(), QSslCertificate(server.certificate()).toPem());
        QVERIFY(socket.peerCertificate().isSelfSigned());
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
            QCOMPARE(ask(server, "PUT", "users/alice", fullProfile()).status, 200);
            ask(server, "POST", "ofax", shortFax({"1", "2"}, attachment("a.txt", "hello")));
            ask(server, "DELETE", "ofax/1");
            QCOMPARE(server.stepChanges(30).size(), 30);
            book = written(server);
        }
        options.contacts = 1000; // what was saved counts
        Started server(options);
        QCOMPARE(states(server), s("aborted pending"));
        QCOMPARE(server.user(s("alice")).coverPageName, s("Urgent"));
        QCOMPARE(server.attachments(2).value(0).size, qint64(5));
        QCOMPARE(written(server), book);
        ask(server, "POST", "ofax", shortFax({"3"}));
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
        QTemporaryDir folder;
        const QString users = folder.filePath(s("users"));
        writeFile(users, "# nobody\n");
        for (const auto& [option, value, reason] : {std::make_tuple(s("--speed"), s("fast"), "--speed"),
                                                    {s("--users"), users, "no users"},
                                                    {s("--clock"), s("2026-11-31T00:00:00"), "--clock"}}) {
            QProcess wrong;
            wrong.start(s(QDSIM_PROGRAM), {option, value});
            QVERIFY(wrong.waitForFinished(20000));
            QCOMPARE(wrong.exitCode(), 2);
            QVERIFY(wrong.readAllStandardError().contains(reason));
        }

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
