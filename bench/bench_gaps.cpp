// How long the event loop is blocked while something large is going on, compared with an idle loop in the
// same run; and what a large log or book costs in memory and time.

#include "bench.h"
#include "benchserver.h"
#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "gaploop.h"
#include "memory.h"
#include "plainsqlite.h"
#include "quendracontact.h"
#include "simserver.h"
#include "tasks/taskgetinboundfaxentry.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstring>
#include <malloc.h>
#include <utility>

namespace {

double idle()
{
    GapLoop loop;
    QTimer::singleShot(300, [&] { loop.quit(); });
    return loop.run([] {});
}

SimOptions simOptions(int round, int contacts, int entries)
{
    SimOptions options;
    options.contacts = contacts;
    options.inbound = entries;
    options.seed = quint32(round + 1);
    options.keepRequests = false;
    options.compress = true; // so that large blocks arrive at once
    return options;
}

/// A client of a simulated server, with a store of its own.
class World
{
public:
    World(int round, int contacts, int entries)
        : sim(simOptions(round, contacts, entries))
    {
        qputenv("APPDATA", QFile::encodeName(m_dir.path()));
        if (!sim.start())
            fail("no server");
        manager = new ContactManager;
        faxes = new FaxManager(manager);
        server = new BareServer(*faxes, sim.address());
        server->initProvider();
        provider = server->contactProvider();
    }
    ~World()
    {
        delete faxes;
        delete manager;
    }

    double sync(bool full = false)
    {
        GapLoop loop;
        QObject::connect(provider, &ContactProvider::errorSyncedContacts, [] { fail("synchronisation"); });
        const auto end = QObject::connect(provider, &ContactProvider::syncedContacts, [&] { loop.quit(); });
        const double gap = loop.run([&] { provider->syncContacts(ContactList::PersonalContacts, full); });
        QObject::disconnect(end);
        return gap;
    }
    QByteArray file() const
    {
        const QString name = QStringLiteral("Quendra Client Software/Contacts/contacts.sqlite");
        return QFile::encodeName(m_dir.filePath(name));
    }
    int stored() const { return manager->storage()->quickSearch(QString(), 0, 0, 0).size(); }

    SimServer sim;
    QPointer<ContactManager> manager;
    QPointer<FaxManager> faxes;
    BareServer* server;
    QPointer<ContactProvider> provider;

private:
    QTemporaryDir m_dir;
};

double gapLog(int round, int entries)
{
    World world(round, 0, entries);
    auto* task = static_cast<TaskGetInboundFaxEntry*>(world.server->addTask(Task::GetInboundFaxEntry));
    GapLoop loop;
    QObject::connect(task, &Task::errorExecute, [] { fail("gap-log"); });
    QObject::connect(task, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
                     [&](const InboundFaxEntriesPtrListPtr& read) {
                         if (read->size() != entries)
                             fail("gap-log, entries");
                         loop.quit();
                     });
    return loop.run([&] { task->execute(); });
}

double gapBook(int round, int contacts)
{
    World world(round, contacts, 0);
    const double gap = world.sync();
    if (world.stored() != contacts)
        fail("gap-book");
    return gap;
}

double gapAgain(int round, int contacts)
{
    World world(round, contacts, 0);
    world.sync();
    const SimBookId book{QStringLiteral("alice"), false};
    const auto all = world.sim.book(book.owner);
    for (int i = 0; i < contacts / 100; ++i) {
        SimEntry entry = all.at(i * 100);
        entry.person.organization = QStringLiteral("Changed %1").arg(round);
        if (!world.sim.modifyEntry(book, entry))
            fail("gap-again, change");
    }
    return world.sync();
}

/// A contact is added on the server and in the store while a whole book is being stored.
double gapAdd(int round, int contacts)
{
    World world(round, contacts, 0);
    GapLoop loop;
    bool isAdded = false;
    bool isSynced = false;
    const auto end = [&] {
        if (isAdded && isSynced)
            loop.quit();
    };
    const auto add = [&] {
        QuendraContact contact;
        contact.setName(QStringLiteral("Added"));
        world.provider->addContact(contact, ContactList::PersonalContacts);
    };
    QObject::connect(world.provider, &ContactProvider::errorSyncedContacts, [] { fail("gap-add, sync"); });
    QObject::connect(world.provider, &ContactProvider::errorAddedContact, [] { fail("gap-add"); });
    QObject::connect(world.provider, &ContactProvider::addedContact, [&] { isAdded = true, end(); });
    QObject::connect(world.provider, &ContactProvider::syncedContacts, [&] { isSynced = true, end(); });
    // the bracket has begun when the storing thread has
    QTimer begun;
    QObject::connect(&begun, &QTimer::timeout, [&] {
        if (!world.provider->findChildren<QThread*>().isEmpty()) {
            begun.stop();
            add();
        }
    });
    begun.start(5);
    return loop.run([&] { world.provider->syncContacts(ContactList::PersonalContacts, false); });
}

const char* const childArgument = "--log";

/// In a fresh process: fetches a log, and prints by how many MB the memory has grown at most, and how much of
/// it the entries take.
int child(char** argv)
{
    FaxManager faxes{QPointer<ContactManager>()};
    BareServer server(faxes, QString::fromLocal8Bit(argv[2]));
    auto* task = static_cast<TaskGetInboundFaxEntry*>(server.addTask(Task::GetInboundFaxEntry));
    InboundFaxEntriesPtrListPtr entries;
    QEventLoop loop;
    QObject::connect(task, &Task::errorExecute, [] { fail("log-memory"); });
    QObject::connect(task, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
                     [&](const InboundFaxEntriesPtrListPtr& read) {
                         entries = read;
                         loop.quit();
                     });
    resetPeakMemory();
    const double before = memory("VmRSS");
    task->execute();
    loop.exec();
    const double peak = memory("VmHWM") - before;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const double all = memory("VmRSS");
    entries.clear();
    malloc_trim(0);
    std::printf("%.3f %.3f\n", peak / 1024, (all - memory("VmRSS")) / 1024);
    return 0;
}

/// The two figures of child().
std::pair<double, double> logMemory(int round, int entries)
{
    World world(round, 0, entries);
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
                  {QLatin1String(childArgument), world.sim.address()});
    if (!process.waitForFinished(120000) || process.exitCode() != 0)
        fail("log-memory");
    std::pair<double, double> figures;
    if (std::sscanf(process.readAllStandardOutput().constData(), "%lf %lf", &figures.first,
                    &figures.second) != 2)
        fail("log-memory, what the process printed");
    return figures;
}

/// The time of a first synchronisation, in milliseconds per 100,000 contacts.
double syncTime(int round, int contacts)
{
    World world(round, contacts, 0);
    const double time = milliseconds([&] { world.sync(); });
    if (world.stored() != contacts)
        fail("sync-large");
    return time * 100000 / contacts;
}

double gapRemove(int round, int contacts)
{
    World world(round, contacts, 0);
    world.sync();
    GapLoop loop;
    QObject::connect(world.server, &QObject::destroyed, [&] { loop.quit(); });
    const double gap = loop.run([&] { world.faxes->deleteServer(world.server); });
    if (world.stored() != 0)
        fail("gap-remove");
    return gap;
}

double plainRemove(int round, int contacts)
{
    World world(round, contacts, 0);
    world.sync();
    Plain plain(world.file());
    const double time = plain.deleteFirstSource();
    if (plain.number("SELECT count(*) FROM contacts") != 0)
        fail("plain gap-remove");
    return time;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], childArgument) == 0)
        return child(argv);
    Bench bench(argc, argv);
    const int size = bench.size(100000);
    bench.reported("gap-idle", 33, [](int) { return idle(); });
    bench.worst(
        "gap-log", 33, [=](int round) { return gapLog(round, size); }, 3);
    bench.worst(
        "gap-book", 33, [=](int round) { return gapBook(round, size); }, 3);
    bench.worst(
        "gap-again", 33, [=](int round) { return gapAgain(round, size); }, 3);
    bench.worst(
        "gap-add", 100, [=](int round) { return gapAdd(round, size); }, 3);
    bench.ratio(
        "gap-remove", 1.5, [=](int round) { return gapRemove(round, size); },
        [=](int round) { return plainRemove(round, size); }, 3);
    std::pair<double, double> memories; // of one process, measured by whoever comes first
    const auto measure = [&](int round, bool isFirst) {
        if (isFirst)
            memories = logMemory(round, size);
        return memories;
    };
    bench.ratio(
        "log-memory", 1.5, [&](int round) { return measure(round, round % 2 == 0).first; },
        [&](int round) { return measure(round, round % 2 == 1).second; }, 3);
    bench.ratio(
        "sync-large", 1.3, [=](int round) { return syncTime(round, 5 * size); },
        [=](int round) { return syncTime(round, size); }, 3);
    return bench.exitCode();
}
