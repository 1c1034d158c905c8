#pragma once

// Parses the dates of the web service. Internal: not installed, not exported.

#include <QDateTime>

/// Parses a text as UTC in @p format, which is "yyyy-MM-ddThh:mm:ss" or the same with "HH". Null if the text
/// is not such a date.
QDateTime utcFromText(const QString& text, const QString& format);
