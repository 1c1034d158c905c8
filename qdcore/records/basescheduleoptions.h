#pragma once

#include "iquendraserialization.h"
#include "qdcore_global.h"

#include <QCoreApplication>
#include <QString>

/**
 * How a fax is scheduled and reported: the common base of the two kinds of schedule options. A value.
 *
 * FaxUserScheduleOptions are the user's stored defaults, FaxScheduleOptions go with one fax.
 */
class QDCORE_EXPORT BaseScheduleOptions : public IQuendraSerialization
{
    Q_DECLARE_TR_FUNCTIONS(BaseScheduleOptions)

public:
    /// A decimal number on the wire.
    enum Priority : int { Priority0 = 0, Priority1, Priority2, Priority3, Priority4, Priority5 };
    /// When a receipt is created.
    enum Receipt : int {
        ReceiptAlways = 0,  ///< "always"
        ReceiptFailure = 1, ///< "failure"
        ReceiptNever = 2    ///< "never"
    };
    /// What is attached to the receipt that is sent by mail.
    enum ReceiptAttachment : int {
        AttachmentNone = 0, ///< "none"
        AttachmentPdf = 1,  ///< "pdf"
        AttachmentTiff = 2  ///< "tiff"
    };
    /// The size of the pages as they are sent.
    enum FaxPageSize : int {
        PageSizeAuto = 0,   ///< "auto": chosen by the server.
        PageSizeLetter = 1, ///< "letter"
        PageSizeLegal = 2,  ///< "legal"
        PageSizeA4 = 3      ///< "a4"
    };

    //@{
    /// The initial values. FaxScheduleOptions does not write an option with its default value.
    static constexpr Priority def_priority = Priority3;
    static constexpr int def_maxTries = 3;
    static constexpr int def_tryInterval = 300;
    static constexpr Receipt def_receipt = ReceiptFailure;
    static constexpr ReceiptAttachment def_receiptAttachment = AttachmentPdf;
    static constexpr FaxPageSize def_faxPageSize = PageSizeAuto;
    static constexpr Receipt def_faxReceipt = ReceiptNever;
    static constexpr bool def_isPrintFirstPage = false;
    //@}

    /// "None": the printer name shown to the user when no printer is chosen.
    static const QString none_printer;

    BaseScheduleOptions() = default;
    BaseScheduleOptions(const BaseScheduleOptions&) = default;
    BaseScheduleOptions& operator=(const BaseScheduleOptions&) = default;

    virtual ~BaseScheduleOptions();

    /// True if at least one option has its default; false only if all differ. tryNumber and the two support
    /// flags are ignored.
    virtual bool isDefault() const;

    /// 0 to 5, element "priority".
    Priority priority() const { return m_priority; }
    /// Logs an error and keeps the old value when out of range.
    void setPriority(Priority priority);

    /// The number of the current attempt as the server reports it. Element "try_number", never written.
    int tryNumber() const { return m_tryNumber; }
    void setTryNumber(int tryNumber) { m_tryNumber = tryNumber; }

    /// The number of attempts before the server gives up. Element "max_tries", in the user's record
    /// "max_attempts".
    int maxTries() const { return m_maxTries; }
    void setMaxTries(int maxTries) { m_maxTries = maxTries; }

    /// Seconds between two attempts. Element "try_interval", in the user's record "interval".
    int tryInterval() const { return m_tryInterval; }
    void setTryInterval(int seconds) { m_tryInterval = seconds; }

    /// When a receipt is sent by mail, element "receipt".
    Receipt receipt() const { return m_receipt; }
    /// Logs an error and keeps the old value when out of range.
    void setReceipt(Receipt receipt);

    /// Element "receipt_attachment".
    ReceiptAttachment receiptAttachment() const { return m_receiptAttachment; }
    /// Logs an error and keeps the old value when out of range.
    void setReceiptAttachment(ReceiptAttachment attachment);

    /// When a receipt is printed, element "print_receipt".
    Receipt faxReceipt() const { return m_faxReceipt; }
    /// Logs an error and keeps the old value when out of range.
    void setFaxReceipt(Receipt receipt);

    /// Element "fax_page_size".
    FaxPageSize faxPageSize() const { return m_faxPageSize; }
    /// Logs an error and keeps the old value when out of range.
    void setFaxPageSize(FaxPageSize size);

    /// Whether the first page of the fax is printed with the receipt, element "print_receipt_first".
    bool printWithFirstPage() const { return m_printWithFirstPage; }
    void setPrintWithFirstPage(bool print) { m_printWithFirstPage = print; }

    /// The printer of the printed receipt, none_printer when none is chosen. Element "print_receipt_printer".
    QString selectPrinter() const;
    /// none_printer chooses no printer.
    void setSelectPrinter(const QString& name);

    //@{
    /// Whether the server can print receipts; otherwise the print options are not written. A property of the
    /// server and not an option of the user, so it can be set on const objects too.
    bool isSupportReceiptOptions() const { return m_supportReceiptOptions; }
    void setSupportReceiptOptions(bool support) const { m_supportReceiptOptions = support; }
    //@}

    //@{
    /// Whether the server supports a choice of the page size, likewise.
    bool isSupporFaxPageSizeOptions() const { return m_supportFaxPageSizeOptions; }
    void setSupportFaxPageSizeOptions(bool support) const { m_supportFaxPageSizeOptions = support; }
    //@}

protected:
    //@{
    /// The texts of the enumerators on the wire, by value.
    static constexpr int m_receiptTableSize = 3;
    static constexpr int m_receiptAttachmentTableSize = 3;
    static constexpr int m_faxPageSizeTableSize = 4;
    static const QString m_receiptTable[m_receiptTableSize];
    static const QString m_receiptAttachmentTable[m_receiptAttachmentTableSize];
    static const QString m_faxPageSizeTable[m_faxPageSizeTableSize];
    //@}

    /// The index of the first entry of @p table that equals @p text, -1 when there is none or no table.
    static int getValFromString(const QString* table, int tableSize, const QString& text);

    /// The stored printer name, empty when none is chosen.
    const QString& printerName() const { return m_printer; }

private:
    Priority m_priority{def_priority};
    int m_tryNumber{0};
    int m_maxTries{def_maxTries};
    int m_tryInterval{def_tryInterval};
    Receipt m_receipt{def_receipt};
    ReceiptAttachment m_receiptAttachment{def_receiptAttachment};
    FaxPageSize m_faxPageSize{def_faxPageSize};
    Receipt m_faxReceipt{def_faxReceipt};
    QString m_printer;
    bool m_printWithFirstPage{def_isPrintFirstPage};
    mutable bool m_supportReceiptOptions{false};
    mutable bool m_supportFaxPageSizeOptions{false};
};
