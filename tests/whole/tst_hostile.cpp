// Servers that mean harm: what they send ends as documented, in bounded memory, and the event loop goes on;
// what they are sent arrives once, and nobody else gets any of it.

#include "contactlocalstorage.h"
#include "contactmanager.h"
#include "contactprovider.h"
#include "downloader.h"
#include "operations.h"
#include "quendracontact.h"
#include "taskkit.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskmodifycontact.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskschedule.h"
#include "testkit.h"

#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <optional>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QDCORE_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QDCORE_SANITIZED
#endif
#endif

Q_DECLARE_METATYPE(ScriptedServer::HangUp)

namespace {

constexpr int megabyte = 1024 * 1024;

/// How long in ms the event loop may be held up on a machine that is busy with other things: several times
/// the worst that was seen.
#ifdef QDCORE_SANITIZED
constexpr int longestPause = 20000;
#else
constexpr int longestPause = 5000;
#endif

/// Watches the event loop and the memory of this process for as long as it lives.
class Watch
{
public:
    Watch()
    {
#ifdef __GLIBC__
        malloc_trim(0); // what was freed before, and is used again, would not count
#endif
        QFile file(QStringLiteral("/proc/self/clear_refs")); // the peak counts from here
        if (file.open(QIODevice::WriteOnly))
            file.write("5");
        m_before = status("VmRSS:");
        m_since.start();
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.start(5);
    }

    /// The longest time in ms for which no timer ran.
    qint64 longestGap()
    {
        look();
        return m_longest;
    }

    /// Whether memory can be measured: a sanitizer needs some of its own for everything, and other systems
    /// have no /proc.
    static bool knowsMemory()
    {
#ifdef QDCORE_SANITIZED
        return false;
#else
        return status("VmRSS:") > 0;
#endif
    }

    /// Whether there never was this much memory more than at the beginning, in MB. Where memory cannot be
    /// measured there is nothing to say against it: see memoryIsMeasured().
    bool stayedBelow(qint64 limit) const
    {
        return !knowsMemory() || growth() < limit;
    }

    QString figures()
    {
        const QString pause = QStringLiteral("%1 ms, ").arg(longestGap());
        return pause + (knowsMemory() ? QStringLiteral("%1 MB").arg(growth())
                                      : QStringLiteral("memory not measured"));
    }

private:
    qint64 growth() const
    {
        return (status("VmHWM:") - m_before) / 1024;
    }

    void look()
    {
        m_longest = qMax(m_longest, m_since.restart());
    }

    static qint64 status(const char* name)
    {
        QFile file(QStringLiteral("/proc/self/status"));
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        const QByteArray text = file.readAll();
        const int at = text.indexOf(name);
        return at < 0 ? 0 : text.mid(at + int(qstrlen(name)), 20).trimmed().split(' ').first().toLongLong();
    }

    QTimer m_timer;
    QElapsedTimer m_since;
    qint64 m_longest{0};
    qint64 m_before{0};
};

QByteArray deflated(const QByteArray& body)
{
    return ScriptedServer::reply(qCompress(body, 9).mid(4), "200 OK", "Content-Encoding: deflate\r\n");
}

/// A task that is to send a contact, a user or a fax gets one of @p size bytes and more.
void enlarge(Task* task, int size)
{
    QuendraContact person = personAt(QStringLiteral("http://h/qdws/v1/contacts/anna/7"));
    person.setName(QString(size, QLatin1Char('x')));
    if (auto* adding = qobject_cast<TaskAddContact*>(task))
        adding->setContact(person, ContactList::PersonalContacts);
    if (auto* changing = qobject_cast<TaskModifyContact*>(task))
        changing->setContact(person, ContactList::PersonalContacts);
    if (auto* saving = qobject_cast<TaskModifyFaxUser*>(task)) {
        FaxUser user;
        person.setUrl(QUrl(QStringLiteral("http://h/qdws/v1/users/7")));
        user.setContact(person);
        saving->setUser(user);
    }
    if (auto* submitting = qobject_cast<TaskSchedule*>(task)) {
        FaxDocument fax;
        fax.recipients().addContact(person);
        submitting->setFaxDocument(fax);
    }
}

} // namespace

class TestHostile : public QObject
{
    Q_OBJECT

    ScriptedServer m_decoy{false,
                           QHostAddress(QStringLiteral("127.0.0.2"))}; ///< Nobody may ever speak to it.

    QString decoy() const { return QStringLiteral("http://") + m_decoy.address(); }

private Q_SLOTS:
    void cleanup() { QCOMPARE(m_decoy.connectionCount(), 0); }

    void memoryIsMeasured();
    void replies_data();
    void replies();
    void largestReplies_data();
    void largestReplies();
    void floods_data();
    void floods();
    void floodOfMembers();
    void floodedDownload();
    void drips_data();
    void drips();
    void manyMembers();
    void redirects_data() { addOperationRows(); }
    void redirects();
    void redirectedDownload();
    void challenges_data();
    void challenges();
    void foreignUrls_data() { addOperationRows(); }
    void foreignUrls();
    void foreignMembers();
    void repliesNotAsked();
    void oidsWithStatements_data();
    void oidsWithStatements();
    void sentOnce_data();
    void sentOnce();
};

/// Without it the other tests pass whatever memory is used, which should be seen.
void TestHostile::memoryIsMeasured()
{
    if (!Watch::knowsMemory())
        QSKIP("Memory cannot be measured here: its limits are not checked.");
    const Watch watch;
    {
        const QByteArray block(100 * megabyte, 'x');
        QVERIFY(block.endsWith('x'));
    }
    QVERIFY(watch.stayedBelow(110) && !watch.stayedBelow(90)); // also when it has been given back
}

void TestHostile::replies_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");

    const int levels = 1000000;
    const QByteArray deep = QByteArray("<a>").repeated(levels);
    const auto row = [](const char* name, const QByteArray& answer, int status = Task::InvalidReply) {
        QTest::newRow(name) << answer << status;
    };
    const auto plain = [row](const char* name, const QByteArray& body, int status = Task::InvalidReply) {
        row(name, ScriptedServer::reply(body), status);
    };
    plain("a million levels", deep + QByteArray("</a>").repeated(levels));
    plain("levels behind a quoted comment", "<a b=\"<!--\">" + deep);
    plain("levels behind an entity that looks like a comment", "<!DOCTYPE a [<!ENTITY x \"<!--\">]>" + deep);
    plain("levels behind a parameter entity", "<!DOCTYPE a [<!ENTITY % x \"<?p \"> %x; <!-- ?> ]>" + deep);
    plain("ends before the levels", "<!DOCTYPE a [<!ENTITY % x \"<!--\"> %x; " +
                                        QByteArray("</a>").repeated(levels) + " --> ]>" + deep);
    plain("entities that grow",
          "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
          "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]><r><message>&c;</message></r>");
    plain("an entity from a file",
          "<!DOCTYPE r [<!ENTITY f SYSTEM \"file:///etc/passwd\">]><r><message>&f;</message></r>");
    plain("a document type from elsewhere",
          "<!DOCTYPE r SYSTEM \"" + decoy().toUtf8() + "/r.dtd\"><r><message>Verified</message></r>", 0);
    plain("a document type of no more than a name", "<!DOCTYPE r><r><message>Verified</message></r>", 0);
    row("many siblings are no depth",
        okReply("<message>Verified</message>" +
                QByteArray("<a x='>'/><b></b><!-- <c> --><![CDATA[<d>]]>").repeated(300)),
        0);
    row("more elements than memory", deflated("<r>" + QByteArray("<a/>").repeated(3 * levels) + "</r>"));
    row("more attributes than memory", deflated("<r " + QByteArray("a=''").repeated(3 * levels) + "/>"));
    row("nothing but ampersands", deflated(QByteArray(20 * megabyte, '&')));
    row("one element of 50 MB", deflated("<r><message>" + QByteArray(50 * megabyte, 'x') + "</message></r>"),
        Task::AuthError);
    row("compressed, but not",
        ScriptedServer::reply("nothing of the kind", "200 OK", "Content-Encoding: gzip\r\n"), Task::Error);
    row("the connection is its end",
        "HTTP/1.1 200 OK\r\n\r\n<r><message>Verified</message><x>" + QByteArray(5 * megabyte, 'x') +
            "</x></r>",
        0);
    row("a negative length", "HTTP/1.1 200 OK\r\nContent-Length: -1\r\nConnection: close\r\n\r\n<r/>",
        Task::AuthError);
    row("a chunk of a length that is none",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n<r/>\r\n");
    row("not HTTP", "SSH-2.0-x\r\n\r\n", Task::Error);
}

void TestHostile::replies()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, status);

    ScriptedServer wire;
    wire.setAnswer(answer);
    wire.setHangUp(ScriptedServer::HangUp::AfterReply);
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Watch watch;
    Outcome outcome(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }, 60));
    QCOMPARE(outcome.errors, status ? QList<Task::Status>{Task::Status(status)} : QList<Task::Status>());
    QCOMPARE(outcome.done, status ? 0 : 1);
    qInfo("%s", qPrintable(watch.figures()));
    QVERIFY(watch.longestGap() < longestPause);
    QVERIFY(watch.stayedBelow(500));
}

void TestHostile::largestReplies_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<QByteArray>("piece");
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("isLogged");

    const QByteArray text(megabyte, 'x');
    const QByteArray close = "</message></r>";
    const auto row = [](const char* title, const char* name, const QByteArray& begin, const QByteArray& piece,
                        const QByteArray& end, int status, bool isLogged = false) {
        QTest::newRow(title) << QByteArray(name) << begin << piece << end << status << isLogged;
    };
    row("one element", "VerifyLogin", "<r><message>", text, close, Task::AuthError);
    row("one element, logged", "ChekPermissions", "<r><message>", text, close, Task::Error, true);
    row("ampersands", "VerifyLogin", "<r><message>", "&" + text.left(15), close, Task::AuthError);
    row("elements and texts", "VerifyLogin", "<r>", "<a/>" + text.left(259), "</r>", Task::AuthError);
    row("attributes", "VerifyLogin", "<r>", "<a b='" + text.left(390) + "'/>", "</r>", Task::AuthError);
    // as many as are let through, and the rest is a text
    row("a log", "GetFaxEntry", "<r><message>Success</message>", "<fax_entry/>", "</r>", 0);
    row("a book", "GetContacts", "<r>", "<contact/>", "</r>", 0);
}

/// What is within every limit: a reply grows to several times its size until its task has ended.
void TestHostile::largestReplies()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, begin);
    QFETCH(QByteArray, piece);
    QFETCH(QByteArray, end);
    QFETCH(int, status);
    QFETCH(bool, isLogged);

#ifdef QDCORE_SANITIZED
    constexpr int size = 25 * megabyte;
    constexpr int mostElements = 199990;
#else
    constexpr int size = 250 * megabyte;
    constexpr int mostElements = 1999990;
#endif
    ScriptedServer wire;
    {
        const int most = piece.contains('<') ? mostElements : size;
        QByteArray body = begin + piece.repeated(qMin(most, size / piece.size()));
        if (piece.endsWith("/>"))
            body += "<x>" + QByteArray(qMax(0, size - body.size()), 'x') + "</x>";
        wire.setAnswer(deflated(body + end));
    }
    std::optional<TestLog> log;
    if (isLogged)
        log.emplace();
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Watch watch;
    const Operation& asked = operation(name);
    Outcome outcome(asked.make(server), asked.done);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }, 120));
    QCOMPARE(outcome.errors, status ? QList<Task::Status>{Task::Status(status)} : QList<Task::Status>());
    QCOMPARE(outcome.done, status ? 0 : 1);
    qInfo("%s", qPrintable(watch.figures()));
    QVERIFY(watch.longestGap() < 4 * longestPause);
    QVERIFY(watch.stayedBelow(10 * (size / megabyte)));
}

void TestHostile::floods_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QByteArray>("more");

    const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    const QByteArray element = "\r\n<r><message>";
    const QByteArray text(megabyte, 'x');
    const QByteArray ofOneGigabyte = ok + "Content-Length: 1073741824\r\n" + element;
    QTest::newRow("one element of 1 GB") << QByteArray("VerifyLogin") << ofOneGigabyte << text;
    QTest::newRow("no end, in chunks")
        << QByteArray("VerifyLogin") << ok + "Transfer-Encoding: chunked\r\n\r\n"
        << "100000\r\n" + text + "\r\n";
    QTest::newRow("a failure without an end")
        << QByteArray("VerifyLogin") << "HTTP/1.1 500 Oops\r\n" + element << text;
    const QByteArray bomb = ScriptedServer::bomb();
    QTest::newRow("8 GB in 8 MB") << QByteArray("VerifyLogin") << bomb
                                  << QByteArray(8 * megabyte, bomb.back());
    QTest::newRow("a member of 1 GB") << QByteArray("GetContacts of groups") << ofOneGigabyte << text;
}

void TestHostile::floods()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, beginning);
    QFETCH(QByteArray, more);

    const Operation& flooded = operation(name);
    ScriptedServer wire;
    qint64 sent = 0;
    const auto isFlooded = [](const WireRequest& request) { return !request.target.contains("groups"); };
    const QByteArray second = "<contact>http://elsewhere:9/qdws/v1/contacts/anna/2</contact>";
    wire.setAnswer([&](const WireRequest& request) {
        return isFlooded(request) ? beginning
                                  : serve(request).replace(second, QByteArray(second.size(), ' '));
    });
    wire.setMore([&](const WireRequest& request) {
        if (!isFlooded(request))
            return QByteArray();
        sent += more.size();
        return more;
    });
    const TestLog log;
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Watch watch;
    Outcome outcome(flooded.make(server), flooded.done);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }, 120));
    QCOMPARE(outcome.errors, QList<Task::Status>{Task::Error});
    QCOMPARE(outcome.done, 0);
    const QStringList logged = log.messages(QStringLiteral("ERROR"));
    QCOMPARE(logged.size(), 1);
    QVERIFY2(logged.at(0).endsWith(QLatin1String(" error! http code 5")), qPrintable(logged.at(0)));
    QVERIFY(spinUntil([&] { return wire.openCount() <= (name == "VerifyLogin" ? 0 : 1); }));
    qInfo("%s, %lld MB sent", qPrintable(watch.figures()), sent / megabyte);
    QVERIFY(watch.longestGap() < longestPause);
    QVERIFY(watch.stayedBelow(700));
    QVERIFY(sent < 400 * qint64(megabyte)); // nobody took it to its end
}

void TestHostile::floodOfMembers()
{
    // no reply is too large, all together are
    const QByteArray member = deflated(QByteArray(20 * megabyte, ' ') + memberXml(1));
    const QByteArray groups =
        okReply("<contact_group><name>A</name><description/>" +
                QByteArray("<contact>http://h/qdws/v1/contacts/anna/1</contact>").repeated(1000) +
                "</contact_group>");
    ScriptedServer wire;
    wire.setAnswer(
        [&](const WireRequest& request) { return request.target.contains("groups") ? groups : member; });
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Watch watch;
    const Operation& book = operation("GetContacts of groups");
    Outcome outcome(book.make(server), book.done);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }, 120));
    QCOMPARE(outcome.errors, QList<Task::Status>{Task::Error});
    QCOMPARE(outcome.done, 0);
    QVERIFY(wire.requests().size() > 12 && wire.requests().size() < 200); // the others were not asked for
    qInfo("%s, %d requests", qPrintable(watch.figures()), wire.requests().size());
    QVERIFY(watch.longestGap() < longestPause);
    QVERIFY(watch.stayedBelow(700));
}

void TestHostile::floodedDownload()
{
    // as much as there is room for on the disk; in memory it is little
    const QByteArray bomb = ScriptedServer::bomb();
    ScriptedServer wire;
    wire.setAnswer(bomb);
    wire.setMore([&](const WireRequest&) { return QByteArray(megabyte, bomb.back()); });
    const QTemporaryDir folder;
    QNetworkAccessManager manager;
    Watch watch;
    auto downloader = std::make_unique<Downloader>(nullptr, manager);
    downloader->setDownloadPath(folder.path());
    downloader->download(QUrl(QStringLiteral("http://%1/a.tif").arg(wire.address())), false);
    const QString file = folder.filePath(QStringLiteral("a.tif"));
    QVERIFY(spinUntil([&] { return QFileInfo(file).size() > 400 * qint64(megabyte); }, 60));
    downloader.reset();
    QVERIFY(spinUntil([&] { return wire.openCount() == 0; }));
    qInfo("%s", qPrintable(watch.figures()));
    QVERIFY(watch.longestGap() < longestPause);
    QVERIFY(watch.stayedBelow(350));
}

void TestHostile::drips_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QByteArray>("drop");

    QTest::newRow("in the head") << QByteArray("HTTP/1.1 200 OK\r\nX-Long: ") << QByteArray("x");
    QTest::newRow("in the body") << QByteArray("HTTP/1.1 200 OK\r\n\r\n<r><message>") << QByteArray("x");
    // of which the access manager says nothing before its end, so that no limit applies
    QTest::newRow("in the body of a refusal")
        << QByteArray("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"\r\n\r\n<r>") << QByteArray("x");
    QTest::newRow("in the size of a chunk")
        << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n") << QByteArray("0");
}

void TestHostile::drips()
{
    QFETCH(QByteArray, beginning);
    QFETCH(QByteArray, drop);

    // a byte every few ms stands for one a second: what counts is that it never ends
    ScriptedServer wire;
    wire.setAnswer(beginning);
    int dropped = 0;
    wire.setMore([&](const WireRequest&) { return ++dropped, drop; }, 3);
    FaxManager manager(noContacts);
    auto* server = new BareServer(manager, wire.address());
    Watch watch;
    Outcome outcome(server->addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return dropped > 100; }));
    QVERIFY(outcome.task && !outcome.isOver());
    QCOMPARE(server->lastStatus(), Task::Unknown);
    QVERIFY(watch.longestGap() < longestPause);

    delete server;
    QVERIFY(!outcome.task);
    QVERIFY(spinUntil([&] { return wire.openCount() == 0; })); // nor is the connection kept
    QVERIFY(!outcome.isOver());
}

void TestHostile::manyMembers()
{
    constexpr int members = 300000;
    const QByteArray groups =
        okReply("<contact_group><name>A</name><description/>" +
                QByteArray("<contact>http://h/qdws/v1/contacts/anna/1</contact>").repeated(members) +
                "</contact_group>");
    ScriptedServer wire;
    wire.setAnswer([&](const WireRequest& request) {
        return request.target.contains("groups") ? groups : okReply(memberXml(1));
    });
    FaxManager manager(noContacts);
    auto* server = new BareServer(manager, wire.address());
    Watch watch;
    const Operation& book = operation("GetContacts of groups");
    Outcome outcome(book.make(*server), book.done);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return wire.requests().size() > 1000; }));
    qInfo("%s", qPrintable(watch.figures()));
    QVERIFY(watch.longestGap() < longestPause);
    QVERIFY(watch.stayedBelow(500));
    QVERIFY(!outcome.isOver());
    delete server;
    QVERIFY(spinUntil([&] { return manager.nam().findChildren<QNetworkReply*>().isEmpty(); }));
    QVERIFY(!outcome.isOver());
}

void TestHostile::redirects()
{
    QFETCH(int, index);
    const Operation& operation = operations().at(index);

    ScriptedServer wire;
    FaxManager manager(noContacts);
    manager.nam().setRedirectPolicy(
        QNetworkRequest::NoLessSafeRedirectPolicy); // an application may ask for it
    BareServer server(manager, wire.address());
    int sent = 0;
    for (const char* status : {"301 Moved", "302 Found", "303 See Other", "307 Temporary", "308 Permanent"}) {
        wire.setAnswer(
            ScriptedServer::reply("", status, "Location: " + decoy().toUtf8() + "/qdws/v1/verify\r\n"));
        Outcome outcome(operation.make(server), operation.done);
        outcome.task->execute();
        QVERIFY(spinUntil([&] { return !outcome.task; }));
        // the redirect is the reply; those that would repeat a body that went out once are failures at once
        const bool repeats = operation.hasBody() && (status[2] == '7' || status[2] == '8');
        QCOMPARE(outcome.errors, QList<Task::Status>{repeats ? Task::Error : Task::InvalidReply});
        QCOMPARE(wire.requests().size(), ++sent);
    }

    // members of groups have requests of their own
    if (operation.name != "GetContacts of groups")
        return;
    wire.setAnswer([this](const WireRequest& request) {
        return request.target.contains("groups")
                   ? serve(request)
                   : ScriptedServer::reply("", "302 Found", "Location: " + decoy().toUtf8() + "/\r\n");
    });
    Outcome outcome(operation.make(server), operation.done);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }));
    QCOMPARE(outcome.done, 0);
    QCOMPARE(wire.requests().size(), sent + 3);
}

void TestHostile::redirectedDownload()
{
    ScriptedServer wire;
    wire.setAnswer(
        ScriptedServer::reply("moved", "302 Found", "Location: " + decoy().toUtf8() + "/a.tif\r\n"));
    const QTemporaryDir folder;
    QNetworkAccessManager manager;
    manager.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    Downloader downloader(nullptr, manager);
    downloader.setDownloadPath(folder.path());
    QSignalSpy finished(&downloader, &Downloader::downloadFinished);
    downloader.download(QUrl(QStringLiteral("http://anna:x@%1/a.tif").arg(wire.address())), false);
    QVERIFY(finished.wait());
    QFile file(finished.at(0).at(0).toString());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("moved")); // the redirect is the file
    QCOMPARE(wire.requests().size(), 1);
}

void TestHostile::challenges_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");

    for (const char* scheme :
         {"Basic realm=\"x\"", "Digest realm=\"x\", nonce=\"1\", qop=\"auth\"", "NTLM", "Negotiate"}) {
        QTest::addRow("401 %s", scheme)
            << ScriptedServer::reply("", "401 No", QByteArray("WWW-Authenticate: ") + scheme + "\r\n")
            << int(Task::AuthError);
        QTest::addRow("407 %s", scheme)
            << ScriptedServer::reply("", "407 No", QByteArray("Proxy-Authenticate: ") + scheme + "\r\n")
            << int(Task::Error);
    }
}

void TestHostile::challenges()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, status);

    ScriptedServer wire;
    wire.setAnswer(answer);
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    Outcome outcome(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }));
    QCOMPARE(outcome.errors, QList<Task::Status>{Task::Status(status)});
    QCOMPARE(wire.requests().size(), 1); // the credentials went out once, in the form chosen by the client
}

void TestHostile::foreignUrls()
{
    QFETCH(int, index);
    const Operation& operation = operations().at(index);

    ScriptedServer wire;
    wire.setAnswer([this](const WireRequest& request) {
        return serve(request).replace("http://elsewhere:9", "https://u:p@" + m_decoy.address().toUtf8());
    });
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    for (const QString& host : {decoy(), QStringLiteral("//u:p@") + m_decoy.address(),
                                QStringLiteral("ftp://") + m_decoy.address()}) {
        Outcome outcome(operation.make(server, host), operation.done);
        outcome.task->execute();
        QVERIFY(spinUntil([&] { return outcome.isOver(); }));
    }
    QVERIFY(wire.requests().size() >= 3);
    for (const WireRequest& request : wire.requests()) {
        QCOMPARE(request.header("Host"), wire.address().toUtf8());
        QCOMPARE(request.header("Authorization"), "Basic " + QByteArray("anna:se:cret").toBase64());
        QVERIFY(!request.raw.contains(m_decoy.address().toUtf8()) || operation.hasBody());
    }
}

void TestHostile::foreignMembers()
{
    const QByteArrayList urls{"file:///etc/passwd",
                              "ftp://127.0.0.2/x",
                              "//127.0.0.2/x",
                              "mailto:anna@h",
                              "data:text/xml,<r/>",
                              "qrc:/icons/abort",
                              "x y",
                              "http://[::1",
                              "",
                              "../../../../etc",
                              "http://a%00b/%2e%2e/",
                              "http://h/a%0d%0aX-Evil:%201"};
    QByteArray members;
    for (const QByteArray& url : urls)
        members += "<contact>" + url.toPercentEncoding(" /:@%[]<>,.-").replace("<", "&lt;") + "</contact>";
    ScriptedServer wire;
    wire.setAnswer([&](const WireRequest& request) {
        return request.target.contains("groups")
                   ? okReply("<contact_group><name>A</name><description/>" + members + "</contact_group>")
                   : okReply("<message>nobody</message>");
    });
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    const Operation& book = operation("GetContacts of groups");
    Outcome outcome(book.make(server), book.done);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }));
    QCOMPARE(outcome.done + outcome.errors.size(), 1);
    QVERIFY(wire.requests().size() > 1); // whatever they name, the configured server is asked
    for (const WireRequest& request : wire.requests()) {
        QCOMPARE(request.header("Host"), wire.address().toUtf8());
        QVERIFY(request.header("X-Evil").isNull());
    }
}

void TestHostile::repliesNotAsked()
{
    // a second answer, or the beginning of one, comes behind the first; or an answer comes before it is asked
    // for
    const QByteArray verified = okReply("<message>Verified</message>");
    const QByteArray extra[] = {okReply("<message>Attempting Abort</message>"), verified + verified,
                                "HTTP/1.1 200 OK\r\nContent-Le", QByteArray(100000, 'x')};
    for (const QByteArray& more : extra) {
        ScriptedServer wire;
        wire.setAnswer(verified + more);
        FaxManager manager(noContacts);
        BareServer server(manager, wire.address());
        Outcome first(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
        first.task->execute();
        QVERIFY(spinUntil([&] { return !first.task; }));
        QCOMPARE(first.done, 1);
        // it belongs to nobody: the next request has an answer of its own, on a connection of its own
        wire.setAnswer(okReply("<message>no</message>"));
        Outcome second(operation(Task::Abort).make(server), operation(Task::Abort).done);
        second.task->execute();
        QVERIFY(spinUntil([&] { return !second.task; }));
        QCOMPARE(second.errors, QList<Task::Status>{Task::Error});
        QCOMPARE(wire.requests().last().connection, 2);
    }
}

void TestHostile::oidsWithStatements_data()
{
    QTest::addColumn<QByteArray>("oids");
    for (const char* oids :
         {"0) OR 1=1; DROP TABLE contacts; --", "1'; DELETE FROM contacts; --", "1 OR 1", "-1", "1e9", "0x1",
          "99999999999999999999", "1,2) OR (1=1", "\xd9\xa1", "(SELECT id FROM contacts)"})
        QTest::newRow(oids) << QByteArray(oids);
}

void TestHostile::oidsWithStatements()
{
    QFETCH(QByteArray, oids);

    QTemporaryDir folder;
    qputenv("APPDATA", QFile::encodeName(folder.path()));
    ScriptedServer wire;
    wire.setAnswer(&serve);
    ContactManager contacts;
    FaxManager manager(&contacts);
    const QPointer<FaxServer> server =
        manager.addServer(wire.address(), false, QStringLiteral("anna"), QStringLiteral("x"));
    const QPointer<ContactProvider> provider = server->contactProvider();
    int ends = 0;
    connect(provider, &ContactProvider::syncedContacts, this, [&ends] { ++ends; });
    connect(provider, &ContactProvider::errorSyncedContacts, this, [&ends] { ++ends; });
    QVERIFY(spinUntil([&] { return ends == 4; }));
    const auto stored = [&] {
        return contacts.storage()->getContactList(provider->sourceId(), ContactLocalStorage::TypeContact,
                                                  ContactLocalStorage::LocationPersonal, 0, 0, 0);
    };
    QCOMPARE(stored().size(), 2);

    wire.setAnswer([&](const WireRequest& request) {
        if (request.target.contains("_oids/"))
            return okReply("<oids>" + oids + "</oids>");
        return request.target.contains("query_time") ? okReply("<query_time>78</query_time>")
                                                     : serve(request);
    });
    provider->syncContacts(ContactList::PersonalContacts, false);
    QVERIFY(spinUntil([&] { return ends == 5 && !provider->isSync(); }));
    QVERIFY(wire.requests().last().target.contains("query_time=77"));
    QCOMPARE(stored().size(), 2); // such a list deletes nothing
    wire.setAnswer(&serve);
    provider->syncContacts(ContactList::PersonalContacts, true);
    QVERIFY(spinUntil([&] { return ends == 6; }));
    QCOMPARE(stored().size(), 2);
}

void TestHostile::sentOnce_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<ScriptedServer::HangUp>("hangUp");
    QTest::addColumn<bool>("reused");

    using HangUp = ScriptedServer::HangUp;
    const struct
    {
        const char* name;
        HangUp hangUp;
    } moments[] = {{"after the head", HangUp::AfterHead},
                   {"inside the body", HangUp::InsideBody},
                   {"after the body", HangUp::AfterBody},
                   {"inside the reply", HangUp::InsideReply}};
    for (int i = 0; i < operations().size(); ++i) {
        if (!operations().at(i).hasBody())
            continue;
        for (const auto& moment : moments) {
            for (const bool reused : {false, true})
                QTest::addRow("%s, %s, %s connection", operations().at(i).name.constData(), moment.name,
                              reused ? "reused" : "fresh")
                    << i << moment.hangUp << reused;
        }
    }
}

void TestHostile::sentOnce()
{
    QFETCH(int, index);
    QFETCH(ScriptedServer::HangUp, hangUp);
    QFETCH(bool, reused);

    const Operation& operation = operations().at(index);
    ScriptedServer wire;
    wire.setAnswer(&serve);
    FaxManager manager(noContacts);
    BareServer server(manager, wire.address());
    const auto verify = [&] {
        Outcome outcome(server.addTask(Task::VerifyLogin), SIGNAL(doneVerifyLogin()));
        outcome.task->execute();
        return spinUntil([&] { return outcome.done == 1; });
    };
    if (reused)
        QVERIFY(verify());
    wire.setHangUp(hangUp);
    constexpr int size = 8 * megabyte; // more than waits anywhere on the way
    Outcome outcome(operation.make(server), operation.done);
    enlarge(outcome.task, size);
    outcome.task->execute();
    QVERIFY(spinUntil([&] { return !outcome.task; }));
    QCOMPARE(outcome.done, 0);
    QCOMPARE(outcome.errors, QList<Task::Status>{Task::Error});
    // a second request, were there one, would come on a connection of its own; this one comes after it
    wire.setHangUp(ScriptedServer::HangUp::Never);
    QVERIFY(verify());
    QCOMPARE(wire.requests().size(), reused ? 3 : 2);
    const WireRequest& request = wire.requests().at(reused ? 1 : 0);
    QCOMPARE(request.connection, 1);
    const bool isCut =
        hangUp == ScriptedServer::HangUp::AfterHead || hangUp == ScriptedServer::HangUp::InsideBody;
    QCOMPARE(request.body.size() < size, isCut);
}

QTEST_GUILESS_MAIN(TestHostile)
#include "tst_hostile.moc"
