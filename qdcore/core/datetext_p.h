#pragma once

// Dates as the web service writes them. Internal: not installed, not exported.

#include <QDateTime>

/// The date of a text in @p format, one of the two spellings of "yyyy-MM-ddThh:mm:ss" (capital HH or not),
/// taken as UTC. Null when the text is no such date.
QDateTime utcFromText(const QString& text, const QString& format);
