// Where a password must not turn up: a whole run of qdfax against qdsim, with everything logged.

#include "qdfaxprogram.h"
#include "shorthand.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

namespace {

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
            {password.toUtf8().toBase64(), s("Base64")},
            {password.toLatin1().toBase64(), s("Base64 of Latin-1")},
            {both.toUtf8().toBase64(), s("credentials")},
            {both.toLatin1().toBase64(), s("credentials in Latin-1")}};
}

} // namespace

class TestSecrets : public QObject
{
    Q_OBJECT

    const QString m_password = s("Tr0ub4dor&\u00e4 <\"3\">");
    const QString m_wrong = s("w1de0pen /%\u00fc");
    QMap<QByteArray, QString> m_forms = formsOf(s("anna"), m_password);
    QStringList m_leaks;
    QTemporaryDir m_folder;
    QProcess m_sim;
    QString m_address;

    QString path(const char* name) const { return m_folder.filePath(s(name)); }

    void look(const QByteArray& text, const QString& where)
    {
        for (auto form = m_forms.begin(); form != m_forms.end(); ++form) {
            if (text.contains(form.key()))
                m_leaks << where + s(": ") + form.value();
        }
    }

    /// The command lines of all processes there are.
    void lookAtProcesses()
    {
        const QStringList entries = QDir(s("/proc")).entryList({s("[0-9]*")}, QDir::Dirs);
        for (const QString& entry : entries)
            look(readFile(s("/proc/") + entry + s("/cmdline")), s("a command line"));
    }

    int lookAtFiles(const QString& folder)
    {
        int files = 0;
        QDirIterator all(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString file = all.next();
            look(readFile(file), file);
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
        QTimer sample;
        connect(&sample, &QTimer::timeout, this, &TestSecrets::lookAtProcesses);
        program.begin(QProcess::splitCommand(line) << s("--log-level") << s("4"), m_folder.path(),
                      environment);
        lookAtProcesses();
        sample.start(10);
        program.closeWriteChannel();
        const Result result = program.finish();
        look(result.out, line + s(", output"));
        look(result.err, line + s(", error text"));
        return result;
    }

private Q_SLOTS:
    void initTestCase()
    {
        const auto wrong = formsOf(s("anna"), m_wrong);
        for (auto form = wrong.begin(); form != wrong.end(); ++form)
            m_forms.insert(form.key(), form.value() + s(" of the wrong one"));

        QVERIFY(QDir().mkpath(path("appdata")));
        writeFile(path("users"), "anna:" + m_password.toUtf8() + ":global\n");
        writeFile(path("text.txt"), "Hello\n");
        m_sim.start(s(QDSIM_PROGRAM),
                    {s("--users"), path("users"), s("--inbound"), s("3"), s("--contacts"), s("20"),
                     s("--groups"), s("2"), s("--spool"), path("spool"), s("--speed"), s("0")});
        QVERIFY(m_sim.waitForReadyRead(20000));
        const auto match =
            QRegularExpression(s("http://([0-9.:]+)")).match(QString::fromUtf8(m_sim.readLine()));
        QVERIFY(match.hasMatch());
        m_address = match.captured(1);
    }

    /// What finds nothing below must be able to find.
    void everyFormIsFound()
    {
        for (auto form = m_forms.begin(); form != m_forms.end(); ++form) {
            look("before " + form.key() + " after", s("here"));
            QVERIFY2(!m_leaks.isEmpty(), qPrintable(form.value()));
            m_leaks.clear();
        }
        QProcess process;
        process.start(s("/bin/sh"), {s("-c"), s("read line"), s("sh"), m_password});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY((lookAtProcesses(), !m_leaks.isEmpty()));
        process.closeWriteChannel();
        process.waitForFinished();
        writeFile(path("appdata/planted"), m_password.toUtf8().toBase64());
        m_leaks.clear();
        lookAtFiles(path("appdata"));
        QCOMPARE(m_leaks.size(), 1);
        QVERIFY(QFile::remove(path("appdata/planted")));
        m_leaks.clear();
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
        QVERIFY(lookAtFiles(path("appdata")) >= 3); // log, settings, contacts
        bool isLogged = false;
        QDirIterator logs(path("appdata/Quendra Client Software/Logs"), QDir::Files);
        while (logs.hasNext())
            isLogged = isLogged || readFile(logs.next()).contains("TaskVerifyLogin request");
        QVERIFY(isLogged);
        QVERIFY2(m_leaks.isEmpty(), qPrintable(m_leaks.join(QLatin1Char('\n'))));
    }
};

QTEST_GUILESS_MAIN(TestSecrets)
#include "tst_secrets.moc"
