// The program qdfax as users start it: servers and passwords, sending, and what goes wrong.

#include "qdfaxworld.h"
#include "scriptedserver.h"

#include <QNetworkInterface>

class TestQdfax : public QdfaxTest
{
    Q_OBJECT

    const QString m_password = s("s3cret & \"quoted\"");

    QString settings() const { return path("appdata/Quendra Client Software/Settings/qdfax.xml"); }

    void startSim(const SimOptions& options)
    {
        QdfaxTest::startSim(options, {"mary:s3cret & \"quoted\":global", "tom:other:nosend"});
    }

    /// Runs of now on have these, like "LANG=de LC_ALL=C", of all variables that choose a language.
    void speak(const char* variables)
    {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"})
            m_environment.remove(s(name));
        const QStringList assignments = s(variables).split(QLatin1Char(' '));
        for (const QString& assignment : assignments)
            m_environment.insert(assignment.section(s("="), 0, 0), assignment.section(s("="), 1));
    }

private Q_SLOTS:
    void init()
    {
        newFolder(m_password);
        SimOptions options;
        options.speed = 0;
        options.spoolDir = path("spool");
        startSim(options);
        writeFile(path("text.txt"), "Hello\nworld\n");
        writeFile(path("empty.pdf"), "");
        writeFile(path("huge.txt"), "text");
        QVERIFY(QFile::resize(path("huge.txt"), 512 << 20)); // sparse; with any other too large
    }
    void cleanup() { m_sim.reset(); }

    void sendAndControl()
    {
        addServer();
        const auto fax = [this](int i) { return m_sim->faxes().value(i); };
        const auto yearEnd = [](int year) { return QDateTime({year, 12, 31}, {12, 0}).toMSecsSinceEpoch(); };
        const Result me = run("whoami --json");
        QVERIFY(me.value("permissions").toMap().value(s("editGlobalContacts")).toBool());

        const QByteArray pdf = "%PDF-1.4\n" + QByteArray(100000, '\xe4');
        writeFile(path("offer.pdf"), pdf);
        const Result sent =
            run("send offer.pdf text.txt --to \"+49 30 1,Mary,Poe, Inc\" --to 555 --cover standard --subject "
                "Subject --comments Comments --at 2099-12-31T12:00 --priority 5 --json");
        CHECK_RUN(sent, 0);
        QCOMPARE(m_sim->faxes().size(), 2);
        const QStringList texts = {fax(0).recipient.fax, fax(0).recipient.organization, fax(0).cover.name,
                                   fax(0).cover.comments};
        QCOMPARE(texts.join(QLatin1Char('|')), s("+49 30 1|Poe, Inc|Standard|Comments"));
        QCOMPARE(fax(0).schedule.priority, 5);
        QCOMPARE(fax(0).schedule.sendAt, yearEnd(2099));
        const QVector<SimAttachment> attachments = m_sim->attachments(fax(0).id);
        QCOMPARE(attachments.size(), 2);
        QCOMPARE(readFile(attachments.at(0).path), pdf);
        QCOMPARE(readFile(attachments.at(1).path), QByteArray("Hello\nworld\n"));

        const QString first = sent.value(0, "url").toString();
        CHECK_RUN(run("abort %1", first), 0);
        CHECK_RUN(run("reschedule %1 --at 2098-12-31T12:00", sent.value(1, "url").toString()), 0);
        QCOMPARE(fax(0).state, s("aborted"));
        QCOMPARE(fax(1).schedule.sendAt, yearEnd(2098));
        CHECK_RUN(run(QStringList{s("abort"), first + s("99")}), 2);

        CHECK_RUN(run("profile set --name Anna --priority 4 --page-size a4 --cover Urgent"), 0);
        QCOMPARE(m_sim->user(s("mary")).person.name, s("Anna"));
        QCOMPARE(m_sim->user(s("mary")).defaults.pageSize, s("a4"));
        QCOMPARE(run("profile show --json").value("defaultCoverPage").toString(), s("Urgent"));
        // the profile decides where the command line does not
        CHECK_RUN(run("send text.txt --to 5"), 0);
        QCOMPARE(fax(2).cover.name + QString::number(fax(2).schedule.priority), s("Urgent4"));
        CHECK_RUN(run("send text.txt --to 5 --no-cover --priority 1"), 0);
        QVERIFY(!fax(3).cover.enabled && fax(3).schedule.priority == 1);
        CHECK_RUN(run("send text.txt --to 5 --cover Nosuch"), 9);
        QCOMPARE(m_sim->refusals().filter(s("POST")), QStringList());
    }

    void passwordFromFileAndInput()
    {
        m_environment.remove(s("QDFAX_PASSWORD"));
        writeFile(path("pw"), m_password.toUtf8() + "\nsecond line\n");
        const char* add = "server add %1 --login mary --password-file %2";
        CHECK_RUN(run(add, m_sim->address(), s("pw")), 0);
        const QStringList fromInput = QProcess::splitCommand(s(add).arg(m_sim->address(), s("-")));
        CHECK_RUN(run(fromInput, m_password.toUtf8() + "\r\n"), 0);
        CHECK_RUN(run(add, m_sim->address(), s("missing")), 11);
        // no terminal to ask on
        CHECK_RUN(run("server add %1 --login mary", m_sim->address()), 1, "--password-file");
    }

    void passwordFromTerminal()
    {
        m_environment.remove(s("QDFAX_PASSWORD"));
        for (const QByteArray& typed : {m_password.toUtf8() + '\n', QByteArray("s3c\x03")}) {
            Terminal terminal;
            Program program;
            program.terminal = terminal.name();
            QVERIFY(terminal.hasEcho());
            start(program, {s("server"), s("add"), m_sim->address(), s("--login"), s("mary")});
            QTRY_VERIFY_WITH_TIMEOUT(terminal.shown().contains("Password of mary@"), Program::longest);
            QVERIFY(!terminal.hasEcho());
            QVERIFY(terminal.type(typed));
            CHECK_RUN(program.finish(), typed.endsWith('\n') ? 0 : 130);
            QVERIFY2(!terminal.shown().contains("s3c"), terminal.shown());
            QVERIFY(terminal.hasEcho());
        }
    }

    void wrongCommandLines_data()
    {
        const Rows<int, QByteArray> row; // status, what is said
        row("", 1, "Usage:");
        row("nosuch", 1, "no command \"nosuch\"");
        row("whoami --bogus", 1, "bogus");
        row("whoami --timeout x", 1, "--timeout");
        row("whoami --server nosuch@x", 12, "nosuch@x");
        row("server add", 1, "ADDRESS");
        row("server add http://x --login a", 1, "without http://");
        row("server add x --login a:b", 1, "colon");
        row("server remove nosuch", 12, "nosuch");
        row("send", 1, "--to");
        row("send text.txt --to Mary", 1, "no fax number");
        row("send text.txt --to 5 --at 2020-01-01T00:00", 1, "in the past");
        row("send text.txt --to 5 --priority 6", 1, "0 to 5");
        row("send text.txt --to 5 --cover a --no-cover", 1, "--no-cover");
        row("send text.txt missing.pdf --to 5", 11, "missing.pdf");
        row("send text.txt empty.pdf --to 5", 11, "empty.pdf");
        row("send text.txt huge.txt --to 5", 11, "huge.txt cannot be sent: the files of one fax");
        row("send text.txt . --to 5", 11, "not a file");
        row("abort nonsense", 1, "URL");
        row("profile set", 1, "nothing to set");
        row("download", 1, "--inbox");
        row("download ftp://x/y", 1, "http://");
        row("download --inbox 1 --to nosuch", 11, "nosuch");
    }
    void wrongCommandLines()
    {
        const auto [status, says] = cells<int, QByteArray>();
        addServer();
        const Result result = run(QTest::currentDataTag());
        CHECK_RUN(result, status, says);
        QCOMPARE(result.out, QByteArray());
        // nothing that changes anything was sent
        QCOMPARE(m_sim->requestCount() - m_sim->requestCount(s("GET")), 0);
    }

    void helpOfEveryCommand()
    {
        const Result all = run("help");
        CHECK_RUN(all, 0);
        CHECK_RUN(run("--version"), 0);
        const QString commands = s(all.out).section(s("Commands:\n"), 1).section(s("\n\n"), 0, 0);
        const QStringList lines = commands.split(QLatin1Char('\n')).filter(QRegularExpression(s("^  \\S")));
        QVERIFY(lines.size() >= 20);
        for (const QString& line : lines) {
            const QString name = line.mid(2).section(s("  "), 0, 0);
            const Result one = run("help %1", name);
            QVERIFY2(one.status == 0 && one.out.contains("Examples:\n  qdfax"), qPrintable(name));
            QCOMPARE(run("%1 --help", name).out, one.out);
        }
        const Result group = run("help contacts");
        QCOMPARE(group.out.count("\n  contacts "), all.out.count("\n  contacts "));
        QCOMPARE(group.out.count("--log-level"), 1);
    }

    void languageOfUser_data()
    {
        const Rows<bool> row; // German
        row("LANG=de_DE.UTF-8", true);
        row("LANG=de_AT", true);
        row("LANG=en_US.UTF-8 LC_MESSAGES=de_DE.UTF-8", true);
        row("LANG=de_DE.UTF-8 LC_ALL=C.UTF-8", false);
        row("LANG=de_DE.UTF-8 LC_MESSAGES=C", false);
        row("LANG=fr_FR.UTF-8", false); // there is no such translation
        row("LANG=fr_FR.UTF-8 LANGUAGE=fr:de", true);
        row("LANG=de_DE.UTF-8 LANGUAGE=en:de", false); // English is one of the languages that there are
        row("LC_ALL=C.UTF-8 LANGUAGE=de", false);
    }
    void languageOfUser()
    {
        const auto [german] = cells<bool>();
        speak(QTest::currentDataTag());
        CHECK_RUN(run("queue"), 12, german ? "Kein Faxserver ist eingerichtet" : "No fax server is configur");
        // known before there is an application that could have translations
        QVERIFY(run("help captures").out.contains(german ? "\nOptionen aller" : "\nOptions of every"));
    }

    void german()
    {
        addServer();
        CHECK_RUN(run("send text.txt --to 555 --at 2099-01-01T12:00"), 0);
        speak("LANG=de_DE.UTF-8");
        const QByteArray queue = run("queue").out;
        QVERIFY2(queue.startsWith("ZUSTAND") && queue.contains("wartend"), queue);
        // the log too, whose texts are the library's
        CHECK_RUN(run("queue --log-level 4"), 0);
        const QFileInfo log =
            QDir(path("appdata/Quendra Client Software/Logs")).entryInfoList(QDir::Files).value(0);
        QVERIFY(readFile(log.filePath()).contains("TaskGetFaxEntry-Anfrage:"));
        // what programs read has no language
        QCOMPARE(run("queue --json").value(0, "state").toString(), s("pending"));
        QVERIFY(m_sim->addFault(s("cut,path=/qdws/v1/about")));
        CHECK_RUN(run("server add %1 --login mary", m_sim->address()), 2, "Lesen der Angaben zum Server");
    }

    void badServers_data()
    {
        const Rows<int, QByteArray> row; // status, what is said
        row("wrong password", 3, "does not accept login \"mary\"");
        row("unknown host", 2, "no host has this name");
        row("refused port", 2, "refused");
        row("TLS on a plain port", 2, "without --ssl");
        row("plain on a TLS port", 2, "with --ssl");
        row("TLS on a silent port", 10, "without --ssl");
        row("html", 7, "web page");
        row("body=<html><body>Login</body></html>", 7, "web page"); // well-formed
        row("notxml", 7, "cannot be understood");
        row("empty", 7, "cannot be understood");
        row("status=400", 2, "with --ssl"); // from a port that speaks TLS only
        row("status=500", 2, "500");
        row("hangup", 2, "closed the connection");
        row("cut,path=/qdws/v1/about", 2, "Reading the server's identity");
        row("notxml,path=/qdws/v1/users", 7, "Reading the user's profile");
        row("delay=20000", 10, "nothing was heard for 1 s");
    }
    void badServers()
    {
        const QString fault = s(QTest::currentDataTag()); // of the server, or a word of this test's
        const auto [status, says] = cells<int, QByteArray>();
        QString address = m_sim->address();
        const char* const add = "server add %1 --login mary --timeout 1%2";
        QTcpServer silent; // takes the connection and never speaks
        if (fault == s("wrong password")) {
            m_environment.insert(s("QDFAX_PASSWORD"), s("wr0ng"));
        } else if (fault == s("unknown host")) {
            address = s("nosuch.invalid");
        } else if (fault == s("refused port")) {
            m_sim->stop();
        } else if (fault == s("TLS on a silent port")) {
            QVERIFY(silent.listen(QHostAddress::LocalHost));
            address = s("127.0.0.1:%1").arg(silent.serverPort());
        } else if (fault == s("plain on a TLS port")) {
            startSim(with([](SimOptions& options) { options.tls = true; }));
            address = m_sim->address();
        } else if (!fault.startsWith(s("TLS"))) {
            QVERIFY(m_sim->addFault(fault));
        }
        const Result result = run(add, address, fault.startsWith(s("TLS")) ? s(" --ssl") : QString());
        CHECK_RUN(result, status, says);
        QVERIFY2(result.err.contains(address.toUtf8()), result.err);
        QVERIFY2(result.err.count('\n') == 1 && !result.err.contains("wr0ng"), result.err);
        QVERIFY(!QFile::exists(settings())); // what cannot be used is not kept
    }

    void tlsServer()
    {
        startSim(with([](SimOptions& options) {
            options.tls = true;
            options.inbound = 1;
        }));
        CHECK_RUN(run("server add %1 --login mary --ssl", m_sim->address()), 0);
        CHECK_RUN(run("send text.txt --to 5"), 0);
        CHECK_RUN(run("download --inbox 1"), 0);
    }

    void badSettings()
    {
        const QDir folder = QFileInfo(settings()).dir();
        QVERIFY(folder.mkpath(s(".")));
        for (const bool isNewer : {true, false}) {
            const QByteArray content = isNewer ? "<settings version=\"3\"></settings>" : "<settings>";
            writeFile(settings(), content);
            for (const char* line :
                 {"server list", "whoami", "server remove x", "server default x", "send text.txt --to 5"})
                CHECK_RUN(run(line), 12, "qdfax.xml");
            QCOMPARE(readFile(settings()), content);
            QCOMPARE(m_sim->requestCount(), 0);
            // adding a server moves a damaged one aside, and says so
            const QByteArray says = isNewer ? "qdfax.xml" : folder.filePath(s("qdfax.xml.damaged-")).toUtf8();
            CHECK_RUN(run("server add %1 --login mary", m_sim->address()), isNewer ? 12 : 0, says);
            CHECK_RUN(run("whoami"), isNewer ? 12 : 0);
            m_sim->clearRequests();
        }
        const QStringList kept = folder.entryList({s("qdfax.xml.damaged-*")});
        QCOMPARE(readFile(folder.filePath(kept.value(0))), QByteArray("<settings>"));
    }

    void onlyTheChosenServerIsContacted()
    {
        addServer();
        ScriptedServer silent;
        silent.setHangUp(ScriptedServer::HangUp::NoAnswer);
        CHECK_RUN(run("server add %1 --login tom --no-check --default", silent.address()), 0);
        CHECK_RUN(run("server list"), 0);
        CHECK_RUN(run("whoami --server mary@%1", m_sim->address()), 0);
        CHECK_RUN(run("server default %1", m_sim->address()), 0);
        CHECK_RUN(run("whoami"), 0);
        QCOMPARE(silent.requests().size(), 0);
        CHECK_RUN(run("server remove tom@%1", silent.address()), 0);
        QCOMPARE(run("server list --json").array().size(), 1);
    }

    void olderServersAreNotAskedForWhatTheyCannot()
    {
        startSim(with([](SimOptions& options) { options.version = s("3.2.7"); }));
        addServer();
        for (const char* newer : {"printers", "send text.txt --to 5 --page-size a4",
                                  "send text.txt --to 5 --print-receipt always"})
            CHECK_RUN(run(newer), 4);
        CHECK_RUN(run("send text.txt --to 5"), 0);
        QCOMPARE(m_sim->faxes().size(), 1);
    }

    void waitForTheEnd()
    {
        SimOptions options;
        options.speed = 10000;
        options.failPattern = s("^000$");
        startSim(options);
        addServer();
        CHECK_RUN(run("send text.txt --wait --interval 1 --to 1"), 0);
        // a hiccup on the way does not end the waiting
        QVERIFY(m_sim->addFault(s("status=503,method=GET,path=/qdws/v1/ofax,times=1")));
        const Result result = run("send text.txt --wait --interval 1 --json --to 1 --to 000");
        CHECK_RUN(result, 13);
        QVERIFY(result.value(0, "sent").toBool() && result.value(1, "sent") == false);
        QCOMPARE(run("sent --json").array().size(), 3);
        QCOMPARE(run("queue --json").array().size(), 0);
        QCOMPARE(run("queue --finished 5 --json").array().size(), 3);
    }

    void lostOutputIsNoSuccess()
    {
        addServer();
        Program program;
        program.setStandardOutputFile(s("/dev/full"));
        start(program, {s("help")});
        CHECK_RUN(program.finish(), 11);
        // a reader that has had enough is nothing to complain of
        Program piped;
        QProcess reader;
        piped.setStandardOutputProcess(&reader);
        start(piped, {s("watch"), s("sent"), s("--interval"), s("1")});
        reader.start(s("true"), QStringList());
        const Result ended = piped.finish();
        QTRY_COMPARE(reader.state(), QProcess::NotRunning);
        CHECK_RUN(ended, 141);
        QCOMPARE(ended.err, QByteArray());
    }

    void discoverFindsTheSimulator()
    {
        for (const QNetworkInterface& one : QNetworkInterface::allInterfaces()) {
            if (!one.addressEntries().isEmpty() && !one.flags().testFlag(QNetworkInterface::IsLoopBack))
                QSKIP("Would broadcast on a real network; needs a network of its own (unshare --net).");
        }
        CHECK_RUN(run("discover --timeout 200"), 14);
        startSim(with([](SimOptions& options) { options.discoveryAddress = s("0.0.0.0"); }));
        const Result result = run("discover --timeout 1000 --json");
        CHECK_RUN(result, 0);
        QCOMPARE(result.array().size(), 1); // several answers of one server are one line
        QCOMPARE(result.value(0, "address").toString(), m_sim->address());
        QCOMPARE(run("discover --timeout 1000").out.count('\n'), 1);
    }

    void doubtIsSaid_data()
    {
        const Rows<int, bool> row; // status, whether it is
        row("hangup", 2, true);    // before the answer, the fax taken
        row("cut=40", 2, true);
        row("truncated", 7, true);
        row("status=502", 2, true);
        row("status=504", 2, true);
        row("status=403", 2, false);
    }
    void doubtIsSaid()
    {
        const auto [status, isInDoubt] = cells<int, bool>();
        addServer();
        QVERIFY(m_sim->addFault(s(QTest::currentDataTag()) + s(",method=POST")));
        const Result result = run("send text.txt --to 5");
        CHECK_RUN(result, status);
        QVERIFY2(result.err.contains("not known") == isInDoubt, result.err);
        QVERIFY(m_sim->faxes().size() <= 1); // nothing is sent twice
    }

    void conflictNamesTheLogs()
    {
        addServer();
        QVERIFY(m_sim->addFault(s("status=409,path=/qdws/v1/o")));
        for (const char* line : {"abort /qdws/v1/ofax/17", "reschedule /qdws/v1/ofax/17"})
            CHECK_RUN(run(line), 2, "no longer in a state");
    }
};

QTEST_GUILESS_MAIN(TestQdfax)
#include "tst_qdfax.moc"
