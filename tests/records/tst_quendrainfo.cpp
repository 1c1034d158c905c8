#include "quendrainfo.h"
#include "shorthand.h"
#include "xmltext.h"

#include <QtTest>

class TestQuendraInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void protocolVersion()
    {
        const std::tuple<const char*, const char*, int> servers[] = {
            {"ABC40X", "1.4", 2}, {"ABC40X", "1.3.9", 1}, {"ABC40", "1.10", 2}, {"xxx40", "1", 2},
            {"xxx40", "2", 2},    {"xxx40", "1.x", 1},    {"xxx40", ".9", 1},   {"xxx40", "", 1},
            {"AB40XX", "9", 1},   {"ABC4", "9", 1}};
        for (const auto& [model, version, expected] : servers) {
            QuendraInfo info;
            info.setModel(s(model));
            info.setVersion(s(version));
            QCOMPARE(info.protocolVersion(), 1);
            info.computeProtocolVersion();
            QVERIFY2(info.protocolVersion() == expected, version);
        }
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
