#include "basescheduleoptions.h"

#include "domtext_p.h"
#include "enumtext_p.h"
#include "log_p.h"
#include "recordfields_p.h"

const QString BaseScheduleOptions::none_printer = QStringLiteral("None");

const QString BaseScheduleOptions::m_receiptTable[] = {
    QStringLiteral("always"),
    QStringLiteral("failure"),
    QStringLiteral("never"),
};
const QString BaseScheduleOptions::m_receiptAttachmentTable[] = {
    QStringLiteral("none"),
    QStringLiteral("pdf"),
    QStringLiteral("tiff"),
};
const QString BaseScheduleOptions::m_faxPageSizeTable[] = {
    QStringLiteral("auto"),
    QStringLiteral("letter"),
    QStringLiteral("legal"),
    QStringLiteral("a4"),
};

namespace {

/// Whether a value that may have been parsed from a text is in the range 0 to @p last.
bool inRange(int value, int last)
{
    return static_cast<unsigned int>(value) <= static_cast<unsigned int>(last);
}

} // namespace

BaseScheduleOptions::~BaseScheduleOptions() = default;

bool BaseScheduleOptions::isDefault() const
{
    return m_priority == def_priority || m_maxTries == def_maxTries || m_tryInterval == def_tryInterval ||
           m_receipt == def_receipt || m_receiptAttachment == def_receiptAttachment ||
           m_faxReceipt == def_faxReceipt || m_printer.isEmpty() ||
           m_printWithFirstPage == def_isPrintFirstPage || m_faxPageSize == def_faxPageSize;
}

void BaseScheduleOptions::setPriority(Priority priority)
{
    if (inRange(priority, Priority5))
        m_priority = priority;
    else
        QD_LOG(ERROR, tr("BaseScheduleOptions: Priority is out of range!", "Logger"));
}

void BaseScheduleOptions::setReceipt(Receipt receipt)
{
    if (inRange(receipt, ReceiptNever))
        m_receipt = receipt;
    else
        QD_LOG(ERROR, tr("BaseScheduleOptions: Receipt is out of range!", "Logger"));
}

void BaseScheduleOptions::setReceiptAttachment(ReceiptAttachment attachment)
{
    if (inRange(attachment, AttachmentTiff))
        m_receiptAttachment = attachment;
    else
        QD_LOG(ERROR, tr("BaseScheduleOptions: ReceipAttachment is out of range!", "Logger"));
}

void BaseScheduleOptions::setFaxReceipt(Receipt receipt)
{
    if (inRange(receipt, ReceiptNever))
        m_faxReceipt = receipt;
    else
        QD_LOG(ERROR, tr("BaseScheduleOptions: Receipt is out of range!", "Logger"));
}

void BaseScheduleOptions::setFaxPageSize(FaxPageSize size)
{
    if (inRange(size, PageSizeA4))
        m_faxPageSize = size;
    else
        QD_LOG(ERROR, tr("BaseScheduleOptions: fax page size is out of range!", "Logger"));
}

QString BaseScheduleOptions::selectPrinter() const
{
    return m_printer.isEmpty() ? none_printer : m_printer;
}

void BaseScheduleOptions::setSelectPrinter(const QString& name)
{
    m_printer = name == none_printer ? QString() : name;
}

int BaseScheduleOptions::getValFromString(const QString* table, int tableSize, const QString& text)
{
    return indexOfText(table, tableSize, text);
}

// --- Reading

namespace {

/// The tables of texts, for the functions below.
struct Texts : BaseScheduleOptions
{
    static int receipt(const QString& text)
    {
        return getValFromString(m_receiptTable, m_receiptTableSize, text);
    }
    static int attachment(const QString& text)
    {
        return getValFromString(m_receiptAttachmentTable, m_receiptAttachmentTableSize, text);
    }
    static int pageSize(const QString& text)
    {
        return getValFromString(m_faxPageSizeTable, m_faxPageSizeTableSize, text);
    }
};

} // namespace

void readReceipt(BaseScheduleOptions& options, const DomChildren& children)
{
    QString text;
    if (children.read(QStringLiteral("receipt"), text))
        options.setReceipt(static_cast<Texts::Receipt>(Texts::receipt(text)));
}

void readReceiptAttachment(BaseScheduleOptions& options, const DomChildren& children)
{
    QString text;
    if (children.read(QStringLiteral("receipt_attachment"), text))
        options.setReceiptAttachment(static_cast<Texts::ReceiptAttachment>(Texts::attachment(text)));
}

void readPrintOptions(BaseScheduleOptions& options, const DomChildren& children)
{
    QString text;
    if (children.read(QStringLiteral("print_receipt"), text))
        options.setFaxReceipt(static_cast<Texts::Receipt>(Texts::receipt(text)));
    if (children.read(QStringLiteral("print_receipt_printer"), text))
        options.setSelectPrinter(text);
    if (children.read(QStringLiteral("print_receipt_first"), text)) {
        // The only boolean that is parsed leniently; any other text leaves it unchanged.
        text = text.toLower().trimmed();
        if (text == QLatin1String("true"))
            options.setPrintWithFirstPage(true);
        else if (text == QLatin1String("false"))
            options.setPrintWithFirstPage(false);
    }
    if (children.read(QStringLiteral("fax_page_size"), text))
        options.setFaxPageSize(static_cast<Texts::FaxPageSize>(Texts::pageSize(text)));
}
