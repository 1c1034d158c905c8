#include "simdocuments.h"

#include "simclock.h"
#include "simmedia.h"

#include <QtCore/QUrl>

#include <limits>

namespace {

const int anyNumber = std::numeric_limits<int>::max();

QStringList receipts()
{
    return {QStringLiteral("always"), QStringLiteral("failure"), QStringLiteral("never")};
}
QStringList receiptAttachments()
{
    return {QStringLiteral("none"), QStringLiteral("pdf"), QStringLiteral("tiff")};
}
QStringList pageSizes()
{
    return {QStringLiteral("auto"), QStringLiteral("letter"), QStringLiteral("legal"), QStringLiteral("a4")};
}

/// A version as one number of six digits, two for each of its first three parts.
int versionNumber(const QString& version)
{
    const QStringList parts = version.section(QLatin1Char('-'), 0, 0).split(QLatin1Char('.'));
    int number = 0;
    for (int i = 0; i < 3; ++i) {
        qint64 part = parts.value(i).toInt() * qint64(100);
        while (part >= 100)
            part /= 10;
        number = number * 100 + static_cast<int>(part);
    }
    return number;
}

/// Compares only the components that both versions have.
bool isAtLeast(const QString& version, const QString& least)
{
    const QStringList a = version.split(QLatin1Char('.'));
    const QStringList b = least.split(QLatin1Char('.'));
    for (int i = 0; i < qMin(a.size(), b.size()); ++i) {
        if (a[i].toUInt() != b[i].toUInt())
            return a[i].toUInt() > b[i].toUInt();
    }
    return true;
}

/// Each group of options is complete or missing, and is accepted only if the server has the feature.
void readDefaults(SimCursor& cursor, const SimFeatures& features, SimSchedule* defaults)
{
    if (!cursor.takeNumber("priority", 0, 5, &defaults->priority))
        return;
    cursor.require("max_attempts",
                   cursor.takeNumber("max_attempts", -anyNumber, anyNumber, &defaults->maxTries));
    cursor.require("interval", cursor.takeNumber("interval", -anyNumber, anyNumber, &defaults->tryInterval));
    cursor.require("receipt", cursor.takeOneOf("receipt", receipts(), &defaults->receipt));
    cursor.require("receipt_attachment", cursor.takeOneOf("receipt_attachment", receiptAttachments(),
                                                          &defaults->receiptAttachment));
    if (features.printReceipts && cursor.takeOneOf("print_receipt", receipts(), &defaults->printReceipt)) {
        cursor.require("print_receipt_printer", cursor.takeText("print_receipt_printer", &defaults->printer));
        cursor.require("print_receipt_first",
                       cursor.takeBoolean("print_receipt_first", &defaults->printFirstPage));
    }
    if (features.pageSize)
        cursor.takeOneOf("fax_page_size", pageSizes(), &defaults->pageSize);
}

void readNonDefault(SimCursor& cursor, const char* name, int least, int most, int* value)
{
    const int standard = *value;
    if (cursor.takeNumber(name, least, most, value) && *value == standard)
        cursor.complain(
            QStringLiteral("\"%1\" holds its default, which is left out").arg(QLatin1String(name)));
}

void readNonDefault(SimCursor& cursor, const char* name, const QStringList& values, QString* value)
{
    const QString standard = *value;
    if (cursor.takeOneOf(name, values, value) && *value == standard)
        cursor.complain(
            QStringLiteral("\"%1\" holds its default, which is left out").arg(QLatin1String(name)));
}

/// The options of one fax; an option with its default value is an error.
void readSchedule(SimCursor& cursor, const SimFeatures& features, SimSchedule* schedule)
{
    QString date;
    if (cursor.takeFilled("schedule_all_at", &date)) {
        schedule->sendAt = SimClock::fromUtcText(date);
        if (schedule->sendAt == 0)
            cursor.complain(
                QStringLiteral("\"schedule_all_at\" is \"%1\" and not yyyy-MM-ddThh:mm:ss").arg(date));
    }
    readNonDefault(cursor, "priority", 0, 5, &schedule->priority);
    readNonDefault(cursor, "max_tries", -anyNumber, anyNumber, &schedule->maxTries);
    readNonDefault(cursor, "try_interval", -anyNumber, anyNumber, &schedule->tryInterval);
    readNonDefault(cursor, "receipt", receipts(), &schedule->receipt);
    readNonDefault(cursor, "receipt_attachment", receiptAttachments(), &schedule->receiptAttachment);
    if (features.printReceipts) {
        readNonDefault(cursor, "print_receipt", receipts(), &schedule->printReceipt);
        cursor.takeFilled("print_receipt_printer", &schedule->printer);
        if (cursor.takeBoolean("print_receipt_first", &schedule->printFirstPage) && !schedule->printFirstPage)
            cursor.complain(QStringLiteral("\"print_receipt_first\" is only ever \"true\""));
    }
    if (features.pageSize)
        cursor.takeOneOf("fax_page_size", pageSizes(), &schedule->pageSize);
}

void readCoverPage(const SimElement& element, SimCoverPage* cover, QString* why)
{
    SimCursor cursor(element, why);
    cursor.require("enabled", cursor.takeBoolean("enabled", &cover->enabled));
    cursor.takeFilled("name", &cover->name);
    cursor.takeFilled("type", &cover->type);
    cursor.takeFilled("url", &cover->url);
    cursor.takeFilled("subject", &cover->subject);
    cursor.takeFilled("comments", &cover->comments);
    cursor.end();
}

void readAttachment(const SimElement& element, SimAttachment* attachment, QString* why)
{
    SimCursor cursor(element, why);
    QString location;
    cursor.require(
        "location",
        cursor.takeOneOf("location", {QStringLiteral("inline"), QStringLiteral("external")}, &location));
    if (location == QLatin1String("external")) {
        cursor.require("url", cursor.takeText("url", &attachment->name));
        cursor.end();
        return;
    }
    QString encoding;
    cursor.require("name", cursor.takeText("name", &attachment->name));
    cursor.require("content_type", cursor.takeText("content_type", &attachment->contentType));
    if (cursor.ok() && !SimMedia::isKnownType(attachment->contentType))
        cursor.complain(QStringLiteral("unknown \"content_type\": \"%1\"").arg(attachment->contentType));
    cursor.require("content_transfer_encoding",
                   cursor.takeOneOf("content_transfer_encoding", {QStringLiteral("base64")}, &encoding));
    if (const SimElement* content = cursor.requireElement("content")) {
        attachment->content = SimDocuments::fromBase64(content->content);
        attachment->size = attachment->content.size();
        if (attachment->content.isEmpty())
            cursor.complain(QStringLiteral("\"content\" is empty or not base64"));
    }
    cursor.end();
}

void writeCoverPage(SimXmlWriter& xml, const SimCoverPage& cover)
{
    xml.open("cover_page").boolean("enabled", cover.enabled);
    xml.textIfAny("name", cover.name).textIfAny("type", cover.type).textIfAny("url", cover.url);
    xml.textIfAny("subject", cover.subject).textIfAny("comments", cover.comments).close("cover_page");
}

void writePrintedReceipt(SimXmlWriter& xml, const SimFeatures& features, const SimSchedule& schedule)
{
    if (features.printReceipts) {
        xml.text("print_receipt", schedule.printReceipt).text("print_receipt_printer", schedule.printer);
        xml.boolean("print_receipt_first", schedule.printFirstPage);
    }
    if (features.pageSize)
        xml.text("fax_page_size", schedule.pageSize);
}

void writeAddresses(SimXmlWriter& xml, const SimFax& fax, const QByteArray& root)
{
    const QString id = QString::number(fax.id);
    const QString base = QString::fromUtf8(root) + QLatin1String("/qdws/v1/");
    xml.text("fax_entry_url", base + QLatin1String("ofax/") + id);
    xml.text("preview", base + QStringLiteral("documents/preview/%1/fax%1.tif").arg(id));
}

} // namespace

SimFeatures SimFeatures::of(const QString& model, const QString& version)
{
    SimFeatures features;
    features.profileDefaults =
        model.mid(3, 2) == QLatin1String("40") && isAtLeast(version, QStringLiteral("1.4"));
    features.printReceipts = versionNumber(version) > 302070;
    features.pageSize = versionNumber(version) > 306000;
    return features;
}

void SimDocuments::readPerson(SimCursor& cursor, SimPerson* person)
{
    if (cursor.takeFilled("contact_url", &person->url) &&
        QUrl(person->url).scheme() == QLatin1String("https"))
        cursor.complain(QStringLiteral("\"contact_url\" is https; contact addresses are kept as http"));
    cursor.takeFilled("username", &person->username);
    cursor.takeFilled("name", &person->name);
    cursor.takeFilled("email_address", &person->email);
    cursor.takeFilled("phone_number", &person->phone);
    cursor.takeFilled("fax_number", &person->fax);
    cursor.takeFilled("organization", &person->organization);
}

void SimDocuments::writePerson(SimXmlWriter& xml, const char* urlName, const SimPerson& person)
{
    xml.textIfAny(urlName, person.url).textIfAny("username", person.username).textIfAny("name", person.name);
    xml.textIfAny("email_address", person.email).textIfAny("phone_number", person.phone);
    xml.textIfAny("fax_number", person.fax).textIfAny("organization", person.organization);
}

void SimDocuments::readProfile(SimCursor& cursor, const SimFeatures& features, SimUser* user)
{
    readPerson(cursor, &user->person);
    cursor.require("default_cover_page_enabled",
                   cursor.takeBoolean("default_cover_page_enabled", &user->coverPageEnabled));
    cursor.require("default_cover_page_name",
                   cursor.takeText("default_cover_page_name", &user->coverPageName));
    if (features.profileDefaults)
        readDefaults(cursor, features, &user->defaults);
}

void SimDocuments::writeUser(SimXmlWriter& xml, const SimFeatures& features, const SimUser& user,
                             const QByteArray& root)
{
    SimPerson person = user.person;
    person.username = user.name;
    person.url = QString::fromUtf8(root + "/qdws/v1/users/" + QUrl::toPercentEncoding(user.name));
    xml.open("user");
    writePerson(xml, "user_url", person);
    xml.boolean("default_cover_page_enabled", user.coverPageEnabled);
    xml.text("default_cover_page_name", user.coverPageName);
    if (features.profileDefaults) {
        xml.number("priority", user.defaults.priority).number("max_attempts", user.defaults.maxTries);
        xml.number("interval", user.defaults.tryInterval).text("receipt", user.defaults.receipt);
        xml.text("receipt_attachment", user.defaults.receiptAttachment);
        writePrintedReceipt(xml, features, user.defaults);
    }
    xml.close("user");
}

bool SimDocuments::readSubmission(const SimElement& root, const SimFeatures& features,
                                  SimSubmission* submission, QString* why)
{
    SimCursor cursor(root, why);
    if (const SimElement* sender = cursor.requireElement("sender")) {
        SimCursor inside(*sender, why);
        SimUser profile;
        readProfile(inside, features, &profile);
        inside.end();
        submission->sender = profile.person;
    }
    if (const SimElement* cover = cursor.requireElement("cover_page"))
        readCoverPage(*cover, &submission->cover, why);
    while (const SimElement* recipient = cursor.takeElement("recipient")) {
        SimCursor inside(*recipient, why);
        SimPerson person;
        readPerson(inside, &person);
        inside.end();
        submission->recipients.append(person);
    }
    if (submission->recipients.isEmpty())
        cursor.require("recipient", false);
    while (const SimElement* element = cursor.takeElement("attachment")) {
        SimAttachment attachment;
        readAttachment(*element, &attachment, why);
        submission->attachments.append(attachment);
    }
    readSchedule(cursor, features, &submission->schedule);
    cursor.end();
    return cursor.ok();
}

QByteArray SimDocuments::fromBase64(const QByteArray& text)
{
    if (text.size() % 4 != 0)
        return QByteArray();
    const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    return decoded.decodingStatus == QByteArray::Base64DecodingStatus::Ok ? decoded.decoded : QByteArray();
}

void SimDocuments::writeQueueEntry(SimXmlWriter& xml, const SimFeatures& features, const SimFax& fax,
                                   const QByteArray& root)
{
    xml.open("fax_entry").text("state", fax.state);
    xml.text("created", SimClock::text(fax.created)).text("stime", SimClock::text(fax.changed));
    writeAddresses(xml, fax, root);
    xml.text("agent", "qdsim");
    if (fax.schedule.sendAt != 0)
        xml.text("schedule_all_at", SimClock::utcText(fax.schedule.sendAt));
    xml.number("priority", fax.schedule.priority).number("try_number", fax.tryNumber);
    xml.number("max_tries", fax.schedule.maxTries).number("try_interval", fax.schedule.tryInterval);
    xml.text("receipt", fax.schedule.receipt).textIfAny("schedule_message", fax.message);
    xml.text("receipt_attachment", fax.schedule.receiptAttachment);
    writePrintedReceipt(xml, features, fax.schedule);
    xml.open("sender");
    writePerson(xml, "contact_url", fax.sender);
    xml.close("sender");
    writeCoverPage(xml, fax.cover);
    xml.number("pages", fax.pages).open("recipient");
    writePerson(xml, "contact_url", fax.recipient);
    xml.close("recipient").close("fax_entry");
}

void SimDocuments::writeOutboundEntry(SimXmlWriter& xml, const SimFax& fax, const QByteArray& root)
{
    xml.open("outbound_fax_entry").text("status", fax.state);
    writeAddresses(xml, fax, root);
    xml.number("pages", fax.pages).number("cover_page_used", fax.cover.enabled ? 1 : 0);
    xml.text("start_time", SimClock::text(fax.startTime)).text("end_time", SimClock::text(fax.endTime));
    xml.text("subject", fax.cover.subject).text("agent", "qdsim").text("username", fax.user);
    xml.text("cover_page_name", fax.cover.name).text("comments", fax.cover.comments);
    xml.text("recipient_name", fax.recipient.name).text("recipient_phone", fax.recipient.phone);
    xml.text("recipient_fax", fax.recipient.fax).text("recipient_organization", fax.recipient.organization);
    xml.text("sender_name", fax.sender.name).text("sender_email", fax.sender.email);
    xml.text("sender_phone", fax.sender.phone).text("sender_fax", fax.sender.fax);
    xml.text("sender_organization", fax.sender.organization).close("outbound_fax_entry");
}
