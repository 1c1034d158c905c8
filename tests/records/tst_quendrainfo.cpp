#include "quendrainfo.h"
#include "shorthand.h"
#include "xmltext.h"

#include <QtTest>

class TestQuendraInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void protocolVersion_data()
    {
        const Rows<QString, QString, int> row;
        row("just new enough", "ABC40X", "1.4", 2);
        row("too old", "ABC40X", "1.3.9", 1);
        row("two digits are a number", "ABC40", "1.10", 2);
        row("only the common part counts", "xxx40", "1", 2);
        row("newer, one part", "xxx40", "2", 2);
        row("a part that is no number", "xxx40", "1.x", 1);
        row("empty part", "xxx40", ".9", 1);
        row("no version", "xxx40", "", 1);
        row("number elsewhere", "AB40XX", "9", 1);
        row("short model", "ABC4", "9", 1);
    }
    void protocolVersion()
    {
        const auto [model, version, protocolVersion] = cells<QString, QString, int>();
        QuendraInfo info;
        info.setModel(model);
        info.setVersion(version);
        QCOMPARE(info.protocolVersion(), 1);
        info.computeProtocolVersion();
        QCOMPARE(info.protocolVersion(), protocolVersion);
    }

    void readsOnlyWhatIsThere()
    {
        QuendraInfo info;
        QVERIFY(readFax(info, s("<model>ABC40</model><version>1.4</version><serial>S1</serial>"
                                "<hostname>h</hostname><channels>4</channels><uptime>2 days</uptime>")));
        QCOMPARE(info.protocolVersion(), 2);
        QCOMPARE(info.uptime(), s("2 days"));
        QCOMPARE(info.channels(), s("4"));

        QVERIFY(!readFax(info, s("<model>other</model><serial>S2</serial>")));
        QVERIFY(!info.readStorage(QDomElement(), 1));
        QCOMPARE(info.model() + info.serial() + info.description(), s("ABC40S1"));

        QVERIFY(
            readStorage(info, s("<version/><model>ABC40</model><channels/><description>d</description>")));
        QCOMPARE(info.protocolVersion(), 1);
        QCOMPARE(info.hostname() + info.channels() + info.description(), s("hd"));
    }

    void storageLeavesOutTheUptime()
    {
        QuendraInfo info;
        const QString fields =
            s("<model>m &amp; m</model><version>1.4</version><serial>s</serial><hostname>h</hostname>");
        QVERIFY(readFax(info, fields + s("<channels>c</channels><uptime>u</uptime>")));
        QCOMPARE(writtenFax(info), s("refused"));
        QCOMPARE(writtenStorage(info), fields + s("<channels>c</channels>"));

        // one more field takes its place, and characters that would spoil the settings file are left out
        info.setDescription(QStringLiteral("d\ufffe\u0001\u00e9\U0001f600\n") + QChar(0xd800));
        QCOMPARE(writtenStorage(info),
                 fields + s("<description>d\u00e9\U0001f600\n</description><channels>c</channels>"));
    }
};

QTEST_GUILESS_MAIN(TestQuendraInfo)
#include "tst_quendrainfo.moc"
