#include "shorthand.h"
#include "simwire.h"

#include <QtTest/QtTest>

/// Trouble on request: what the simulated server answers then, and when.
class TestQdsimFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void causesTrouble_data()
    {
        const Rows<int, bool, QString, int> row; // status, wholeness and body of the answer; faxes afterwards
        row("delay=10", 200, true, "<fax_entry>.*</reply>$", 1);
        row("hangup-early", 0, false, "^$", 0);
        row("hangup", 0, false, "^$", 1);
        row("cut=10", 200, false, "^<\\?xml vers$", 1);
        row("cut", 200, false, "^<\\?xml.*<fax_entry>", 1);
        row("drip=0", 200, true, "</reply>$", 1);
        row("status=503", 503, true, "<reply>", 0);
        row("status=401", 401, true, "<reply>", 0);
        row("truncated", 200, true, "<fax_entry>((?!</reply>).)*$", 1);
        row("notxml", 200, true, "^This is not XML", 1);
        row("html", 200, true, "^<!DOCTYPE html>", 1);
        row("message=Fail & <ure>", 200, true, "<message>Fail &amp; &lt;ure&gt;</message>", 1);
        row("nomessage", 200, true, "<reply><fax_entry>", 1);
        row("ampersand", 200, true, "<name>Bob & co</name>", 1);
        row("empty", 200, true, "^$", 1);
        row("huge=2", 200, true, "^<\\?xml[^\n]*\n<reply><message>x+</message></reply>$", 1);
        row("deep=100000", 200, true, "<a><a>.*</a></a>$", 1);
        row("body=<a/>", 200, true, "^<a/>$", 1);
    }
    void causesTrouble()
    {
        const auto [status, whole, body, faxes] = cells<int, bool, QString, int>();
        const QString fault = s(QTest::currentDataTag());
        Started server(steppedOptions());
        QVERIFY(server.addFault(fault));
        const Wire::Answer answer =
            ask(server, "POST", "ofax", shortFax({"1"}).replace("<fax_n", "<name>Bob</name>\n  <fax_n"));
        QCOMPARE(answer.status, status);
        QCOMPARE(answer.isWhole, whole);
        QVERIFY(!fault.startsWith(s("huge")) || answer.body.size() == 2 << 20);
        QVERIFY(!fault.startsWith(s("deep")) || answer.body.count("<a>") == 100000);
        // a text too long for the matcher by its ends
        const QByteArray ends = answer.body.left(1000) + answer.body.mid(1000).right(1000);
        const QRegularExpression expected(body, QRegularExpression::DotMatchesEverythingOption);
        QVERIFY2(expected.match(s(ends)).hasMatch(), ends);
        QCOMPARE(server.faxes().size(), faxes);
        QCOMPARE(server.requestCount(), 1);
        QVERIFY(server.requests().first().faulty);
        QCOMPARE(server.refusals(), QStringList());
        server.clearFaults();
        QCOMPARE(get(server, "verify").text("message"), s("VERIFIED"));
    }

    void choosesWhatGoesWrong()
    {
        Started server;
        QVERIFY(server.addFault(s("status=500,path=/qdws/v1/a,method=GET,skip=1,times=2")));
        QVERIFY(server.addFault(s("status=501,method=DELETE")));
        const std::initializer_list<std::tuple<const char*, const char*, int>> answers = {
            {"GET", "about", 200}, // skipped
            {"GET", "verify", 200}, {"GET", "about", 500}, {"DELETE", "ofax/1", 501},
            {"GET", "about", 500},  {"GET", "about", 200}, {"DELETE", "ofax/1", 501},
        };
        for (const auto& [method, target, status] : answers)
            QCOMPARE(ask(server, method, target).status, status);
    }

    void refusesUnknownFaults()
    {
        SimServer server;
        for (const char* fault : {"", "explode", "status", "status=9", "status=1000", "delay=-5",
                                  "cut,times=x", "cut,when=now"}) {
            QString error;
            QVERIFY2(!server.addFault(s(fault), &error) && !error.isEmpty(), fault);
        }
    }
};

QTEST_GUILESS_MAIN(TestQdsimFaults)
#include "tst_qdsimfaults.moc"
