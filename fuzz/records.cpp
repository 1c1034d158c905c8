// Every record: read from any XML, written, and read again.

#include "fuzz.h"

#include "attach.h"
#include "deliveredto.h"
#include "faxdocument.h"
#include "faxentry.h"
#include "faxuserpermissions.h"
#include "fields.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "outlookcontact.h"
#include "xmlguard_p.h"

#include <QDomDocument>

namespace {

/// The parameters in an input, besides the XML.
struct Setting
{
    int version;   ///< Of the protocol, 1 or 2.
    bool receipts; ///< Whether the server supports them; likewise the next.
    bool pageSize;
    int indent; ///< Of the text that is written.
};

/// A document with the element that a record writes itself into.
struct Written
{
    Written() { document.appendChild(root); }
    QDomDocument document;
    QDomElement root = document.createElement(QStringLiteral("record"));
};

template <typename Record>
void prepare(Record& record, const Setting& setting)
{
    if constexpr (std::is_base_of_v<BaseScheduleOptions, Record> || std::is_same_v<Record, FaxUser>) {
        record.setSupportReceiptOptions(setting.receipts);
        record.setSupportFaxPageSizeOptions(setting.pageSize);
    }
}

template <typename Record>
bool read(Record& record, Form form, const QDomElement& element, int version)
{
    if constexpr (std::is_base_of_v<IQuendraStorage, Record>) {
        if (form == Form::Storage)
            return record.readStorage(element, version);
    }
    return record.readFax(element, version);
}

template <typename Record>
bool write(const Record& record, Form form, Written& to, int version)
{
    if constexpr (std::is_base_of_v<IQuendraStorage, Record>) {
        if (form == Form::Storage)
            return record.writeStorage(to.document, to.root, version);
    }
    return record.writeFax(to.document, to.root, version);
}

/// Reads a record, and makes two round trips through fresh records.
template <typename Record>
void thereAndBack(const char* name, Form form, const QDomElement& element, const Setting& setting)
{
    const QString recordName = QString::fromLatin1(name);
    Record record;
    prepare(record, setting);
    const Fields fresh = fieldsOf(record);
    if (!read(record, form, element, setting.version)) {
        // a refusing record is unchanged; only a user's contact may have been changed
        PROMISE((std::is_same_v<Record, FaxUser>) || fieldsOf(record) == fresh);
        return;
    }
    for (int round = 0; round < 2; ++round) {
        Written written;
        PROMISE(write(record, form, written, setting.version));
        const QString text = written.document.toString(setting.indent);
        QDomDocument document;
        PROMISE_THAT(isFitForDom(text) && document.setContent(text), text);

        const Fields before = fieldsOf(record);
        Record again;
        prepare(again, setting);
        const bool isRead = read(again, form, document.documentElement(), setting.version);
        PROMISE_THAT(isRead != isRefused(recordName, form, setting.version, before), text);
        if (!isRead)
            return;
        const Fields expected = readAgain(recordName, form, setting.version, before, fresh, fieldsOf(again));
        PROMISE_THAT(fieldsOf(again) == expected,
                     text + toText(fieldsOf(again)) + QStringLiteral("expected\n") + toText(expected));
        record = again;
    }
}

/// Reads a record that is never written.
template <typename Record>
void thereOnly(const QDomElement& element, const Setting& setting)
{
    Record record;
    record.readFax(element, setting.version);
    Written written;
    PROMISE(!record.writeFax(written.document, written.root, setting.version));
    PROMISE(!written.root.hasChildNodes());
    if constexpr (std::is_base_of_v<BaseFaxEntry, Record>) {
        PROMISE(record.state() >= 0 && record.state() <= 9);
        static_cast<void>(record.sentAt().toString());
        record.pages();
        record.subject();
        record.recipient();
        record.entryUrl().toString();
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): copying is what is tried
        const Record copy = record;
        // cppcheck-suppress knownConditionTrueFalse ; a copy made by hand might differ
        PROMISE(copy.recipient() == record.recipient());
    }
    if constexpr (std::is_same_v<Record, InboundFaxEntry>) {
        record.deliveredTo();
        PROMISE(record.deliveredType() == element.firstChildElement(QStringLiteral("delivered_to"))
                                              .firstChildElement(QStringLiteral("type"))
                                              .text());
    }
}

QVector<QDomElement> childrenOf(const QDomElement& parent, const char* name)
{
    QVector<QDomElement> children;
    const QString tag = QString::fromLatin1(name);
    for (QDomElement child = parent.firstChildElement(tag); !child.isNull();
         child = child.nextSiblingElement(tag))
        children.append(child);
    return children;
}

/// A fax built from the input, written: every contact and every attachment that is not empty is there.
void faxDocument(const QDomElement& element, const Setting& setting)
{
    FaxDocument fax;
    CoverPage cover;
    cover.readFax(element.firstChildElement(QStringLiteral("cover_page")), 1);
    fax.setCoverPage(cover);
    const QVector<QDomElement> recipients = childrenOf(element, "recipient");
    for (const QDomElement& recipient : recipients) {
        Contact contact;
        contact.readFax(recipient, setting.version);
        fax.recipients().addContact(contact);
    }
    QStringList names;
    const QVector<QDomElement> attachments = childrenOf(element, "attachment");
    for (const QDomElement& attachment : attachments) {
        Attach attach;
        attach.setLocation(Attach::External);
        attach.setName(attachment.firstChildElement(QStringLiteral("name")).text());
        attach.setContentUrl(
            QUrl(attachment.firstChildElement(QStringLiteral("url")).text(), QUrl::TolerantMode));
        fax.attachs().append(attach);
        names.append(attach.name());
    }

    fax.renameDuplicateAttachments();
    for (int i = 0; i < names.size(); ++i) {
        const int before = names.mid(0, i).count(names.at(i));
        const QString expected = before == 0 ? names.at(i) : names.at(i) + QString::number(before);
        PROMISE_THAT(fax.attachs().at(i).name() == expected, fax.attachs().at(i).name());
    }

    Written written;
    PROMISE(fax.writeFax(written.document, written.root, setting.version) == !recipients.isEmpty());
    const QString text = written.document.toString(setting.indent);
    QDomDocument document;
    PROMISE_THAT(isFitForDom(text) && document.setContent(text), text);
    const QDomElement root = document.documentElement();
    PROMISE(childrenOf(root, "cover_page").size() == 1);
    PROMISE(childrenOf(root, "attachment").size() == attachments.size());
    const QVector<QDomElement> contacts = childrenOf(root, "recipient");
    PROMISE(contacts.size() == recipients.size());
    for (int i = 0; i < contacts.size(); ++i) {
        Contact contact;
        contact.readFax(contacts.at(i), setting.version);
        const auto& given = static_cast<const Contact&>(*fax.recipients().contacts().at(i));
        PROMISE(fieldsOf(contact) == readAgain(QStringLiteral("Contact"), Form::Fax, setting.version,
                                               fieldsOf(given), fieldsOf(Contact()), fieldsOf(contact)));
    }
}

void one(int record, const QDomElement& element, const Setting& setting)
{
    switch (record) {
    case 0:
        return thereAndBack<Contact>("Contact", Form::Fax, element, setting);
    case 1:
        return thereAndBack<Contact>("Contact", Form::Storage, element, setting);
    case 2:
        return thereAndBack<QuendraContact>("QuendraContact", Form::Fax, element, setting);
    case 3:
        return thereAndBack<QuendraContact>("QuendraContact", Form::Storage, element, setting);
    case 4:
        return thereAndBack<QuendraContactGroup>("QuendraContactGroup", Form::Fax, element, setting);
    case 5:
        return thereAndBack<QuendraInfo>("QuendraInfo", Form::Storage, element, setting);
    case 6:
        return thereAndBack<CoverPage>("CoverPage", Form::Fax, element, setting);
    case 7:
        return thereAndBack<FaxScheduleOptions>("FaxScheduleOptions", Form::Fax, element, setting);
    case 8:
        return thereAndBack<FaxUserScheduleOptions>("FaxUserScheduleOptions", Form::Fax, element, setting);
    case 9:
        return thereAndBack<FaxUser>("FaxUser", Form::Fax, element, setting);
    case 10:
        return thereAndBack<FaxUser>("FaxUser", Form::Storage, element, setting);
    case 11:
        return thereOnly<FaxEntry>(element, setting);
    case 12:
        return thereOnly<OutboundFaxEntry>(element, setting);
    case 13:
        return thereOnly<InboundFaxEntry>(element, setting);
    case 14:
        return thereOnly<FaxUserPermissions>(element, setting);
    case 15:
        return thereOnly<DeliveredTo>(element, setting);
    case 16:
        return thereAndBack<OutlookContact>("Contact", Form::Storage, element, setting);
    case 17:
        return faxDocument(element, setting);
    default:
        break;
    }
}

} // namespace

/// Which record, what is supported and how it is written; then the XML of its element.
FUZZ_TARGET(records)
{
    FuzzChoices choices(input);
    const int record = choices.choose(18);
    const int how = choices.choose(16);
    const Setting setting{how & 1 ? 2 : 1, (how & 2) != 0, (how & 4) != 0, how & 8 ? 1 : -1};
    const QString text = QString::fromUtf8(choices.rest());
    QDomDocument document;
    if (!isFitForDom(text) || !document.setContent(text))
        return;
    one(record, document.documentElement(), setting);
}
