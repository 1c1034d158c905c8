// How long the event loop stands still while something large goes on: the longest gap between two of its turns,
// beside that of an idle loop in the same run.

#include "bench.h"
#include "benchserver.h"
#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "quendracontact.h"
#include "simserver.h"
#include "tasks/taskgetinboundfaxentry.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

namespace {

/// Runs an event loop and measures the longest time between two turns of it, in milliseconds. A millisecond of it
/// is the timer's.
class GapLoop
{
public:
    GapLoop()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.start(1);
        m_clock.start();
    }

    /// Calls @p start, and runs until quit().
    template <typename Start>
    double run(Start start)
    {
        m_clock.restart();
        start();
        look();
        if (!m_isOver)
            m_loop.exec();
        look();
        return m_longest;
    }
    void quit()
    {
        m_isOver = true;
        m_loop.quit();
    }

private:
    void look() { m_longest = qMax(m_longest, double(m_clock.nsecsElapsed()) / 1e6), m_clock.restart(); }

    QEventLoop m_loop;
    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_longest{0};
    bool m_isOver{false};
};

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
        const auto end =
            QObject::connect(provider, &ContactProvider::syncedContacts, [&] { loop.quit(); });
        const double gap = loop.run([&] { provider->syncContacts(ContactList::PersonalContacts, full); });
        QObject::disconnect(end);
        return gap;
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

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    const int size = bench.size(100000);
    bench.reported("gap-idle", 33, [](int) { return idle(); });
    bench.worst("gap-log", 33, [=](int round) { return gapLog(round, size); }, 3);
    bench.worst("gap-book", 33, [=](int round) { return gapBook(round, size); }, 3);
    bench.worst("gap-again", 33, [=](int round) { return gapAgain(round, size); }, 3);
    bench.worst("gap-add", 100, [=](int round) { return gapAdd(round, size); }, 3);
    bench.worst("gap-remove", 500, [=](int round) { return gapRemove(round, size); }, 3);
    return bench.exitCode();
}
