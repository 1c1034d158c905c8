// Where a password must not turn up: whole runs of qdfax against qdsim, the demonstration among them, with
// everything logged.

#include "qdfaxprogram.h"
#include "shorthand.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

namespace {

/// Base64 as far as it is the same whatever follows the text.
QByteArray base64(const QByteArray& text)
{
    return text.left(text.size() / 3 * 3).toBase64();
}

/// Every form in which a program might give a password away, and its name.
QMap<QByteArray, QString> formsOf(const QString& login, const QString& password)
{
    const QString both = login + QLatin1Char(':') + password;
    // the beginning, of plain letters and digits, is the same in every quoted form
    const QString beginning = QRegularExpression(s("^\\w+")).match(password).captured();
    return {{password.toUtf8(), s("plain")},
            {beginning.toUtf8(), s("the beginning")},
            {password.toLatin1(), s("Latin-1")},
            {password.toHtmlEscaped().toUtf8(), s("in XML")},
            {QUrl::toPercentEncoding(password), s("in a URL")},
            {password.toUtf8().toHex(), s("in hexadecimal")},
            {base64(password.toUtf8()), s("Base64")},
            {base64(password.toLatin1()), s("Base64 of Latin-1")},
            {base64(both.toUtf8()), s("credentials")},
            {base64(both.toLatin1()), s("credentials in Latin-1")}};
}

} // namespace

class TestSecrets : public QObject
{
    Q_OBJECT

    const QString m_password = s("Tr0ub4dor&\u00e4 <\"3\">");
    const QString m_wrong = s("w1de0pen /%\u00fc");
    const QString m_shown = s("Dem0nstr4tion &<'\"/%2f+>? $HOME"); // the demonstration's
    QMap<QByteArray, QString> m_forms = formsOf(s("anna"), m_password);
    QStringList m_leaks;
    int m_samples{0}; ///< How often the processes were looked at.
    QTimer m_timer;   ///< Looks at them again and again.
    QTemporaryDir m_folder;
    QProcess m_sim;
    QString m_address;

    QString path(const char* name) const { return m_folder.filePath(s(name)); }

    void look(const QByteArray& text, const QString& where)
    {
        for (auto form = m_forms.begin(); form != m_forms.end(); ++form) {
            const QString leak = where + s(": ") + form.value();
            if (text.contains(form.key()) && !m_leaks.contains(leak))
                m_leaks << leak;
        }
    }

    /// The command lines of all processes there are.
    void lookAtProcesses()
    {
        const QStringList entries = QDir(s("/proc")).entryList({s("[0-9]*")}, QDir::Dirs);
        for (const QString& entry : entries)
            look(readFile(s("/proc/") + entry + s("/cmdline")), s("a command line"));
        ++m_samples;
    }

    /// Returns their number, and what the log among them holds.
    int lookAtFiles(const QString& folder, QByteArray* log = nullptr)
    {
        int files = 0;
        QDirIterator all(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString file = all.next();
            const QByteArray content = readFile(file);
            look(content, file);
            if (log && file.contains(s("/Logs/")))
                *log += content;
            ++files;
        }
        return files;
    }

    Result run(const QString& line, const QString& password)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(s("APPDATA"), path("appdata"));
        environment.insert(s("QDFAX_PASSWORD"), password);
        Program program;
        program.begin(QProcess::splitCommand(line) << s("--log-level") << s("4"), m_folder.path(),
                      environment);
        lookAtProcesses(); // and then as the timer says
        program.closeWriteChannel();
        const Result result = program.finish();
        look(result.out, line + s(", output"));
        look(result.err, line + s(", error text"));
        return result;
    }

private Q_SLOTS:
    void initTestCase()
    {
        for (const QString& another : {m_wrong, m_shown}) {
            const auto forms = formsOf(s("anna"), another);
            for (auto form = forms.begin(); form != forms.end(); ++form)
                m_forms.insert(form.key(), form.value() + s(" of ") + another);
        }

        connect(&m_timer, &QTimer::timeout, this, &TestSecrets::lookAtProcesses);
        m_timer.start(5);
        QVERIFY(QDir().mkpath(path("appdata")));
        writeFile(path("users"), "anna:" + m_password.toUtf8() + ":global\n");
        writeFile(path("text.txt"), "Hello\n");
        m_sim.start(s(QDSIM_PROGRAM),
                    {s("--users"), path("users"), s("--inbound"), s("3"), s("--contacts"), s("20"),
                     s("--groups"), s("2"), s("--spool"), path("spool"), s("--speed"), s("0")});
        QVERIFY(m_sim.waitForReadyRead(20000));
        m_address = s(m_sim.readLine()).section(s("http://"), 1).trimmed();
        QVERIFY(!m_address.isEmpty());
    }

    void init() { m_leaks.clear(); }

    /// Positive control: the searches detect a password that is present.
    void everyFormIsFound()
    {
        QProcess process;
        process.start(s("/bin/sh"), {s("-c"), s("read line"), s("sh"), m_password});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY((lookAtProcesses(), !m_leaks.isEmpty()));
        process.closeWriteChannel();
        process.waitForFinished();
        m_leaks.clear();
        QVERIFY(QDir().mkpath(path("planted")));
        writeFile(path("planted/file"), m_forms.keys().join('\n'));
        lookAtFiles(path("planted"));
        QCOMPARE(m_leaks.size(), m_forms.size());
    }

    void wholeRun()
    {
        const QString add = s("server add %1 --login anna").arg(m_address);
        QVERIFY(run(add, m_wrong).status != 0);
        CHECK_RUN(run(add, m_password), 0);
        for (const char* line :
             {"server list", "server list --json", "whoami", "covers", "queue", "sent", "inbox --json",
              "download --inbox 1 --to .", "send text.txt --to 555 --no-cover --json", "contacts sync",
              "contacts add Rosa --fax 5", "contacts list --json", "contacts sync --full",
              "contacts export --csv all.csv"})
            CHECK_RUN(run(s(line), m_password), 0);
        for (const char* line :
             {"send missing.txt --to 5", "send text.txt --to 5 --cover Nosuch", "abort /qdws/v1/ofax/77",
              "download /nosuch", "contacts show 999999", "nonsense", "server add"})
            QVERIFY2(run(s(line), m_password).status != 0, line);
        // nobody is there any more
        m_sim.kill();
        QVERIFY(m_sim.waitForFinished());
        for (const char* line : {"whoami", "send text.txt --to 5", "contacts sync"})
            QVERIFY2(run(s(line), m_password).status != 0, line);
        look(m_sim.readAllStandardOutput(), s("qdsim, output"));
        look(m_sim.readAllStandardError(), s("qdsim, error text"));
        QByteArray log;
        QVERIFY(lookAtFiles(path("appdata"), &log) >= 3); // log, settings, contacts
        QVERIFY(log.contains("TaskVerifyLogin request"));
        QVERIFY2(m_leaks.isEmpty(), qPrintable(m_leaks.join(QLatin1Char('\n'))));
    }

    void demonstration()
    {
        for (const char* needed : {"bash", "jq", "wget"}) {
            if (QStandardPaths::findExecutable(s(needed)).isEmpty())
                QSKIP("The demonstration needs what is not installed.");
        }
        const QString folder = path("demo");
        QVERIFY(QDir().mkpath(folder));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(s("DEMO_PASSWORD"), m_shown);
        QProcess demo;
        demo.setProcessEnvironment(environment);
        demo.start(s("bash"), {s(DEMO_SCRIPT), QFileInfo(s(QDFAX_PROGRAM)).path(), folder});
        m_samples = 0;
        QTRY_COMPARE_WITH_TIMEOUT(demo.state(), QProcess::NotRunning, 200000);
        const QByteArray out = demo.readAllStandardOutput();
        const QByteArray err = demo.readAllStandardError();
        QVERIFY2(demo.exitCode() == 0 && out.contains("Everything worked"), (out + err).constData());
        QVERIFY(m_samples > 100);

        look(out, s("the demonstration's output"));
        look(err, s("the demonstration's error text"));
        QByteArray log;
        QVERIFY(lookAtFiles(folder, &log) > 10);
        QVERIFY(log.count(" reply") > 20);
        QVERIFY2(m_leaks.isEmpty(), qPrintable(m_leaks.join(QLatin1Char('\n'))));
    }
};

QTEST_GUILESS_MAIN(TestSecrets)
#include "tst_secrets.moc"
