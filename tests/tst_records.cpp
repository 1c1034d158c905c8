#include "contactgroup.h"
#include "faxdocument.h"
#include "faxentry.h"
#include "faxscheduleoptions.h"
#include "faxuser.h"
#include "faxuserpermissions.h"
#include "inboundfaxentry.h"
#include "logger.h"
#include "outboundfaxentry.h"
#include "shorthand.h"
#include "xmltext.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

QString tag(const char* name, const QString& text)
{
    return s("<%1>%2</%1>").arg(QLatin1String(name), text);
}

/// How often a text stands in the log.
int logged(const char* text)
{
    return readFile(Logger::inst().currentFile()).count(text);
}

const QString userFields =
    s("<priority>4</priority><max_attempts>7</max_attempts><interval>60</interval><receipt>never</"
      "receipt><receipt_attachment>tiff</receipt_attachment>");

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

Content contentOf(Content::Type type, const QString& fileName)
{
    DiskDataProvider data;
    data.setFileName(fileName);
    Content content;
    content.setType(type);
    content.setData(data);
    return content;
}

Attach inlineAttach(const QString& name, const Content& content)
{
    Attach attach;
    attach.setLocation(Attach::Inline);
    attach.setName(name);
    attach.setContent(content);
    return attach;
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

/// The records of the user, of a fax to be sent and of the logs.
class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A zone with summer time and an offset: a date that is taken in the wrong zone shows.
        qputenv("TZ", "Europe/Berlin");
        tzset();
        QVERIFY(m_folder.isValid());
        Logger::inst().setLocation(QDir(m_folder.path()));
    }

    void cleanupTestCase() { Logger::inst().releaseLogFile(); }

    void rangeChecks()
    {
        FaxScheduleOptions options;
        const auto set = [&options](int priority, int pageSize, int attachment, int receipt) {
            options.setPriority(static_cast<BaseScheduleOptions::Priority>(priority));
            options.setFaxPageSize(static_cast<BaseScheduleOptions::FaxPageSize>(pageSize));
            options.setReceiptAttachment(static_cast<BaseScheduleOptions::ReceiptAttachment>(attachment));
            options.setReceipt(static_cast<BaseScheduleOptions::Receipt>(receipt));
            options.setFaxReceipt(static_cast<BaseScheduleOptions::Receipt>(receipt));
        };
        for (const int value : {6, -1, 1000000})
            set(value, value, value, value);
        QCOMPARE(spelled(options), s("3 0 3 300 1 1 0 2 0 None now"));
        QCOMPARE(logged("BaseScheduleOptions: Priority is out of range!"), 3);
        QCOMPARE(logged("BaseScheduleOptions: fax page size is out of range!"), 3);
        QCOMPARE(logged("BaseScheduleOptions: ReceipAttachment is out of range!"), 3);
        QCOMPARE(logged("BaseScheduleOptions: Receipt is out of range!"), 6);
        set(5, 3, 2, 0);
        QCOMPARE(spelled(options), s("5 0 3 300 0 2 3 0 0 None now"));
    }

    void oneDefaultMakesDefault()
    {
        using O = FaxScheduleOptions;
        QVERIFY(!nothingAtDefault().isDefault());
        QVERIFY(O().isDefault());
        for (void (*reset)(O&) : std::initializer_list<void (*)(O&)>{
                 [](O& o) { o.setPriority(O::def_priority); }, [](O& o) { o.setMaxTries(3); },
                 [](O& o) { o.setTryInterval(300); }, [](O& o) { o.setReceipt(O::def_receipt); },
                 [](O& o) { o.setReceiptAttachment(O::def_receiptAttachment); },
                 [](O& o) { o.setFaxReceipt(O::def_faxReceipt); },
                 [](O& o) { o.setSelectPrinter(s("None")); }, [](O& o) { o.setPrintWithFirstPage(false); },
                 [](O& o) { o.setFaxPageSize(O::def_faxPageSize); },
                 [](O& o) { o.setDateToSend(QDateTime()); }}) {
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
        FaxScheduleOptions options;
        options.setTryNumber(2);
        options.setScheduleMessage(s("m"));
        options.setDateToSend(QDateTime::currentDateTime().addSecs(-2));
        options.setSupportReceiptOptions(true);
        QCOMPARE(writtenFax(options), QString());
        options.setSupportFaxPageSizeOptions(true);
        QCOMPARE(writtenFax(options), tag("fax_page_size", s("auto")));

        options = nothingAtDefault();
        options.setDateToSend(QDateTime());
        const QString plain =
            s("<priority>0</priority><max_tries>4</max_tries><try_interval>0</try_interval><receipt>always</"
              "receipt><receipt_attachment>tiff</receipt_attachment>");
        const QString printing = s("<print_receipt>failure</print_receipt><print_receipt_printer>lp</"
                                   "print_receipt_printer><print_receipt_first>true</print_receipt_first>");
        QCOMPARE(writtenFax(options), plain);
        options.setSupportReceiptOptions(true);
        QCOMPARE(writtenFax(options), plain + printing);
        options.setSupportFaxPageSizeOptions(true);
        QCOMPARE(writtenFax(options), plain + printing + tag("fax_page_size", s("legal")));
    }

    void dateToSendIsUtc()
    {
        const QDateTime winter(QDate(2199, 11, 15), QTime(14, 30, 5));
        const QDateTime newYear(QDate(2199, 1, 1), QTime(0, 30, 5));
        const QDateTime elsewhere(QDate(2199, 1, 1), QTime(0, 0, 1), Qt::OffsetFromUTC, -3600);
        for (const auto& [time, text] :
             {std::pair(winter, "2199-11-15T13:30:05"), std::pair(newYear, "2198-12-31T23:30:05"),
              std::pair(elsewhere, "2199-01-01T01:00:01")}) {
            FaxScheduleOptions options;
            options.setDateToSend(time);
            QCOMPARE(writtenFax(options), tag("schedule_all_at", s(text)));
            FaxScheduleOptions again;
            QVERIFY(readFax(again, tag("schedule_all_at", s(text))));
            QCOMPARE(again.dateToSend(), time);
            QCOMPARE(again.dateToSend().timeSpec(), Qt::LocalTime);
        }
    }

    void readSchedule_data()
    {
        const Rows<QString, QString> row("xml", "options");

        // Each starts from options that are nowhere at their default, so that what stays is told from what is
        // reset.
        row("numbers",
            tag("priority", s("5")) + tag("try_number", s("2")) + tag("max_tries", s("8")) +
                tag("try_interval", s("30")),
            "5 2 8 30 0 2 2 1 1 lp then");
        row("empty numbers", "<priority/><try_interval/><schedule_all_at/>", "0 0 0 0 0 2 2 1 1 lp then");
        row("absurd numbers",
            "<priority>9999999999</priority><try_interval>9999999999</try_interval><max_tries>-7</max_tries>",
            "0 0 -7 0 0 2 2 1 1 lp then");
        row("priority out of range", "<priority>6</priority>", "0 0 0 0 0 2 2 1 1 lp then");
        row("afternoon in summer", "<schedule_all_at>2026-07-15T21:05:06</schedule_all_at>",
            "0 0 0 0 0 2 2 1 1 lp 2026-07-15 23:05:06");
        // There is no such local time, but it is not local time.
        row("within the gap of summer time", "<schedule_all_at>2026-03-29T02:30:00</schedule_all_at>",
            "0 0 0 0 0 2 2 1 1 lp 2026-03-29 04:30:00");
        row("date with a zone", "<schedule_all_at>2026-07-15T21:05:06Z</schedule_all_at>",
            "0 0 0 0 0 2 2 1 1 lp now");
        row("no date", "<schedule_all_at>2026-02-30T21:05:06</schedule_all_at>", "0 0 0 0 0 2 2 1 1 lp now");
        row("receipts", "<receipt>never</receipt><receipt_attachment>none</receipt_attachment>",
            "0 0 0 0 2 0 2 1 1 lp then");
        row("unknown texts",
            "<receipt>Always</receipt><receipt_attachment/><print_receipt>x</"
            "print_receipt><fax_page_size>A4</fax_page_size><print_receipt_first>0</print_receipt_first>",
            "0 0 0 0 0 2 2 1 1 lp then");
        row("print options",
            "<print_receipt>never</print_receipt><print_receipt_printer>None</"
            "print_receipt_printer><print_receipt_first> "
            "FALSE\n</print_receipt_first><fax_page_size>a4</fax_page_size>",
            "0 0 0 0 0 2 3 2 0 None then");
        row("message", "<schedule_message>, later</schedule_message>", "0 0 0 0 0 2 2 1 1 lp then, later");
    }
    void readSchedule()
    {
        QFETCH(QString, xml);
        FaxScheduleOptions options = nothingAtDefault();
        options.setTryNumber(5);
        QVERIFY(readFax(options, xml));
        QTEST(spelled(options), "options");

        FaxScheduleOptions first;
        QVERIFY(readFax(first, tag("print_receipt_first", s(" True"))));
        QCOMPARE(spelled(first), s("3 0 0 300 1 1 0 2 1 None now"));
    }

    void userScheduleNeedsItsElements()
    {
        for (const char* missing :
             {"priority", "max_attempts", "interval", "receipt", "receipt_attachment"}) {
            FaxUserScheduleOptions options;
            QString xml = userFields;
            xml.replace(QLatin1String(missing) + QLatin1Char('>'), s("other>"));
            QVERIFY2(!readFax(options, xml), missing);
            QVERIFY2(writtenFax(options).startsWith(s("<priority>3</priority><max_attempts>3</")), missing);
        }

        FaxUserScheduleOptions options;
        QVERIFY(readFax(options, userFields + tag("fax_page_size", s("legal"))));
        QCOMPARE(writtenFax(options), userFields);
        QCOMPARE(int(options.faxPageSize()), 2);
        // Empty is present: what has a number keeps it.
        QVERIFY(readFax(options, s("<priority/><max_attempts/><interval/><receipt>always</"
                                   "receipt><receipt_attachment>pdf</receipt_attachment>")));
        QCOMPARE(int(options.priority()), 4);
        QCOMPARE(options.maxAttempts(), 7);
        QCOMPARE(options.interval(), 60);
        QCOMPARE(int(options.receipt()), 0);
    }

    void writeUserSchedule()
    {
        FaxUserScheduleOptions options;
        const QString plain =
            s("<priority>3</priority><max_attempts>3</max_attempts><interval>300</interval><receipt>failure</"
              "receipt><receipt_attachment>pdf</receipt_attachment>");
        QCOMPARE(writtenFax(options), plain);
        options.setSupportFaxPageSizeOptions(true);
        options.setSupportReceiptOptions(true);
        QCOMPARE(writtenFax(options),
                 plain + s("<print_receipt>never</print_receipt><print_receipt_printer></"
                           "print_receipt_printer><print_receipt_first>false</"
                           "print_receipt_first><fax_page_size>auto</fax_page_size>"));
        options.setSelectPrinter(s("none"));
        QVERIFY(writtenFax(options).contains(tag("print_receipt_printer", s("none"))));
    }

    void permissions()
    {
        FaxUserPermissions record;
        QVERIFY(!readFax(record, s("<add_Global>true</add_Global>")));
        QCOMPARE(record.flags(), 1U);
        QVERIFY(readFax(record, tag("add_global", s("true"))));
        QCOMPARE(record.flags(), 3U);
        record.setEditPersonalContactsEnabled(false);
        QVERIFY(!readFax(record, QString()));
        QCOMPARE(record.flags(), 2U);
        QVERIFY(readFax(record, tag("add_global", s("True"))));
        QCOMPARE(record.flags(), 0U);
        QCOMPARE(writtenFax(record), s("refused"));
    }

    void writeUser()
    {
        FaxUser user;
        QuendraContact contact;
        contact.setName(s("n"));
        user.setContact(contact);
        user.useCoverPage(true);
        FaxUserScheduleOptions options;
        readFax(options, userFields);
        user.setScheduleOptions(options);

        const QString common =
            s("<name>n</name><default_cover_page_enabled>true</"
              "default_cover_page_enabled><default_cover_page_name></default_cover_page_name>");
        QCOMPARE(writtenFax(user, 1), common);
        QCOMPARE(writtenFax(user, 2), common + userFields);
        QCOMPARE(writtenStorage(user, 1), common + userFields);
        QCOMPARE(writtenStorage(user, 2), common + userFields);
        QCOMPARE(writtenStorage(user, 3), common);

        const FaxUser& constUser = user;
        constUser.setSupportFaxPageSizeOptions(true);
        constUser.setSupportReceiptOptions(true);
        QVERIFY(user.isSupportReceiptOptions());
        QVERIFY(writtenFax(user).endsWith(tag("fax_page_size", s("auto"))));
    }

    void readUser()
    {
        const QString cover = s("<default_cover_page_enabled>true</default_cover_page_enabled>");
        const QString name = s("<default_cover_page_name>c</default_cover_page_name>");
        FaxUser user;
        QVERIFY(!readFax(user, tag("name", s("n")) + cover));
        QCOMPARE(user.contact().name(), s("n"));
        QVERIFY(!user.isUsedCoverPage());
        QVERIFY(!readStorage(user, tag("name", s("o")) + name));
        QCOMPARE(user.defaultCoverpage(), QString());

        // Incomplete schedule defaults are no failure, and nothing of them is taken.
        QVERIFY(readStorage(user, cover + name + tag("priority", s("5"))));
        QVERIFY(user.isUsedCoverPage());
        QCOMPARE(user.defaultCoverpage(), s("c"));
        QCOMPARE(user.contact().name(), QString());
        QCOMPARE(int(user.faxScheduleOptions().priority()), 3);
        QVERIFY(readFax(user, cover + name + userFields, 1));
        QCOMPARE(int(user.faxScheduleOptions().priority()), 4);
    }

    void content_data()
    {
        const Rows<int, QByteArray, QString> row("type", "bytes", "xml");

        const auto xml = [](const char* type) {
            return tag("content_type", QLatin1String(type)) +
                   s("<content_transfer_encoding>base64</content_transfer_encoding><content>AP8K</content>");
        };
        const QByteArray bytes("\0\xff\n", 3);
        row("none", 0, bytes, "refused");
        row("pdf", 1, bytes, xml("application/pdf"));
        row("postscript", 2, bytes, xml("application/postscript"));
        row("text", 3, bytes, xml("text/plain"));
        row("tiff", 4, bytes, xml("image/tiff"));
        row("beyond the table", 5, bytes, "refused");
        row("empty file", 1, QByteArray(), "refused");
    }
    void content()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, bytes);

        const QString path = m_folder.filePath(s("content"));
        writeFile(path, bytes);
        Content content = contentOf(static_cast<Content::Type>(type), path);
        QTEST(writtenFax(content), "xml");
        QVERIFY(!readFax(content, tag("content_type", s("text/plain"))));
        QVERIFY(QFile::remove(path));
        QCOMPARE(writtenFax(content), s("refused"));
    }

    void attachment()
    {
        Attach attach;
        attach.setName(s("n"));
        attach.setContentUrl(QUrl(s("http://h/a?x=1&y=2")));
        QCOMPARE(writtenFax(attach), s("refused"));
        for (const int location : {2, 3}) {
            attach.setLocation(static_cast<Attach::Loc>(location));
            QCOMPARE(writtenFax(attach), s("<location>external</location><url>http://h/a?x=1&amp;y=2</url>"));
        }
        attach.setLocation(Attach::Inline);
        QCOMPARE(writtenFax(attach), s("refused<location>inline</location><name>n</name>"));
        QVERIFY(!readFax(attach, s("<location>inline</location>")));
    }

    void coverPageXml()
    {
        CoverPage cover;
        QCOMPARE(writtenFax(cover), s("<enabled>false</enabled>"));
        cover.setName(s("n"));
        cover.setType(s("t"));
        cover.setUrl(QUrl(s("http://h/1")));
        cover.setSubject(s("s"));
        cover.setComments(s("c"));
        const QString xml = s("<enabled>false</enabled><name>n</name><type>t</type><url>http://h/1</"
                              "url><subject>s</subject><comments>c</comments>");
        QCOMPARE(writtenFax(cover), xml);

        const QString news = s("<name>N</name><type/><url>http://h/a b</url><subject>S</subject>");
        QVERIFY(!readFax(cover, news));
        QCOMPARE(writtenFax(cover), xml);
        for (const char* text : {"false", "TRUE", "1", ""}) {
            QVERIFY(readFax(cover, tag("enabled", QLatin1String(text)) + news));
            QCOMPARE(writtenFax(cover), xml);
        }
        QVERIFY(readFax(cover, tag("enabled", s("true")) + news));
        QVERIFY(cover.enabled());
        QCOMPARE(cover.name(), s("N"));
        QCOMPARE(cover.type(), QString());
        QCOMPARE(cover.url().toString(QUrl::FullyEncoded), s("http://h/a%20b"));
        QCOMPARE(cover.comments(), s("c"));

        QVERIFY(readStorage(cover, s("<name>Z</name>")));
        QCOMPARE(cover.name(), s("N"));
        QCOMPARE(writtenStorage(cover), s("refused"));
    }

    void documentXml()
    {
        const QString path = m_folder.filePath(s("a.txt"));
        writeFile(path, "abc");
        Contact plain;
        plain.setFax(s("1"));
        QuendraContact known;
        known.setUrl(QUrl(s("http://h/7")));
        FaxDocument document;
        document.recipients().addContact(plain);
        document.recipients().addContact(ContactGroup());
        document.recipients().contacts().append(ContactUnitPtr());
        document.recipients().addContact(known);
        const Content text = contentOf(Content::PlainText, path);
        document.attachs() << inlineAttach(s("a"), text)
                           << inlineAttach(s("lost"), contentOf(Content::Pdf, QString())) << Attach()
                           << inlineAttach(s("b"), text);
        FaxScheduleOptions options;
        options.setPriority(static_cast<BaseScheduleOptions::Priority>(5));
        document.setFaxSchedule(options);

        const QString attachment =
            s("<attachment><location>inline</location><name>%1</name><content_type>text/plain</"
              "content_type><content_transfer_encoding>base64</content_transfer_encoding><content>YWJj</"
              "content></attachment>");
        QCOMPARE(writtenFax(document),
                 s("<cover_page><enabled>false</enabled></cover_page><recipient><fax_number>1</fax_number></"
                   "recipient><recipient><contact_url>http://h/7</contact_url></recipient>") +
                     attachment.arg(s("a")) + attachment.arg(s("b")));
        QVERIFY(!readFax(document, s("<recipient/>")));
    }

    void documentResult()
    {
        const QString cover = s("<cover_page><enabled>false</enabled></cover_page>");
        FaxDocument document;
        QCOMPARE(writtenFax(document), s("refused") + cover);
        document.recipients().addContact(ContactGroup());
        QCOMPARE(writtenFax(document), cover);
        document.recipients().addContact(FailingContact());
        document.recipients().addContact(Contact());
        QCOMPARE(writtenFax(document),
                 s("refused") + cover + s("<recipient><begun/></recipient><recipient/>"));
    }

    void renameDuplicates_data()
    {
        const Rows<QString, QString> row("names", "renamed");

        row("none", "", "");
        row("all differ", "a,A,b", "a,A,b");
        row("after the extension", "r.pdf,r.pdf,r.pdf", "r.pdf,r.pdf1,r.pdf2");
        row("made names may repeat", "a,a,a,a1", "a,a1,a2,a1");
        row("names on entry count", "a1,a1,a,a,a", "a1,a11,a,a1,a2");
        row("empty names", "x,,,y", "x,,1,y");
    }
    void renameDuplicates()
    {
        QFETCH(QString, names);
        FaxDocument document;
        for (const QString& name : names.split(QLatin1Char(',')))
            document.attachs().append(inlineAttach(name, Content()));
        document.renameDuplicateAttachments();
        QStringList renamed;
        for (const Attach& attach : document.attachs())
            renamed.append(attach.name());
        QTEST(renamed.join(QLatin1Char(',')), "renamed");
    }

    void entryState_data()
    {
        const Rows<int> row("state");

        const char* const texts[] = {"",         "preprocessing", "pending", "sending",          "sent",
                                     "complete", "aborted",       "failed",  "approval_pending", "rejected"};
        for (int i = 0; i < 10; ++i)
            row(texts[i], i);
        row("Sent", 4);
        row("REJECTED", 9);
        row("queued", 0);
        row(" sent", 0);
    }
    void entryState()
    {
        QFETCH(int, state);
        const QString text = QLatin1String(QTest::currentDataTag());
        FaxEntry queued;
        InboundFaxEntry received;
        OutboundFaxEntry sent;
        for (BaseFaxEntry* entry :
             {static_cast<BaseFaxEntry*>(&queued), static_cast<BaseFaxEntry*>(&received),
              static_cast<BaseFaxEntry*>(&sent)}) {
            QVERIFY(readFax(*entry, s("<state>failed</state><status>failed</status>")));
            QCOMPARE(int(entry->state()), 7);
            QVERIFY(readFax(*entry, tag("state", text) + tag("status", text)));
            QCOMPARE(int(entry->state()), state);
            QCOMPARE(writtenFax(*entry), s("refused"));
        }
        QCOMPARE(received.status(), text);
    }

    void entryDate_data()
    {
        const Rows<QString, QDateTime> row("text", "dateTime");

        row("afternoon", "2026-11-15T14:30:05", november);
        row("midnight", "2024-02-29T00:00:00", QDateTime(QDate(2024, 2, 29), QTime(0, 0)));
        row("before the epoch", "1900-01-01T12:00:00", QDateTime(QDate(1900, 1, 1), QTime(12, 0)));
        for (const char* none :
             {"", "2026-02-29T00:00:00", "2026-13-01T00:00:00", "2026-11-15T24:00:00", "2026-11-15T23:59:60",
              "2026-11-15 14:30:05", "2026-11-15t14:30:05", "2026-11-15T14:30:05Z", "2026-11-15T4:30:05",
              "yyyy-MM-ddThh:mm:ss", "2026-11-15T14:30:0\u0665"})
            row(none, none, {});
    }
    void entryDate()
    {
        QFETCH(QString, text);
        QFETCH(QDateTime, dateTime);
        FaxEntry queued;
        QVERIFY(readFax(queued, tag("created", text) + tag("stime", s("2026-11-15T14:30:05"))));
        QCOMPARE(queued.createTime(), dateTime);
        QCOMPARE(queued.createTime().isNull(), dateTime.isNull());
        QCOMPARE(queued.changeStateTime(), november);
        InboundFaxEntry received;
        QVERIFY(readFax(received, tag("complete_time", text)));
        QCOMPARE(received.completeTime(), dateTime);
        OutboundFaxEntry sent;
        QVERIFY(readFax(sent, tag("start_time", s("2026-11-15T14:30:05")) + tag("end_time", text)));
        QCOMPARE(sent.startTime(), november);
        QCOMPARE(sent.sentAt(), dateTime);
        QCOMPARE(sent.sentAt().timeSpec(), Qt::LocalTime);
    }

    void oddDate()
    {
        // Texts whose reading is Qt's business: ours must be the same, by whichever way.
        for (const char* text :
             {"2026-03-29T02:30:00", "2026-11-15T+4:30:05", "2026-11-15T 4:30:05", "+026-11-15T14:30:05",
              "-026-11-15T14:30:05", "0000-01-01T00:00:00", "0001-01-01T00:00:00", "1893-03-31T23:59:00",
              "2026-11-15T14:30:5 ", "2026-11-15T14:30:05.5"}) {
            OutboundFaxEntry sent;
            QVERIFY(readFax(sent, tag("end_time", s(text))));
            const QDateTime expected = QDateTime::fromString(s(text), s("yyyy-MM-ddThh:mm:ss"));
            QVERIFY2(sent.sentAt() == expected && sent.sentAt().isNull() == expected.isNull(), text);
            QVERIFY2(sent.sentAt().isValid() == expected.isValid(), text);
        }
    }

    void pageCount_data()
    {
        const Rows<QString, QString, int> row("pages", "used", "count");

        row("cover", "3", "1", 4);
        row("two covers count once", "3", "2", 4);
        row("no cover", "3", "0", 3);
        row("minus one cover", "3", "-1", 3);
        row("not said", "3", "", 3);
        row("a word", "3", "true", 3);
        row("no pages", "", "1", 1);
        row("absurd", "9999999999", "0", 0);
        row("as many as there are", "2147483647", "1", 2147483647);
    }
    void pageCount()
    {
        QFETCH(QString, pages);
        QFETCH(QString, used);
        QFETCH(int, count);
        OutboundFaxEntry sent;
        QVERIFY(readFax(sent, tag("pages", pages) + tag("cover_page_used", used)));
        QCOMPARE(sent.pages(), count);
        const bool enabled = used.toInt() > 0;
        QCOMPARE(sent.coverPage().enabled(), enabled);

        FaxEntry queued;
        QVERIFY(readFax(queued, tag("pages", pages) +
                                    tag("cover_page", tag("enabled", enabled ? s("true") : QString()))));
        QCOMPARE(queued.pages(), count);
        InboundFaxEntry received;
        QVERIFY(readFax(received, tag("pages", pages) + tag("cover_page_used", used)));
        QCOMPARE(received.pages(), pages.toInt());
    }

    void statusEntry()
    {
        FaxEntry entry;
        QVERIFY(readFax(
            entry, s("<fax_entry_url>https://h/ofax/1 "
                     "2</fax_entry_url><agent>a</agent><preview>http://h/p</preview><priority>5</"
                     "priority><max_tries>2</max_tries><fax_page_size>a4</fax_page_size><name>not the "
                     "sender's</name><sender><name>s</name><username>u</username><user_url>https://h/u</"
                     "user_url></sender><recipient><name>r</name><fax_number>5</fax_number></"
                     "recipient><cover_page><enabled>true</enabled><subject>about</subject></cover_page>")));
        // Only the address of a contact is taken down to http.
        QCOMPARE(entry.entryUrl().toString(QUrl::FullyEncoded), s("https://h/ofax/1%202"));
        QCOMPARE(entry.url(), entry.entryUrl());
        QCOMPARE(QStringList({entry.previewUrl().toString(), entry.agent(), entry.from().name(),
                              entry.from().user(), entry.from().url().toString(), entry.to().name(),
                              entry.recipient(), entry.subject()})
                     .join(QLatin1Char('|')),
                 s("http://h/p|a|s|u|http://h/u|r|r, 5|about"));
        QCOMPARE(spelled(entry.schedule()).left(7), s("5 0 2 3"));
        QCOMPARE(int(entry.schedule().faxPageSize()), 3);
        QVERIFY(entry.sentAt().isNull());
    }

    void outboundEntry()
    {
        OutboundFaxEntry entry;
        const QString fields =
            s("<recipient_name>rn</recipient_name><recipient_phone>rp</recipient_phone><recipient_fax>rf</"
              "recipient_fax><recipient_organization>ro</recipient_organization><sender_email>se</"
              "sender_email><sender_phone>sp</sender_phone><sender_fax>sf</"
              "sender_fax><sender_organization>so</sender_organization><subject>sub</subject><agent>a</"
              "agent><username>u</username><comments>c</comments><cover_page_name>cn</"
              "cover_page_name><fax_entry_url>http://h/1</fax_entry_url><preview>http://h/2</preview>");
        QVERIFY(readFax(entry, fields + tag("sender_name", s("sn"))));
        QCOMPARE(QStringList({entry.recepientName(), entry.recepientPhone(), entry.recepientFax(),
                              entry.recepientOrganization(), entry.senderName(), entry.senderEmail(),
                              entry.senderPhone(), entry.senderFax(), entry.senderOrganization(),
                              entry.subject(), entry.agent(), entry.username(), entry.coverPage().comments(),
                              entry.coverPage().name(), entry.coverPage().subject(),
                              entry.entryUrl().toString(), entry.previewUrl().toString(), entry.recipient()})
                     .join(QLatin1Char('|')),
                 s("rn|rp|rf|ro|sn|se|sp|sf|so|sub|a|u|c|cn|sub|http://h/1|http://h/2|rn, rf, ro"));

        Sender sender;
        QVERIFY(!readFax(sender, fields));
        QCOMPARE(sender.email(), s("se"));
        Recepient recepient;
        QVERIFY(readFax(recepient, QString()));

        // Everything that is missing is emptied, also in an entry that is read again.
        QVERIFY(readFax(entry, s("<sender_fax>f</sender_fax><recipient_fax>9</recipient_fax>")));
        QCOMPARE(entry.senderFax(), s("f"));
        QCOMPARE(entry.senderName() + entry.senderEmail() + entry.subject() + entry.entryUrl().toString(),
                 QString());
        QCOMPARE(entry.recipient(), s("9"));
        QVERIFY(readFax(
            entry,
            s("<recipient_name>n</recipient_name><recipient_organization>o</recipient_organization>")));
        QCOMPARE(entry.recipient(), s("n, o"));
    }

    void inboundEntry()
    {
        InboundFaxEntry entry;
        QVERIFY(
            readFax(entry, s("<filename>f</filename><location>https://h/a "
                             "b</location><pages>2</pages><recipient_name>r</recipient_name><error>not "
                             "this</error><delivery_error><error>e</error></delivery_error><remote_id>id</"
                             "remote_id><channel>c</channel><modem>m</modem><extension>x</"
                             "extension><delivered_to><destination>d1</destination><type>email</type></"
                             "delivered_to><delivered_to><type>printer</type></delivered_to>")));
        QCOMPARE(
            QStringList({entry.filename(), entry.location().toString(QUrl::FullyEncoded), entry.toName(),
                         entry.error(), entry.remoteId(), entry.channel(), entry.modem(), entry.extension(),
                         entry.deliveredTo(), entry.deliveredType(), entry.deliveredDestination()})
                .join(QLatin1Char('|')),
            s("f|https://h/a%20b|r|e|id|c|m|x|email: d1|email|d1"));
        QCOMPARE(entry.pages(), 2);
        QVERIFY(entry.entryUrl().isEmpty());
        QCOMPARE(entry.recipient(), QString());

        QVERIFY(readFax(entry, QString()));
        QCOMPARE(entry.filename() + entry.error() + entry.deliveredTo() + entry.deliveredType(), QString());
        QVERIFY(entry.location().isEmpty());
        QVERIFY(entry.completeTime().isNull());
        QCOMPARE(entry.pages(), 0);
    }

    void deliveredTo_data()
    {
        const Rows<QString, QString> row("pairs", "line"); // type, destination, type, ...
        row("both", "email,x", "email: x");
        row("destination", ",x", "x");
        row("type is cut", "printer,", "print");
        row("short type is gone", "p,", "");
        row("empty pair", ",", "");
        row("two, the last is cut", "email,x,printer,", "email: x; print");
        row("type without destination runs on", "printer,,email,x", "printeremail: x");
    }
    void deliveredTo()
    {
        QFETCH(QString, pairs);
        const QStringList texts = pairs.split(QLatin1Char(','));
        QVector<DeliveredTo::Delivery> deliveries;
        for (int i = 0; i < texts.size(); i += 2)
            deliveries.append({texts.at(i), texts.at(i + 1)});
        DeliveredTo record;
        record.setDeliveries(deliveries);
        InboundFaxEntry entry;
        entry.setDeliveredTo(record);
        QTEST(entry.deliveredTo(), "line");
        QVERIFY(
            readFax(entry, tag("delivered_to", tag("type", texts.at(0)) + tag("destination", texts.at(1)))));
        if (texts.size() == 2)
            QTEST(entry.deliveredTo(), "line");
        QCOMPARE(entry.deliveredType(), texts.at(0));
        QCOMPARE(entry.deliveredDestination(), texts.at(1));
    }

private:
    QTemporaryDir m_folder;
};
QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
