// Servers and managers destroyed at any time: after any number of turns of the event loop, and within any
// slot.

#include "contactmanager.h"
#include "contactprovider.h"
#include "downloader.h"
#include "quendracontact.h"
#include "shorthand.h"
#include "taskkit.h"

#include <QMetaMethod>
#include <QNetworkAccessManager>
#include <QTest>

#include <memory>

namespace {

/// Hears every signal of the objects it listens to.
class Listener : public QObject
{
    Q_OBJECT
public:
    void listenTo(QObject* object)
    {
        static const QMetaMethod slot = staticMetaObject.method(staticMetaObject.indexOfSlot("hear()"));
        const QMetaObject* type = object->metaObject();
        for (int i = QObject::staticMetaObject.methodCount(); i < type->methodCount(); ++i) {
            if (type->method(i).methodType() == QMetaMethod::Signal)
                connect(object, type->method(i), this, slot);
        }
    }

    int heard{0};
    QByteArray last;
    std::function<void()> onSignal;

public Q_SLOTS:
    void hear()
    {
        last = sender()->metaObject()->className() + QByteArray("::") +
               sender()->metaObject()->method(senderSignalIndex()).name();
        ++heard;
        if (onSignal)
            onSignal();
    }
};

enum Victim { Server, ListedServer, Manager, Contacts };
const char* const victims[] = {"server", "server taken off the list", "manager", "manager of contacts"};

/// What the server answers.
enum Answers { Good, Refusal, Unusable, Cut, FailedMember };
const char* const answers[] = {"good", "401", "unusable", "cut", "failed member"};

void setAnswers(ScriptedServer& wire, Answers which)
{
    wire.setHangUp(which == Cut ? ScriptedServer::HangUp::InsideReply : ScriptedServer::HangUp::Never);
    wire.setAnswer([which](const WireRequest& request) {
        if (which == Refusal)
            return ScriptedServer::reply("", "401 No");
        if (which == Unusable)
            return ScriptedServer::reply("<r><message>no");
        const bool isMember = request.target.startsWith("/qdws/v1/contacts/anna/");
        return which == FailedMember && isMember ? ScriptedServer::reply("", "404 No") : serve(request);
    });
}

/// A use of a server: an operation, a login or a synchronisation.
struct Deed
{
    QByteArray name;
    bool needsContacts{false};
    std::function<Task*(FaxServer&)> begin;
};

QList<Deed> deeds()
{
    QList<Deed> all;
    for (const Operation& operation : operations()) {
        all.append({operation.name, false, [&operation](FaxServer& server) {
                        Task* task = operation.make(server);
                        task->execute();
                        return task;
                    }});
    }
    const auto add = [&all](const char* name, auto begin) {
        all.append({name, true, [begin](FaxServer& server) -> Task* {
                        begin(server);
                        return nullptr;
                    }});
    };
    add("login and synchronisation", [](FaxServer& server) { server.verifyUser(true); });
    add("lists", [](FaxServer& server) {
        server.updateCoverpagesList();
        server.updatePrinternamesList();
    });
    add("full synchronisation",
        [](FaxServer& server) { server.contactProvider()->syncContacts(ContactList::PersonalGroups, true); });
    add("incremental synchronisation", [](FaxServer& server) {
        server.contactProvider()->syncContacts(ContactList::PersonalContacts, false);
    });
    add("adding, changing and deleting", [](FaxServer& server) {
        const QuendraContact person = personAt(QStringLiteral("http://h/qdws/v1/contacts/anna/7"));
        const QPointer<ContactProvider> provider = server.contactProvider();
        provider->addContact(person, ContactList::PersonalContacts);
        provider->modifyContact(person, ContactList::PersonalContacts);
        provider->deleteContact(person, ContactList::PersonalContacts);
    });
    return all;
}

/// One server of one manager, logged in, and the signals recorded from then on.
class World
{
public:
    World(ScriptedServer& wire, bool withContacts, const QSharedPointer<int>& open)
        : contacts(withContacts ? new ContactManager : nullptr)
        , manager(new FaxManager(contacts))
    {
        server = manager->addServer(wire.address(), false, QStringLiteral("anna"), QStringLiteral("se:cret"));
        if (contacts) {
            QObject::connect(contacts, &ContactManager::onSyncStart, [open] { ++*open; });
            QObject::connect(contacts, &ContactManager::onSyncStop, [open] { --*open; });
        }
        bool isIn = false;
        const auto waiting = QObject::connect(server, &FaxServer::changedFaxUser, [&isIn] { isIn = true; });
        isReady = spinUntil([&] { return isIn && !(contacts && contacts->isSync()); });
        QObject::disconnect(waiting);
    }
    ~World()
    {
        delete manager;
        delete contacts;
    }

    void begin(const Deed& deed)
    {
        provider = server->contactProvider();
        task = deed.begin(*server);
        for (QObject* object : std::initializer_list<QObject*>{task, server, manager})
            if (object)
                ofServer.listenTo(object);
        for (QObject* object : std::initializer_list<QObject*>{contacts, provider})
            if (object)
                ofContacts.listenTo(object);
    }

    bool isOver() const
    {
        return (!server || server->findChildren<Task*>().isEmpty()) && !(provider && provider->isSync());
    }

    /// Lets the remaining objects finish. If the server was destroyed without deleteServer(), only the
    /// destruction of its provider ends a synchronisation.
    bool settles(Victim victim) const
    {
        if (victim == Contacts || victim == ListedServer)
            return spinUntil([this] { return isOver(); });
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
        return true;
    }

    /// Who has nothing to say after the victim is gone.
    const Listener& heardOf(Victim victim) const { return victim == Contacts ? ofContacts : ofServer; }

    /// Records the number of signals before the victim's destruction, which begins now. A server given to
    /// deleteServer() exists until the event loop deletes it; a contact manager's destructor ends running
    /// synchronisations with signals.
    void kill(Victim victim)
    {
        heardAtEnd = heardOf(victim).heard;
        if (victim == Server) {
            delete server;
        } else if (victim == ListedServer) {
            QObject::connect(server, &QObject::destroyed, &ofServer, [this] { heardAtEnd = ofServer.heard; });
            manager->deleteServer(server);
        } else if (victim == Manager) {
            delete manager;
        } else {
            delete contacts;
            heardAtEnd = ofContacts.heard;
        }
    }

    /// Whether the victim and everything that it owned are destroyed.
    bool isGone(Victim victim) const
    {
        return victim == Contacts ? !contacts && !provider
                                  : !server && !task && (victim != Manager || !manager) &&
                                        (victim != ListedServer || !provider);
    }

    QPointer<ContactManager> contacts;
    QPointer<FaxManager> manager;
    QPointer<FaxServer> server;
    QPointer<ContactProvider> provider;
    QPointer<Task> task;
    Listener ofServer;
    Listener ofContacts;
    int heardAtEnd{-1};
    bool isReady{false};
};

/// Tells whether a signal is being sent: the next event comes after all of its receivers. (Resetting it
/// through a queued connection would let another thread's event in between, which happens under Wine.)
class SignalWatch : public QObject
{
public:
    SignalWatch() { QCoreApplication::instance()->installEventFilter(this); }

    template <typename T, typename Signal>
    void watch(T* sender, Signal signal)
    {
        connect(sender, signal, this, [this] { isInside = true; });
    }

    bool isInside{false};

protected:
    bool eventFilter(QObject*, QEvent*) override
    {
        isInside = false;
        return false;
    }
};

/// An access manager that knows whether one of its replies is emitting a signal.
class WatchedNetwork : public QNetworkAccessManager
{
public:
    bool isInside() const { return m_signals.isInside; }

protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request,
                                 QIODevice* body) override
    {
        QNetworkReply* reply = QNetworkAccessManager::createRequest(operation, request, body);
        m_signals.watch(reply, &QNetworkReply::finished);
        m_signals.watch(reply, &QNetworkReply::readyRead);
        m_signals.watch(reply, &QNetworkReply::errorOccurred);
        QT_WARNING_PUSH
        QT_WARNING_DISABLE_DEPRECATED
        m_signals.watch(reply, QOverload<QNetworkReply::NetworkError>::of(&QNetworkReply::error));
        QT_WARNING_POP
        return reply;
    }

private:
    SignalWatch m_signals;
};

/// One turn of the event loop with something in it.
void turn()
{
    QTimer wake;
    wake.start(20);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class TestLifetime : public QObject
{
    Q_OBJECT

    /// In memory if possible: hundreds of contact stores on a disk would be slow.
    QTemporaryDir m_folder{QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                               ? QStringLiteral("/dev/shm/lifetime-XXXXXX")
                               : QDir::tempPath() + QStringLiteral("/lifetime-XXXXXX")};

    static void rows()
    {
        const Rows<int, int, int> row;
        const QList<Deed> all = deeds();
        for (int i = 0; i < all.size(); ++i) {
            const QByteArray& name = all.at(i).name;
            const bool hasMembers = name.contains("groups") || name.contains("synchronisation");
            for (const int victim : {Server, ListedServer, Manager, Contacts}) {
                for (const int answer : {Good, Refusal, Unusable, Cut, FailedMember}) {
                    // operations alone do not use it, and creating it takes time
                    if (victim == Contacts && !all.at(i).needsContacts && answer != Good)
                        continue;
                    if (answer != FailedMember || hasMembers)
                        row((name + ", " + victims[victim] + ", " + answers[answer]).constData(), i, victim,
                            answer);
                }
            }
        }
    }

    /// Repeats the operation in a new World, destroying the victim one step later each time, until @p once
    /// returns false. Afterwards everything the victim owned must be destroyed and emit nothing.
    static void untilOver(const std::function<bool(World&, const Deed&, Victim, int)>& once)
    {
        const auto [index, victim, answer] = cells<int, int, int>();
        const Deed deed = deeds().at(index);
        const auto dying = Victim(victim);

        const auto open = QSharedPointer<int>::create(0); // busy times begun and not ended
        ScriptedServer wire;
        int number = 0;
        for (bool goesOn = true; goesOn; ++number) {
            QVERIFY(number < 300);
            setAnswers(wire, Good);
            World world(wire, deed.needsContacts || dying == Contacts, open);
            QVERIFY(world.isReady);
            setAnswers(wire, Answers(answer));
            goesOn = once(world, deed, dying, number);
            if (world.heardAtEnd < 0) { // nothing was destroyed
                QVERIFY(world.isOver());
                break;
            }
            const Listener& dead = world.heardOf(dying);
            // deliver pending events, and the last ones from threads
            QVERIFY2(spinUntil([&] { return world.isGone(dying); }),
                     dead.last + ' ' + QByteArray::number(number));
            QVERIFY(world.settles(dying));
            QVERIFY2(dead.heard == world.heardAtEnd, dead.last);
        }
        QCOMPARE(*open, 0);
        QVERIFY(number > 0);
    }

private Q_SLOTS:
    void initTestCase() { qputenv("APPDATA", QFile::encodeName(m_folder.path())); }

    void afterAnyTurn_data() { rows(); }
    void afterAnyTurn()
    {
        untilOver([](World& world, const Deed& deed, Victim victim, int turns) {
            world.begin(deed);
            for (int i = 0; i < turns && !world.isOver(); ++i)
                turn();
            const bool goesOn = !world.isOver();
            world.kill(victim);
            return goesOn;
        });
    }

    void insideAnySlot_data() { rows(); }
    void insideAnySlot()
    {
        untilOver([](World& world, const Deed& deed, Victim victim, int number) {
            int signal = 0;
            bool killed = false;
            world.ofServer.onSignal = world.ofContacts.onSignal = [&] {
                if (signal++ != number)
                    return;
                killed = true;
                world.kill(victim);
            };
            world.begin(deed);
            spinUntil([&] { return killed || world.isOver(); });
            world.ofServer.onSignal = world.ofContacts.onSignal = nullptr;
            return killed; // without it there is no such signal
        });
    }

    void overTheLimit()
    {
        ScriptedServer wire;
        wire.setAnswer([](const WireRequest& request) {
            return request.target.contains("groups") ? serve(request)
                                                     : ScriptedServer::bomb(int(Task::maxReplySize / 1000));
        });
        for (const char* name : {"VerifyLogin", "GetContacts of groups"}) {
            auto* manager = new FaxManager(noContacts);
            const QPointer<QNetworkAccessManager> nam = &manager->nam();
            Outcome outcome(operation(name).make(*new BareServer(*manager, wire.address())));
            // no sanitizer sees what Qt does with a reply that is gone
            SignalWatch signal;
            signal.watch(nam.data(), &QNetworkAccessManager::finished);
            bool wasInside = true;
            outcome.onOver = [&] {
                wasInside = signal.isInside;
                delete manager;
            };
            QCOMPARE(outcome.run(), Task::Error);
            QVERIFY(!nam);
            QVERIFY(!wasInside);
        }
    }

    void downloads_data()
    {
        const Rows<bool, bool, int> row("insideSlots", "ofManager", "answer");
        const char* const names[] = {"good",   "refused", "cut", "never there", "compressed and cut",
                                     "no file"};
        for (int i = 0; i < 4 * int(std::size(names)); ++i) {
            row((names[i / 4] + QByteArray(i & 2 ? ", in slots" : ", after turns") +
                 (i & 1 ? ", manager" : ", downloader"))
                    .constData(),
                (i & 2) != 0, (i & 1) != 0, i / 4);
        }
    }
    void downloads()
    {
        QFETCH(bool, insideSlots);
        QFETCH(bool, ofManager);
        QFETCH(int, answer);
        ScriptedServer wire;
        const QByteArray body(300000, 'x');
        wire.setAnswer(answer == 1   ? ScriptedServer::reply(body, "404 No")
                       : answer == 4 ? ScriptedServer::bomb(1000)
                                     : ScriptedServer::reply(body));
        wire.setHangUp(answer == 2 || answer == 4 ? ScriptedServer::HangUp::InsideReply
                       : answer == 3              ? ScriptedServer::HangUp::AfterBody
                                                  : ScriptedServer::HangUp::Never);
        const QUrl url(
            QStringLiteral("http://%1/%2").arg(wire.address(), QLatin1String(answer == 5 ? ".." : "a.tif")));
        int number = 0;
        for (bool goesOn = true; goesOn; ++number) {
            QVERIFY(number < 300);
            const QPointer<WatchedNetwork> manager = new WatchedNetwork;
            const QPointer<Downloader> downloader = new Downloader(nullptr, *manager);
            downloader->setDownloadPath(m_folder.path());
            Listener listener;
            listener.listenTo(downloader);
            bool killed = false;
            bool wasInside = false;
            const auto kill = [&] {
                killed = true;
                wasInside = insideSlots && manager->isInside();
                ofManager ? delete manager : delete downloader;
            };
            const auto isOver = [&] { return !manager || manager->findChildren<QNetworkReply*>().isEmpty(); };
            int signal = 0;
            if (insideSlots) {
                listener.onSignal = [&] {
                    if (signal++ == number)
                        kill();
                };
            }
            downloader->download(url, false);
            if (insideSlots) {
                QVERIFY(spinUntil([&] { return killed || isOver(); }));
                goesOn = killed;
            } else {
                for (int i = 0; i < number && !isOver(); ++i)
                    turn();
                goesOn = !isOver();
                kill();
            }
            QVERIFY2(!wasInside, listener.last); // sanitizers do not see a use after free inside Qt
            const int heard = listener.heard;
            QVERIFY(spinUntil(isOver));
            for (int i = 0; i < 3; ++i)
                QCoreApplication::processEvents();
            QVERIFY2(listener.heard == heard, listener.last);
            delete downloader;
            delete manager;
        }
        QVERIFY(number > 1 || (answer == 5 && !insideSlots)); // without a file nothing is sent
    }
};

QTEST_GUILESS_MAIN(TestLifetime)
#include "tst_lifetime.moc"
