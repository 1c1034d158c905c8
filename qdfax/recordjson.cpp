#include "recordjson.h"

#include "faxentry.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "quendrainfo.h"
#include "text.h"

#include <QJsonArray>

namespace {

const char* stateWord(BaseFaxEntry::FaxEntryState state)
{
    switch (state) {
    case BaseFaxEntry::StateUnknown:
        break;
    case BaseFaxEntry::StatePreprocessing:
        return QT_TRANSLATE_NOOP("qdfax", "preprocessing");
    case BaseFaxEntry::StatePending:
        return QT_TRANSLATE_NOOP("qdfax", "pending");
    case BaseFaxEntry::StateSending:
        return QT_TRANSLATE_NOOP("qdfax", "sending");
    case BaseFaxEntry::StateSent:
        return QT_TRANSLATE_NOOP("qdfax", "sent");
    case BaseFaxEntry::StateComplete:
        return QT_TRANSLATE_NOOP("qdfax", "complete");
    case BaseFaxEntry::StateAborted:
        return QT_TRANSLATE_NOOP("qdfax", "aborted");
    case BaseFaxEntry::StateFailed:
        return QT_TRANSLATE_NOOP("qdfax", "failed");
    case BaseFaxEntry::StateApprovalPending:
        return QT_TRANSLATE_NOOP("qdfax", "approval_pending");
    case BaseFaxEntry::StateRejected:
        return QT_TRANSLATE_NOOP("qdfax", "rejected");
    }
    return QT_TRANSLATE_NOOP("qdfax", "unknown");
}

} // namespace

QStringList receiptWords()
{
    return {QStringLiteral("always"), QStringLiteral("failure"), QStringLiteral("never")};
}

QStringList attachmentWords()
{
    return {QStringLiteral("none"), QStringLiteral("pdf"), QStringLiteral("tiff")};
}

QStringList pageSizeWords()
{
    return {QStringLiteral("auto"), QStringLiteral("letter"), QStringLiteral("legal"), QStringLiteral("a4")};
}

QString stateText(BaseFaxEntry::FaxEntryState state)
{
    return QLatin1String(stateWord(state));
}

QString stateForPeople(BaseFaxEntry::FaxEntryState state)
{
    return Text::tr(stateWord(state));
}

QString urlText(const QUrl& url)
{
    return url.toString(QUrl::FullyEncoded | QUrl::RemovePassword);
}

QString timeText(const QDateTime& time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

QJsonValue toJson(const QDateTime& time)
{
    return time.isValid() ? QJsonValue(time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"))) : QJsonValue();
}

QJsonObject toJson(const QuendraInfo& info)
{
    return {{QStringLiteral("model"), info.model()},
            {QStringLiteral("version"), info.version()},
            {QStringLiteral("serial"), info.serial()},
            {QStringLiteral("hostname"), info.hostname()},
            {QStringLiteral("description"), info.description()},
            {QStringLiteral("channels"), info.channels()},
            {QStringLiteral("uptime"), info.uptime()},
            {QStringLiteral("protocolVersion"), info.protocolVersion()}};
}

QJsonObject toJson(const Contact& contact)
{
    return {{QStringLiteral("name"), contact.name()},
            {QStringLiteral("organization"), contact.organization()},
            {QStringLiteral("phone"), contact.phone()},
            {QStringLiteral("fax"), contact.fax()},
            {QStringLiteral("email"), contact.email()}};
}

QJsonObject toJson(const BaseScheduleOptions& options)
{
    return {{QStringLiteral("priority"), options.priority()},
            {QStringLiteral("maxTries"), options.maxTries()},
            {QStringLiteral("retryInterval"), options.tryInterval()},
            {QStringLiteral("receipt"), receiptWords().value(options.receipt())},
            {QStringLiteral("receiptAttachment"), attachmentWords().value(options.receiptAttachment())},
            {QStringLiteral("pageSize"), pageSizeWords().value(options.faxPageSize())},
            {QStringLiteral("printReceipt"), receiptWords().value(options.faxReceipt())},
            {QStringLiteral("printer"), options.selectPrinter()},
            {QStringLiteral("printFirstPage"), options.printWithFirstPage()}};
}

QJsonObject toJson(const CoverPage& page)
{
    return {{QStringLiteral("enabled"), page.enabled()}, {QStringLiteral("name"), page.name()},
            {QStringLiteral("type"), page.type()},       {QStringLiteral("url"), urlText(page.url())},
            {QStringLiteral("subject"), page.subject()}, {QStringLiteral("comments"), page.comments()}};
}

QJsonObject toJson(const FaxEntry& entry)
{
    QJsonObject from = toJson(entry.from());
    from.insert(QStringLiteral("user"), entry.from().user());
    from.insert(QStringLiteral("url"), urlText(entry.from().url()));
    QJsonObject schedule = toJson(entry.schedule());
    schedule.insert(QStringLiteral("sendAt"), toJson(entry.schedule().dateToSend()));
    schedule.insert(QStringLiteral("try"), entry.schedule().tryNumber());
    schedule.insert(QStringLiteral("message"), entry.schedule().scheduleMessage());
    return {{QStringLiteral("state"), stateText(entry.state())},
            {QStringLiteral("url"), urlText(entry.url())},
            {QStringLiteral("previewUrl"), urlText(entry.previewUrl())},
            {QStringLiteral("created"), toJson(entry.createTime())},
            {QStringLiteral("stateChanged"), toJson(entry.changeStateTime())},
            {QStringLiteral("pages"), entry.pages()},
            {QStringLiteral("agent"), entry.agent()},
            {QStringLiteral("from"), from},
            {QStringLiteral("to"), toJson(entry.to())},
            {QStringLiteral("coverPage"), toJson(entry.coverPage())},
            {QStringLiteral("schedule"), schedule},
            {QStringLiteral("approver"), entry.approver()},
            {QStringLiteral("approved"), toJson(entry.approverTime())}};
}

QJsonObject toJson(const OutboundFaxEntry& entry)
{
    const QJsonObject from{{QStringLiteral("name"), entry.senderName()},
                           {QStringLiteral("organization"), entry.senderOrganization()},
                           {QStringLiteral("phone"), entry.senderPhone()},
                           {QStringLiteral("fax"), entry.senderFax()},
                           {QStringLiteral("email"), entry.senderEmail()}};
    const QJsonObject to{{QStringLiteral("name"), entry.recepientName()},
                         {QStringLiteral("organization"), entry.recepientOrganization()},
                         {QStringLiteral("phone"), entry.recepientPhone()},
                         {QStringLiteral("fax"), entry.recepientFax()}};
    return {{QStringLiteral("state"), stateText(entry.state())},
            {QStringLiteral("url"), urlText(entry.entryUrl())},
            {QStringLiteral("previewUrl"), urlText(entry.previewUrl())},
            {QStringLiteral("started"), toJson(entry.startTime())},
            {QStringLiteral("ended"), toJson(entry.sentAt())},
            {QStringLiteral("pages"), entry.pages()},
            {QStringLiteral("subject"), entry.subject()},
            {QStringLiteral("agent"), entry.agent()},
            {QStringLiteral("user"), entry.username()},
            {QStringLiteral("from"), from},
            {QStringLiteral("to"), to},
            {QStringLiteral("coverPage"), toJson(entry.coverPage())}};
}

QJsonObject toJson(const InboundFaxEntry& entry)
{
    return {{QStringLiteral("state"), stateText(entry.state())},
            {QStringLiteral("status"), entry.status()},
            {QStringLiteral("file"), entry.filename()},
            {QStringLiteral("location"), urlText(entry.location())},
            {QStringLiteral("completed"), toJson(entry.completeTime())},
            {QStringLiteral("pages"), entry.pages()},
            {QStringLiteral("to"), entry.toName()},
            {QStringLiteral("remoteId"), entry.remoteId()},
            {QStringLiteral("error"), entry.error()},
            {QStringLiteral("deliveredTo"), entry.deliveredTo()},
            {QStringLiteral("deliveredType"), entry.deliveredType()},
            {QStringLiteral("deliveredDestination"), entry.deliveredDestination()},
            {QStringLiteral("channel"), entry.channel()},
            {QStringLiteral("modem"), entry.modem()},
            {QStringLiteral("extension"), entry.extension()}};
}
