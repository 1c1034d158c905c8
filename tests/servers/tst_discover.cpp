#include "discover.h"
#include "shorthand.h"

#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <QUdpSocket>
#include <QtTest>

namespace {

const QByteArray sentinel = "200 OK\ninet_addr:sentinel\n";

} // namespace

/// Runs in a network of its own (own-network.sh); elsewhere nothing is ever sent.
class TestDiscover : public QObject
{
    Q_OBJECT

    QUdpSocket m_server;
    QList<QNetworkDatagram> m_queries;
    std::unique_ptr<Discover> m_discover;
    std::unique_ptr<QSignalSpy> m_timeOut;
    int m_timerEvents{0}; ///< Received by the watched object.
    QStringList m_found;  ///< "address|model|version" of each entry.

    void answer(const QByteArray& reply)
    {
        QVERIFY(!m_queries.isEmpty());
        const QNetworkDatagram query = m_queries.first();
        QCOMPARE(m_server.writeDatagram(reply, query.senderAddress(), quint16(query.senderPort())),
                 reply.size());
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        m_timerEvents += event->type() == QEvent::Timer ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

    int m_queued{0};
    Q_SLOT void receive(const DiscoverEntry&) { ++m_queued; }

    int sockets() const { return m_discover->findChildren<QUdpSocket*>().size(); }

private Q_SLOTS:
    void initTestCase()
    {
        int broadcasts = 0;
        const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
        for (const QNetworkInterface& networkInterface : interfaces) {
            const QList<QNetworkAddressEntry> addresses = networkInterface.addressEntries();
            if (!addresses.isEmpty() && !networkInterface.flags().testFlag(QNetworkInterface::IsLoopBack))
                QSKIP(
                    "Would broadcast on a real network; runs only in a network of its own (unshare --net).");
            for (const QNetworkAddressEntry& address : addresses)
                broadcasts += address.broadcast().isNull() ? 0 : 1;
        }
        if (broadcasts != 3)
            QSKIP("Needs three broadcast addresses on the loopback interface (ip address add).");
        QVERIFY(m_server.bind(QHostAddress::AnyIPv4, 7070));
        connect(&m_server, &QUdpSocket::readyRead, this, [this] {
            while (m_server.hasPendingDatagrams())
                m_queries.append(m_server.receiveDatagram());
        });
    }

    void init()
    {
        m_queries.clear();
        m_found.clear();
        m_discover.reset(new Discover);
        m_discover->installEventFilter(this);
        m_timerEvents = 0;
        m_timeOut.reset(new QSignalSpy(m_discover.get(), &Discover::timeOutDiscover));
        connect(m_discover.get(), &Discover::discoveredEntry, this, [this](const DiscoverEntry& entry) {
            m_found.append(QStringList{entry.inetAddr, entry.model, entry.version}.join(QLatin1Char('|')));
        });
    }

    void threeQueriesPerBroadcastAddress()
    {
        m_discover->startDiscover(0);
        QTRY_COMPARE(m_queries.size(), 9);
        QCoreApplication::processEvents();
        QCOMPARE(m_queries.size(), 9);
        QMap<QString, int> destinations;
        for (const QNetworkDatagram& query : qAsConst(m_queries)) {
            QCOMPARE(query.data(), QByteArray("DISCOVER\n"));
            ++destinations[query.destinationAddress().toString()];
        }
        const QMap<QString, int> expected{{QStringLiteral("127.255.255.255"), 3},
                                          {QStringLiteral("127.77.255.255"), 3},
                                          {QStringLiteral("127.78.255.255"), 3}};
        QCOMPARE(destinations, expected);
    }

    void replies()
    {
        const QString ignored;
        QByteArray keys;
        for (int i = 0; keys.size() < 65000; ++i)
            keys += QByteArray::number(i, 36) + ":\n";
        const std::pair<QByteArray, QString> rows[] = {
            {"200 ok\ninet_addr: 192.168.1.20\nmodel: X\nversion: 1.4", s("192.168.1.20|X|1.4")},
            {"200 OK\r\nINET_ADDR:10.0.0.5\r\nModel:a:b \t\r\nserial:7\r\n", s("10.0.0.5|a:b|")},
            // the last value wins, and lines without a colon are ignored
            {"200 OK\n\nmodel:1\nmodel\n:x\nmodel:2\nversion:", s("|2|")},
            {"200 OK\nmodel :1\n", s("||")},
            {"200 OK", s("||")},
            {"200 OK\nmodel:\xff\nversion:\xc3\xa9", s("|\ufffd|\u00e9")},
            {"500 Error\ninet_addr:1", ignored},
            {"200 OKAY\ninet_addr:1", ignored},
            {"\n200 OK\ninet_addr:1", ignored},
            {"", ignored},
            {QByteArray(1000, '\0'), ignored},
            {QByteArray(65507, 'x'), ignored}, // the largest datagram
            {"200 OK" + QByteArray(65000, '\n'), s("||")},
            {"200 OK\n" + QByteArray(65000, ':'), s("||")},
            {"200 OK\n" + keys, s("||")}};
        for (const auto& [reply, entry] : rows) {
            init();
            m_discover->startDiscover(0);
            QTRY_VERIFY(!m_queries.isEmpty());
            answer(reply);
            answer(sentinel);
            QTRY_VERIFY(m_found.contains(s("sentinel||")));
            m_found.removeLast();
            QCOMPARE(m_found, entry.isNull() ? QStringList() : QStringList(entry));
        }
    }

    void manyRepliesAreAllReported()
    {
        m_discover->startDiscover(0);
        QTRY_VERIFY(!m_queries.isEmpty());
        QVERIFY(connect(m_discover.get(), SIGNAL(discoveredEntry(DiscoverEntry)),
                        this, // needs the type's name
                        SLOT(receive(DiscoverEntry)), Qt::QueuedConnection));
        for (int i = 0; i < 150; ++i)
            answer(sentinel);
        // Other events are processed in between.
        int foundBefore = 0;
        connect(m_discover.get(), &Discover::discoveredEntry, this, [this, &foundBefore] {
            if (m_found.size() == 1)
                QTimer::singleShot(0, this, [this, &foundBefore] { foundBefore = m_found.size(); });
        });
        QTRY_COMPARE(m_found.size(), 150);
        QTRY_COMPARE(m_queued, 150);
        QVERIFY(foundBefore > 0 && foundBefore < 150);
    }

    void timeOutComesOnce()
    {
        m_discover->startDiscover(20);
        QVERIFY(m_timeOut->wait());
        QTRY_COMPARE(sockets(), 0);
        QVERIFY(!m_timeOut->wait(100));
        QCOMPARE(m_timeOut->size(), 1);
        QCOMPARE(m_timerEvents, 1);
    }

    void receiversMayStopOrDestroyIt()
    {
        enum { Listens, RunsEvents, Stops, Restarts, Destroys };
        for (const int receiver : {Listens, RunsEvents, Stops, Restarts, Destroys}) {
            for (const bool busy : {false, true}) {
                init();
                connect(m_discover.get(), &Discover::discoveredEntry, this, [this, receiver] {
                    if (receiver == Stops)
                        m_discover->stopDiscover();
                    else if (receiver == Restarts)
                        m_discover->startDiscover(60000);
                    else if (receiver == Destroys)
                        m_discover.reset();
                    if (receiver == Listens)
                        return;
                    // A dialog would run the event loop here.
                    QCoreApplication::processEvents();
                    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                });
                m_discover->startDiscover(busy ? 1 : 0);
                QVERIFY(m_server.waitForReadyRead(20000));
                for (int i = 0; i < 100; ++i)
                    answer(sentinel);
                if (busy) // the time is up before the event loop runs
                    QTest::qSleep(20);
                const bool goesOn = receiver == Listens || receiver == RunsEvents;
                QCOMPARE(m_timeOut->wait(busy && goesOn ? 20000 : 100), busy && goesOn);
                QTRY_COMPARE(m_found.size(), goesOn ? 100 : 1);
                if (receiver == Stops || receiver == Restarts)
                    QTRY_COMPARE(sockets(), receiver == Restarts ? 1 : 0);
            }
        }
    }

    void answersAreReportedWhileTheSocketExists()
    {
        connect(m_discover.get(), &Discover::timeOutDiscover, this, [this] {
            answer(sentinel);
            QTRY_COMPARE(m_found.size(), 1); // a dialog runs the event loop here
        });
        m_discover->startDiscover(1);
        QVERIFY(m_server.waitForReadyRead(20000));
        QVERIFY(m_timeOut->wait());
        QTRY_COMPARE(sockets(), 0);
    }

    void restartLeavesTheSecondSearch()
    {
        m_discover->startDiscover(20);
        m_discover->startDiscover(0);
        QTRY_COMPARE(sockets(), 1);
        QVERIFY(!m_timeOut->wait(100));
        QTRY_COMPARE(m_queries.size(), 18);
        // The answer to the first search's query has no receiver; the last query came from the second.
        answer(sentinel);
        m_queries = {m_queries.last()};
        answer(sentinel);
        QTRY_COMPARE(m_found.size(), 1);
    }

    void stopEndsTheSearch()
    {
        m_discover->startDiscover(20);
        QTRY_VERIFY(!m_queries.isEmpty());
        m_discover->stopDiscover();
        m_discover->stopDiscover();
        QTRY_COMPARE(sockets(), 0);
        answer(sentinel);
        QVERIFY(!m_timeOut->wait(100));
        QCOMPARE(m_timerEvents, 0);
        QVERIFY(m_found.isEmpty());
    }

    void receiversOfTheEndMayDestroyIt()
    {
        connect(m_discover.get(), &Discover::timeOutDiscover, this, [this] { m_discover.reset(); });
        m_discover->startDiscover(1);
        QTRY_VERIFY(!m_discover);
    }
};

QTEST_GUILESS_MAIN(TestDiscover)
#include "tst_discover.moc"
