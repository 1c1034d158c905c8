#include "shorthand.h"
#include "simmedia.h"
#include "simwire.h"

#include <QtNetwork/QtNetwork>
#include <QtTest/QtTest>

class TestQdsimData : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void servesTheDocumentsOfTheLog()
    {
        Started server(with([](SimOptions& options) { options.inbound = 30; }));
        QSet<QByteArray> documents;
        QSet<QString> types;
        QString previous;
        for (const SimInbound& entry : server.inbound()) {
            const QString path = s("documents/inbound/%1/%2").arg(entry.id).arg(entry.filename);
            const Wire::Answer answer = get(server, path.toLatin1());
            const QString type = entry.filename.endsWith(s(".pdf")) ? s("application/pdf") : s("image/tiff");
            QVERIFY(answer.head.contains("Content-Type: " + type.toLatin1() + "\r\n"));
            QCOMPARE(SimMedia::countPages(type, answer.body), entry.pages.toInt());
            QVERIFY(previous < entry.completeTime);
            previous = entry.completeTime;
            documents.insert(answer.body);
            types.insert(type);
        }
        QVERIFY(QDateTime::fromString(previous, Qt::ISODate) < QDateTime::currentDateTime());
        QCOMPARE(documents.size(), 30);
        QCOMPARE(types.size(), 2);
    }

    void generatesHugeDocuments()
    {
        const qint64 size = (20 << 20) + 123;
        Started server(with([size](SimOptions& options) { options.hugeDocument = size; }));
        const Wire::Answer answer = get(server, "documents/inbound/1/huge.tif");
        QVERIFY(answer.isWhole);
        QCOMPARE(qint64(answer.body.size()), size);
        // However it is cut, it is the same document.
        QByteArray pieces;
        for (qint64 at = 0, length = 1; at < size; at += length, length = length * 3 + 7)
            pieces += SimMedia::hugeTiff(size, at, length);
        QVERIFY(pieces == answer.body);
        QCOMPARE(SimMedia::countPages(s("image/tiff"), answer.body), 1);
        QVERIFY(answer.body.mid(1 << 20, 4096) != answer.body.mid(2 << 20, 4096));
    }

    void refusesDocumentsThatAreNone()
    {
        Started server;
        server.addInbound(SimInbound());
        const char* good = "documents/inbound/1/fax00001.tif";
        QCOMPARE(get(server, good).status, 200);
        QCOMPARE(ask(server, "GET", good, {}, {}).status, 401);
        for (const char* target : {"inbound/1/other.tif", "inbound/2/fax00001.tif", "inbound/x/y", "inbound",
                                   "preview/1/fax1.tif", "..%2f..%2f..%2fetc%2fpasswd"})
            QVERIFY2(get(server, QByteArray("documents/") + target).status == 404, target);
    }

    void answersDiscovery()
    {
        const Started server(with([](SimOptions& options) {
            options.discoveryAddress = s("127.0.0.1");
            options.discoveryPort = 0;
        }));
        QUdpSocket socket;
        QUdpSocket others;
        const QHostAddress local(QHostAddress::LocalHost);
        QVERIFY(socket.bind(local) && others.bind(local));
        for (const QByteArray& datagram : {QByteArray(), QByteArray("DISCOVER"), QByteArray("discover\n"),
                                           QByteArray(60000, 'x'), QByteArray("DISCOVER\n\n")})
            others.writeDatagram(datagram, local, server.discoveryPort());
        socket.writeDatagram("DISCOVER\n", local, server.discoveryPort());
        QVERIFY(socket.waitForReadyRead(20000));
        const QByteArrayList lines = socket.receiveDatagram().data().split('\n');
        QCOMPARE(lines.value(0), QByteArrayLiteral("200 OK"));
        QVERIFY(lines.contains("inet_addr: " + server.address().toLatin1()));
        QVERIFY(lines.contains("model: QDF40X") && lines.contains("version: 3.6.1"));
        QTRY_COMPARE(server.discoveryQueries(), 1);
        QVERIFY(!socket.hasPendingDatagrams() && !others.hasPendingDatagrams());
    }

    void changesBooksByRequest_data()
    {
        const Rows<QByteArray, QByteArray, int> row; // credentials, book, status of every change
        row("one's own", "alice:secret", "alice", 200);
        row("global by right", "alice:secret", "global_contact_list", 200);
        row("another's", "alice:secret", "bob", 403);
        row("nobody's", "alice:secret", "nobody", 404);
        row("global without the right", "bob:word", "global_contact_list", 403);
        row("administrator", "root:r", "alice", 200);
        row("fixed", "fixed:f", "fixed", 405);
    }
    void changesBooksByRequest()
    {
        const auto [credentials, book, status] = cells<QByteArray, QByteArray, int>();
        Started server(steppedOptions());
        for (const bool groups : {false, true}) {
            server.addEntry({s(book), groups}, someEntry("old", s("7")));
            const QByteArray kind = groups ? "contact_group" : "contact";
            const QByteArray path = kind + "s/" + book;
            const QByteArray url = kind + "_url=http://fax/qdws/v1/" + path + "/7";
            const QByteArray content = document(kind, fields(url + " name=new"));
            const Wire::Answer modified = ask(server, "PUT", path + "/7", content, credentials);
            const Wire::Answer created = ask(server, "POST", path, content, credentials);
            const Wire::Answer deleted = ask(server, "DELETE", path + "/7", {}, credentials);
            for (const Wire::Answer* answer : {&modified, &created, &deleted})
                QCOMPARE(answer->status, status);
            const QVector<SimEntry> entries = server.book(s(book), groups);
            if (status == 200) {
                const QString texts =
                    modified.text("message") + created.text("message") + deleted.text("message");
                QCOMPARE(texts, s("ModifiedCreatedDeleted"));
                QCOMPARE(entries.size(), 1);
                QCOMPARE(entries.first().person.name, s("new"));
                QVERIFY(created.text(kind + "_url").endsWith(s(path + '/') + entries.first().uid));
                QCOMPARE(ask(server, "DELETE", path + "/7", {}, credentials).status, 404);
            } else if (!entries.isEmpty()) {
                QCOMPARE(entries.first().person.name, s("old"));
            }
        }
    }

    void keepsGroups()
    {
        Started server;
        const SimBookId everybodys{SimBooks::global(), false};
        SimEntry group = someEntry("G");
        for (const SimBookId& book : {alicesContacts, everybodys})
            group.members.append(book.path(server.addEntry(book, someEntry("x"))));
        server.addEntry({s("alice"), true}, group);
        // Whoever is deleted leaves the groups, and that is a change of the group.
        const QByteArray since = "contact_groups/alice?query_time=" +
                                 get(server, "contact_groups/alice").text("query_time").toLatin1();
        QCOMPARE(get(server, since).count("contact_group"), 0);
        QVERIFY(server.deleteEntry(everybodys, group.members.last().section(QLatin1Char('/'), -1)));
        const Wire::Answer changed = get(server, since);
        QCOMPARE(changed.count("contact_group"), 1);
        QCOMPARE(changed.text("contact"), server.url(group.members.first()).toString());
        QCOMPARE(changed.count("contact"), 1);
    }

    /// Reads and changes alternate within one second of a clock that stands still, and every change is seen
    /// exactly once.
    void missesNoChange()
    {
        Started server(steppedOptions());
        Wire::Answer answer = get(server, "contacts/alice");
        QCOMPARE(answer.count("contact"), 0);
        QCOMPARE(answer.text("query_time").toLongLong(), server.now() / 1000);
        QStringList uids;
        for (int round = 0; round < 20; ++round) {
            const bool adds = round % 3 != 0;
            const bool edits = round > 5 && round % 2 == 0;
            if (adds)
                uids.append(server.addEntry(alicesContacts, someEntry("new")));
            QVERIFY(!edits || server.modifyEntry(alicesContacts, someEntry("edited", uids.at(round % 3))));
            if (round == 15)
                server.step(60000);
            const QByteArray before = answer.text("query_time").toLatin1();
            answer = get(server, "contacts/alice?query_time=" + before);
            QCOMPARE(answer.count("contact"), adds + edits);
            QVERIFY(answer.text("query_time").toLongLong() >= before.toLongLong());
        }
        QCOMPARE(get(server, "contacts/alice?query_time=4294967295").count("contact"), 0);
    }

    void escapesWhatXmlCannotHold()
    {
        Started server;
        SimEntry entry = someEntry("a<b>&\"'\xf0\x9f\x93\xa0%_\a");
        entry.person.name += QChar(0);
        entry.person.organization = QString(1 << 20, QLatin1Char('&'));
        server.addEntry(alicesContacts, entry);
        const QByteArray body = get(server, "contacts/alice").body;
        QVERIFY(body.contains("<name>a&lt;b&gt;&amp;\"'\xf0\x9f\x93\xa0%_</name>"));
        QCOMPARE(body.count("&amp;"), (1 << 20) + 1);
    }

    void fillsBooksAlikeForTheSameSeed()
    {
        SimOptions options = steppedOptions();
        options.contacts = 300;
        options.groups = 20;
        const auto all = [](const SimServer& server) {
            QStringList names;
            for (const QString& owner : {SimBooks::global(), s("alice"), s("bob")}) {
                for (const SimEntry& entry : server.book(owner) + server.book(owner, true))
                    names += entry.members + QStringList{entry.uid, entry.person.name, entry.person.fax};
            }
            return names;
        };
        SimServer one(options);
        SimServer two(options);
        QCOMPARE(one.book(s("bob")).size() + one.book(s("bob"), true).size(), 320);
        QCOMPARE(one.stepChanges(200), two.stepChanges(200));
        QCOMPARE(all(one), all(two));
        options.seed = 2;
        QVERIFY(all(SimServer(options)) != all(two));
    }

    void compressesForWhoeverWantsIt()
    {
        SimOptions options = steppedOptions();
        options.compress = true;
        options.contacts = 1000;
        Started server(options);
        Wire wire{"GET", "/qdws/v1/contacts/alice"};
        const Wire::Answer plain = wire.send(server);
        QVERIFY(!plain.head.contains("Content-Encoding"));
        QNetworkAccessManager nam; // asks for gzip and unpacks it
        QNetworkRequest request(server.url(s(wire.target)));
        request.setRawHeader("Content-Type", wire.contentType);
        request.setRawHeader("Authorization", "Basic " + wire.credentials.toBase64());
        const std::unique_ptr<QNetworkReply> reply(nam.get(request));
        QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 20000);
        QVERIFY(reply->readAll() == plain.body);
        wire.moreHeaders = "Accept-Encoding: gzip, deflate\r\n";
        const Wire::Answer answer = wire.send(server);
        QVERIFY(answer.head.contains("Content-Encoding: gzip\r\n"));
        QVERIFY(answer.isWhole && answer.body.size() < plain.body.size() / 2);
        for (const int size : {100, answer.body.size() / 2}) {
            QVERIFY(server.addFault(size == 100 ? s("cut=100,times=1") : s("cut,times=1")));
            const Wire::Answer cut = wire.send(server);
            QVERIFY(cut.head.contains("Content-Encoding: gzip\r\n") && !cut.isWhole);
            QCOMPARE(cut.body.size(), size);
        }
    }
};
QTEST_GUILESS_MAIN(TestQdsimData)
#include "tst_qdsimdata.moc"
