#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

// Text for a terminal. Text from a server is untrusted: it must pass through printable() before it is
// written to a terminal.

/// One line without control or escape sequences: control characters, line breaks and bidirectional controls
/// become control pictures or the replacement character.
QString printable(const QString& text);

/// The number of terminal columns that printable text takes: two for wide characters, none for marks.
int displayWidth(const QString& text);

/// The text itself when it fits into @p width columns, else its beginning and an ellipsis. Never wider than
/// @p width, and never cut inside a character or between a character and its marks.
QString cutToWidth(const QString& text, int width);

/// "512 B", "1.4 MB".
QString sizeText(qint64 bytes);

/// "42 s", "3 min 05 s", "2 h 07 min".
QString durationText(qint64 seconds);

/// The progress of a transfer in at most @p width columns: the name, a bar, the size, the rate (bytes a
/// second) and the time left. If the width is too small, the name is dropped first, then the bar, then other
/// parts. @p total -1: not known.
QString transferText(const QString& name, qint64 received, qint64 total, qint64 rate, int width);

/// An array or object as indented UTF-8. Control characters are written as JSON escapes, so that the text is
/// harmless on a terminal and equivalent for a JSON parser.
QByteArray jsonText(const QJsonValue& value);
