// The commands of qdfax for Outlook, in this process, so that an Outlook in memory can stand for the real
// one.

#include "command.h"
#include "fakeoutlook.h"
#include "logger.h"
#include "settingsfile.h"
#include "shorthand.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <cstdio>
#include <memory>

#ifdef Q_OS_WIN
#include <io.h>
#define dup _dup
#define dup2 _dup2
#define close _close
#define fileno _fileno
#else
#include <unistd.h>
#endif

namespace {

/// What is written to a stream while something runs.
template <typename Function>
QByteArray captured(FILE* stream, const Function& function)
{
    QTemporaryFile file;
    file.open();
    std::fflush(stream);
    const int saved = dup(fileno(stream));
    dup2(file.handle(), fileno(stream));
    function();
    std::fflush(stream);
    dup2(saved, fileno(stream));
    close(saved);
    file.seek(0);
    return file.readAll();
}

} // namespace

class TestQdfaxOutlook : public QObject
{
    Q_OBJECT

    struct Result
    {
        int status{-1};
        QByteArray out;
        QByteArray err;
    };
    /// Runs "qdfax outlook" and the rest of the line, for which Outlook starts no more than once.
    Result run(const QString& line)
    {
        m_outlook->starts = 0;
        Result result;
        result.out = captured(stdout, [&] {
            result.err = captured(stderr, [&] {
                result.status = runCommandLine((s("qdfax outlook ") + line).split(QLatin1Char(' ')));
            });
        });
        [&] {
            QVERIFY(m_outlook->starts <= 1);
            QCOMPARE(result.err.count('\n'), result.status == 0 ? 0 : 1);
        }();
        return result;
    }
    /// How many contacts of a folder are in the cache; -1: it is no source.
    int copied(const FakeFolderPtr& folder)
    {
        const QStringList found =
            onStore(s("SELECT (SELECT count(*) FROM contacts WHERE source = sources.id) FROM sources "
                      "WHERE name = '%1' AND type = 2")
                        .arg(folder->key()));
        return found.isEmpty() ? -1 : found.first().toInt();
    }
    QString folder() const { return m_folder.filePath(s("Quendra Client Software")); }

    QTemporaryDir m_folder;
    QSharedPointer<FakeOutlook> m_outlook;
    FakeFolderPtr m_contacts, m_team;
    std::unique_ptr<FakeMailbox> m_mailbox;

private Q_SLOTS:
    void init()
    {
        // the library remembers where the settings are: one place for all, emptied
        qputenv("APPDATA", QFile::encodeName(m_folder.path()));
        Logger::inst().releaseLogFile(); // Windows deletes no open file
        QVERIFY(QDir(folder()).removeRecursively());
        m_mailbox = std::make_unique<FakeMailbox>();
        m_outlook = m_mailbox->outlook;
        m_contacts = m_mailbox->contacts;
        m_team = m_mailbox->team;
        m_contacts->items.resize(3);
        for (FakeItem& item : m_contacts->items)
            item.entryID = QString::number(&item - m_contacts->items.constData());
    }
    void cleanup()
    {
        m_mailbox.reset();
        QVERIFY(m_outlook->isBalanced());
    }

    void notAvailable()
    {
        m_outlook->isInstalled = false;
#ifndef Q_OS_WIN
        for (int i = 0; i < 2; ++i, OutlookPort::setCurrent({})) // and what there is here without any double
#endif
            for (const char* line : {"folders", "choose", "choose a:b", "choose --default", "sync --json"}) {
                const Result result = run(s(line));
                QCOMPARE(result.status, 4);
                QCOMPARE(result.out, QByteArray());
                QVERIFY2(result.err.startsWith("qdfax: Outlook is not available"), result.err);
            }
        QVERIFY(!QFile::exists(SettingsFile::defaultPath()));
    }

    void wholeWay()
    {
        QCOMPARE(run(s("sync")).status, int(ExitStatus::Settings));
        QCOMPARE(run(s("choose")).status, int(ExitStatus::Usage));
        QCOMPARE(run(s("choose --default a:b")).status, int(ExitStatus::Usage));
        QCOMPARE(run(s("choose E-Inbox:S:Mailbox")).status, int(ExitStatus::NotFound));

        QCOMPARE(run(s("choose --default")).status, 0);
        QCOMPARE(run(s("sync")).out, QByteArray("3 contacts copied.\n"));
        QCOMPARE(int(m_outlook->starts), 1);
        QCOMPARE(copied(m_contacts), 3);
        QCOMPARE(run(s("folders")).out, QByteArray("   Folder      Contacts  Key\n"
                                                   "   Mailbox\n"
                                                   "*    Contacts  yes       E-Contacts:S:Mailbox\n"
                                                   "       Team    yes       E-Team:S:Mailbox\n"));

        // another one takes its place, in the settings and in the cache
        QCOMPARE(run(s("choose ") + m_team->key()).status, 0);
        QCOMPARE(copied(m_contacts), -1);
        const QJsonDocument synced = QJsonDocument::fromJson(run(s("sync --json")).out);
        QCOMPARE(synced.toJson(QJsonDocument::Compact),
                 QByteArray("{\"contacts\":1,\"key\":\"E-Team:S:Mailbox\"}"));
        QCOMPARE(copied(m_team), 1);
        const QJsonValue mailbox = QJsonDocument::fromJson(run(s("folders --json")).out)[0];
        QCOMPARE(mailbox[s("contacts")], QJsonValue(false));
        const QJsonValue contacts = mailbox[s("folders")][0];
        QCOMPARE(contacts[s("chosen")], QJsonValue(false));
        QCOMPARE(contacts[s("folders")][0][s("chosen")], QJsonValue(true));

        // gone while it is read: not passed off as a copy
        m_outlook->beforeItem = [this](int) { m_team->isGone = true; };
        QCOMPARE(run(s("sync")).status, int(ExitStatus::NotFound));
        m_outlook->beforeItem = nullptr;
        QCOMPARE(run(s("sync")).status, int(ExitStatus::NotFound));
        QCOMPARE(copied(m_team), 1); // what it gave until then is kept for as long as nobody chooses another
        m_outlook->defaultContacts.clear();
        QCOMPARE(run(s("choose --default")).status, int(ExitStatus::NotFound));
    }

    void keepsTheSettings()
    {
        const QString file = SettingsFile::defaultPath();
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        writeFile(file, "damaged");
        for (const char* line : {"folders", "sync", "choose --default"})
            QCOMPARE(run(s(line)).status, int(ExitStatus::Settings));
        QCOMPARE(readFile(file), QByteArray("damaged"));
    }

    void unusableCache_data()
    {
        // a fault; what is said of choosing another folder, and of copying; empty: it goes well
        const Rows<QString, QByteArray, QByteArray> row;
        row("cannot be opened", "folder", "cannot be used", "cannot be used");
        row("is no database", "file", "cannot be used", "cannot be used");
        row("takes no source", "BEFORE INSERT ON sources", "cannot be used", "");
        row("takes no contact", "BEFORE INSERT ON contacts", "", "could not be stored");
        row("lets none go", "BEFORE DELETE ON contacts", "could not be taken out", "could not be stored");
    }
    void unusableCache()
    {
        const auto [fault, chosen, copied] = cells<QString, QByteArray, QByteArray>();
        QCOMPARE(run(s("choose --default")).status, 0);
        QCOMPARE(run(s("sync")).status, 0);
        const QString cache = folder() + s("/Contacts");
        if (fault == s("folder")) {
            QVERIFY(QDir(cache).removeRecursively());
            writeFile(cache, "in the way");
        } else if (fault == s("file")) {
            writeFile(cache + s("/contacts.sqlite"), QByteArray(5000, '?'));
        } else {
            onStore(s("CREATE TRIGGER fault %1 BEGIN SELECT RAISE(ABORT, 'fault'); END").arg(fault));
        }
        const auto check = [](const Result& result, const QByteArray& said) {
            QCOMPARE(result.status, said.isEmpty() ? int(ExitStatus::Ok) : int(ExitStatus::File));
            QVERIFY2(result.err.contains(said), result.err);
        };
        check(run(s("sync")), copied);
        if (copied == "could not be stored")
            QCOMPARE(this->copied(m_contacts), 3);
        check(run(s("choose ") + m_team->key()), chosen);
        SettingsFile settings;
        settings.load();
        QCOMPARE(settings.outlookFolder(), (chosen == "cannot be used" ? m_contacts : m_team)->key());
    }
};

QTEST_GUILESS_MAIN(TestQdfaxOutlook)
#include "tst_qdfaxoutlook.moc"
