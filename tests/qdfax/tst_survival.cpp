// What is kept on this machine when a program is killed while it writes, has no room to, or is not alone.
//
// QDCORE_ROUNDS says how often programs are killed (15), QDCORE_SEED repeats a run.

#include "contactworld.h"
#include "qdfaxworld.h"
#include "storefile.h"

#include <QtTest>

#include <thread>

namespace {

const int contactCount = 300;
const int groupCount = 6;

int rounds()
{
    return qEnvironmentVariableIsSet("QDCORE_ROUNDS") ? qEnvironmentVariableIntValue("QDCORE_ROUNDS") : 15;
}

/// What the programs that are to be killed do: synchronise the books of a server, so many times, and say on
/// the way where they are. 0 when all went well.
int synchronise(const QString& address, int times)
{
    const auto say = [](const char* word) { return ::write(STDOUT_FILENO, word, 1) == 1; };
    say("b"); // begins
    ContactWorld world;
    QObject::connect(world.contacts, &ContactManager::onSyncStart, [&say] { say("s"); }); // synchronises
    const QPointer<FaxServer> server = world.faxes->addServer(address, false, s("alice"), s("secret"));
    world.watch(server->contactProvider());
    bool ok = world.settleLogin(server);
    for (int i = 1; ok && i < times; ++i)
        ok = world.sync(server->contactProvider(), false);
    return ok && world.counts->errors == 0 ? 0 : 1;
}

/// A program that synchronises.
class Synchroniser : public QProcess
{
public:
    Synchroniser(const SimServer& sim, int times)
    {
        setProcessChannelMode(QProcess::ForwardedErrorChannel);
        start(QCoreApplication::applicationFilePath(),
              {s("--synchronise"), sim.address(), QString::number(times)});
    }
    /// Waits until it has said where it is. False when it never does.
    bool reaches(char place)
    {
        while (!m_said.contains(place)) {
            if (!waitForReadyRead(Program::longest))
                return false;
            m_said += readAllStandardOutput();
        }
        return true;
    }
    bool isOver() { return state() == NotRunning || waitForFinished(Program::longest); }

private:
    QByteArray m_said;
};

using Books = QVector<BookContent>; ///< Personal contacts and groups, global contacts and groups.

Books onServer(const SimServer& sim)
{
    Books books;
    for (int i = 0; i < 4; ++i)
        books.append(ContactWorld::onServer(sim, s("alice"), i >= 2, i % 2 == 1));
    return books;
}

Books inStore(const SimServer& sim)
{
    const ContactWorld world;
    const quint32 source =
        world.contacts->storage()->getSource(s("alice@") + sim.address(), ContactLocalStorage::SourceQuendra);
    Books books;
    for (int i = 0; i < 4; ++i)
        books.append(source ? world.stored(source, i >= 2, i % 2 == 1) : BookContent());
    return books;
}

BookContent reducedTo(const BookContent& book, const std::function<bool(const QString&)>& keep)
{
    BookContent left;
    for (auto entry = book.begin(); entry != book.end(); ++entry) {
        if (keep(entry.key()))
            left.insert(entry.key(), entry.value());
    }
    return left;
}

} // namespace

class TestSurvival : public QdfaxTest
{
    Q_OBJECT

    QRandomGenerator m_random;
    quint32 m_seed{0};

    QString settings() const { return path("appdata/Quendra Client Software/Settings/qdfax.xml"); }

    void pause(qint64 longest)
    {
        std::this_thread::sleep_for(std::chrono::microseconds(m_random.bounded(int(longest) + 1)));
    }

    static QStringList query(const char* text) { return OtherProgram(s(text)).rows(); }

    /// The file can be used, and nothing hangs in the air.
    static void checkDatabase()
    {
        QCOMPARE(query("PRAGMA integrity_check"), QStringList(s("ok")));
        QCOMPARE(query("SELECT contact FROM groups WHERE contact NOT IN (SELECT id FROM contacts) OR "
                       "contactgroup NOT IN (SELECT id FROM contacts)"),
                 QStringList());
        QCOMPARE(query("SELECT uid FROM contacts GROUP BY source, type, location, uid HAVING count(*) > 1"),
                 QStringList());
    }

    /// Contacts that are members of a group. A group brings its members along, into another book.
    static QSet<QString> membersOf(const SimServer& sim)
    {
        QSet<QString> uids;
        for (const QString& owner : {s("alice"), SimBooks::global()}) {
            const auto groups = sim.book(owner, true);
            for (const SimEntry& group : groups) {
                for (const QString& member : group.members)
                    uids.insert(member.section(QLatin1Char('/'), -1));
            }
        }
        return uids;
    }

    /// Changes every entry of every book but the members of groups, so that no mixture of old and new goes
    /// unnoticed; some go and some come.
    static void changeAll(SimServer& sim, const QSet<QString>& kept, int round)
    {
        const QByteArray mark = " #" + QByteArray::number(round);
        for (const QString& owner : {s("alice"), SimBooks::global()}) {
            for (const bool groups : {false, true}) {
                const SimBookId book{owner, groups};
                const int moving = groups ? 1 : 10;
                int deleted = 0;
                auto entries = sim.book(owner, groups);
                for (SimEntry& entry : entries) {
                    if (!groups && kept.contains(entry.uid))
                        continue;
                    entry.person.name = entry.person.name.section(s(" #"), 0, 0) + s(mark);
                    if (groups && entry.members.size() > 2)
                        std::rotate(entry.members.begin(), entry.members.begin() + 1, entry.members.end());
                    if (deleted < moving && ++deleted)
                        sim.deleteEntry(book, entry.uid);
                    else
                        sim.modifyEntry(book, entry);
                }
                SimEntry added = someEntry(("new" + mark).constData());
                if (groups)
                    added.members = entries.last().members.mid(0, 2);
                for (int i = 0; i < moving; ++i)
                    sim.addEntry(book, added);
            }
        }
    }

    /// The account with the server, and what it has now, in the file.
    void synchroniseHere(const SimServer& sim)
    {
        ContactWorld world;
        QVERIFY(world.settleLogin(world.add(sim)));
        QCOMPARE(world.counts->errors, 0);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_seed = qEnvironmentVariableIsSet("QDCORE_SEED")
                     ? quint32(qEnvironmentVariableIntValue("QDCORE_SEED"))
                     : QRandomGenerator::global()->generate() >> 1;
        m_random.seed(m_seed);
        qInfo("seed %u", m_seed);
    }
    void init()
    {
        newFolder();
        qputenv("APPDATA", path("appdata").toLocal8Bit());
    }

    void killedWhileSynchronising()
    {
        Started sim(SynchronisedWorld::books(contactCount, groupCount, m_seed));
        const QSet<QString> members = membersOf(sim);
        const auto isMember = [&members](const QString& uid) { return members.contains(uid); };
        qint64 whole[2]{}; // µs from where a program is waited for until its end; the second without a file
        QMap<QString, int> outcomes;
        for (int round = 0; round < rounds() + 2; ++round) {
            const bool isFresh = round % 5 == 0;
            const bool isMeasured = round == 0 || round == 1; // is not killed
            if (isFresh)
                QVERIFY(QDir(path("appdata/Quendra Client Software/Contacts")).removeRecursively());
            const Books old = isFresh ? Books(4) : onServer(sim);
            changeAll(sim, members, round);
            const Books now = onServer(sim);

            Synchroniser program(sim, 1);
            QVERIFY(program.reaches(isFresh ? 'b' : 's'));
            QElapsedTimer clock;
            clock.start();
            if (!isMeasured) {
                // without a file every other one dies while the file is made
                pause(isFresh && round % 2 == 0 ? whole[1] / 10 : whole[isFresh]);
                program.kill();
            }
            QVERIFY(program.isOver());
            if (isMeasured) {
                QCOMPARE(program.exitCode(), 0);
                whole[isFresh] = clock.nsecsElapsed() / 1000;
            }

            outcomes[s("transactions cut")] += QFileInfo(storeFile() + s("-journal")).size() > 0;
            if (QFile::exists(storeFile())) // all tables and indices, or none
                QCOMPARE(query("SELECT name FROM sqlite_master WHERE name NOT LIKE 'sqlite_%'").size() % 6,
                         0);
            const Books found = inStore(sim);
            checkDatabase();
            for (int i = 0; i < 4; ++i) {
                const bool groups = i % 2 == 1;
                const auto others = [&](const BookContent& book) {
                    return reducedTo(book, [&](const QString& uid) { return groups || !isMember(uid); });
                };
                const BookContent less =
                    reducedTo(old[i], [&](const QString& uid) { return now[i].contains(uid); });
                const QString outcome = others(found[i]) == others(now[i])   ? s("books new")
                                        : others(found[i]) == others(old[i]) ? s("books old")
                                        : others(found[i]) == others(less)   ? s("books old less deleted")
                                                                             : s("mixed");
                QVERIFY2(outcome != s("mixed"), qPrintable(s("book %1, round %2").arg(i).arg(round)));
                ++outcomes[outcome];
                // Members never change, but come with their book or with a group.
                const auto isThere = [&](const QString& uid) {
                    return isMember(uid) && (!isFresh || found[i].contains(uid));
                };
                QVERIFY(groups || reducedTo(found[i], isMember) == reducedTo(now[i], isThere));
            }

            synchroniseHere(sim);
            QCOMPARE(inStore(sim), now);
            checkDatabase();
        }
        report(outcomes);
    }

    void twoSynchroniseIntoOneFile()
    {
        Started sim(SynchronisedWorld::books(contactCount, groupCount, m_seed));
        const QSet<QString> members = membersOf(sim);
        synchroniseHere(sim);
        for (int round = 0; round < std::max(1, rounds() / 10); ++round) {
            Synchroniser one(sim, 12);
            Synchroniser other(sim, 12);
            while (one.state() != QProcess::NotRunning || other.state() != QProcess::NotRunning) {
                // members stay: a group is read after its book, and ends with an error when one has gone
                const SimBookId book{m_random.bounded(2) ? s("alice") : SimBooks::global(), false};
                const auto entries = sim.book(book.owner);
                SimEntry entry = entries.at(m_random.bounded(entries.size()));
                if (!members.contains(entry.uid))
                    sim.deleteEntry(book, entry.uid);
                entry = entries.at(m_random.bounded(entries.size()));
                entry.person.name += QLatin1Char('+');
                sim.modifyEntry(book, entry);
                sim.addEntry(book, someEntry("new"));
                one.waitForFinished(5);
                other.waitForFinished(5);
            }
            QCOMPARE(one.exitCode() + other.exitCode(), 0);
            checkDatabase();
            synchroniseHere(sim); // what is missing now and did not change would be missing for ever
            QCOMPARE(inStore(sim), onServer(sim));
        }
    }

    void killedWhileSaving()
    {
        const char* const lines[] = {"server default fax0", "server default fax1"};
        addTwo();
        QByteArray texts[2];
        qint64 whole = 0;
        for (const int server : {1, 0}) {
            whole = timeOf(lines[server]);
            texts[server] = readFile(settings());
        }
        QVERIFY(texts[0] != texts[1]);

        // one died, some seconds ago, before it wrote its number into the lock
        QFile left(lock());
        const QDateTime then = QDateTime::currentDateTime().addSecs(-6);
        QVERIFY(left.open(QIODevice::WriteOnly) && left.setFileTime(then, QFile::FileModificationTime));
        left.close();
        CHECK_RUN(run(lines[1]), 0);

        QMap<QString, int> outcomes;
        for (int round = 0; round < rounds(); ++round) {
            const int server = texts[0] == readFile(settings()) ? 1 : 0;
            kill(lines[server], whole);
            const QByteArray found = readFile(settings());
            QVERIFY2(found == texts[0] || found == texts[1], found.constData());
            const bool isLeft = !owned("qdfax.xml.saving-*").isEmpty();
            ++outcomes[found == texts[server] ? s("new") : isLeft ? s("old, side file left") : s("old")];
            QVERIFY(!isLeft || found == texts[1 - server]);

            // the next one works, says what happened and clears up, also when it only reads
            const Result first = run(round % 2 == 0 ? "server list" : lines[server]);
            CHECK_RUN(first, 0);
            QCOMPARE(first.err.contains("broken off"), isLeft);
            QCOMPARE(owned("qdfax.xml.saving-*"), QStringList());
            const Result next = run(lines[server]);
            CHECK_RUN(next, 0);
            QVERIFY(!next.err.contains("broken off"));
            QCOMPARE(readFile(settings()), texts[server]);
            QCOMPARE(owned("*"), QStringList(s("qdfax.xml")));
        }
        report(outcomes);
    }

    /// A damaged file is moved aside before the new one takes its place.
    void killedWhileReplacingDamaged()
    {
        const QDir folder = QFileInfo(settings()).dir();
        const QByteArray damaged = addTwo().chopped(30);
        const char* const add = "server add fax2 --login mary --no-check";
        qint64 whole = 0;
        QMap<QString, int> outcomes;
        for (int round = -1; round < rounds(); ++round) {
            QVERIFY(QDir(folder).removeRecursively() && folder.mkpath(s(".")));
            writeFile(settings(), damaged);
            QVERIFY(QFile::setPermissions(settings(), QFile::ReadOwner | QFile::WriteOwner | s_others));
            if (round < 0) {
                whole = timeOf(add);
                continue;
            }
            kill(add, whole * 3 / 2);
            // whether there is a new one or none, the damaged one is there, whole, and the owner's
            const bool isOld = readFile(settings()) == damaged;
            const bool isBetween = !QFile::exists(settings());
            const int sideFiles = owned("qdfax.xml.saving-*").size();
            const auto aside = [&] { return owned("qdfax.xml.damaged-*"); };
            ++outcomes[isOld ? s("old") : isBetween ? s("moved aside, none new") : s("new")];
            QCOMPARE(aside().size(), isOld ? 0 : 1);
            QVERIFY(!isBetween || sideFiles == 1);
            QVERIFY(isOld || readFile(folder.filePath(aside().first())) == damaged);
            const Result reader = run("server list");
            CHECK_RUN(reader, isOld ? 12 : 0);
            QCOMPARE(reader.err.contains("broken off"), sideFiles > 0);
            QCOMPARE(reader.out.contains("fax2"), !isOld && !isBetween);
            CHECK_RUN(run(add), 0);
            QCOMPARE(aside().size(), 1);
            QCOMPARE(readFile(folder.filePath(aside().first())), damaged);
            QVERIFY(run("server list").out.contains("fax2"));
            QCOMPARE(owned("*").size(), 2);
        }
        report(outcomes);
    }

    void noRoomForSettings()
    {
        const QByteArray before = addTwo();
        // what is saved is a little shorter
        for (int room = 1; room < before.size() * 9 / 10; room += std::max(1, before.size() / 8)) {
            Program program;
            program.largestFile = rlim_t(room);
            start(program, {s("server"), s("default"), s("fax1")});
            const Result result = program.finish();
            CHECK_RUN(result, 12, result.err.contains("file is as it was") ? "" : "Nothing can be written");
            QCOMPARE(readFile(settings()), before);
            QCOMPARE(owned("*"), QStringList(s("qdfax.xml")));
        }
    }

    /// Also files that were there before, and were open to others.
    void filesAreTheOwners()
    {
        for (const bool existed : {false, true}) {
            if (existed)
                QVERIFY(QFile::setPermissions(storeFile(), QFile::ReadOwner | QFile::WriteOwner | s_others));
            ContactLocalStorage store;
            QVERIFY(isOwners(storeFile()) && store.scopeBegin());
            store.deleteSource(store.addSource(s("x"), ContactLocalStorage::SourceQuendra));
            QVERIFY(QFile::exists(storeFile() + s("-journal")) && isOwners(storeFile() + s("-journal")));
            QVERIFY(store.scopeEnd());
        }
    }

private:
    static constexpr QFile::Permissions s_others{QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                                 QFile::ReadOther | QFile::WriteOther | QFile::ExeOther};

    QString lock() const { return settings() + s(".lock"); }
    static bool isOwners(const QString& file) { return !(QFile::permissions(file) & s_others); }

    /// Files beside the settings; all have to be the owner's.
    QStringList owned(const char* pattern) const
    {
        const QDir folder = QFileInfo(settings()).dir();
        const QStringList names = folder.entryList({s(pattern)}, QDir::Files);
        for (const QString& name : names)
            [&] { QVERIFY2(isOwners(folder.filePath(name)), qPrintable(name)); }();
        return names;
    }

    /// Starts a command. Returns when it has locked the settings, or is over.
    void startToSave(Program& program, const char* line)
    {
        start(program, QProcess::splitCommand(s(line)));
        while (program.state() != QProcess::NotRunning && !QFile::exists(lock()))
            program.waitForFinished(0);
    }
    /// How long a command takes from there until the settings are others, in µs.
    qint64 timeOf(const char* line)
    {
        const QByteArray before = readFile(settings());
        Program program;
        startToSave(program, line);
        QElapsedTimer clock;
        clock.start();
        while (program.state() != QProcess::NotRunning && readFile(settings()) == before)
            program.waitForFinished(0);
        const qint64 time = clock.nsecsElapsed() / 1000;
        [&] { CHECK_RUN(program.finish(), 0); }();
        return time;
    }
    void kill(const char* line, qint64 longest)
    {
        Program program;
        startToSave(program, line);
        pause(longest);
        program.kill();
        program.finish();
    }

    void report(const QMap<QString, int>& outcomes) const
    {
        QStringList figures;
        for (auto outcome = outcomes.begin(); outcome != outcomes.end(); ++outcome)
            figures << s("%1 %2").arg(outcome.key()).arg(outcome.value());
        qInfo("%d kills, seed %u: %s", rounds(), m_seed, qPrintable(figures.join(s(", "))));
    }

    /// Settings with two servers; nobody asks these. Returns the text of the file.
    QByteArray addTwo()
    {
        for (const QString& server : {s("fax0"), s("fax1")})
            [&] { CHECK_RUN(run("server add %1 --login mary --no-check", server), 0); }();
        return readFile(settings());
    }
};

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == s("--synchronise"))
        return synchronise(arguments.value(2), arguments.value(3).toInt());
    TestSurvival test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_survival.moc"
