#pragma once

#include "basescheduleoptions.h"

/**
 * The user's stored defaults for scheduling a fax, part of the user's profile. A value.
 *
 * Two fields have other names than in FaxScheduleOptions: maxAttempts is maxTries, interval is tryInterval.
 */
class QDCORE_EXPORT FaxUserScheduleOptions : public BaseScheduleOptions
{
public:
    FaxUserScheduleOptions() = default;
    FaxUserScheduleOptions(const FaxUserScheduleOptions&) = default;
    FaxUserScheduleOptions& operator=(const FaxUserScheduleOptions&) = default;

    /// "priority", "max_attempts", "interval", "receipt" and "receipt_attachment" are required: false, and
    /// nothing changed, when one is missing. The print options and the page size are read if present.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends every option, the print options and the page size only when the server supports them. Always
    /// true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~FaxUserScheduleOptions() override;

    /// Element "max_attempts".
    int maxAttempts() const { return maxTries(); }
    void setMaxAttempts(int attempts) { setMaxTries(attempts); }

    /// Seconds between two attempts. Element "interval".
    int interval() const { return tryInterval(); }
    void setInterval(int seconds) { setTryInterval(seconds); }
};
