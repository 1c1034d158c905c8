#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

// Text as a terminal shows it. What comes from a server is foreign text: it passes through printable() before
// it reaches a terminal.

/// One line without anything that a terminal obeys: control characters become their pictures or a replacement
/// character, line breaks and marks that reverse the writing direction included.
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

/// How a transfer goes in at most @p width columns: the name, a bar, the size, the rate (bytes a second) and
/// the time left. Where it is narrow the name goes first, then the bar, then what else can be done without.
/// @p total -1: not known.
QString transferText(const QString& name, qint64 received, qint64 total, qint64 rate, int width);

/// An array or object as indented UTF-8. Characters that a terminal obeys are written as escapes, so that the
/// text is the same for a JSON reader and harmless on a screen.
QByteArray jsonText(const QJsonValue& value);
