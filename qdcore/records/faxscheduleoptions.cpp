#include "faxscheduleoptions.h"

#include "datetext_p.h"
#include "domtext_p.h"
#include "recordfields_p.h"

FaxScheduleOptions::FaxScheduleOptions(const BaseScheduleOptions& options)
    : BaseScheduleOptions(options)
{}

FaxScheduleOptions& FaxScheduleOptions::operator=(const BaseScheduleOptions& options)
{
    BaseScheduleOptions::operator=(options);
    return *this;
}

FaxScheduleOptions::~FaxScheduleOptions() = default;

bool FaxScheduleOptions::isDefault() const
{
    return BaseScheduleOptions::isDefault() || m_dateToSend.isNull();
}

bool FaxScheduleOptions::readFax(const QDomElement& element, int)
{
    return readFields(*this, DomChildren(element));
}

bool readFields(FaxScheduleOptions& options, const DomChildren& children)
{
    QString text = children.text(QStringLiteral("schedule_all_at"));
    if (!text.isEmpty())
        options.setDateToSend(utcFromText(text, QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toLocalTime());
    text = children.text(QStringLiteral("priority"));
    if (!text.isEmpty())
        options.setPriority(static_cast<FaxScheduleOptions::Priority>(text.toInt()));
    options.setTryNumber(children.number(QStringLiteral("try_number")));
    options.setMaxTries(children.number(QStringLiteral("max_tries")));
    text = children.text(QStringLiteral("try_interval"));
    if (!text.isEmpty())
        options.setTryInterval(text.toInt());
    readReceipt(options, children);
    if (children.read(QStringLiteral("schedule_message"), text))
        options.setScheduleMessage(text);
    readReceiptAttachment(options, children);
    readPrintOptions(options, children);
    return true;
}

bool FaxScheduleOptions::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    if (!m_dateToSend.isNull() && QDateTime::currentDateTime() < m_dateToSend) {
        appendText(document, parent, QStringLiteral("schedule_all_at"),
                   m_dateToSend.toUTC().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss")));
    }
    if (priority() != def_priority)
        appendText(document, parent, QStringLiteral("priority"), QString::number(priority()));
    if (maxTries() != def_maxTries)
        appendText(document, parent, QStringLiteral("max_tries"), QString::number(maxTries()));
    if (tryInterval() != def_tryInterval)
        appendText(document, parent, QStringLiteral("try_interval"), QString::number(tryInterval()));
    if (receipt() != def_receipt)
        appendText(document, parent, QStringLiteral("receipt"), m_receiptTable[receipt()]);
    if (receiptAttachment() != def_receiptAttachment) {
        appendText(document, parent, QStringLiteral("receipt_attachment"),
                   m_receiptAttachmentTable[receiptAttachment()]);
    }
    if (isSupportReceiptOptions()) {
        if (faxReceipt() != def_faxReceipt)
            appendText(document, parent, QStringLiteral("print_receipt"), m_receiptTable[faxReceipt()]);
        appendTextIfSet(document, parent, QStringLiteral("print_receipt_printer"), printerName());
        if (printWithFirstPage())
            appendText(document, parent, QStringLiteral("print_receipt_first"), boolText(true));
    }
    if (isSupporFaxPageSizeOptions())
        appendText(document, parent, QStringLiteral("fax_page_size"), m_faxPageSizeTable[faxPageSize()]);
    return true;
}
