// What qdfax shows of the logs, and how it downloads: from the server, from others, and cut short.

#include "qdfaxworld.h"
#include "scriptedserver.h"

#include <csignal>

class TestQdfaxDownloads : public QdfaxTest
{
    Q_OBJECT

    void startSim(int inbound = 0)
    {
        SimOptions options;
        options.speed = 0;
        options.inbound = inbound;
        QdfaxTest::startSim(options, {"mary:secret"});
        addServer();
    }
    SimInbound addFax(const char* name, const QByteArray& document)
    {
        SimInbound fax;
        fax.filename = s(name);
        fax.document = document;
        m_sim->addInbound(fax);
        return fax;
    }

private Q_SLOTS:
    void init()
    {
        newFolder();
        startSim();
        writeFile(path("text.txt"), "Hello\n");
    }
    void cleanup() { m_sim.reset(); }

    void longLog()
    {
        startSim(10000);
        const QJsonArray all = run("inbox --json").array();
        QCOMPARE(all.size(), 10000);
        for (int i = 1; i < all.size(); ++i)
            QVERIFY(all[i - 1][s("completed")].toString() >= all[i][s("completed")].toString());
        QCOMPARE(run("inbox --json --limit 7").array().size(), 7);
        m_environment.insert(s("COLUMNS"), s("60"));
        for (const QByteArray& line : run("inbox --limit 50").out.split('\n'))
            QVERIFY2(s(line).size() <= 60, line);
    }

    void absurdEntries()
    {
        SimInbound fax;
        fax.filename = s("b.tif");
        fax.completeTime = s("2026-01-01T00:00:00");
        fax.pages = s("-7");
        m_sim->addInbound(fax);
        fax.filename = s("\xc2\x9b evil.tif");
        fax.completeTime = s("0000-00-00T00:00:00");
        fax.pages = s("9999999999");
        fax.toName = QString(5000, QLatin1Char('x')) + QChar(0x202E);
        fax.status = s("dancing");
        m_sim->addInbound(fax);
        const Result entries = run("inbox --json");
        QCOMPARE(entries.array().size(), 2);
        QCOMPARE(entries.value(0, "file").toString(), s("b.tif")); // has a time
        QCOMPARE(entries.value(1, "status").toString(), s("dancing"));
        QVERIFY(entries.value(1, "completed").isNull());
        QCOMPARE(entries.value(1, "to").toString(), fax.toName);
        m_environment.insert(s("COLUMNS"), s("100"));
        const Result shown = run("inbox");
        CHECK_RUN(shown, 0);
        const QRegularExpression harmful(s("[\\x{0}-\\x{9}\\x{b}-\\x{1f}\\x{7f}-\\x{9f}\\x{202e}]"));
        QVERIFY2(!s(shown.out).contains(harmful), shown.out);
    }

    void watchRounds()
    {
        CHECK_RUN(run("send text.txt --to 5551234"), 0);
        QVERIFY(m_sim->addFault(s("status=503,method=GET,path=/qdws/v1/ofax,skip=1,times=1")));
        const Result result = run("watch queue --rounds 3 --interval 1");
        CHECK_RUN(result, 0);
        QCOMPARE(result.out.count("5551234"), 3); // what is known stays when one reading fails
        QCOMPARE(result.out.count("503"), 1);
    }

    void downloadFromTheInbox()
    {
        const SimInbound fax = addFax("a fax, \xc3\xa4.pdf", "%PDF-1.4\n" + QByteArray(3000000, '\x01'));
        const Result result = run("download --inbox 1 --json");
        const QString file = path(fax.filename);
        QCOMPARE(readFile(file), fax.document);
        QCOMPARE(result.value("bytes").toInt(), fax.document.size());

        writeFile(file, "mine"); // is not replaced unasked
        CHECK_RUN(run("download --inbox 1"), 11);
        QCOMPARE(readFile(file), QByteArray("mine"));
        CHECK_RUN(run("download --inbox 1 --overwrite"), 0);
        QCOMPARE(readFile(file), fax.document);
        CHECK_RUN(run("download --inbox 2"), 9);

        QVERIFY(QFile::remove(file));
        Program program;
        program.largestFile = 1000000;
        start(program, {s("download"), s("--inbox"), s("1")});
        CHECK_RUN(program.finish(), 11, fax.filename.toUtf8());
    }

    void badDownloads_data()
    {
        using Server = ScriptedServer;
        // answer, target, status, what is said, the first byte of what is left or null where that does not
        // matter
        const Rows<QByteArray, QString, int, QByteArray, QByteArray> row;
        const char* const target = "/d/x.tif";
        row("redirect", Server::reply("no", "302 Found", "Location: /y\r\n"), target, 2, "302", "n");
        row("404", Server::reply("no", "404 Not Found"), target, 9, "404", {});
        row("401", Server::reply("", "401 No", "WWW-Authenticate: Basic\r\n"), target, 3, "none was sent",
            {});
        row("no name", Server::reply("no"), "/d/", 11, "name", {});
        row("hidden name", Server::reply("no"), "/d/.profile", 11, ".profile", {});
        row("control characters", Server::reply("II*"), "/d/a%1Bb.tif", 11, "refused: it holds control", {});
        row("long name", Server::reply("II*"), s("/d/") + QString(300, QLatin1Char('x')), 11,
            "is refused: it is longer than 255 bytes", {});
        const char* const ok = "200 OK";
        row("packed unasked", Server::reply("\x1f\x8b", ok, "Content-Encoding: gzip\r\n"), target, 7, "gzip",
            {});
        row("packed in no way", Server::reply("II*", ok, "Content-Encoding: identity\r\n"), target, 0, "",
            "I");
        row("page by its type", Server::reply("Hello", ok, "Content-Type: text/html; charset=utf-8\r\n"),
            target, 7, "web page", {});
        row("page by its content", Server::reply("\n<!DOCTYPE HTML>", ok, "Content-Type: image/tiff\r\n"),
            target, 7, "web page", {});
    }
    void badDownloads()
    {
        const auto [answer, target, status, says, left] =
            cells<QByteArray, QString, int, QByteArray, QByteArray>();
        ScriptedServer other;
        other.setAnswer(answer);
        CHECK_RUN(run({s("download"), s("http://mary:pw@") + other.address() + target}), status, says);
        QVERIFY(readFile(path("x.tif")).startsWith(left));
        for (const WireRequest& request : other.requests()) {
            QCOMPARE(request.header("Authorization"), QByteArray()); // not ours, and not what the URL held
            QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
        }
    }

    void cutDownload()
    {
        addFax("cut.tif", QByteArray(300000, 'x'));
        QVERIFY(m_sim->addFault(s("cut=150000,path=/qdws/v1/documents")));
        CHECK_RUN(run("download --inbox 1"), 2, "cut.tif (150.0 kB)");
        QCOMPARE(readFile(path("cut.tif")).size(), 150000);
    }

    void interruptNamesThePartialFile()
    {
        ScriptedServer other;
        other.setAnswer("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        Program program;
        start(program, {s("download"), s("http://") + other.address() + s("/x.tif")});
        QTRY_COMPARE_WITH_TIMEOUT(readFile(path("x.tif")), QByteArray("half"), Program::longest);
        QCOMPARE(::kill(pid_t(program.processId()), SIGINT), 0);
        CHECK_RUN(program.finish(), 130, "x.tif");
    }

    void timeoutCountsSilenceOnly()
    {
        // a second and more in drops: longer than the time-out, but never silent
        addFax("slow.tif", QByteArray(30, 'x'));
        QVERIFY(m_sim->addFault(s("drip=60,path=/qdws/v1/documents")));
        CHECK_RUN(run("download --inbox 1 --timeout 1"), 0);
        m_sim->clearFaults();
        QVERIFY(m_sim->addFault(s("delay=20000,path=/qdws/v1/ofax")));
        CHECK_RUN(run("queue --timeout 1"), 10);
        CHECK_RUN(run("send text.txt --to 5 --timeout 1"), 10, "not known");
    }
};

QTEST_GUILESS_MAIN(TestQdfaxDownloads)
#include "tst_qdfaxdownloads.moc"
