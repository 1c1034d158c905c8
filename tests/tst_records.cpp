#include "contactgroup.h"
#include "faxdocument.h"
#include "faxentry.h"
#include "faxscheduleoptions.h"
#include "faxuser.h"
#include "faxuserpermissions.h"
#include "inboundfaxentry.h"
#include "logger.h"
#include "outboundfaxentry.h"
#include "xmltext.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

QString tag(const char* name, const QString& text)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), text);
}

/// How often a text stands in the log.
int logged(const char* text)
{
    QFile file(Logger::inst().currentFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll().count(text) : 0;
}

const QString userFields = QStringLiteral(
    "<priority>4</priority><max_attempts>7</max_attempts><interval>60</interval><receipt>never</receipt>"
    "<receipt_attachment>tiff</receipt_attachment>");

const QDateTime november(QDate(2026, 11, 15), QTime(14, 30, 5));

} // namespace

/// The records of the user, of a fax to be sent and of the logs.
class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void rangeChecks();
    void oneDefaultMakesDefault();
    void conversionKeepsDateAndMessage();
    void writeSchedule();
    void dateToSendIsUtc_data();
    void dateToSendIsUtc();
    void readSchedule_data();
    void readSchedule();
    void userScheduleNeedsItsElements();
    void writeUserSchedule();
    void permissions();
    void writeUser();
    void readUser();
    void content_data();
    void content();
    void attachment();
    void coverPageXml();
    void documentXml();
    void documentResult();
    void renameDuplicates_data();
    void renameDuplicates();
    void entryState_data();
    void entryState();
    void entryDate_data();
    void entryDate();
    void oddDate_data();
    void oddDate();
    void pageCount_data();
    void pageCount();
    void statusEntry();
    void outboundEntry();
    void inboundEntry();
    void deliveredTo_data();
    void deliveredTo();

private:
    QTemporaryDir m_folder;
};

void RecordsTest::initTestCase()
{
    // A zone with summer time and an offset: a date that is taken in the wrong zone shows.
    qputenv("TZ", "Europe/Berlin");
    tzset();
    QVERIFY(m_folder.isValid());
    Logger::inst().setLocation(QDir(m_folder.path()));
}

void RecordsTest::cleanupTestCase()
{
    Logger::inst().releaseLogFile();
}

void RecordsTest::rangeChecks()
{
    FaxScheduleOptions options;
    for (const int value : {6, -1, 1000000}) {
        options.setPriority(static_cast<BaseScheduleOptions::Priority>(value));
        options.setFaxPageSize(static_cast<BaseScheduleOptions::FaxPageSize>(value));
        options.setReceiptAttachment(static_cast<BaseScheduleOptions::ReceiptAttachment>(value));
        options.setReceipt(static_cast<BaseScheduleOptions::Receipt>(value));
        options.setFaxReceipt(static_cast<BaseScheduleOptions::Receipt>(value));
    }
    QCOMPARE(int(options.priority()), 3);
    QCOMPARE(int(options.faxPageSize()), 0);
    QCOMPARE(int(options.receiptAttachment()), 1);
    QCOMPARE(int(options.receipt()), 1);
    QCOMPARE(int(options.faxReceipt()), 2);
    QCOMPARE(logged("BaseScheduleOptions: Priority is out of range!"), 3);
    QCOMPARE(logged("BaseScheduleOptions: fax page size is out of range!"), 3);
    QCOMPARE(logged("BaseScheduleOptions: ReceipAttachment is out of range!"), 3);
    QCOMPARE(logged("BaseScheduleOptions: Receipt is out of range!"), 6);

    options.setPriority(static_cast<BaseScheduleOptions::Priority>(5));
    options.setFaxPageSize(static_cast<BaseScheduleOptions::FaxPageSize>(3));
    options.setFaxReceipt(static_cast<BaseScheduleOptions::Receipt>(0));
    QCOMPARE(int(options.priority()), 5);
    QCOMPARE(int(options.faxPageSize()), 3);
    QCOMPARE(int(options.faxReceipt()), 0);
}

namespace {

FaxScheduleOptions nothingAtDefault()
{
    FaxScheduleOptions options;
    options.setPriority(static_cast<BaseScheduleOptions::Priority>(0));
    options.setMaxTries(4);
    options.setTryInterval(0);
    options.setReceipt(BaseScheduleOptions::ReceiptAlways);
    options.setReceiptAttachment(BaseScheduleOptions::AttachmentTiff);
    options.setFaxReceipt(BaseScheduleOptions::ReceiptFailure);
    options.setSelectPrinter(QStringLiteral("lp"));
    options.setPrintWithFirstPage(true);
    options.setFaxPageSize(BaseScheduleOptions::PageSizeLegal);
    options.setDateToSend(november);
    return options;
}

} // namespace

void RecordsTest::oneDefaultMakesDefault()
{
    QVERIFY(!nothingAtDefault().isDefault());
    QVERIFY(FaxScheduleOptions().isDefault());
    int field = 0;
    for (void (*reset)(FaxScheduleOptions&) : std::initializer_list<void (*)(FaxScheduleOptions&)>{
             [](FaxScheduleOptions& o) { o.setPriority(BaseScheduleOptions::def_priority); },
             [](FaxScheduleOptions& o) { o.setMaxTries(3); },
             [](FaxScheduleOptions& o) { o.setTryInterval(300); },
             [](FaxScheduleOptions& o) { o.setReceipt(BaseScheduleOptions::def_receipt); },
             [](FaxScheduleOptions& o) {
                 o.setReceiptAttachment(BaseScheduleOptions::def_receiptAttachment);
             },
             [](FaxScheduleOptions& o) { o.setFaxReceipt(BaseScheduleOptions::def_faxReceipt); },
             [](FaxScheduleOptions& o) { o.setSelectPrinter(QStringLiteral("None")); },
             [](FaxScheduleOptions& o) { o.setPrintWithFirstPage(false); },
             [](FaxScheduleOptions& o) { o.setFaxPageSize(BaseScheduleOptions::def_faxPageSize); },
             [](FaxScheduleOptions& o) { o.setDateToSend(QDateTime()); }}) {
        FaxScheduleOptions options = nothingAtDefault();
        reset(options);
        QVERIFY2(options.isDefault(), qPrintable(QString::number(field)));
        ++field;
    }
}

void RecordsTest::conversionKeepsDateAndMessage()
{
    FaxUserScheduleOptions defaults;
    defaults.setMaxAttempts(9);
    const FaxScheduleOptions made(defaults);
    QCOMPARE(made.maxTries(), 9);
    QVERIFY(made.dateToSend().isNull());

    FaxScheduleOptions options = nothingAtDefault();
    options.setScheduleMessage(QStringLiteral("m"));
    defaults.setSupportReceiptOptions(true);
    options = defaults;
    QCOMPARE(options.maxTries(), 9);
    QCOMPARE(options.selectPrinter(), QStringLiteral("None"));
    QVERIFY(options.isSupportReceiptOptions());
    QCOMPARE(options.dateToSend(), november);
    QCOMPARE(options.scheduleMessage(), QStringLiteral("m"));
}

void RecordsTest::writeSchedule()
{
    FaxScheduleOptions options;
    options.setTryNumber(2);
    options.setScheduleMessage(QStringLiteral("m"));
    options.setDateToSend(QDateTime::currentDateTime().addSecs(-2));
    options.setSupportReceiptOptions(true);
    QCOMPARE(writtenFax(options), QString());
    options.setSupportFaxPageSizeOptions(true);
    QCOMPARE(writtenFax(options), tag("fax_page_size", QStringLiteral("auto")));

    options = nothingAtDefault();
    options.setDateToSend(QDateTime());
    const QString plain = QStringLiteral("<priority>0</priority><max_tries>4</max_tries><try_interval>0"
                                         "</try_interval><receipt>always</receipt>"
                                         "<receipt_attachment>tiff</receipt_attachment>");
    const QString printing =
        QStringLiteral("<print_receipt>failure</print_receipt><print_receipt_printer>lp"
                       "</print_receipt_printer><print_receipt_first>true</print_receipt_first>");
    QCOMPARE(writtenFax(options), plain);
    options.setSupportReceiptOptions(true);
    QCOMPARE(writtenFax(options), plain + printing);
    options.setSupportFaxPageSizeOptions(true);
    QCOMPARE(writtenFax(options), plain + printing + tag("fax_page_size", QStringLiteral("legal")));
}

void RecordsTest::dateToSendIsUtc_data()
{
    QTest::addColumn<QDateTime>("dateTime");
    QTest::addColumn<QString>("text");

    const auto local = [](int year, int month, int day, int hour) {
        return QDateTime(QDate(year, month, day), QTime(hour, 30, 5));
    };
    QTest::newRow("winter") << local(2199, 11, 15, 14) << "2199-11-15T13:30:05";
    QTest::newRow("the evening before") << local(2199, 1, 1, 0) << "2198-12-31T23:30:05";
    QTest::newRow("given in another zone")
        << QDateTime(QDate(2199, 1, 1), QTime(0, 0, 1), Qt::OffsetFromUTC, -3600) << "2199-01-01T01:00:01";
}

void RecordsTest::dateToSendIsUtc()
{
    QFETCH(QDateTime, dateTime);
    QFETCH(QString, text);

    FaxScheduleOptions options;
    options.setDateToSend(dateTime);
    QCOMPARE(writtenFax(options), tag("schedule_all_at", text));
    FaxScheduleOptions again;
    QVERIFY(readFax(again, tag("schedule_all_at", text)));
    QCOMPARE(again.dateToSend(), dateTime);
    QCOMPARE(again.dateToSend().timeSpec(), Qt::LocalTime);
}

/// All options in one line, in the order of the fields.
static QString spelled(const FaxScheduleOptions& o)
{
    QString numbers;
    for (const int number :
         {int(o.priority()), o.tryNumber(), o.maxTries(), o.tryInterval(), int(o.receipt()),
          int(o.receiptAttachment()), int(o.faxPageSize()), int(o.faxReceipt()), int(o.printWithFirstPage())})
        numbers += QString::number(number) + QLatin1Char(' ');
    return numbers + o.selectPrinter() + QLatin1Char(' ') +
           (o.dateToSend().isNull() ? QStringLiteral("now")
                                    : o.dateToSend().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"))) +
           o.scheduleMessage();
}

void RecordsTest::readSchedule_data()
{
    QTest::addColumn<QString>("xml");
    QTest::addColumn<QString>("options");

    const auto row = [](const char* name, const char* xml, const char* options) {
        QTest::newRow(name) << QString(QLatin1String(xml)) << QString(QLatin1String(options));
    };
    // Each starts from options that are nowhere at their default, so that what stays is told from what is
    // reset.
    row("nothing", "", "0 0 0 0 0 2 2 1 1 lp 2026-11-15 14:30:05");
    row("numbers",
        "<priority>5</priority><try_number>2</try_number><max_tries>8</max_tries><try_interval>30</"
        "try_interval>",
        "5 2 8 30 0 2 2 1 1 lp 2026-11-15 14:30:05");
    row("empty numbers", "<priority/><try_interval/><schedule_all_at/>",
        "0 0 0 0 0 2 2 1 1 lp 2026-11-15 14:30:05");
    row("absurd numbers",
        "<priority>9999999999</priority><try_interval>9999999999</try_interval><max_tries>-7</max_tries>",
        "0 0 -7 0 0 2 2 1 1 lp 2026-11-15 14:30:05");
    row("priority out of range", "<priority>6</priority>", "0 0 0 0 0 2 2 1 1 lp 2026-11-15 14:30:05");
    row("afternoon in summer", "<schedule_all_at>2026-07-15T21:05:06</schedule_all_at>",
        "0 0 0 0 0 2 2 1 1 lp 2026-07-15 23:05:06");
    // There is no such local time, but it is not local time.
    row("within the gap of summer time", "<schedule_all_at>2026-03-29T02:30:00</schedule_all_at>",
        "0 0 0 0 0 2 2 1 1 lp 2026-03-29 04:30:00");
    row("date with a zone", "<schedule_all_at>2026-07-15T21:05:06Z</schedule_all_at>",
        "0 0 0 0 0 2 2 1 1 lp now");
    row("no date", "<schedule_all_at>2026-02-30T21:05:06</schedule_all_at>", "0 0 0 0 0 2 2 1 1 lp now");
    row("receipts", "<receipt>never</receipt><receipt_attachment>none</receipt_attachment>",
        "0 0 0 0 2 0 2 1 1 lp 2026-11-15 14:30:05");
    row("unknown texts",
        "<receipt>Always</receipt><receipt_attachment/><print_receipt>x</print_receipt>"
        "<fax_page_size>A4</fax_page_size><print_receipt_first>0</print_receipt_first>",
        "0 0 0 0 0 2 2 1 1 lp 2026-11-15 14:30:05");
    row("print options",
        "<print_receipt>never</print_receipt><print_receipt_printer>None</print_receipt_printer>"
        "<print_receipt_first> FALSE\n</print_receipt_first><fax_page_size>a4</fax_page_size>",
        "0 0 0 0 0 2 3 2 0 None 2026-11-15 14:30:05");
    row("message", "<schedule_message>, later</schedule_message>",
        "0 0 0 0 0 2 2 1 1 lp 2026-11-15 14:30:05, later");
}

void RecordsTest::readSchedule()
{
    QFETCH(QString, xml);
    FaxScheduleOptions options = nothingAtDefault();
    options.setTryNumber(5);
    QVERIFY(readFax(options, xml));
    QTEST(spelled(options), "options");

    FaxScheduleOptions first;
    QVERIFY(readFax(first, tag("print_receipt_first", QStringLiteral(" True"))));
    QCOMPARE(spelled(first), QStringLiteral("3 0 0 300 1 1 0 2 1 None now"));
}

void RecordsTest::userScheduleNeedsItsElements()
{
    for (const char* missing : {"priority", "max_attempts", "interval", "receipt", "receipt_attachment"}) {
        FaxUserScheduleOptions options;
        QString xml = userFields;
        xml.replace(QLatin1String(missing) + QLatin1Char('>'), QStringLiteral("other>"));
        QVERIFY2(!readFax(options, xml), missing);
        QVERIFY2(writtenFax(options).startsWith(QStringLiteral("<priority>3</priority><max_attempts>3</")),
                 missing);
    }

    FaxUserScheduleOptions options;
    QVERIFY(readFax(options, userFields + tag("fax_page_size", QStringLiteral("legal"))));
    QCOMPARE(writtenFax(options), userFields);
    QCOMPARE(int(options.faxPageSize()), 2);
    // Empty is present: what has a number keeps it.
    QVERIFY(readFax(options, QStringLiteral("<priority/><max_attempts/><interval/><receipt>always</receipt>"
                                            "<receipt_attachment>pdf</receipt_attachment>")));
    QCOMPARE(int(options.priority()), 4);
    QCOMPARE(options.maxAttempts(), 7);
    QCOMPARE(options.interval(), 60);
    QCOMPARE(int(options.receipt()), 0);
}

void RecordsTest::writeUserSchedule()
{
    FaxUserScheduleOptions options;
    const QString plain = QStringLiteral("<priority>3</priority><max_attempts>3</max_attempts><interval>300"
                                         "</interval><receipt>failure</receipt>"
                                         "<receipt_attachment>pdf</receipt_attachment>");
    QCOMPARE(writtenFax(options), plain);
    options.setSupportFaxPageSizeOptions(true);
    options.setSupportReceiptOptions(true);
    QCOMPARE(writtenFax(options),
             plain + QStringLiteral(
                         "<print_receipt>never</print_receipt><print_receipt_printer></print_receipt_printer>"
                         "<print_receipt_first>false</print_receipt_first>"
                         "<fax_page_size>auto</fax_page_size>"));
    options.setSelectPrinter(QStringLiteral("none"));
    QVERIFY(writtenFax(options).contains(tag("print_receipt_printer", QStringLiteral("none"))));
}

void RecordsTest::permissions()
{
    FaxUserPermissions record;
    QVERIFY(!readFax(record, QStringLiteral("<add_Global>true</add_Global>")));
    QCOMPARE(record.flags(), 1U);
    QVERIFY(readFax(record, tag("add_global", QStringLiteral("true"))));
    QCOMPARE(record.flags(), 3U);
    record.setEditPersonalContactsEnabled(false);
    QVERIFY(!readFax(record, QString()));
    QCOMPARE(record.flags(), 2U);
    QVERIFY(readFax(record, tag("add_global", QStringLiteral("True"))));
    QCOMPARE(record.flags(), 0U);
    QCOMPARE(writtenFax(record), QStringLiteral("refused"));
}

void RecordsTest::writeUser()
{
    FaxUser user;
    QuendraContact contact;
    contact.setName(QStringLiteral("n"));
    user.setContact(contact);
    user.useCoverPage(true);
    FaxUserScheduleOptions options;
    readFax(options, userFields);
    user.setScheduleOptions(options);

    const QString common =
        QStringLiteral("<name>n</name><default_cover_page_enabled>true"
                       "</default_cover_page_enabled><default_cover_page_name></default_cover_page_name>");
    QCOMPARE(writtenFax(user, 1), common);
    QCOMPARE(writtenFax(user, 2), common + userFields);
    QCOMPARE(writtenStorage(user, 1), common + userFields);
    QCOMPARE(writtenStorage(user, 2), common + userFields);
    QCOMPARE(writtenStorage(user, 3), common);

    const FaxUser& constUser = user;
    constUser.setSupportFaxPageSizeOptions(true);
    constUser.setSupportReceiptOptions(true);
    QVERIFY(user.isSupportReceiptOptions());
    QVERIFY(writtenFax(user).endsWith(tag("fax_page_size", QStringLiteral("auto"))));
}

void RecordsTest::readUser()
{
    const QString cover = QStringLiteral("<default_cover_page_enabled>true</default_cover_page_enabled>");
    const QString name = QStringLiteral("<default_cover_page_name>c</default_cover_page_name>");
    FaxUser user;
    QVERIFY(!readFax(user, tag("name", QStringLiteral("n")) + cover));
    QCOMPARE(user.contact().name(), QStringLiteral("n"));
    QVERIFY(!user.isUsedCoverPage());
    QVERIFY(!readStorage(user, tag("name", QStringLiteral("o")) + name));
    QCOMPARE(user.defaultCoverpage(), QString());

    // Incomplete schedule defaults are no failure, and nothing of them is taken.
    QVERIFY(readStorage(user, cover + name + tag("priority", QStringLiteral("5"))));
    QVERIFY(user.isUsedCoverPage());
    QCOMPARE(user.defaultCoverpage(), QStringLiteral("c"));
    QCOMPARE(user.contact().name(), QString());
    QCOMPARE(int(user.faxScheduleOptions().priority()), 3);
    QVERIFY(readFax(user, cover + name + userFields, 1));
    QCOMPARE(int(user.faxScheduleOptions().priority()), 4);
}

namespace {

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

} // namespace

void RecordsTest::content_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("xml");

    const auto xml = [](const char* type) {
        return tag("content_type", QLatin1String(type)) +
               QStringLiteral("<content_transfer_encoding>base64</content_transfer_encoding>"
                              "<content>AP8K</content>");
    };
    const QByteArray bytes("\0\xff\n", 3);
    QTest::newRow("none") << 0 << bytes << "refused";
    QTest::newRow("pdf") << 1 << bytes << xml("application/pdf");
    QTest::newRow("postscript") << 2 << bytes << xml("application/postscript");
    QTest::newRow("text") << 3 << bytes << xml("text/plain");
    QTest::newRow("tiff") << 4 << bytes << xml("image/tiff");
    QTest::newRow("beyond the table") << 5 << bytes << "refused";
    QTest::newRow("empty file") << 1 << QByteArray() << "refused";
}

void RecordsTest::content()
{
    QFETCH(int, type);
    QFETCH(QByteArray, bytes);

    QFile file(m_folder.filePath(QStringLiteral("content")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    Content content = contentOf(static_cast<Content::Type>(type), file.fileName());
    QTEST(writtenFax(content), "xml");
    QVERIFY(!readFax(content, tag("content_type", QStringLiteral("text/plain"))));
    QVERIFY(file.remove());
    QCOMPARE(writtenFax(content), QStringLiteral("refused"));
}

void RecordsTest::attachment()
{
    Attach attach;
    attach.setName(QStringLiteral("n"));
    attach.setContentUrl(QUrl(QStringLiteral("http://h/a?x=1&y=2")));
    QCOMPARE(writtenFax(attach), QStringLiteral("refused"));
    for (const int location : {2, 3}) {
        attach.setLocation(static_cast<Attach::Loc>(location));
        QCOMPARE(writtenFax(attach),
                 QStringLiteral("<location>external</location><url>http://h/a?x=1&amp;y=2</url>"));
    }
    attach.setLocation(Attach::Inline);
    QCOMPARE(writtenFax(attach), QStringLiteral("refused<location>inline</location><name>n</name>"));
    QVERIFY(!readFax(attach, QStringLiteral("<location>inline</location>")));
}

void RecordsTest::coverPageXml()
{
    CoverPage cover;
    QCOMPARE(writtenFax(cover), QStringLiteral("<enabled>false</enabled>"));
    cover.setName(QStringLiteral("n"));
    cover.setType(QStringLiteral("t"));
    cover.setUrl(QUrl(QStringLiteral("http://h/1")));
    cover.setSubject(QStringLiteral("s"));
    cover.setComments(QStringLiteral("c"));
    const QString xml = QStringLiteral("<enabled>false</enabled><name>n</name><type>t</type>"
                                       "<url>http://h/1</url><subject>s</subject><comments>c</comments>");
    QCOMPARE(writtenFax(cover), xml);

    const QString news = QStringLiteral("<name>N</name><type/><url>http://h/a b</url><subject>S</subject>");
    QVERIFY(!readFax(cover, news));
    QCOMPARE(writtenFax(cover), xml);
    for (const char* text : {"false", "TRUE", "1", ""}) {
        QVERIFY(readFax(cover, tag("enabled", QLatin1String(text)) + news));
        QCOMPARE(writtenFax(cover), xml);
    }
    QVERIFY(readFax(cover, tag("enabled", QStringLiteral("true")) + news));
    QVERIFY(cover.enabled());
    QCOMPARE(cover.name(), QStringLiteral("N"));
    QCOMPARE(cover.type(), QString());
    QCOMPARE(cover.url().toString(QUrl::FullyEncoded), QStringLiteral("http://h/a%20b"));
    QCOMPARE(cover.comments(), QStringLiteral("c"));

    QVERIFY(readStorage(cover, QStringLiteral("<name>Z</name>")));
    QCOMPARE(cover.name(), QStringLiteral("N"));
    QCOMPARE(writtenStorage(cover), QStringLiteral("refused"));
}

void RecordsTest::documentXml()
{
    QFile file(m_folder.filePath(QStringLiteral("a.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("abc");
    file.close();

    Contact plain;
    plain.setFax(QStringLiteral("1"));
    QuendraContact known;
    known.setUrl(QUrl(QStringLiteral("http://h/7")));
    FaxDocument document;
    document.recipients().addContact(plain);
    document.recipients().addContact(ContactGroup());
    document.recipients().contacts().append(ContactUnitPtr());
    document.recipients().addContact(known);
    const Content text = contentOf(Content::PlainText, file.fileName());
    document.attachs() << inlineAttach(QStringLiteral("a"), text)
                       << inlineAttach(QStringLiteral("lost"), contentOf(Content::Pdf, QString())) << Attach()
                       << inlineAttach(QStringLiteral("b"), text);
    FaxScheduleOptions options;
    options.setPriority(static_cast<BaseScheduleOptions::Priority>(5));
    document.setFaxSchedule(options);

    const QString attachment = QStringLiteral(
        "<attachment><location>inline</location><name>%1</name><content_type>text/plain</content_type>"
        "<content_transfer_encoding>base64</content_transfer_encoding><content>YWJj</content></attachment>");
    QCOMPARE(writtenFax(document),
             QStringLiteral("<cover_page><enabled>false</enabled></cover_page><recipient><fax_number>1"
                            "</fax_number></recipient><recipient><contact_url>http://h/7</contact_url>"
                            "</recipient>") +
                 attachment.arg(QStringLiteral("a")) + attachment.arg(QStringLiteral("b")));
    QVERIFY(!readFax(document, QStringLiteral("<recipient/>")));
}

namespace {

/// A recipient that writes something and then gives up.
class FailingContact : public Contact
{
public:
    bool writeFax(QDomDocument& document, QDomElement& parent, int) const override
    {
        parent.appendChild(document.createElement(QStringLiteral("begun")));
        return false;
    }
    ContactUnit* copy() const override { return new FailingContact(*this); }
};

} // namespace

void RecordsTest::documentResult()
{
    const QString cover = QStringLiteral("<cover_page><enabled>false</enabled></cover_page>");
    FaxDocument document;
    QCOMPARE(writtenFax(document), QStringLiteral("refused") + cover);
    document.recipients().addContact(ContactGroup());
    QCOMPARE(writtenFax(document), cover);
    document.recipients().addContact(FailingContact());
    document.recipients().addContact(Contact());
    QCOMPARE(writtenFax(document), QStringLiteral("refused") + cover +
                                       QStringLiteral("<recipient><begun/></recipient><recipient/>"));
}

void RecordsTest::renameDuplicates_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("renamed");

    QTest::newRow("none") << ""
                          << "";
    QTest::newRow("all differ") << "a,A,b"
                                << "a,A,b";
    QTest::newRow("after the extension") << "r.pdf,r.pdf,r.pdf"
                                         << "r.pdf,r.pdf1,r.pdf2";
    QTest::newRow("made names may repeat") << "a,a,a,a1"
                                           << "a,a1,a2,a1";
    QTest::newRow("names on entry count") << "a1,a1,a,a,a"
                                          << "a1,a11,a,a1,a2";
    QTest::newRow("empty names") << "x,,,y"
                                 << "x,,1,y";
}

void RecordsTest::renameDuplicates()
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

void RecordsTest::entryState_data()
{
    QTest::addColumn<int>("state");

    const char* const texts[] = {"",         "preprocessing", "pending", "sending",          "sent",
                                 "complete", "aborted",       "failed",  "approval_pending", "rejected"};
    for (int i = 0; i < 10; ++i)
        QTest::newRow(texts[i]) << i;
    QTest::newRow("Sent") << 4;
    QTest::newRow("REJECTED") << 9;
    QTest::newRow("queued") << 0;
    QTest::newRow(" sent") << 0;
}

void RecordsTest::entryState()
{
    QFETCH(int, state);
    const QString text = QLatin1String(QTest::currentDataTag());
    FaxEntry queued;
    InboundFaxEntry received;
    OutboundFaxEntry sent;
    for (BaseFaxEntry* entry : {static_cast<BaseFaxEntry*>(&queued), static_cast<BaseFaxEntry*>(&received),
                                static_cast<BaseFaxEntry*>(&sent)}) {
        QVERIFY(readFax(*entry, QStringLiteral("<state>failed</state><status>failed</status>")));
        QCOMPARE(int(entry->state()), 7);
        QVERIFY(readFax(*entry, tag("state", text) + tag("status", text)));
        QCOMPARE(int(entry->state()), state);
        QCOMPARE(writtenFax(*entry), QStringLiteral("refused"));
    }
    QCOMPARE(received.status(), text);
}

void RecordsTest::entryDate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("dateTime");

    const auto local = [](int year, int month, int day, int hour, int minute, int second) {
        return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
    };
    const QDateTime none;
    QTest::newRow("afternoon") << "2026-11-15T14:30:05" << november;
    QTest::newRow("midnight") << "2024-02-29T00:00:00" << local(2024, 2, 29, 0, 0, 0);
    QTest::newRow("last second") << "9999-12-31T23:59:59" << local(9999, 12, 31, 23, 59, 59);
    QTest::newRow("before the epoch") << "1900-01-01T12:00:00" << local(1900, 1, 1, 12, 0, 0);
    QTest::newRow("empty") << "" << none;
    QTest::newRow("no leap year") << "2026-02-29T00:00:00" << none;
    QTest::newRow("month 13") << "2026-13-01T00:00:00" << none;
    QTest::newRow("hour 24") << "2026-11-15T24:00:00" << none;
    QTest::newRow("second 60") << "2026-11-15T23:59:60" << none;
    QTest::newRow("blank") << "2026-11-15 14:30:05" << none;
    QTest::newRow("small t") << "2026-11-15t14:30:05" << none;
    QTest::newRow("zone") << "2026-11-15T14:30:05Z" << none;
    QTest::newRow("one digit") << "2026-11-15T4:30:05" << none;
    QTest::newRow("letters") << "yyyy-MM-ddThh:mm:ss" << none;
    QTest::newRow("other digits") << QString::fromUtf8("2026-11-15T14:30:0\u0665") << none;
}

void RecordsTest::entryDate()
{
    QFETCH(QString, text);
    QFETCH(QDateTime, dateTime);
    FaxEntry queued;
    QVERIFY(readFax(queued, tag("created", text) + tag("stime", QStringLiteral("2026-11-15T14:30:05"))));
    QCOMPARE(queued.createTime(), dateTime);
    QCOMPARE(queued.createTime().isNull(), dateTime.isNull());
    QCOMPARE(queued.changeStateTime(), november);
    InboundFaxEntry received;
    QVERIFY(readFax(received, tag("complete_time", text)));
    QCOMPARE(received.completeTime(), dateTime);
    OutboundFaxEntry sent;
    QVERIFY(readFax(sent, tag("start_time", QStringLiteral("2026-11-15T14:30:05")) + tag("end_time", text)));
    QCOMPARE(sent.startTime(), november);
    QCOMPARE(sent.sentAt(), dateTime);
    QCOMPARE(sent.sentAt().timeSpec(), Qt::LocalTime);
}

void RecordsTest::oddDate_data()
{
    QTest::addColumn<QString>("text");

    // Texts whose reading is Qt's business: ours must be the same, by whichever way.
    for (const char* text :
         {"2026-03-29T02:30:00", "2026-11-15T+4:30:05", "2026-11-15T 4:30:05", "+026-11-15T14:30:05",
          "-026-11-15T14:30:05", "0000-01-01T00:00:00", "0001-01-01T00:00:00", "1893-03-31T23:59:00",
          "2026-11-15T14:30:5 ", "2026-11-15T14:30:05.5"})
        QTest::newRow(text) << QString(QLatin1String(text));
}

void RecordsTest::oddDate()
{
    QFETCH(QString, text);
    OutboundFaxEntry sent;
    QVERIFY(readFax(sent, tag("end_time", text)));
    const QDateTime expected = QDateTime::fromString(text, QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    QCOMPARE(sent.sentAt().isValid(), expected.isValid());
    QCOMPARE(sent.sentAt().isNull(), expected.isNull());
    QCOMPARE(sent.sentAt(), expected);
}

void RecordsTest::pageCount_data()
{
    QTest::addColumn<QString>("pages");
    QTest::addColumn<QString>("used");
    QTest::addColumn<int>("count");

    QTest::newRow("cover") << "3"
                           << "1" << 4;
    QTest::newRow("two covers count once") << "3"
                                           << "2" << 4;
    QTest::newRow("no cover") << "3"
                              << "0" << 3;
    QTest::newRow("minus one cover") << "3"
                                     << "-1" << 3;
    QTest::newRow("not said") << "3"
                              << "" << 3;
    QTest::newRow("a word") << "3"
                            << "true" << 3;
    QTest::newRow("no pages") << ""
                              << "1" << 1;
    QTest::newRow("absurd") << "9999999999"
                            << "0" << 0;
    QTest::newRow("as many as there are") << "2147483647"
                                          << "1" << 2147483647;
}

void RecordsTest::pageCount()
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
    QVERIFY(
        readFax(queued, tag("pages", pages) +
                            tag("cover_page", tag("enabled", enabled ? QStringLiteral("true") : QString()))));
    QCOMPARE(queued.pages(), count);
    InboundFaxEntry received;
    QVERIFY(readFax(received, tag("pages", pages) + tag("cover_page_used", used)));
    QCOMPARE(received.pages(), pages.toInt());
}

void RecordsTest::statusEntry()
{
    FaxEntry entry;
    QVERIFY(readFax(
        entry, QStringLiteral("<fax_entry_url>https://h/ofax/1 2</fax_entry_url><agent>a</agent>"
                              "<preview>http://h/p</preview><priority>5</priority><max_tries>2</max_tries>"
                              "<fax_page_size>a4</fax_page_size><name>not the sender's</name>"
                              "<sender><name>s</name><username>u</username><user_url>https://h/u</user_url>"
                              "</sender><recipient><name>r</name><fax_number>5</fax_number></recipient>"
                              "<cover_page><enabled>true</enabled><subject>about</subject></cover_page>")));
    // Only the address of a contact is taken down to http.
    QCOMPARE(entry.entryUrl().toString(QUrl::FullyEncoded), QStringLiteral("https://h/ofax/1%202"));
    QCOMPARE(entry.url(), entry.entryUrl());
    QCOMPARE(entry.previewUrl().toString(), QStringLiteral("http://h/p"));
    QCOMPARE(entry.agent(), QStringLiteral("a"));
    QCOMPARE(int(entry.schedule().priority()), 5);
    QCOMPARE(entry.schedule().maxTries(), 2);
    QCOMPARE(int(entry.schedule().faxPageSize()), 3);
    QCOMPARE(entry.from().name(), QStringLiteral("s"));
    QCOMPARE(entry.from().user(), QStringLiteral("u"));
    QCOMPARE(entry.from().url().toString(), QStringLiteral("http://h/u"));
    QCOMPARE(entry.to().name(), QStringLiteral("r"));
    QCOMPARE(entry.recipient(), QStringLiteral("r, 5"));
    QCOMPARE(entry.subject(), QStringLiteral("about"));
    QVERIFY(entry.sentAt().isNull());
}

void RecordsTest::outboundEntry()
{
    OutboundFaxEntry entry;
    const QString fields = QStringLiteral(
        "<recipient_name>rn</recipient_name><recipient_phone>rp</recipient_phone><recipient_fax>rf"
        "</recipient_fax><recipient_organization>ro</recipient_organization><sender_email>se</sender_email>"
        "<sender_phone>sp</sender_phone><sender_fax>sf</sender_fax><sender_organization>so"
        "</sender_organization><subject>sub</subject><agent>a</agent><username>u</username><comments>c"
        "</comments><cover_page_name>cn</cover_page_name><fax_entry_url>http://h/1</fax_entry_url>"
        "<preview>http://h/2</preview>");
    QVERIFY(readFax(entry, fields + tag("sender_name", QStringLiteral("sn"))));
    QCOMPARE(QStringList({entry.recepientName(), entry.recepientPhone(), entry.recepientFax(),
                          entry.recepientOrganization(), entry.senderName(), entry.senderEmail(),
                          entry.senderPhone(), entry.senderFax(), entry.senderOrganization(), entry.subject(),
                          entry.agent(), entry.username(), entry.coverPage().comments(),
                          entry.coverPage().name(), entry.coverPage().subject(), entry.entryUrl().toString(),
                          entry.previewUrl().toString(), entry.recipient()})
                 .join(QLatin1Char('|')),
             QStringLiteral("rn|rp|rf|ro|sn|se|sp|sf|so|sub|a|u|c|cn|sub|http://h/1|http://h/2|rn, rf, ro"));

    Sender sender;
    QVERIFY(!readFax(sender, fields));
    QCOMPARE(sender.email(), QStringLiteral("se"));
    Recepient recepient;
    QVERIFY(readFax(recepient, QString()));

    // Everything that is missing is emptied, also in an entry that is read again.
    QVERIFY(readFax(entry, QStringLiteral("<sender_fax>f</sender_fax><recipient_fax>9</recipient_fax>")));
    QCOMPARE(entry.senderFax(), QStringLiteral("f"));
    QCOMPARE(entry.senderName() + entry.senderEmail() + entry.subject() + entry.entryUrl().toString(),
             QString());
    QCOMPARE(entry.recipient(), QStringLiteral("9"));
    QVERIFY(readFax(entry, QStringLiteral("<recipient_name>n</recipient_name>"
                                          "<recipient_organization>o</recipient_organization>")));
    QCOMPARE(entry.recipient(), QStringLiteral("n, o"));
}

void RecordsTest::inboundEntry()
{
    InboundFaxEntry entry;
    QVERIFY(readFax(
        entry, QStringLiteral("<filename>f</filename><location>https://h/a b</location><pages>2</pages>"
                              "<recipient_name>r</recipient_name><error>not this</error><delivery_error>"
                              "<error>e</error></delivery_error><remote_id>id</remote_id><channel>c</channel>"
                              "<modem>m</modem><extension>x</extension><delivered_to><destination>d1"
                              "</destination><type>email</type></delivered_to><delivered_to><type>printer"
                              "</type></delivered_to>")));
    QCOMPARE(QStringList({entry.filename(), entry.location().toString(QUrl::FullyEncoded), entry.toName(),
                          entry.error(), entry.remoteId(), entry.channel(), entry.modem(), entry.extension(),
                          entry.deliveredTo(), entry.deliveredType(), entry.deliveredDestination()})
                 .join(QLatin1Char('|')),
             QStringLiteral("f|https://h/a%20b|r|e|id|c|m|x|email: d1|email|d1"));
    QCOMPARE(entry.pages(), 2);
    QVERIFY(entry.entryUrl().isEmpty());
    QCOMPARE(entry.recipient(), QString());

    QVERIFY(readFax(entry, QString()));
    QCOMPARE(entry.filename() + entry.error() + entry.deliveredTo() + entry.deliveredType(), QString());
    QVERIFY(entry.location().isEmpty());
    QVERIFY(entry.completeTime().isNull());
    QCOMPARE(entry.pages(), 0);
}

void RecordsTest::deliveredTo_data()
{
    QTest::addColumn<QStringList>("pairs");
    QTest::addColumn<QString>("line");

    QTest::newRow("nothing") << QStringList() << "";
    QTest::newRow("both") << QStringList({QStringLiteral("email"), QStringLiteral("x")}) << "email: x";
    QTest::newRow("destination") << QStringList({QString(), QStringLiteral("x")}) << "x";
    QTest::newRow("type is cut") << QStringList({QStringLiteral("printer"), QString()}) << "print";
    QTest::newRow("short type is gone") << QStringList({QStringLiteral("p"), QString()}) << "";
    QTest::newRow("empty pair") << QStringList({QString(), QString()}) << "";
    QTest::newRow("two, the last is cut")
        << QStringList({QStringLiteral("email"), QStringLiteral("x"), QStringLiteral("printer"), QString()})
        << "email: x; print";
    QTest::newRow("type without destination runs on")
        << QStringList({QStringLiteral("printer"), QString(), QStringLiteral("email"), QStringLiteral("x")})
        << "printeremail: x";
}

void RecordsTest::deliveredTo()
{
    QFETCH(QStringList, pairs);
    QVector<DeliveredTo::Delivery> deliveries;
    for (int i = 0; i < pairs.size(); i += 2)
        deliveries.append({pairs.at(i), pairs.at(i + 1)});
    DeliveredTo record;
    record.setDeliveries(deliveries);
    InboundFaxEntry entry;
    entry.setDeliveredTo(record);
    QTEST(entry.deliveredTo(), "line");
    QCOMPARE(entry.deliveredType(), pairs.value(0));
    QCOMPARE(entry.deliveredDestination(), pairs.value(1));

    if (pairs.size() == 2) {
        QVERIFY(
            readFax(entry, tag("delivered_to", tag("type", pairs.at(0)) + tag("destination", pairs.at(1)))));
        QTEST(entry.deliveredTo(), "line");
    }
}

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
