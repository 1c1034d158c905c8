#include "simmedia.h"
#include "simwire.h"

#include <QtCore/QSet>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QUdpSocket>
#include <QtTest/QtTest>

namespace {

SimOptions threeUsers()
{
    SimOptions options;
    options.manualClock = true;
    for (const char* text : {"alice:secret:global", "bob:word", "root:r:admin", "fixed:f:readonly"}) {
        SimUser user;
        QString error;
        SimUser::parse(QString::fromLatin1(text), &user, &error);
        options.users.append(user);
    }
    return options;
}

SimEntry person(const char* name)
{
    SimEntry entry;
    entry.person.name = QString::fromUtf8(name);
    return entry;
}

SimEntry groupOf(const char* name, const QStringList& members)
{
    SimEntry entry = person(name);
    entry.members = members;
    return entry;
}

const SimBookId alicesContacts{QStringLiteral("alice"), false};
const SimBookId alicesGroups{QStringLiteral("alice"), true};

QByteArray contactDocument(const QByteArray& fields)
{
    return declared("<contact>" + fields + "</contact>");
}

QByteArray groupDocument(const QByteArray& fields)
{
    return declared("<contact_group>" + fields + "</contact_group>");
}

} // namespace

class TestQdsimData : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void offersCoverPagesAndPrinters();
    void limitsTheInboundLog();
    void showsAnyInboundEntry();
    void servesTheDocumentsOfTheLog();
    void writesSoundPdfs();
    void writesSoundTiffs();
    void generatesHugeDocuments();
    void refusesDocumentsThatAreNone_data();
    void refusesDocumentsThatAreNone();
    void answersDiscovery();
    void changesBooksByRequest_data();
    void changesBooksByRequest();
    void refusesBookRequests_data();
    void refusesBookRequests();
    void addsModifiesAndDeletes();
    void listsIdentifiers();
    void keepsGroups();
    void missesNoChange();
    void escapesWhatXmlCannotHold();
    void fillsBooksAlikeForTheSameSeed();
    void changesWhileItRuns();
    void compressesForWhoeverWantsIt();
};

void TestQdsimData::offersCoverPagesAndPrinters()
{
    SimServer server;
    QVERIFY(server.start());
    const Wire::Answer pages = Wire("GET", "/qdws/v1/data/cover_pages").send(server);
    QCOMPARE(pages.count("file"), 4);
    QCOMPARE(pages.body.count("<enabled>false</enabled>"), 1);
    QCOMPARE(Wire("GET", "/qdws/v1/data/printer_names").send(server).count("printer"), 3);
}

void TestQdsimData::limitsTheInboundLog()
{
    SimOptions options;
    options.inbound = 10000;
    SimServer server(options);
    QVERIFY(server.start());
    const Wire::Answer all = Wire("GET", "/qdws/v1/inbound_log").send(server);
    QCOMPARE(all.count("inbound_fax_entry"), 10000);
    const Wire::Answer three = Wire("GET", "/qdws/v1/inbound_log?index=0&limit=3").send(server);
    QCOMPARE(three.count("inbound_fax_entry"), 3);
    const QVector<SimInbound> log = server.inbound();
    QCOMPARE(three.text("filename"), log.last().filename); // newest first
    for (int i = 1; i < log.size(); ++i)
        QVERIFY(log[i - 1].completeTime < log[i].completeTime);
    QVERIFY(QDateTime::fromString(log.last().completeTime, Qt::ISODate) < QDateTime::currentDateTime());
}

void TestQdsimData::showsAnyInboundEntry()
{
    SimServer server;
    QVERIFY(server.start());
    SimInbound entry;
    entry.pages = QStringLiteral("9999999999");
    entry.completeTime = QStringLiteral("0000-00-00T99:99:99");
    entry.status = QStringLiteral("unheard of");
    entry.filename = QStringLiteral("../a b%/\xc3\xa9.pdf");
    entry.error = QStringLiteral("1 < 2");
    entry.deliveredTo = {{QStringLiteral("email"), QStringLiteral("x@example.com")},
                         {QStringLiteral("printer"), QString()}};
    entry.document = "not a PDF";
    server.addInbound(entry);
    const Wire::Answer log = Wire("GET", "/qdws/v1/inbound_log").send(server);
    QCOMPARE(log.text("pages"), entry.pages);
    QCOMPARE(log.text("complete_time"), entry.completeTime);
    QCOMPARE(log.text("status"), entry.status);
    QVERIFY(log.body.contains("<delivery_error><error>1 &lt; 2</error></delivery_error>"));
    QVERIFY(
        log.body.contains("<delivered_to><type>printer</type><destination></destination></delivered_to>"));
    const QUrl location(log.text("location"));
    Wire wire("GET", location.path(QUrl::FullyEncoded).toLatin1());
    wire.contentType = QByteArray(); // whoever downloads sends none
    QCOMPARE(wire.send(server).body, entry.document);
}

void TestQdsimData::servesTheDocumentsOfTheLog()
{
    SimOptions options;
    options.inbound = 30;
    SimServer server(options);
    QVERIFY(server.start());
    QSet<QByteArray> documents;
    int pdfs = 0;
    for (const SimInbound& entry : server.inbound()) {
        const QByteArray path =
            QStringLiteral("/qdws/v1/documents/inbound/%1/%2").arg(entry.id).arg(entry.filename).toLatin1();
        const Wire::Answer answer = Wire("GET", path).send(server);
        const bool isPdf = entry.filename.endsWith(QLatin1String(".pdf"));
        pdfs += isPdf ? 1 : 0;
        const QString type = isPdf ? QStringLiteral("application/pdf") : QStringLiteral("image/tiff");
        QVERIFY(answer.head.contains("Content-Type: " + type.toLatin1() + "\r\n"));
        QCOMPARE(SimMedia::countPages(type, answer.body), entry.pages.toInt());
        documents.insert(answer.body);
    }
    QCOMPARE(documents.size(), 30);
    QVERIFY(pdfs > 0 && pdfs < 30);
}

void TestQdsimData::writesSoundPdfs()
{
    const QByteArray pdf = SimMedia::pdf(QStringLiteral("A (strange\\) title"), 3);
    QVERIFY(pdf.startsWith("%PDF-1.4\n") && pdf.endsWith("%%EOF\n"));
    QVERIFY(pdf.contains("(A \\(strange\\\\\\) title)"));
    // Every offset of the table leads to the object of that number.
    const int table = pdf.mid(pdf.lastIndexOf("startxref\n") + 10).split('\n').first().toInt();
    const QList<QByteArray> lines = pdf.mid(table).split('\n');
    QCOMPARE(lines[0], QByteArrayLiteral("xref"));
    const int count = lines[1].split(' ').last().toInt();
    QCOMPARE(count, 1 + 3 + 2 * 3);
    for (int i = 1; i < count; ++i) {
        QCOMPARE(lines[2 + i].size(), 19); // with the line feed twenty
        QVERIFY(pdf.mid(lines[2 + i].left(10).toInt()).startsWith(QByteArray::number(i) + " 0 obj\n"));
    }
    // Every stream is as long as it says.
    for (int at = pdf.indexOf("/Length "); at >= 0; at = pdf.indexOf("/Length ", at + 1)) {
        const int begin = pdf.indexOf("stream\n", at) + 7;
        QCOMPARE(pdf.indexOf("\nendstream", begin) - begin, pdf.mid(at + 8, 10).split(' ').first().toInt());
    }
}

void TestQdsimData::writesSoundTiffs()
{
    const QByteArray tiff = SimMedia::tiff(4711, 2);
    const auto number = [&tiff](quint32 at, int size) {
        quint32 value = 0;
        for (int i = size - 1; i >= 0; --i)
            value = value << 8 | static_cast<unsigned char>(tiff.at(static_cast<int>(at) + i));
        return value;
    };
    QVERIFY(tiff.startsWith(QByteArray("II*\0", 4)));
    QSet<QByteArray> bitmaps;
    quint32 directory = number(4, 4);
    while (directory != 0) {
        QMap<quint32, quint32> tags;
        quint32 last = 0;
        for (quint32 i = 0; i < number(directory, 2); ++i) {
            const quint32 at = directory + 2 + 12 * i;
            QVERIFY(number(at, 2) > last); // tags ascend
            last = number(at, 2);
            tags[last] = number(at + 8, 4);
        }
        const QByteArray strip = tiff.mid(static_cast<int>(tags[273]), static_cast<int>(tags[279]));
        QByteArray bitmap;
        for (int at = 0; at + 1 < strip.size();) { // PackBits
            const int code = static_cast<signed char>(strip[at]);
            bitmap += code >= 0 ? strip.mid(at + 1, code + 1) : QByteArray(1 - code, strip[at + 1]);
            at += code >= 0 ? code + 2 : 2;
        }
        QCOMPARE(bitmap.size(), static_cast<int>(tags[256] / 8 * tags[257]));
        QVERIFY(bitmap.contains('\xff') && bitmap.contains('\0'));
        bitmaps.insert(bitmap);
        directory = number(directory + 2 + 12 * number(directory, 2), 4);
        QVERIFY(directory % 2 == 0 && directory < static_cast<quint32>(tiff.size()));
    }
    QCOMPARE(bitmaps.size(), 2); // each shows its own number
}

void TestQdsimData::generatesHugeDocuments()
{
    const qint64 size = (20 << 20) + 123;
    SimOptions options;
    options.hugeDocument = size;
    SimServer server(options);
    QVERIFY(server.start());
    const Wire::Answer answer = Wire("GET", "/qdws/v1/documents/inbound/1/huge.tif").send(server);
    QVERIFY(answer.isWhole);
    QCOMPARE(qint64(answer.body.size()), size);
    // However it is cut, it is the same document.
    QByteArray pieces;
    for (qint64 at = 0, length = 1; at < size; at += length, length = length * 3 + 7)
        pieces += SimMedia::hugeTiff(size, at, length);
    QVERIFY(pieces == answer.body);
    QCOMPARE(SimMedia::countPages(QStringLiteral("image/tiff"), answer.body), 1);
    QVERIFY(answer.body.mid(1 << 20, 4096) != answer.body.mid(2 << 20, 4096));
}

void TestQdsimData::refusesDocumentsThatAreNone_data()
{
    QTest::addColumn<QByteArray>("target");
    for (const char* target : {"inbound/1/other.tif", "inbound/2/fax00001.tif", "inbound/0/fax00001.tif",
                               "inbound/x/y", "inbound", "preview/1/fax1.tif", "..%2f..%2f..%2fetc%2fpasswd"})
        QTest::newRow(target) << QByteArray("/qdws/v1/documents/") + target;
}

void TestQdsimData::refusesDocumentsThatAreNone()
{
    QFETCH(QByteArray, target);
    SimServer server;
    QVERIFY(server.start());
    server.addInbound(SimInbound());
    QCOMPARE(Wire("GET", "/qdws/v1/documents/inbound/1/fax00001.tif").send(server).status, 200);
    QCOMPARE(Wire("GET", target).send(server).status, 404);
    Wire stranger("GET", "/qdws/v1/documents/inbound/1/fax00001.tif");
    stranger.credentials = QByteArray();
    QCOMPARE(stranger.send(server).status, 401);
}

void TestQdsimData::answersDiscovery()
{
    SimOptions options;
    options.discoveryAddress = QStringLiteral("127.0.0.1");
    options.discoveryPort = 0;
    SimServer server(options);
    QString error;
    QVERIFY2(server.start(&error), qPrintable(error));
    QUdpSocket socket;
    QVERIFY(socket.bind(QHostAddress::LocalHost));
    const QByteArrayList datagrams = {
        "", "DISCOVER", "discover\n", QByteArray(60000, 'x'), "DISCOVER\n\n", "DISCOVER\n"};
    for (const QByteArray& datagram : datagrams)
        socket.writeDatagram(datagram, QHostAddress::LocalHost, server.discoveryPort());
    QVERIFY(socket.waitForReadyRead(20000));
    QByteArray reply(2000, '\0');
    reply.resize(static_cast<int>(socket.readDatagram(reply.data(), reply.size())));
    const QByteArrayList lines = reply.split('\n');
    QCOMPARE(lines.value(0), QByteArrayLiteral("200 OK"));
    QVERIFY(lines.contains("inet_addr: " + server.address().toLatin1()));
    QVERIFY(lines.contains("model: QDF40X"));
    QVERIFY(lines.contains("version: 3.6.1"));
    QTRY_COMPARE(server.discoveryQueries(), 1);
    QVERIFY(!socket.hasPendingDatagrams());
}

void TestQdsimData::changesBooksByRequest_data()
{
    QTest::addColumn<QByteArray>("credentials");
    QTest::addColumn<QByteArray>("book");
    QTest::addColumn<int>("status"); // of every change
    const auto row = [](const char* credentials, const char* book, int status) {
        QTest::addRow("%s %s", credentials, book) << QByteArray(credentials) << QByteArray(book) << status;
    };
    row("alice:secret", "alice", 200);
    row("alice:secret", "global_contact_list", 200);
    row("alice:secret", "bob", 403);
    row("alice:secret", "nobody", 404);
    row("bob:word", "global_contact_list", 403);
    row("root:r", "alice", 200);
    row("root:r", "global_contact_list", 200);
    row("fixed:f", "fixed", 405);
    row("fixed:f", "global_contact_list", 405);
}

void TestQdsimData::changesBooksByRequest()
{
    QFETCH(QByteArray, credentials);
    QFETCH(QByteArray, book);
    QFETCH(int, status);
    SimServer server(threeUsers());
    QVERIFY(server.start());
    for (const bool groups : {false, true}) {
        SimEntry entry = person("old");
        entry.uid = QStringLiteral("7");
        server.addEntry({QString::fromLatin1(book), groups}, entry);
        const QByteArray path = (groups ? "/qdws/v1/contact_groups/" : "/qdws/v1/contacts/") + book;
        const QByteArray address = "http://fax" + path + "/7";
        const QByteArray document =
            groups ? groupDocument("<contact_group_url>" + address + "</contact_group_url><name>new</name>")
                   : contactDocument("<contact_url>" + address + "</contact_url><name>new</name>");
        const auto send = [&](const char* method, const QByteArray& target,
                              const QByteArray& body = QByteArray()) {
            Wire wire(method, target, body);
            wire.credentials = credentials;
            return wire.send(server);
        };
        const Wire::Answer modified = send("PUT", path + "/7", document);
        QCOMPARE(modified.status, status);
        QCOMPARE(modified.text("message") == QLatin1String("Modified"), status == 200);
        const Wire::Answer created = send("POST", path, document);
        QCOMPARE(created.status, status);
        QCOMPARE(created.text("message") == QLatin1String("Created"), status == 200);
        const Wire::Answer deleted = send("DELETE", path + "/7");
        QCOMPARE(deleted.status, status);
        QCOMPARE(deleted.text("message") == QLatin1String("Deleted"), status == 200);
        const QVector<SimEntry> entries = server.book(QString::fromLatin1(book), groups);
        if (status == 200) {
            QCOMPARE(entries.size(), 1);
            QCOMPARE(entries.first().person.name, QStringLiteral("new"));
            QCOMPARE(created.text(groups ? "contact_group_url" : "contact_url"),
                     server.url(QString::fromLatin1(path + '/') + entries.first().uid).toString());
            QCOMPARE(send("DELETE", path + "/7").status, 404);
        } else if (!entries.isEmpty()) {
            QCOMPARE(entries.first().person.name, QStringLiteral("old"));
        }
    }
}

void TestQdsimData::refusesBookRequests_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const char* method, const char* target, const QByteArray& body,
                        int status, const char* reason) {
        QTest::newRow(name) << QByteArray(method) << QByteArray("/qdws/v1/") + target << body << status
                            << QString::fromLatin1(reason);
    };
    const QByteArray url = "<contact_url>http://fax/qdws/v1/contacts/alice/1</contact_url>";
    row("put to a book", "PUT", "contacts/alice", contactDocument(url), 405, "a book");
    row("delete of a book", "DELETE", "contacts/alice", {}, 405, "a book");
    row("post to an entry", "POST", "contacts/alice/1", contactDocument("<name>A</name>"), 405, "an entry");
    row("query_time 0", "GET", "contacts/alice?query_time=0", {}, 400, "query");
    row("query_time of 33 bits", "GET", "contacts/alice?query_time=4294967296", {}, 400, "32 bits");
    row("query of an entry", "GET", "contacts/alice/1?query_time=1", {}, 400, "query");
    row("query of oids", "GET", "contact_oids/alice?query_time=1", {}, 400, "query");
    row("oids of an entry", "GET", "contact_oids/alice/1", {}, 404, "no book");
    row("entry without uid", "GET", "contacts/alice/", {}, 404, "no entry");
    row("two lines", "POST", "contacts/alice", contactDocument("\n<name>A</name>"), 400, "one line");
    row("group in a book of contacts", "POST", "contacts/alice", groupDocument("<name>A</name>"), 400,
        "not \"contact\"");
    row("empty field", "POST", "contacts/alice", contactDocument("<name/>"), 400, "left out");
    row("out of order", "POST", "contacts/alice", contactDocument("<fax_number>1</fax_number><name>A</name>"),
        400, "out of order");
    row("other address", "PUT", "contacts/alice/1",
        contactDocument("<contact_url>http://fax/qdws/v1/contacts/alice/2</contact_url>"), 400,
        "not that of the request");
    row("no address", "PUT", "contacts/alice/1", contactDocument("<name>A</name>"), 400,
        "not that of the request");
    row("https address", "PUT", "contacts/alice/1",
        contactDocument("<contact_url>https://fax/qdws/v1/contacts/alice/1</contact_url>"), 400, "https");
    row("unknown member", "POST", "contact_groups/alice",
        groupDocument("<name>G</name><contact>http://fax/qdws/v1/contacts/alice/99</contact>"), 404,
        "no member");
    row("member that is no address", "POST", "contact_groups/alice",
        groupDocument("<name>G</name><contact>1</contact>"), 400, "no http address");
    row("members before the name", "POST", "contact_groups/alice",
        groupDocument("<contact>http://fax/qdws/v1/contacts/alice/1</contact><name>G</name>"), 400,
        "out of order");
}

void TestQdsimData::refusesBookRequests()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QFETCH(QString, reason);
    SimServer server(threeUsers());
    QVERIFY(server.start());
    QCOMPARE(server.addEntry(alicesContacts, person("one")), QStringLiteral("1"));
    QCOMPARE(Wire(method, target, body).send(server).status, status);
    QVERIFY2(server.refusals().value(0).contains(reason), qPrintable(server.refusals().value(0)));
    QCOMPARE(server.book(QStringLiteral("alice")).value(0).person.name, QStringLiteral("one"));
    QVERIFY(server.book(QStringLiteral("alice"), true).isEmpty());
}

void TestQdsimData::addsModifiesAndDeletes()
{
    SimServer server;
    QVERIFY(server.start());
    const QByteArray fields =
        "<name>N &amp; M</name><email_address>e</email_address><phone_number>1</phone_number>"
        "<fax_number>2</fax_number><organization>O</organization>";
    const Wire::Answer created =
        Wire("POST", "/qdws/v1/contacts/alice", contactDocument(fields)).send(server);
    const QByteArray url =
        "<contact_url>" + created.text("contact_url").toLatin1() + "</contact_url><username>alice</username>";
    QVERIFY2(created.body.contains("<contact>" + url + fields + "</contact>"), created.body.constData());
    const QByteArray path = QUrl(created.text("contact_url")).path().toLatin1();
    QCOMPARE(Wire("PUT", path, contactDocument(url + "<fax_number>3</fax_number>")).send(server).status, 200);
    // What is left out is empty now.
    QVERIFY(Wire("GET", path)
                .send(server)
                .body.contains("<contact>" + url + "<fax_number>3</fax_number></contact>"));
    QCOMPARE(Wire("DELETE", path).send(server).status, 200);
    QCOMPARE(Wire("GET", path).send(server).status, 404);
}

void TestQdsimData::listsIdentifiers()
{
    SimServer server;
    QVERIFY(server.start());
    const auto oids = [&server](const char* target) {
        const Wire::Answer answer = Wire("GET", target).send(server);
        return answer.body.contains("<oids>") ? answer.text("oids") : QStringLiteral("none");
    };
    QCOMPARE(oids("/qdws/v1/contact_oids/alice"), QString());
    for (const char* name : {"a", "b", "c"})
        server.addEntry(alicesContacts, person(name));
    SimEntry odd = person("d");
    odd.uid = QStringLiteral("1) OR (1=1");
    server.addEntry(alicesContacts, odd);
    QVERIFY(server.deleteEntry(alicesContacts, QStringLiteral("2")));
    QCOMPARE(oids("/qdws/v1/contact_oids/alice"), QStringLiteral("1,3,1) OR (1=1"));
    QCOMPARE(oids("/qdws/v1/contact_group_oids/alice"), QString());
    QCOMPARE(oids("/qdws/v1/contact_oids/global_contact_list"), QString());
    const Wire::Answer entry = Wire("GET", "/qdws/v1/contacts/alice/1)%20OR%20(1=1").send(server);
    QCOMPARE(entry.text("name"), QStringLiteral("d"));
}

void TestQdsimData::keepsGroups()
{
    SimServer server;
    QVERIFY(server.start());
    const QString mine = alicesContacts.path(server.addEntry(alicesContacts, person("mine")));
    const SimBookId everybodys{SimBooks::global(), false};
    const QString shared = everybodys.path(server.addEntry(everybodys, person("shared")));
    const QByteArray members = "<contact>http://fax" + mine.toLatin1() + "</contact><contact>http://fax" +
                               shared.toLatin1() + "</contact>";
    const Wire::Answer created =
        Wire("POST", "/qdws/v1/contact_groups/alice", groupDocument("<name>G</name>" + members)).send(server);
    QCOMPARE(created.status, 200);
    const Wire::Answer groups = Wire("GET", "/qdws/v1/contact_groups/alice").send(server);
    QVERIFY(groups.body.contains("<name>G</name><description></description><contact>" +
                                 server.url(mine).toEncoded() + "</contact><contact>" +
                                 server.url(shared).toEncoded() + "</contact></contact_group>"));
    // Whoever is deleted leaves the groups, and that is a change of the group.
    const QByteArray since =
        "/qdws/v1/contact_groups/alice?query_time=" + groups.text("query_time").toLatin1();
    QCOMPARE(Wire("GET", since).send(server).count("contact_group"), 0);
    QCOMPARE(Wire("DELETE", shared.toLatin1()).send(server).status, 200);
    const Wire::Answer changed = Wire("GET", since).send(server);
    QCOMPARE(changed.count("contact_group"), 1);
    QCOMPARE(changed.count("contact"), 1);
    // A test may put in what no request can: groups that contain each other, members that there never were.
    const QString a = alicesGroups.path(QStringLiteral("100"));
    SimEntry first = groupOf(
        "first", {alicesGroups.path(QStringLiteral("101")), alicesContacts.path(QStringLiteral("999"))});
    first.uid = QStringLiteral("100");
    server.addEntry(alicesGroups, first);
    SimEntry second = groupOf("second", {a});
    second.uid = QStringLiteral("101");
    server.addEntry(alicesGroups, second);
    QCOMPARE(Wire("GET", "/qdws/v1/contact_groups/alice").send(server).count("contact_group"), 3);
    QCOMPARE(Wire("GET", a.toLatin1()).send(server).count("contact_group"), 1);
    QCOMPARE(Wire("GET", "/qdws/v1/contacts/alice/999").send(server).status, 404);
}

/// Reads and changes alternate within one second of a clock that stands still, and every change is seen
/// exactly once.
void TestQdsimData::missesNoChange()
{
    SimServer server(threeUsers());
    QVERIFY(server.start());
    Wire::Answer answer = Wire("GET", "/qdws/v1/contacts/alice").send(server);
    QCOMPARE(answer.count("contact"), 0);
    QCOMPARE(answer.text("query_time").toLongLong(), server.now() / 1000);
    QStringList uids;
    for (int round = 0; round < 20; ++round) {
        int changes = 0;
        if (round % 3 != 0) {
            uids.append(server.addEntry(alicesContacts, person("new")));
            ++changes;
        }
        if (round > 5 && round % 2 == 0) {
            SimEntry edited = person("edited");
            edited.uid = uids.at(round % 3);
            QVERIFY(server.modifyEntry(alicesContacts, edited));
            ++changes;
        }
        if (round == 15)
            server.step(60000);
        const QByteArray before = answer.text("query_time").toLatin1();
        answer = Wire("GET", "/qdws/v1/contacts/alice?query_time=" + before).send(server);
        QCOMPARE(answer.count("contact"), changes);
        QVERIFY(answer.text("query_time").toLongLong() >= before.toLongLong());
    }
    QCOMPARE(Wire("GET", "/qdws/v1/contacts/alice?query_time=4294967295").send(server).count("contact"), 0);
}

void TestQdsimData::escapesWhatXmlCannotHold()
{
    SimServer server;
    QVERIFY(server.start());
    SimEntry entry = person("a<b>&\"'\xf0\x9f\x93\xa0%_");
    entry.person.name += QChar(0);
    entry.person.name += QChar(7);
    entry.person.organization = QString(1 << 20, QLatin1Char('&'));
    server.addEntry(alicesContacts, entry);
    const QByteArray body = Wire("GET", "/qdws/v1/contacts/alice").send(server).body;
    QVERIFY(body.contains("<name>a&lt;b&gt;&amp;\"'\xf0\x9f\x93\xa0%_</name>"));
    QCOMPARE(body.count("&amp;"), (1 << 20) + 1);
}

void TestQdsimData::fillsBooksAlikeForTheSameSeed()
{
    SimOptions options = threeUsers();
    options.contacts = 300;
    options.groups = 20;
    const auto all = [](const SimServer& server) {
        QStringList names;
        for (const QString& owner : {SimBooks::global(), QStringLiteral("alice"), QStringLiteral("bob")}) {
            for (const SimEntry& entry : server.book(owner))
                names.append(entry.uid + entry.person.name + entry.person.fax + entry.person.organization);
            for (const SimEntry& entry : server.book(owner, true))
                names.append(entry.uid + entry.person.name + entry.members.join(QLatin1Char(' ')));
        }
        return names;
    };
    SimServer one(options);
    SimServer two(options);
    QCOMPARE(all(one).size(), 3 * 320);
    QCOMPARE(all(one), all(two));
    QCOMPARE(one.stepChanges(200), two.stepChanges(200));
    QCOMPARE(all(one), all(two));
    options.seed = 2;
    SimServer three(options);
    QVERIFY(all(three) != all(two));
    for (const SimEntry& group : three.book(QStringLiteral("bob"), true))
        QVERIFY(group.members.size() >= 1 &&
                group.members.first().startsWith(QLatin1String("/qdws/v1/contacts/bob/")));
}

void TestQdsimData::changesWhileItRuns()
{
    SimOptions options;
    options.contacts = 10;
    options.groups = 2;
    options.changesPerSecond = 2000;
    SimServer server(options);
    QVERIFY(server.start());
    QByteArray before = Wire("GET", "/qdws/v1/contact_oids/alice").send(server).body;
    for (int i = 0; i < 3; ++i) {
        QByteArray now;
        QTRY_VERIFY((now = Wire("GET", "/qdws/v1/contact_oids/alice").send(server).body) != before);
        before = now;
    }
}

void TestQdsimData::compressesForWhoeverWantsIt()
{
    SimOptions options;
    options.compress = true;
    options.contacts = 1000;
    SimServer server(options);
    QVERIFY(server.start());
    const Wire wire("GET", "/qdws/v1/contacts/alice");
    const Wire::Answer plain = wire.send(server);
    QVERIFY(!plain.head.contains("Content-Encoding"));
    QNetworkAccessManager nam; // asks for gzip and unpacks it
    QNetworkRequest request(server.url(QStringLiteral("/qdws/v1/contacts/alice")));
    request.setHeader(QNetworkRequest::ContentTypeHeader, wire.contentType);
    request.setRawHeader("Authorization", "Basic " + wire.credentials.toBase64());
    const std::unique_ptr<QNetworkReply> reply(nam.get(request));
    QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 20000);
    const auto withoutTime = [](QByteArray body) {
        const int begin = body.indexOf("<query_time>");
        return body.remove(begin, body.indexOf("</query_time>") - begin);
    };
    QVERIFY(reply->error() == QNetworkReply::NoError);
    QVERIFY(withoutTime(reply->readAll()) == withoutTime(plain.body));
    Wire packed = wire;
    packed.moreHeaders = "Accept-Encoding: gzip, deflate\r\n";
    const Wire::Answer answer = packed.send(server);
    QVERIFY(answer.head.contains("Content-Encoding: gzip\r\n"));
    QVERIFY(answer.isWhole && answer.body.size() < plain.body.size() / 2);
}

QTEST_GUILESS_MAIN(TestQdsimData)
#include "tst_qdsimdata.moc"
