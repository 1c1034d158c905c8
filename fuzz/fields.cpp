#include "fields.h"

#include "faxserver.h"

#include <QDateTime>

#include <algorithm>
#include <functional>

namespace {

QString number(int value)
{
    return QString::number(value);
}

void add(Fields& fields, const char* name, const QString& value)
{
    fields.append({QString::fromLatin1(name), value});
}

void addPrefixed(Fields& fields, const char* prefix, const Fields& more)
{
    for (const auto& field : more)
        fields.append({QString::fromLatin1(prefix) + field.first, field.second});
}

QString valueOf(const Fields& fields, const QString& name)
{
    for (const auto& field : fields) {
        if (field.first == name)
            return field.second;
    }
    return QString();
}

void addOptions(Fields& fields, const BaseScheduleOptions& options)
{
    add(fields, "priority", number(options.priority()));
    add(fields, "tryNumber", number(options.tryNumber()));
    add(fields, "maxTries", number(options.maxTries()));
    add(fields, "tryInterval", number(options.tryInterval()));
    add(fields, "receipt", number(options.receipt()));
    add(fields, "receiptAttachment", number(options.receiptAttachment()));
    add(fields, "faxPageSize", number(options.faxPageSize()));
    add(fields, "faxReceipt", number(options.faxReceipt()));
    add(fields, "printer", options.selectPrinter());
    add(fields, "printWithFirstPage", number(options.printWithFirstPage()));
    add(fields, "supportReceiptOptions", number(options.isSupportReceiptOptions()));
    add(fields, "supportFaxPageSizeOptions", number(options.isSupporFaxPageSizeOptions()));
}

/// Whether XML can contain the character, alone or (surrogates) as one of a pair.
bool isAllowed(QChar c)
{
    return c.unicode() >= 0x20 ? c.unicode() < 0xfffe
                               : c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

/// A text after a round trip through XML.
QString throughXml(const QString& text)
{
    QString kept;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            kept += text.midRef(i++, 2);
        else if (!c.isSurrogate() && isAllowed(c))
            kept += c;
    }
    return kept.trimmed().isEmpty() ? QString() : kept;
}

// --- Exceptions: fields that are not read back unchanged

/// The input of an exception's rule: a field's value before writing, in a fresh record, and after reading it
/// again.
struct Case
{
    Form form;
    int version;
    QString value;
    const Fields& fields;
    QString fresh; ///< The field's value in a fresh record.
    QString again; ///< The field's value after reading it again.

    bool isCut(const char* field) const
    {
        const QString text = valueOf(fields, QString::fromLatin1(field));
        return throughXml(text) != text;
    }
    bool is(const char* field) const
    {
        return valueOf(fields, QString::fromLatin1(field)) == QLatin1String("1");
    }
};

struct Exception
{
    const char* records; ///< Their names, between blanks.
    const char* fields; ///< Likewise; "*" is every field. A nested field is contact.name or options.priority.
    // cppcheck-suppress unusedStructMember ; for people
    const char* why;
    std::function<bool(const Case&)> applies;
    std::function<QString(const Case&)> becomes; ///< Null: reading refuses the whole record.
    bool isLast{false}; ///< Whether the result is final, without the XML round trip of texts.
};

QString fresh(const Case& c)
{
    return c.fresh;
}

bool isLost(const Case& c)
{
    return throughXml(c.value).isEmpty();
}

bool isEmpty(const Case& c)
{
    return c.value.isEmpty();
}

bool always(const Case&)
{
    return true;
}

/// The table of exceptions. The first matching row applies to a field, and then the table's first row, which
/// applies to every text.
const Exception exceptions[] = {
    {" * ", " * ",
     "control characters and halves of surrogate pairs are left out; the parser drops a text of blanks",
     always, [](const Case& c) { return throughXml(c.value); }},
    {" QuendraContact ", " url user ", "a server's contact is kept in settings as any contact is",
     [](const Case& c) { return c.form == Form::Storage; }, fresh},
    {" QuendraContactGroup ", " name description ", "left out when empty, and required when it is read",
     isEmpty, nullptr},
    {" QuendraInfo ", " model version ", "likewise", isEmpty, nullptr},
    {" * ", " printer options.printer ", "no printer is called None", isLost,
     [](const Case&) { return BaseScheduleOptions::none_printer; }},
    {" QuendraInfo FaxServer ",
     " protocolVersion info.protocolVersion options.priority options.maxTries options.tryInterval "
     "options.receipt options.receiptAttachment options.faxPageSize options.faxReceipt options.printer "
     "options.printWithFirstPage options.supportReceiptOptions options.supportFaxPageSizeOptions ",
     "follow from model and version, of which XML may not keep all",
     [](const Case& c) {
         return c.isCut("model") || c.isCut("version") || c.isCut("info.model") || c.isCut("info.version");
     },
     [](const Case& c) { return c.again; }},
    {" QuendraInfo FaxServer ", " uptime info.uptime ", "means something only when it comes from the server",
     always, fresh},
    {" FaxServer ", " password ",
     "an empty one is enciphered, and what deciphers to nothing is taken as it stands", isEmpty,
     [](const Case& c) { return c.again; }},
    {" FaxServer ", " password ", "enciphered, so that UTF-8 alone decides what is kept", always,
     [](const Case& c) { return QString::fromUtf8(c.value.toUtf8().constData(), c.value.toUtf8().size()); },
     true},
    {" CoverPage ", " name type url subject comments ", "the rest of a page that is switched off is not read",
     [](const Case& c) { return !c.is("enabled"); }, fresh},
    {" FaxScheduleOptions FaxUserScheduleOptions FaxUser FaxServer ",
     " tryNumber options.tryNumber scheduleMessage ", "the server's to say, never the client's", always,
     fresh},
    {" FaxScheduleOptions ", " maxTries ", "the default is not written, and what is missing reads as 0",
     [](const Case& c) { return c.value.toInt() == BaseScheduleOptions::def_maxTries; },
     [](const Case&) { return QStringLiteral("0"); }},
    {" FaxScheduleOptions ", " dateToSend ", "a time that is over means now",
     [](const Case& c) {
         return QDateTime::fromString(c.value, Qt::ISODate) <= QDateTime::currentDateTime().addSecs(60);
     },
     fresh},
    {" FaxUser FaxServer ",
     " options.priority options.maxTries options.tryInterval options.receipt options.receiptAttachment "
     "options.faxPageSize options.faxReceipt options.printer options.printWithFirstPage ",
     "servers of the older protocol are not sent schedule options",
     [](const Case& c) { return c.form == Form::Fax && c.version != 2; }, fresh},
    {" FaxScheduleOptions FaxUserScheduleOptions FaxUser FaxServer ",
     " faxReceipt printer printWithFirstPage options.faxReceipt options.printer options.printWithFirstPage ",
     "not written for a server that prints no receipts",
     [](const Case& c) { return !c.is("supportReceiptOptions") && !c.is("options.supportReceiptOptions"); },
     fresh},
    {" FaxScheduleOptions FaxUserScheduleOptions FaxUser FaxServer ", " faxPageSize options.faxPageSize ",
     "not written for a server that takes no page size",
     [](const Case& c) {
         return !c.is("supportFaxPageSizeOptions") && !c.is("options.supportFaxPageSizeOptions");
     },
     fresh},
};

bool names(const char* list, const QString& name)
{
    return QLatin1String(list) == QLatin1String(" * ") ||
           QString::fromLatin1(list).contains(QLatin1Char(' ') + name + QLatin1Char(' '));
}

/// The first matching row for a field, not counting the one for every text; null if there is none.
const Exception* exceptionOf(const QString& record, const QString& field, const Case& c)
{
    const auto* row = std::find_if(std::begin(exceptions) + 1, std::end(exceptions), [&](const Exception& e) {
        return names(e.records, record) && names(e.fields, field) && e.applies(c);
    });
    return row != std::end(exceptions) ? row : nullptr;
}

} // namespace

Fields fieldsOf(const Contact& record)
{
    Fields fields;
    add(fields, "name", record.name());
    add(fields, "organization", record.organization());
    add(fields, "phone", record.phone());
    add(fields, "fax", record.fax());
    add(fields, "email", record.email());
    return fields;
}

Fields fieldsOf(const QuendraContact& record)
{
    Fields fields = fieldsOf(static_cast<const Contact&>(record));
    add(fields, "user", record.user());
    add(fields, "url", record.url().toString());
    return fields;
}

Fields fieldsOf(const QuendraContactGroup& record)
{
    Fields fields;
    add(fields, "name", record.name());
    add(fields, "description", record.description());
    add(fields, "url", record.url().toString());
    return fields;
}

Fields fieldsOf(const QuendraInfo& record)
{
    Fields fields;
    add(fields, "model", record.model());
    add(fields, "version", record.version());
    add(fields, "serial", record.serial());
    add(fields, "hostname", record.hostname());
    add(fields, "description", record.description());
    add(fields, "channels", record.channels());
    add(fields, "uptime", record.uptime());
    add(fields, "protocolVersion", number(record.protocolVersion()));
    return fields;
}

Fields fieldsOf(const CoverPage& record)
{
    Fields fields;
    add(fields, "enabled", number(record.enabled()));
    add(fields, "name", record.name());
    add(fields, "type", record.type());
    add(fields, "url", record.url().toString());
    add(fields, "subject", record.subject());
    add(fields, "comments", record.comments());
    return fields;
}

Fields fieldsOf(const FaxScheduleOptions& record)
{
    Fields fields;
    addOptions(fields, record);
    add(fields, "dateToSend", record.dateToSend().toString(Qt::ISODate));
    add(fields, "scheduleMessage", record.scheduleMessage());
    return fields;
}

Fields fieldsOf(const FaxUserScheduleOptions& record)
{
    Fields fields;
    addOptions(fields, record);
    return fields;
}

Fields fieldsOf(const FaxUser& record)
{
    Fields fields;
    addPrefixed(fields, "contact.", fieldsOf(record.contact()));
    add(fields, "usedCoverPage", number(record.isUsedCoverPage()));
    add(fields, "defaultCoverpage", record.defaultCoverpage());
    addPrefixed(fields, "options.", fieldsOf(record.faxScheduleOptions()));
    return fields;
}

Fields fieldsOf(const FaxServer& record)
{
    Fields fields;
    add(fields, "address", record.address());
    add(fields, "useSSL", number(record.useSSL()));
    add(fields, "login", record.login());
    add(fields, "password", record.password());
    addPrefixed(fields, "info.", fieldsOf(record.info()));
    fields += fieldsOf(record.user());
    return fields;
}

Fields freshServer(const FaxServer& like)
{
    FaxUser user;
    user.setSupportReceiptOptions(like.isPrintReceiptSupported());
    user.setSupportFaxPageSizeOptions(like.isFaxPageSizeSupported());
    Fields fields;
    for (const char* name : {"address", "useSSL", "login", "password"})
        add(fields, name, QString());
    addPrefixed(fields, "info.", fieldsOf(QuendraInfo()));
    return fields + fieldsOf(user);
}

QString toText(const Fields& fields)
{
    QString text;
    for (const auto& field : fields)
        text += field.first + QLatin1String(" = ") + field.second + QLatin1Char('\n');
    return text;
}

Fields readAgain(const QString& record, Form form, int version, const Fields& fields,
                 const Fields& freshFields, const Fields& again)
{
    Fields expected;
    for (int i = 0; i < fields.size(); ++i) {
        const QString& name = fields.at(i).first;
        Case c{form, version, fields.at(i).second, fields, freshFields.at(i).second, again.at(i).second};
        const Exception* row = exceptionOf(record, name, c);
        if (row && row->becomes)
            c.value = row->becomes(c);
        expected.append({name, row && row->isLast ? c.value : exceptions[0].becomes(c)});
    }
    return expected;
}

bool isRefused(const QString& record, Form form, int version, const Fields& fields)
{
    return std::any_of(fields.begin(), fields.end(), [&](const auto& field) {
        const Exception* row =
            exceptionOf(record, field.first, {form, version, field.second, fields, QString(), QString()});
        return row && !row->becomes;
    });
}
