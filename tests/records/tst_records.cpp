#include "contactgroup.h"
#include "faxdocument.h"
#include "faxkit.h"
#include "faxscheduleoptions.h"
#include "faxuser.h"
#include "faxuserpermissions.h"
#include "quendrainfo.h"
#include "shorthand.h"
#include "testkit.h"
#include "xmltext.h"

#include <QtTest>

namespace {

const QString userFields =
    elements("priority=4 max_attempts=7 interval=60 receipt=never receipt_attachment=tiff");

const QDateTime november(QDate(2026, 11, 15), QTime(14, 30, 5));

FaxScheduleOptions nothingAtDefault()
{
    FaxScheduleOptions options;
    options.setPriority(static_cast<BaseScheduleOptions::Priority>(0));
    options.setMaxTries(4);
    options.setTryInterval(0);
    options.setReceipt(BaseScheduleOptions::ReceiptAlways);
    options.setReceiptAttachment(BaseScheduleOptions::AttachmentTiff);
    options.setFaxReceipt(BaseScheduleOptions::ReceiptFailure);
    options.setSelectPrinter(s("lp"));
    options.setPrintWithFirstPage(true);
    options.setFaxPageSize(BaseScheduleOptions::PageSizeLegal);
    options.setDateToSend(november);
    return options;
}

/// A recipient that writes something and then gives up.
class FailingContact : public Contact
{
public:
    bool writeFax(QDomDocument& document, QDomElement& parent, int) const override
    {
        parent.appendChild(document.createElement(s("begun")));
        return false;
    }
    ContactUnit* copy() const override { return new FailingContact(*this); }
};

/// All options in one line, in the order of the fields.
QString spelled(const FaxScheduleOptions& o)
{
    QString numbers;
    for (const int number :
         {int(o.priority()), o.tryNumber(), o.maxTries(), o.tryInterval(), int(o.receipt()),
          int(o.receiptAttachment()), int(o.faxPageSize()), int(o.faxReceipt()), int(o.printWithFirstPage())})
        numbers += QString::number(number) + QLatin1Char(' ');
    return numbers + o.selectPrinter() + QLatin1Char(' ') +
           (o.dateToSend().isNull()      ? s("now")
            : o.dateToSend() == november ? s("then")
                                         : o.dateToSend().toString(s("yyyy-MM-dd hh:mm:ss"))) +
           o.scheduleMessage();
}

} // namespace

/// The records of the user, of a fax to be sent and of the server.
class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_isBerlin = useBerlinTime(); }

    void rangeChecks()
    {
        const TestLog log;
        FaxScheduleOptions options;
        const auto set = [&options](int priority, int pageSize, int attachment, int receipt) {
            options.setPriority(static_cast<BaseScheduleOptions::Priority>(priority));
            options.setFaxPageSize(static_cast<BaseScheduleOptions::FaxPageSize>(pageSize));
            options.setReceiptAttachment(static_cast<BaseScheduleOptions::ReceiptAttachment>(attachment));
            options.setReceipt(static_cast<BaseScheduleOptions::Receipt>(receipt));
            options.setFaxReceipt(static_cast<BaseScheduleOptions::Receipt>(receipt));
        };
        set(6, 4, 3, 3);
        set(-1, -1, -1, -1);
        QCOMPARE(spelled(options), s("3 0 3 300 1 1 0 2 0 None now"));
        for (const char* what : {"Priority", "fax page size", "ReceipAttachment", "Receipt"})
            QCOMPARE(log.text().count(s("BaseScheduleOptions: %1 is out of range!").arg(s(what))),
                     qstrcmp(what, "Receipt") == 0 ? 4 : 2);
        set(5, 3, 2, 0);
        QCOMPARE(spelled(options), s("5 0 3 300 0 2 3 0 0 None now"));
    }

    void oneDefaultMakesDefault()
    {
        using O = FaxScheduleOptions;
        QVERIFY(!nothingAtDefault().isDefault());
        QVERIFY(O().isDefault());
        const std::initializer_list<void (*)(O&)> resets = {
            [](O& o) { o.setPriority(O::def_priority); },
            [](O& o) { o.setMaxTries(3); },
            [](O& o) { o.setTryInterval(300); },
            [](O& o) { o.setReceipt(O::def_receipt); },
            [](O& o) { o.setReceiptAttachment(O::def_receiptAttachment); },
            [](O& o) { o.setFaxReceipt(O::def_faxReceipt); },
            [](O& o) { o.setSelectPrinter(s("None")); },
            [](O& o) { o.setPrintWithFirstPage(false); },
            [](O& o) { o.setFaxPageSize(O::def_faxPageSize); },
            [](O& o) { o.setDateToSend(QDateTime()); },
        };
        for (const auto& reset : resets) {
            O options = nothingAtDefault();
            reset(options);
            QVERIFY2(options.isDefault(), qPrintable(spelled(options)));
        }
    }

    void conversionKeepsDateAndMessage()
    {
        FaxUserScheduleOptions defaults;
        defaults.setMaxAttempts(9);
        QCOMPARE(spelled(FaxScheduleOptions(defaults)), s("3 0 9 300 1 1 0 2 0 None now"));
        FaxScheduleOptions options = nothingAtDefault();
        options.setScheduleMessage(s("m"));
        defaults.setSupportReceiptOptions(true);
        options = defaults;
        QCOMPARE(spelled(options), s("3 0 9 300 1 1 0 2 0 None thenm"));
        QVERIFY(options.isSupportReceiptOptions());
    }

    void writeSchedule()
    {
        FaxScheduleOptions defaults;
        defaults.setTryNumber(2);
        defaults.setScheduleMessage(s("m"));
        defaults.setDateToSend(QDateTime::currentDateTime().addSecs(-2));
        FaxScheduleOptions options = nothingAtDefault();
        options.setDateToSend(QDateTime());
        QString xml =
            elements("priority=0 max_tries=4 try_interval=0 receipt=always receipt_attachment=tiff");
        QCOMPARE(writtenFax(options), xml);
        for (FaxScheduleOptions* each : {&defaults, &options})
            each->setSupportReceiptOptions(true);
        xml += elements("print_receipt=failure print_receipt_printer=lp print_receipt_first=true");
        QCOMPARE(writtenFax(options), xml);
        QCOMPARE(writtenFax(defaults), QString());
        for (FaxScheduleOptions* each : {&defaults, &options})
            each->setSupportFaxPageSizeOptions(true);
        QCOMPARE(writtenFax(options), xml + tag("fax_page_size", "legal"));
        QCOMPARE(writtenFax(defaults), tag("fax_page_size", "auto"));
    }

    void dateToSendIsUtc()
    {
        if (!m_isBerlin)
            QSKIP("Needs a time zone of its own.");
        const QDateTime winter(QDate(2199, 11, 15), QTime(14, 30, 5));
        const QDateTime newYear(QDate(2199, 1, 1), QTime(0, 30, 5));
        const QDateTime elsewhere(QDate(2199, 1, 1), QTime(0, 0, 1), Qt::OffsetFromUTC, -3600);
        for (const auto& [time, text] :
             {std::pair(winter, "2199-11-15T13:30:05"), std::pair(newYear, "2198-12-31T23:30:05"),
              std::pair(elsewhere, "2199-01-01T01:00:01")}) {
            FaxScheduleOptions options;
            options.setDateToSend(time);
            QCOMPARE(writtenFax(options), tag("schedule_all_at", text));
            options.setDateToSend(QDateTime());
            QVERIFY(readFax(options, tag("schedule_all_at", text)));
            QCOMPARE(options.dateToSend(), time);
            QCOMPARE(options.dateToSend().timeSpec(), Qt::LocalTime);
        }
    }

    void readSchedule()
    {
        const char* const at = "schedule_all_at";
        const std::pair<QString, const char*> schedules[] = {
            {elements("priority=5 try_number=2 max_tries=8 try_interval=30"), "5 2 8 30 0 2 2 1 1 lp then"},
            {s("<priority/><try_interval/><schedule_all_at/>"), "0 0 0 0 0 2 2 1 1 lp then"},
            {elements("priority=9999999999 try_interval=9999999999 max_tries=-7"),
             "0 0 -7 0 0 2 2 1 1 lp then"},
            {tag("priority", "6"), "0 0 0 0 0 2 2 1 1 lp then"},
            {tag(at, "2026-07-15T21:05:06"), "0 0 0 0 0 2 2 1 1 lp 2026-07-15 23:05:06"},
            // There is no such local time, but it is not local time.
            {tag(at, "2026-03-29T02:30:00"), "0 0 0 0 0 2 2 1 1 lp 2026-03-29 04:30:00"},
            {tag(at, "2026-07-15T21:05:06Z"), "0 0 0 0 0 2 2 1 1 lp now"},
            {tag(at, "2026-02-30T21:05:06"), "0 0 0 0 0 2 2 1 1 lp now"},
            {elements("receipt=never receipt_attachment=none"), "0 0 0 0 2 0 2 1 1 lp then"},
            {elements(
                 "receipt=Always receipt_attachment= print_receipt=x fax_page_size=A4 print_receipt_first=0"),
             "0 0 0 0 0 2 2 1 1 lp then"},
            {elements("print_receipt=never print_receipt_printer=None fax_page_size=a4") +
                 tag("print_receipt_first", " FALSE\n"),
             "0 0 0 0 0 2 3 2 0 None then"},
            {tag("schedule_message", ", later"), "0 0 0 0 0 2 2 1 1 lp then, later"}};
        for (const auto& [xml, expected] : schedules) {
            if (!m_isBerlin && xml.contains(s("schedule_all_at>20")))
                continue; // needs a time zone of its own
            // nowhere at their default, so that what stays is told from what is reset
            FaxScheduleOptions options = nothingAtDefault();
            options.setTryNumber(5);
            QVERIFY(readFax(options, xml));
            QCOMPARE(spelled(options), s(expected));
        }
        FaxScheduleOptions first;
        QVERIFY(readFax(first, tag("print_receipt_first", " True")));
        QCOMPARE(spelled(first), s("3 0 0 300 1 1 0 2 1 None now"));
    }

    void userSchedule()
    {
        FaxUserScheduleOptions options;
        const QString plain =
            elements("priority=3 max_attempts=3 interval=300 receipt=failure receipt_attachment=pdf");
        for (const char* missing :
             {"priority", "max_attempts", "interval", "receipt", "receipt_attachment"}) {
            QString xml = userFields;
            xml.replace(QLatin1String(missing) + QLatin1Char('>'), s("other>"));
            QVERIFY2(!readFax(options, xml), missing);
            QCOMPARE(writtenFax(options), plain);
        }
        QVERIFY(readFax(options, userFields + tag("fax_page_size", "legal")));
        QCOMPARE(writtenFax(options), userFields);
        // Empty is present: what has a number keeps it.
        QVERIFY(readFax(options,
                        elements("priority= max_attempts= interval= receipt=always receipt_attachment=pdf")));
        const QString kept =
            elements("priority=4 max_attempts=7 interval=60 receipt=always receipt_attachment=pdf");
        options.setSupportFaxPageSizeOptions(true);
        QCOMPARE(writtenFax(options), kept + elements("fax_page_size=legal"));
        options.setSupportReceiptOptions(true);
        for (const char* printer : {"", "none"}) {
            options.setSelectPrinter(s(printer));
            QCOMPARE(writtenFax(options), kept + elements("print_receipt=never print_receipt_printer=%1 "
                                                          "print_receipt_first=false fax_page_size=legal")
                                                     .arg(s(printer)));
        }
    }

    void permissions()
    {
        FaxUserPermissions record;
        QVERIFY(!readFax(record, s("<add_Global>true</add_Global>")) && record.flags() == 1U);
        QVERIFY(readFax(record, tag("add_global", "true")) && record.flags() == 3U);
        record.setEditPersonalContactsEnabled(false);
        QVERIFY(!readFax(record, QString()) && record.flags() == 2U);
        QVERIFY(readFax(record, tag("add_global", "True")) && record.flags() == 0U);
        QCOMPARE(writtenFax(record), s("refused"));
    }

    void user()
    {
        const QString cover = tag("default_cover_page_enabled", "true");
        const QString name = tag("default_cover_page_name", "c");
        FaxUser user;
        QVERIFY(!readFax(user, tag("name", "n") + cover));
        QCOMPARE(user.contact().name(), s("n"));
        QVERIFY(!user.isUsedCoverPage());
        QVERIFY(!readStorage(user, tag("name", "o") + name));
        QCOMPARE(user.defaultCoverpage(), QString());

        // Incomplete schedule defaults are no failure, and nothing of them is taken.
        QVERIFY(readStorage(user, cover + name + tag("priority", "5")));
        QCOMPARE(int(user.faxScheduleOptions().priority()), 3);
        QVERIFY(user.isUsedCoverPage());
        QVERIFY(readFax(user, cover + name + userFields, 1));
        QCOMPARE(writtenFax(user, 1), cover + name);
        QCOMPARE(writtenFax(user, 2), cover + name + userFields);
        QCOMPARE(writtenStorage(user, 1), cover + name + userFields);
        QCOMPARE(writtenStorage(user, 2), cover + name + userFields);
        QCOMPARE(writtenStorage(user, 3), cover + name);

        const FaxUser& constUser = user;
        constUser.setSupportFaxPageSizeOptions(true);
        constUser.setSupportReceiptOptions(true);
        QVERIFY(user.isSupportReceiptOptions());
        QVERIFY(writtenFax(user).endsWith(tag("fax_page_size", "auto")));
    }

    void content()
    {
        const QString path = m_folder.filePath(s("content"));
        const char* const mimes[] = {"",           "application/pdf", "application/postscript",
                                     "text/plain", "image/tiff",      ""};
        for (int type = 0; type < 6; ++type) {
            writeFile(path, QByteArray("\0\xff\n", 3));
            Content content = contentOf(static_cast<Content::Type>(type), path);
            const QString data = elements("content_transfer_encoding=base64 content=AP8K");
            QCOMPARE(writtenFax(content),
                     *mimes[type] ? tag("content_type", mimes[type]) + data : s("refused"));
            QVERIFY(!readFax(content, tag("content_type", "text/plain")));
            writeFile(path, "");
            QCOMPARE(writtenFax(content), s("refused"));
            QVERIFY(QFile::remove(path));
            QCOMPARE(writtenFax(content), s("refused"));
        }
    }

    void attachment()
    {
        Attach attach;
        attach.setName(s("n"));
        attach.setContentUrl(QUrl(s("http://h/a?x=1&y=2")));
        QCOMPARE(writtenFax(attach), s("refused"));
        for (const int location : {2, 3}) {
            attach.setLocation(static_cast<Attach::Loc>(location));
            QCOMPARE(writtenFax(attach), elements("location=external url=http://h/a?x=1&amp;y=2"));
        }
        attach.setLocation(Attach::Inline);
        QCOMPARE(writtenFax(attach), s("refused") + elements("location=inline name=n"));
        QVERIFY(!readFax(attach, s("<location>inline</location>")));
    }

    void coverPageXml()
    {
        CoverPage cover;
        QCOMPARE(writtenFax(cover), s("<enabled>false</enabled>"));
        const QString fields = elements("name=n type=t url=http://h/1 subject=s comments=c");
        QVERIFY(readFax(cover, tag("enabled", "true") + fields));
        const QString xml = tag("enabled", "true") + fields;
        QCOMPARE(writtenFax(cover), xml);
        const QString news = elements("name=N type= url=http://h/2 subject=S");
        QVERIFY(!readFax(cover, news));
        QCOMPARE(writtenFax(cover), xml);
        for (const char* text : {"false", "TRUE", "1", ""}) {
            QVERIFY(readFax(cover, tag("enabled", text) + news));
            QCOMPARE(writtenFax(cover), tag("enabled", "false") + fields);
        }
        QVERIFY(readFax(cover, tag("enabled", "true") + news));
        QCOMPARE(writtenFax(cover), elements("enabled=true name=N url=http://h/2 subject=S comments=c"));

        QVERIFY(readStorage(cover, s("<name>Z</name>")));
        QCOMPARE(cover.name(), s("N"));
        QCOMPARE(writtenStorage(cover), s("refused"));
    }

    void documentXml()
    {
        const QString path = m_folder.filePath(s("a.txt"));
        writeFile(path, "abc");
        QuendraContact known;
        known.setUrl(QUrl(s("http://h/7")));
        const QString cover = tag("cover_page", elements("enabled=false"));
        FaxDocument document;
        QCOMPARE(writtenFax(document), s("refused") + cover);
        document.recipients().addContact(ContactGroup());
        QCOMPARE(writtenFax(document), cover);
        document.recipients().contacts().append(ContactUnitPtr());
        document.recipients().addContact(known);
        const Content text = contentOf(Content::PlainText, path);
        document.attachs() << inlineAttach(s("a"), text)
                           << inlineAttach(s("lost"), contentOf(Content::Pdf, QString())) << Attach()
                           << inlineAttach(s("b"), text);
        document.setFaxSchedule(nothingAtDefault()); // is sent elsewhere
        QString xml = cover + tag("recipient", elements("contact_url=http://h/7"));
        QString attachments;
        for (const char* name : {"a", "b"})
            attachments += tag("attachment", tag("location", "inline") + tag("name", name) +
                                                 elements("content_type=text/plain "
                                                          "content_transfer_encoding=base64 content=YWJj"));
        QCOMPARE(writtenFax(document), xml + attachments);
        document.recipients().addContact(FailingContact());
        document.recipients().addContact(Contact());
        xml += s("<recipient><begun/></recipient><recipient/>");
        QCOMPARE(writtenFax(document), s("refused") + xml + attachments);
        QVERIFY(!readFax(document, s("<recipient/>")));
    }

    void renameDuplicates()
    {
        const std::pair<const char*, const char*> lists[] = {
            {"a,A,b", "a,A,b"},
            {"r.pdf,r.pdf,r.pdf", "r.pdf,r.pdf1,r.pdf2"},
            {"x,,,y", "x,,1,y"},
            {"a,a,a,a1", "a,a1,a2,a1"}, // made names may repeat
            {"a1,a1,a,a,a", "a1,a11,a,a1,a2"}};
        for (const auto& [names, expected] : lists) {
            FaxDocument document;
            for (const QString& name : s(names).split(QLatin1Char(',')))
                document.attachs().append(inlineAttach(name, Content()));
            document.renameDuplicateAttachments();
            QStringList renamed;
            for (const Attach& attach : document.attachs())
                renamed.append(attach.name());
            QCOMPARE(renamed.join(QLatin1Char(',')), s(expected));
        }
    }

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

private:
    QTemporaryDir m_folder;
    bool m_isBerlin{false};
};
QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
