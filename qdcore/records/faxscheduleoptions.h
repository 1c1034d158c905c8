#pragma once

#include "basescheduleoptions.h"

#include <QDateTime>

/**
 * The schedule options of one fax, sent with it and reported back in the status log. A value.
 */
class QDCORE_EXPORT FaxScheduleOptions : public BaseScheduleOptions
{
public:
    FaxScheduleOptions() = default;
    FaxScheduleOptions(const FaxScheduleOptions&) = default;
    FaxScheduleOptions& operator=(const FaxScheduleOptions&) = default;

    //@{
    /// Copies the common options; date and message are unchanged. An implicit conversion, so that a fax
    /// accepts FaxUser::faxScheduleOptions() directly.
    // cppcheck-suppress noExplicitConstructor
    FaxScheduleOptions(const BaseScheduleOptions& options);
    FaxScheduleOptions& operator=(const BaseScheduleOptions& options);
    //@}

    /// Reads each option whose element is present; only "try_number" and "max_tries" become 0 without one.
    /// Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends only what differs from the defaults, "schedule_all_at" only when it lies in the future; the
    /// print options and the page size only when the server supports them. Always true. Not a lossless round
    /// trip: an omitted option reads back as the reader's value, so max_tries 3 is read as 0.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~FaxScheduleOptions() override;

    /// As in the base, and also true without a date to send.
    bool isDefault() const override;

    /// When the fax is to be sent, local time; null: now. Element "schedule_all_at", which is UTC.
    const QDateTime& dateToSend() const { return m_dateToSend; }
    void setDateToSend(const QDateTime& dateTime) { m_dateToSend = dateTime; }

    /// The server's message about the fax. Element "schedule_message", never written.
    const QString& scheduleMessage() const { return m_scheduleMessage; }
    void setScheduleMessage(const QString& message) { m_scheduleMessage = message; }

private:
    QDateTime m_dateToSend;
    QString m_scheduleMessage;
};
