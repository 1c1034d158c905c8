#include "faxuserscheduleoptions.h"

#include "domtext_p.h"
#include "recordfields_p.h"

FaxUserScheduleOptions::~FaxUserScheduleOptions() = default;

bool FaxUserScheduleOptions::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
    QString priority;
    QString attempts;
    QString interval;
    if (!children.read(QStringLiteral("priority"), priority) ||
        !children.read(QStringLiteral("max_attempts"), attempts) ||
        !children.read(QStringLiteral("interval"), interval) || !children.has(QStringLiteral("receipt")) ||
        !children.has(QStringLiteral("receipt_attachment")))
        return false;

    if (!priority.isEmpty())
        setPriority(static_cast<Priority>(priority.toInt()));
    if (!attempts.isEmpty())
        setMaxAttempts(attempts.toInt());
    if (!interval.isEmpty())
        setInterval(interval.toInt());
    readReceipt(*this, children);
    readReceiptAttachment(*this, children);
    readPrintOptions(*this, children);
    return true;
}

bool FaxUserScheduleOptions::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    appendText(document, parent, QStringLiteral("priority"), QString::number(priority()));
    appendText(document, parent, QStringLiteral("max_attempts"), QString::number(maxAttempts()));
    appendText(document, parent, QStringLiteral("interval"), QString::number(interval()));
    appendText(document, parent, QStringLiteral("receipt"), m_receiptTable[receipt()]);
    appendText(document, parent, QStringLiteral("receipt_attachment"),
               m_receiptAttachmentTable[receiptAttachment()]);
    if (isSupportReceiptOptions()) {
        appendText(document, parent, QStringLiteral("print_receipt"), m_receiptTable[faxReceipt()]);
        appendText(document, parent, QStringLiteral("print_receipt_printer"), printerName());
        appendText(document, parent, QStringLiteral("print_receipt_first"), boolText(printWithFirstPage()));
    }
    if (isSupporFaxPageSizeOptions())
        appendText(document, parent, QStringLiteral("fax_page_size"), m_faxPageSizeTable[faxPageSize()]);
    return true;
}
