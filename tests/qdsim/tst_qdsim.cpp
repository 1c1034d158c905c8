#include "shorthand.h"
#include "simwire.h"

#include <QtNetwork/QUdpSocket>
#include <QtTest/QtTest>

#include <csignal>

namespace {

QByteArray attachment(const QByteArray& name, const QByteArray& content)
{
    return block("attachment", "location=inline name=" + name +
                                   " content_type=text/plain content_transfer_encoding=base64 content=" +
                                   content.toBase64());
}

/// A submission in which every element that there is occurs.
QByteArray fullFax()
{
    return submission(
        block("sender", "contact_url=http://fax/qdws/v1/users/alice username=alice name=Alice&amp;Co "
                        "email_address=a@example.com phone_number=1 fax_number=2 organization=O "
                        "default_cover_page_enabled=true default_cover_page_name= priority=3 max_attempts=3 "
                        "interval=300 receipt=failure receipt_attachment=pdf print_receipt=never "
                        "print_receipt_printer= print_receipt_first=false fax_page_size=auto") +
        block("cover_page", "enabled=true name=Standard type=system url=http://fax/c subject=S comments=C") +
        block("recipient", "name=Bob fax_number=100") + block("recipient", "fax_number=200") +
        attachment("a.txt", "hello") + block("attachment", "location=external url=http://x/y.pdf") +
        fields("schedule_all_at=2031-02-03T04:05:06 priority=5 max_tries=1 try_interval=60 receipt=always "
               "receipt_attachment=tiff print_receipt=failure print_receipt_printer=Archive "
               "print_receipt_first=true fax_page_size=a4",
               1));
}

/// A profile in which every element occurs, with another text in it instead of one.
QByteArray profile(const char* text = "", const char* instead = "")
{
    return document("user",
                    fields("contact_url=http://fax/qdws/v1/users/alice username=alice name=A "
                           "email_address=e phone_number=1 fax_number=2 organization=O "
                           "default_cover_page_enabled=true default_cover_page_name=Urgent priority=0 "
                           "max_attempts=7 interval=20 receipt=always receipt_attachment=none "
                           "print_receipt=always print_receipt_printer=Archive "
                           "print_receipt_first=true fax_page_size=legal"))
        .replace(text, instead);
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
        // a "content type" is refused because there is none
        const Rows<QByteArray, QByteArray, int, QString, QByteArray> row; // request, status, reason, body
        const char* alice = "users/alice";
        row("no such path", "GET", "nosuch", 404, "no such path", {});
        row("wrong method", "POST", "about", 405, "POST", "");
        row("somebody else", "PUT", "users/bob", 403, "somebody else", profile("alice", "bob"));
        row("somebody else's profile", "GET", "users/bob", 403, "somebody else", {});
        row("no content type", "GET", "about", 415, "content type", {});
        row("delete without content type", "DELETE", "ofax/1", 415, "content type", {});
        row("body of a get", "GET", "about", 400, "a body", "x");
        row("query where none is", "GET", "about?a=b", 400, "a query", {});
        row("limits in other order", "GET", "inbound_log?limit=2&index=0", 400, "query", {});
        row("colons not escaped", "PUT", "outbound_log/1?at=2031-11-15T14:30:00", 400, "query", "");
        row("no such day", "PUT", "outbound_log/1?at=2031-02-30T14%3A30%3A00", 400, "no date", "");
        row("no such fax", "DELETE", "ofax/77", 404, "no fax", {});
        row("no declaration", "PUT", alice, 400, "does not begin", profile().remove(0, 38));
        row("profile on two lines", "PUT", alice, 400, "one line", profile("<name>", "\n<name>"));
        row("other document", "PUT", alice, 400, "not \"user\"", document("contact", {}));
        row("not xml", "PUT", alice, 400, "line 1", document("user", "<name>A & B</name>"));
        row("not utf-8", "PUT", alice, 400, "UTF-8", profile(">A<", ">\xe4<"));
        row("profile of another address", "PUT", alice, 400, "address", profile("users/alice", "users/x"));
        row("profile without cover page", "PUT", alice, 400, "default_cover_page_name",
            profile("<default_cover_page_name>Urgent</default_cover_page_name>"));
        row("without indentation", "POST", "ofax", 400, "indented", fullFax().replace("\n ", "\n"));

        const QByteArray url = "<contact_url>http://fax/qdws/v1/contacts/alice/1</contact_url>";
        const QByteArray member = "<contact>http://fax/qdws/v1/contacts/alice/1</contact>";
        row("put to a book", "PUT", "contacts/alice", 405, "a book", document("contact", url));
        row("query_time 0", "GET", "contacts/alice?query_time=0", 400, "query", {});
        row("query_time of 33 bits", "GET", "contacts/alice?query_time=4294967296", 400, "32 bits", {});
        row("query of oids", "GET", "contact_oids/alice?query_time=1", 400, "query", {});
        row("oids of an entry", "GET", "contact_oids/alice/1", 404, "no book", {});
        row("two lines", "POST", "contacts/alice", 400, "one line", document("contact", "\n<name>A</name>"));
        row("group in a book of contacts", "POST", "contacts/alice", 400, "not \"contact\"",
            document("contact_group", "<name>A</name>"));
        row("out of order", "POST", "contacts/alice", 400, "out of order",
            document("contact", "<fax_number>1</fax_number><name>A</name>"));
        row("other address", "PUT", "contacts/alice/1", 400, "not that of the request",
            document("contact", QByteArray(url).replace("/1<", "/2<")));
        row("https address", "PUT", "contacts/alice/1", 400, "https",
            document("contact", QByteArray(url).replace("http", "https")));
        row("unknown member", "POST", "contact_groups/alice", 404, "no member",
            document("contact_group", "<name>G</name>" + QByteArray(member).replace("/1<", "/99<")));
        row("members before the name", "POST", "contact_groups/alice", 400, "out of order",
            document("contact_group", member + "<name>G</name>"));

        const auto submission = [&row](const char* name, const char* part, const char* replacement,
                                       const char* reason) {
            QByteArray body = fullFax();
            const int at = body.indexOf(part);
            QVERIFY2(at > 0, name);
            row(name, "POST", "ofax", 400, reason, body.replace(at, int(qstrlen(part)), replacement));
        };
        submission("no sender", " <sender>", " <from>", "line");
        submission("attribute", "<sender>", "<sender kind=\"a\">", "attributes");
        submission("text beside elements", " <cover_page>", " hello <cover_page>", "text beside");
        submission("empty field of a contact", "<name>Bob</name>", "<name></name>", "left out");
        submission("contact out of order", "<name>Bob", "<fax_number>1</fax_number>\n  <name>Bob", "order");
        submission("https address", "http://fax/qdws", "https://fax/qdws", "https");
        submission("incomplete defaults", "  <interval>300</interval>\n", "", "\"interval\" expected");
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
        submission("options unordered", " <priority>5<", " <max_tries>1</max_tries>\n <priority>5<", "order");
        submission("first page not true", "receipt_first>true<", "receipt_first>false<", "only ever");
        submission("option twice", " <fax_page_size>a4</fax_page_size>\n",
                   " <fax_page_size>a4</fax_page_size>\n <fax_page_size>a4</fax_page_size>\n", "repeated");
    }
    void refusesRequests()
    {
        const auto [method, target, status, reason, body] =
            cells<QByteArray, QByteArray, int, QString, QByteArray>();
        Started server(steppedOptions());
        ask(server, "POST", "ofax", shortFax({"5"}));
        server.addEntry(alicesContacts, someEntry("one"));
        Wire wire{method, "/qdws/v1/" + target, body};
        if (reason == s("content type"))
            wire.contentType.clear();
        QCOMPARE(wire.send(server).status, status);
        QCOMPARE(server.refusals().size(), 1);
        QVERIFY2(server.refusals().first().contains(reason), qPrintable(server.refusals().first()));
        QCOMPARE(states(server), s("pending"));
        QCOMPARE(server.book(s("alice")).value(0).person.name, s("one"));
        QCOMPARE(server.book(s("alice")).size() + server.book(s("alice"), true).size(), 1);
    }

    void knowsWhatItsVersionCanDo_data()
    {
        const Rows<bool, bool, bool> row;      // defaults, receipts, page size
        row("ABC40X 1.4", true, false, false); // the first with defaults
        row("ABC40X 1.3.9", false, false, false);
        row("ABC41X 3.6.1", false, true, true); // another model
        row("ABC40X 3.2.7-beta", true, false, false);
        row("ABC40X 3.2.8", true, true, false);   // the first with receipts
        row("ABC40X 3.2.10", true, false, false); // counts as 3.2.1
    }
    void knowsWhatItsVersionCanDo()
    {
        const auto [defaults, receipts, pageSize] = cells<bool, bool, bool>();
        SimOptions options;
        options.model = s(QTest::currentDataTag()).section(QLatin1Char(' '), 0, 0);
        options.version = s(QTest::currentDataTag()).section(QLatin1Char(' '), 1);
        const Started server(options);
        const QByteArray user = get(server, "users/alice").body;
        QCOMPARE(user.contains("<max_attempts>"), defaults);
        QCOMPARE(user.contains("<print_receipt>"), defaults && receipts);
        QCOMPARE(user.contains("<fax_page_size>"), defaults && pageSize);
        for (const auto& [option, isKnown] : {std::make_pair("print_receipt=always", receipts),
                                              std::make_pair("fax_page_size=auto", pageSize)})
            QCOMPARE(ask(server, "POST", "ofax", shortFax({"5"}, {}, fields(option, 1))).status,
                     isKnown ? 200 : 400);
        QCOMPARE(get(server, "data/printer_names").status, receipts ? 200 : 404);
    }

    void keepsRequestsByteForByte()
    {
        Started server(with([](SimOptions& made) { made.users = {someUser("a b+c/d:p%\xc3\xa4")}; }));
        Wire wire{"GET", "/qdws/v1/users/a%20b+c/d", {}, "a b+c/d:p%\xe4"};
        wire.moreHeaders = "X-Thing:  a%20b; c \r\nx-thing: 2\r\n";
        QCOMPARE(wire.send(server).status, 200);
        const SimRequest request = server.requests(s("GET"), s("/qdws/v1/users/")).value(0);
        QCOMPARE(request.rawHead, wire.bytes(server));
        QCOMPARE(request.target, wire.target);
        QCOMPARE(request.path, s("/qdws/v1/users/") + request.user);
        QCOMPARE(request.user, s("a b+c/d"));
        QCOMPARE(request.header("X-THING"), QByteArrayLiteral("a%20b; c"));
        QVERIFY(!request.hasHeader("Cookie"));

        const Wire put{"PUT", "/qdws/v1/users/x", QByteArray("\0\xff\r\n\r\nGET /", 11)};
        put.send(server);
        QCOMPARE(server.requests(s("PUT")).value(0).body, put.body);
        QCOMPARE(server.requestCount(), 2);
        server.clearRequests();
        QCOMPARE(server.requestCount(), 0);
    }

    /// The usual ones are in the manual of the web service, which a script records anew.
    void recordsExchanges()
    {
        QTemporaryDir folder;
        SimOptions options;
        options.users = {someUser("alice:secret"), someUser("bob:word")};
        options.recordDir = folder.filePath(s("a/b"));
        options.inbound = 1;
        options.discoveryAddress = s("127.0.0.1");
        options.discoveryPort = 0;
        Started server(options);
        ask(server, "GET", "users/../x", {}, "bob:wrong");
        Wire{"GET", "/other", {}, {}, "application/xml", "AUTHORIZATION: secret\r\n"}.send(server);
        get(server, "documents/inbound/1/" + server.inbound().value(0).filename.toLatin1());
        QVERIFY(server.addFault(s("hangup,times=1")) && server.addFault(s("cut=10,times=1")));
        get(server, "verify");
        get(server, "verify");
        QUdpSocket socket;
        socket.writeDatagram("DISCOVER\n", QHostAddress(QHostAddress::LocalHost), server.discoveryPort());
        QVERIFY(socket.waitForReadyRead(20000));
        server.stop();

        const QMap<QString, QString> expected = {
            {s("0001-GET-users_.._x.txt"), s("\nHTTP/1\\.1 401\nWWW-Authenticate: Basic")},
            {s("0002-GET-_other.txt"), s("\nAUTHORIZATION: \\(credentials\\)\n")},
            {s("0003-GET-documents_inbound_1_fax00001.pdf.txt"),
             s("\nContent-Type: application/pdf\n.*\n\n\\(\\d+ bytes\\)\n$")},
            {s("0004-GET-verify.txt"), s("\n\n\\(connection closed\\)\n$")},
            {s("0005-GET-verify.txt"), s("</reply>\n\\(connection closed after 10 bytes\\)\n$")},
            {s("0006-UDP-discovery.txt"), s("^DISCOVER\n\n200 OK\ninet_addr: ")},
        };
        const QDir records(options.recordDir);
        QCOMPARE(records.entryList(QDir::Files, QDir::Name), expected.keys());
        for (const QString& name : expected.keys()) {
            const QByteArray text = readFile(records.filePath(name));
            const QRegularExpression pattern(expected[name], QRegularExpression::DotMatchesEverythingOption);
            QVERIFY2(pattern.match(s(text)).hasMatch(), text);
            for (const char* account : {"alice:secret", "bob:wrong"})
                QVERIFY2(!text.contains(QByteArray(account).toBase64()), text);
            QVERIFY2(!text.contains("secret"), text);
        }
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
        const QByteArray lowerCase = "Authorization: basic " + QByteArray("alice:secret").toBase64() + "\r\n";
        const Wire wire{"GET", "/qdws/v1/verify", {}, {}, "application/xml", lowerCase};
        QCOMPARE(wire.send(server).status, 401);
        QCOMPARE(ask(server, "POST", "ofax", shortFax({"5"}), "mute:m").status, 403);
    }

    void movesFaxesThroughTheirStates()
    {
        Started server(steppedOptions());
        const QByteArray twice = fields("max_tries=2 try_interval=10", 1);
        ask(server, "POST", "ofax", shortFax({"0999"}, {}, twice));
        const Wire::Answer answer = ask(server, "POST", "ofax", shortFax({"1", "2", "3"}));
        QCOMPARE(answer.text("fax_entry_url"), server.url(s("/qdws/v1/ofax/2")).toString());
        QCOMPARE(get(server, "outbound_status?pending_limit=2&sending_limit=2").count("fax_entry"), 2);
        QCOMPARE(ask(server, "PUT", "outbound_log/4?at=2099-01-01T00%3A00%3A00", "").status, 200);
        QCOMPARE(ask(server, "DELETE", "ofax/2").text("state"), s("aborted"));
        for (const auto& [pause, expected] : {std::make_pair(0, "pending aborted pending pending"),
                                              {1000, "sending aborted sending pending"},
                                              {1000, "pending aborted sent pending"},
                                              {9999, "pending aborted sent pending"},
                                              {1, "sending aborted sent pending"},
                                              {1000, "failed aborted sent pending"},
                                              {60000, "failed aborted sent pending"}}) {
            server.step(pause);
            QCOMPARE(states(server), s(expected));
        }
        QCOMPARE(server.faxes().first().tryNumber, 2);
        QCOMPARE(ask(server, "DELETE", "ofax/2").status, 409);
        QCOMPARE(ask(server, "PUT", "outbound_log/2?at=now", "").status, 409);
        QCOMPARE(ask(server, "PUT", "outbound_log/4?at=now", "").status, 200);
        server.step(2000);
        QCOMPARE(states(server), s("failed aborted sent sent"));
        QCOMPARE(get(server, "outbound_status").count("fax_entry"), 0);
        QCOMPARE(get(server, "ofax").count("fax_entry"), 0);
        QCOMPARE(get(server, "ofax?complete_limit=2").count("fax_entry"), 2);
        const Wire::Answer log = get(server, "outbound_log?limit=1");
        QCOMPARE(log.count("outbound_fax_entry"), 1);
        QCOMPARE(log.text("recipient_fax") + log.text("status"), s("3sent")); // the newest
    }

    void storesAttachmentsUnderSafeNames()
    {
        QTemporaryDir folder;
        Started server(with([&folder](SimOptions& options) { options.spoolDir = folder.path(); }));
        QByteArray large(100 << 20, '\0');
        for (int i = 0; i < large.size(); ++i)
            large[i] = static_cast<char>(i ^ (i >> 8) ^ (i >> 16));
        const QByteArrayList names = {"a.txt", "a.txt",    "../../b.txt", "/etc/passwd",
                                      "",      "c\\d.txt", "..",          QByteArray(300, 'n') + ".txt"};
        const auto content = [&](int i) { return i == 0 ? large : "content " + QByteArray::number(i); };
        QByteArray attachments;
        for (int i = 0; i < names.size(); ++i)
            attachments += attachment(names[i], content(i));
        QCOMPARE(ask(server, "POST", "ofax", shortFax({"1", "2"}, attachments)).status, 200);
        const QVector<SimAttachment> stored = server.attachments(2);
        QCOMPARE(stored.size(), names.size());
        for (int i = 0; i < stored.size(); ++i) {
            QCOMPARE(stored[i].name.toUtf8(), names[i]);
            QVERIFY(readFile(stored[i].path) == content(i)); // so each has a file of its own
        }
        QCOMPARE(QFileInfo(stored[0].path).fileName(), s("a.txt"));
        QCOMPARE(QDir(folder.filePath(s("1"))).entryList(QDir::Files).size(), names.size());
        const SimRequest request = server.requests().value(0);
        QVERIFY(request.bodySize > large.size());
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

    void stopsAtOnce()
    {
        Started server;
        QSslSocket idle;
        Wire wire{"GET", "/qdws/v1/about"};
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
                lines += entry.members + QStringList{entry.uid, QString::number(entry.changed)};
            return lines;
        };
        {
            Started server(options);
            QCOMPARE(ask(server, "PUT", "users/alice", profile()).status, 200);
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
        QVERIFY(ask(server, "POST", "ofax", shortFax({"3"})).text("fax_entry_url").endsWith(s("/3")));
        server.step(5000);
        QCOMPARE(states(server), s("aborted sent sent"));
    }

    void runsAsAProgram()
    {
        QTemporaryDir folder;
        const QString users = folder.filePath(s("users"));
        writeFile(users, "# nobody\n");
        const QString state = folder.filePath(s("qdsim.json"));
        writeFile(state, "{\"format\":1,\"users\":[{\"na");
        QProcess process;
        for (const auto& [option, value, reason] : {std::make_tuple("--speed", s("fast"), "--speed"),
                                                    {"--users", users, "no users"},
                                                    {"--record", folder.path(), "not empty"},
                                                    {"--state", folder.path(), "qdsim.json"},
                                                    {"--clock", s("2026-11-31T00:00:00"), "--clock"}}) {
            process.start(s(QDSIM_PROGRAM), {s(option), value});
            QVERIFY(process.waitForFinished(20000));
            QCOMPARE(process.exitCode(), 2);
            QVERIFY(process.readAllStandardError().contains(reason));
        }
        QCOMPARE(readFile(state).size(), 25); // a damaged state is not overwritten

        process.start(s(QDSIM_PROGRAM), {s("--users"), s("/dev/stdin"), s("--inbound"), s("3"), s("--fault"),
                                         s("status=418,times=1")});
        process.write("# people\nbob:word:admin\n"); // a pipe
        process.closeWriteChannel();
        QVERIFY(process.waitForReadyRead(20000));
        QByteArray line = process.readLine();
        const QByteArray said = "qdsim listening on http://127.0.0.1:";
        QVERIFY2(line.startsWith(said), line);
        QSslSocket socket;
        socket.connectToHost(s("127.0.0.1"), line.remove(0, said.size()).trimmed().toUShort());
        QVERIFY(socket.waitForConnected(20000));
        const SimServer anyServer; // only names the host
        Wire wire{"GET", "/qdws/v1/inbound_log", {}, "bob:word"};
        wire.keepAlive = true;
        QCOMPARE(wire.send(anyServer, &socket).status, 418);
        QCOMPARE(wire.send(anyServer, &socket).count("inbound_fax_entry"), 3);
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        QVERIFY(process.waitForFinished(20000));
        QVERIFY(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0);
        QVERIFY(process.readAllStandardError().contains("GET /qdws/v1/inbound_log"));
    }
};
QTEST_GUILESS_MAIN(TestQdsim)
#include "tst_qdsim.moc"
