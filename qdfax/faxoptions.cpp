#include "faxoptions.h"

#include "command.h"
#include "faxserver.h"
#include "parsing.h"
#include "recordjson.h"
#include "text.h"

namespace {

const int mostTries = 999;
const int longestInterval = 7 * 24 * 3600; // s

/// Reads one of the options by @p parse, if given; false, with the error printed, if it is invalid.
template <typename Parse>
bool readOption(const Invocation& call, const char* name, std::optional<int>& choice, Parse parse)
{
    if (!call.isSet(name))
        return true;
    QString error;
    choice = parse(call.value(name), &error);
    if (!choice)
        call.failOption(name, error);
    return choice.has_value();
}

auto integer(int least, int greatest)
{
    return [=](const QString& text, QString* error) { return parseInteger(text, least, greatest, error); };
}

auto word(const QStringList& words)
{
    return [=](const QString& text, QString* error) { return parseChoice(text, words, error); };
}

QString alternatives(const QStringList& words)
{
    return words.join(QLatin1Char('|'));
}

} // namespace

QList<QCommandLineOption> ScheduleChoices::options()
{
    return {
        {QStringLiteral("priority"), Text::tr("Priority from 0 to 5."), QStringLiteral("0..5")},
        {QStringLiteral("max-tries"), Text::tr("How often to try."), QStringLiteral("N")},
        {QStringLiteral("retry-interval"), Text::tr("Seconds between two tries."), QStringLiteral("SECONDS")},
        {QStringLiteral("receipt"), Text::tr("When to mail a receipt."), alternatives(receiptWords())},
        {QStringLiteral("receipt-attachment"), Text::tr("What to attach to the receipt."),
         alternatives(attachmentWords())},
        {QStringLiteral("page-size"), Text::tr("Page size of the fax."), alternatives(pageSizeWords())},
        {QStringLiteral("print-receipt"), Text::tr("When to print a receipt on the server's printer."),
         alternatives(receiptWords())},
        {QStringLiteral("printer"), Text::tr("The printer for it; None for none."), QStringLiteral("NAME")},
        {QStringLiteral("print-first-page"), Text::tr("Whether to print the first page with it."),
         QStringLiteral("yes|no")},
    };
}

std::optional<ScheduleChoices> ScheduleChoices::read(const Invocation& call)
{
    ScheduleChoices choices;
    std::optional<int> firstPage;
    if (!readOption(call, "priority", choices.m_priority, integer(0, 5)) ||
        !readOption(call, "max-tries", choices.m_maxTries, integer(1, mostTries)) ||
        !readOption(call, "retry-interval", choices.m_tryInterval, integer(0, longestInterval)) ||
        !readOption(call, "receipt", choices.m_receipt, word(receiptWords())) ||
        !readOption(call, "receipt-attachment", choices.m_receiptAttachment, word(attachmentWords())) ||
        !readOption(call, "page-size", choices.m_pageSize, word(pageSizeWords())) ||
        !readOption(call, "print-receipt", choices.m_printReceipt, word(receiptWords())) ||
        !readOption(call, "print-first-page", firstPage, word({QStringLiteral("no"), QStringLiteral("yes")})))
        return std::nullopt;
    if (firstPage)
        choices.m_printFirstPage = *firstPage == 1;
    if (call.isSet("printer")) {
        QString error;
        if (!checkText(call.value("printer"), false, &error)) {
            call.failOption("printer", error);
            return std::nullopt;
        }
        choices.m_printer = call.value("printer");
    }
    return choices;
}

bool ScheduleChoices::isEmpty() const
{
    return !m_priority && !m_maxTries && !m_tryInterval && !m_receipt && !m_receiptAttachment &&
           !m_pageSize && !m_printReceipt && !m_printer && !m_printFirstPage;
}

QString ScheduleChoices::problem(const FaxServer& server) const
{
    // the library would silently leave out options that the server does not support
    if (m_pageSize && !server.isFaxPageSizeSupported()) {
        return Text::tr(
                   "Version %1 of this server does not let the page size be chosen. Leave out --page-size.")
            .arg(server.info().version());
    }
    if ((m_printReceipt || m_printer || m_printFirstPage) && !server.isPrintReceiptSupported()) {
        return Text::tr(
                   "Version %1 of this server does not print receipts. Leave out --print-receipt, --printer "
                   "and --print-first-page.")
            .arg(server.info().version());
    }
    return QString();
}

void ScheduleChoices::applyTo(BaseScheduleOptions& options) const
{
    if (m_priority)
        options.setPriority(BaseScheduleOptions::Priority(*m_priority));
    if (m_maxTries)
        options.setMaxTries(*m_maxTries);
    if (m_tryInterval)
        options.setTryInterval(*m_tryInterval);
    if (m_receipt)
        options.setReceipt(BaseScheduleOptions::Receipt(*m_receipt));
    if (m_receiptAttachment)
        options.setReceiptAttachment(BaseScheduleOptions::ReceiptAttachment(*m_receiptAttachment));
    if (m_pageSize)
        options.setFaxPageSize(BaseScheduleOptions::FaxPageSize(*m_pageSize));
    if (m_printReceipt)
        options.setFaxReceipt(BaseScheduleOptions::Receipt(*m_printReceipt));
    if (m_printer)
        options.setSelectPrinter(*m_printer);
    if (m_printFirstPage)
        options.setPrintWithFirstPage(*m_printFirstPage);
}
