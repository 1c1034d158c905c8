#include "quendrainfo.h"

#include <QDomDocument>
#include <QtTest>

class TestQuendraInfo : public QObject
{
    Q_OBJECT

    static QDomElement parse(QDomDocument& document, const QString& children)
    {
        const bool parsed =
            document.setContent(QStringLiteral("<about>") + children + QStringLiteral("</about>"));
        if (!parsed)
            qFatal("the test's own XML is broken");
        return document.documentElement();
    }

private Q_SLOTS:
    void protocolVersion_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("version");
        QTest::addColumn<int>("protocolVersion");
        QTest::newRow("just new enough") << "ABC40X"
                                         << "1.4" << 2;
        QTest::newRow("more parts") << "ABC40X"
                                    << "1.4.0" << 2;
        QTest::newRow("too old") << "ABC40X"
                                 << "1.3.9" << 1;
        QTest::newRow("two digits are a number") << "ABC40"
                                                 << "1.10" << 2;
        QTest::newRow("only the common part counts") << "xxx40"
                                                     << "1" << 2;
        QTest::newRow("newer, one part") << "xxx40"
                                         << "2" << 2;
        QTest::newRow("older") << "xxx40"
                               << "0.9" << 1;
        QTest::newRow("a part that is no number") << "xxx40"
                                                  << "1.x" << 1;
        QTest::newRow("empty part") << "xxx40"
                                    << ".9" << 1;
        QTest::newRow("no version") << "xxx40"
                                    << "" << 1;
        QTest::newRow("other model") << "ABC41X"
                                     << "9" << 1;
        QTest::newRow("number elsewhere") << "AB40XX"
                                          << "9" << 1;
        QTest::newRow("short model") << "ABC4"
                                     << "9" << 1;
    }

    void protocolVersion()
    {
        QFETCH(QString, model);
        QFETCH(QString, version);
        QuendraInfo info;
        info.setModel(model);
        info.setVersion(version);
        QCOMPARE(info.protocolVersion(), 1);
        info.computeProtocolVersion();
        QTEST(info.protocolVersion(), "protocolVersion");
    }

    void readsOnlyWhatIsThere()
    {
        QDomDocument document;
        QuendraInfo info;
        QVERIFY(info.readFax(
            parse(document, QStringLiteral("<model>ABC40</model><version>1.4</version><serial>S1</serial>"
                                           "<hostname>h</hostname><channels>4</channels>"
                                           "<uptime>2 days</uptime>")),
            1));
        QCOMPARE(info.protocolVersion(), 2);
        QCOMPARE(info.uptime(), QStringLiteral("2 days"));
        QCOMPARE(info.channels(), QStringLiteral("4"));
        QVERIFY(info.description().isEmpty());

        QVERIFY(!info.readFax(parse(document, QStringLiteral("<model>other</model><serial>S2</serial>")), 1));
        QVERIFY(!info.readStorage(QDomElement(), 1));
        QCOMPARE(info.model(), QStringLiteral("ABC40"));
        QCOMPARE(info.serial(), QStringLiteral("S1"));

        QVERIFY(info.readStorage(parse(document, QStringLiteral("<version/><model>ABC40</model><channels/>"
                                                                "<description>d</description>")),
                                 1));
        QCOMPARE(info.protocolVersion(), 1);
        QCOMPARE(info.hostname(), QStringLiteral("h"));
        QVERIFY(info.channels().isEmpty());
        QCOMPARE(info.description(), QStringLiteral("d"));
    }

    void storageLeavesOutTheUptime()
    {
        QuendraInfo info;
        info.setModel(QStringLiteral("m & m"));
        info.setVersion(QStringLiteral("1.4"));
        info.setSerial(QStringLiteral("s"));
        info.setHostname(QStringLiteral("h"));
        info.setChannels(QStringLiteral("c"));
        info.setUptime(QStringLiteral("u"));
        QDomDocument document;
        QDomElement parent = parse(document, QString());
        QVERIFY(!info.writeFax(document, parent, 1));
        QVERIFY(!parent.hasChildNodes());
        QVERIFY(info.writeStorage(document, parent, 2));
        QCOMPARE(document.toString(-1),
                 QStringLiteral("<about><model>m &amp; m</model><version>1.4</version><serial>s</serial>"
                                "<hostname>h</hostname><channels>c</channels></about>"));

        // one more field takes its place, and characters that would spoil the settings file are left out
        info.setDescription(QStringLiteral("d\ufffe\u0001\u00e9\U0001f600\n") + QChar(0xd800));
        parent = parse(document, QString());
        QVERIFY(info.writeStorage(document, parent, 2));
        QVERIFY(document.toString(-1).endsWith(
            QStringLiteral("<description>d\u00e9\U0001f600\n</description><channels>c</channels></about>")));
    }
};

QTEST_GUILESS_MAIN(TestQuendraInfo)
#include "tst_quendrainfo.moc"
