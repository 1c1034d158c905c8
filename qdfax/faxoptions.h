#pragma once

#include "basescheduleoptions.h"

#include <QCommandLineOption>
#include <QList>
#include <QString>

#include <optional>

class FaxServer;
class Invocation;

/// The scheduling options common to a fax and the user's defaults, as given on the command line. An option
/// that was not given changes nothing.
class ScheduleChoices
{
public:
    /// The options themselves.
    static QList<QCommandLineOption> options();

    /// Reads them. Nothing, with the error printed, if one is invalid.
    static std::optional<ScheduleChoices> read(const Invocation& call);

    bool isEmpty() const;

    /// Empty if the server supports the chosen options, else an error text.
    QString problem(const FaxServer& server) const;

    void applyTo(BaseScheduleOptions& options) const;

private:
    std::optional<int> m_priority;
    std::optional<int> m_maxTries;
    std::optional<int> m_tryInterval;
    std::optional<int> m_receipt;
    std::optional<int> m_receiptAttachment;
    std::optional<int> m_pageSize;
    std::optional<int> m_printReceipt;
    std::optional<QString> m_printer;
    std::optional<bool> m_printFirstPage;
};
