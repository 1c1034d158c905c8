// The commands of qdfax for Outlook, in this process, so that an Outlook in memory can stand for the real
// one.

#include "command.h"
#include "contactlocalstorage.h"
#include "fakeoutlook.h"
#include "settingsfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>

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

QString s(const char* text)
{
    return QString::fromUtf8(text);
}

/// What is written to a stream while this lives.
class Captured
{
public:
    explicit Captured(FILE* stream)
        : m_stream(stream)
    {
        std::fflush(m_stream);
        m_saved = dup(fileno(m_stream));
        m_file.open();
        dup2(m_file.handle(), fileno(m_stream));
    }
    ~Captured() { text(); }

    /// Ends it.
    QByteArray text()
    {
        if (m_saved >= 0) {
            std::fflush(m_stream);
            dup2(m_saved, fileno(m_stream));
            close(m_saved);
            m_saved = -1;
        }
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    FILE* m_stream;
    QTemporaryFile m_file;
    int m_saved;
};

struct Run
{
    explicit Run(std::initializer_list<const char*> arguments)
    {
        QStringList line{s("qdfax")};
        for (const char* argument : arguments)
            line << s(argument);
        Captured output(stdout);
        Captured error(stderr);
        status = runCommandLine(line);
        out = output.text();
        err = error.text();
    }
    int status;
    QByteArray out;
    QByteArray err;
};

} // namespace

class TestQdfaxOutlook : public QObject
{
    Q_OBJECT

    int copied(const FakeFolderPtr& folder)
    {
        ContactLocalStorage storage;
        const quint32 source = storage.getSource(folder->key(), ContactLocalStorage::SourceOutlook);
        return source == 0 ? -1
                           : storage
                                 .getContactList(source, ContactLocalStorage::AnyType,
                                                 ContactLocalStorage::AnyLocation, 0, 0, 0)
                                 .size();
    }

    QString folder() const { return m_folder.filePath(s("Quendra Client Software")); }

    QTemporaryDir m_folder;
    QSharedPointer<FakeOutlook> m_outlook;
    FakeFolderPtr m_contacts, m_team;

private Q_SLOTS:
    void init()
    {
        // the library remembers where the settings are: one place for all, emptied
        qputenv("APPDATA", QFile::encodeName(m_folder.path()));
        QVERIFY(QDir(folder()).removeRecursively());
        m_outlook = QSharedPointer<FakeOutlook>::create();
        OutlookPort::setCurrent(m_outlook);
        const auto mailbox = m_outlook->add(FakeFolderPtr(), s("Mailbox"), 0);
        m_outlook->add(mailbox, s("Inbox"), 0);
        m_contacts = m_outlook->add(mailbox, s("Contacts"), OutlookFolder::contactItems);
        m_team = m_outlook->add(m_contacts, s("Team"), OutlookFolder::contactItems);
        m_outlook->defaultContacts = m_contacts;
        for (const char* id : {"a", "b", "c"}) {
            FakeItem item;
            item.entryID = item.fullName = s(id);
            m_contacts->items.append(item);
        }
        m_team->items.append(m_contacts->items.first());
    }
    void cleanup()
    {
        OutlookPort::setCurrent(QSharedPointer<OutlookPort>());
        QVERIFY(m_outlook->isBalanced());
    }

    void notAvailable_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QByteArray>("argument");
        QTest::newRow("folders") << QByteArray("folders") << QByteArray();
        QTest::newRow("choose") << QByteArray("choose") << QByteArray("a:b");
        QTest::newRow("choose the default") << QByteArray("choose") << QByteArray("--default");
        QTest::newRow("sync") << QByteArray("sync") << QByteArray("--json");
    }
    void notAvailable()
    {
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, argument);
        m_outlook->isInstalled = false;
        for (int i = 0; i < 2; ++i) {
            const Run run = argument.isEmpty() ? Run({"outlook", command.constData()})
                                               : Run({"outlook", command.constData(), argument.constData()});
            QCOMPARE(run.status, 4);
            QCOMPARE(run.out, QByteArray());
            QCOMPARE(run.err.count('\n'), 1);
            QVERIFY2(run.err.startsWith("qdfax: Outlook is not available"), run.err);
#ifdef Q_OS_WIN
            break;
#endif
            // and what there is on this platform without any double
            OutlookPort::setCurrent(QSharedPointer<OutlookPort>());
        }
        QVERIFY(!QFile::exists(SettingsFile::defaultPath()));
    }

    void wholeWay()
    {
        QCOMPARE(Run({"outlook", "sync"}).status, int(ExitStatus::Settings));
        QCOMPARE(Run({"outlook", "choose"}).status, int(ExitStatus::Usage));
        QCOMPARE(Run({"outlook", "choose", "--default", "a:b"}).status, int(ExitStatus::Usage));
        QCOMPARE(Run({"outlook", "choose", "E-Inbox:S:Mailbox"}).status, int(ExitStatus::NotFound));

        Run choose({"outlook", "choose", "--default"});
        QVERIFY2(choose.status == 0, choose.err);
        const Run sync({"outlook", "sync"});
        QVERIFY2(sync.status == 0, sync.err);
        QCOMPARE(sync.out, QByteArray("3 contacts copied.\n"));
        QCOMPARE(copied(m_contacts), 3);

        const Run folders({"outlook", "folders"});
        QCOMPARE(folders.out, QByteArray("   Folder      Contacts  Key\n"
                                         "   Mailbox\n"
                                         "*    Contacts  yes       E-Contacts:S:Mailbox\n"
                                         "       Team    yes       E-Team:S:Mailbox\n"));

        // another one takes its place, in the settings and in the cache
        const QByteArray team = m_team->key().toUtf8();
        choose = Run({"outlook", "choose", team.constData()});
        QVERIFY2(choose.status == 0, choose.err);
        QCOMPARE(copied(m_contacts), -1);
        QCOMPARE(Run({"outlook", "sync", "--json"}).out.simplified(),
                 QByteArray("{ \"contacts\": 1, \"key\": \"E-Team:S:Mailbox\" }"));
        QCOMPARE(copied(m_team), 1);
        const QJsonObject mailbox =
            QJsonDocument::fromJson(Run({"outlook", "folders", "--json"}).out).array().first().toObject();
        QCOMPARE(mailbox.value(s("contacts")).toBool(true), false);
        const QJsonObject contacts = mailbox.value(s("folders")).toArray().first().toObject();
        QCOMPARE(contacts.value(s("chosen")).toBool(true), false);
        QCOMPARE(contacts.value(s("folders")).toArray().first().toObject().value(s("chosen")).toBool(), true);

        m_team->isGone = true;
        QCOMPARE(Run({"outlook", "sync"}).status, int(ExitStatus::NotFound));
        QCOMPARE(copied(m_team), 1); // what was copied is kept for as long as nobody chooses another
        m_outlook->defaultContacts.clear();
        QCOMPARE(Run({"outlook", "choose", "--default"}).status, int(ExitStatus::NotFound));
    }

    void keepsTheSettings()
    {
        QFile file(SettingsFile::defaultPath());
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<settings><strange>kept</strange></settings>");
        file.close();
        QCOMPARE(Run({"outlook", "choose", "--default"}).status, 0);
        SettingsFile settings;
        QCOMPARE(settings.load(), SettingsFile::Good);
        QCOMPARE(settings.outlookFolder(), m_contacts->key());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("<strange>kept</strange>"));
        file.close();

        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("damaged");
        file.close();
        for (const char* command : {"folders", "sync"})
            QCOMPARE(Run({"outlook", command}).status, int(ExitStatus::Settings));
        QCOMPARE(Run({"outlook", "choose", "--default"}).status, int(ExitStatus::Settings));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("damaged"));
    }

    void unusableCache()
    {
        QCOMPARE(Run({"outlook", "choose", "--default"}).status, 0);
        QDir cache(folder() + s("/Contacts"));
        QVERIFY(cache.removeRecursively());
        QFile inTheWay(cache.path());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        const Run run({"outlook", "sync"});
        QCOMPARE(run.status, int(ExitStatus::File));
        QVERIFY2(run.err.contains("could not be stored"), run.err);
    }
};

QTEST_GUILESS_MAIN(TestQdfaxOutlook)
#include "tst_qdfaxoutlook.moc"
