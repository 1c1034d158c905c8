#pragma once

#include "qdcore_global.h"

#include <QDateTime>
#include <QString>

/**
 * A date of a log entry: local time as the server writes it. A value.
 *
 * Making a local time of a date and an hour asks the system about its time zone, which takes longer than
 * reading all other fields of an entry together. So it happens each time the date is asked for: of ten
 * thousand entries that are read a few dozen are shown.
 */
class QDCORE_EXPORT EntryDate
{
public:
    /// Null.
    EntryDate() = default;
    /// A date that is given and not read; dateTime() returns it as it is.
    // cppcheck-suppress noExplicitConstructor ; a date may stand for it
    EntryDate(const QDateTime& dateTime)
        : m_dateTime(dateTime)
    {}

    /// The date of a text such as 2026-11-15T14:30:05; null for any other text.
    static EntryDate fromText(const QString& text);

    /// Local time when it was read, else as it was given.
    QDateTime dateTime() const;

private:
    QDateTime m_dateTime;
    bool m_asWritten{false}; ///< m_dateTime calls itself UTC, but its date and time are local.
};
