#pragma once

#include "qdcore_global.h"

#include <QDateTime>
#include <QString>

/**
 * A date of a log entry: local time as the server writes it. A value.
 *
 * Conversion to a local time looks up the system's time zone, which takes longer than reading all other
 * fields of an entry together. So dateTime() converts on each call: of ten thousand entries that are read, a
 * few dozen are shown.
 */
class QDCORE_EXPORT EntryDate
{
public:
    /// Null.
    EntryDate() = default;
    /// An explicit date; dateTime() returns it unmodified.
    // cppcheck-suppress noExplicitConstructor ; an implicit conversion is intended
    EntryDate(const QDateTime& dateTime)
        : m_dateTime(dateTime)
    {}

    /// Parses a text such as 2026-11-15T14:30:05; null for any other text.
    static EntryDate fromText(const QString& text);

    /// Local time if it was parsed, otherwise the explicit date.
    QDateTime dateTime() const;

private:
    QDateTime m_dateTime;
    bool m_asWritten{false}; ///< m_dateTime is marked as UTC, but its date and time are local.
};
