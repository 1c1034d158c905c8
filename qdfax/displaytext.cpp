#include "displaytext.h"

#include "text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <iterator>

namespace {

struct Range
{
    char32_t first;
    char32_t last;
};

/// Characters of two columns (East Asian Width W and F; unassigned gaps joined). C's wcwidth() would need a
/// locale that knows them.
constexpr Range wideRanges[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},   {0x23F0, 0x23F0},
    {0x23F3, 0x23F3},   {0x25FD, 0x25FE},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267F, 0x267F},
    {0x2693, 0x2693},   {0x26A1, 0x26A1},   {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},
    {0x26CE, 0x26CE},   {0x26D4, 0x26D4},   {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},
    {0x26FA, 0x26FA},   {0x26FD, 0x26FD},   {0x2705, 0x2705},   {0x270A, 0x270B},   {0x2728, 0x2728},
    {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
    {0x27B0, 0x27B0},   {0x27BF, 0x27BF},   {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},
    {0x2E80, 0x303E},   {0x3041, 0x3247},   {0x3250, 0x4DBF},   {0x4E00, 0xA4C6},   {0xA960, 0xA97C},
    {0xAC00, 0xD7A3},   {0xF900, 0xFAD9},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6B},   {0xFF01, 0xFF60},
    {0xFFE0, 0xFFE6},   {0x16FE0, 0x1B2FB}, {0x1F004, 0x1F004}, {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E},
    {0x1F191, 0x1F19A}, {0x1F200, 0x1F320}, {0x1F32D, 0x1F335}, {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393},
    {0x1F3A0, 0x1F3CA}, {0x1F3CF, 0x1F3D3}, {0x1F3E0, 0x1F3F0}, {0x1F3F4, 0x1F3F4}, {0x1F3F8, 0x1F43E},
    {0x1F440, 0x1F440}, {0x1F442, 0x1F4FC}, {0x1F4FF, 0x1F53D}, {0x1F54B, 0x1F54E}, {0x1F550, 0x1F567},
    {0x1F57A, 0x1F57A}, {0x1F595, 0x1F596}, {0x1F5A4, 0x1F5A4}, {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5},
    {0x1F6CC, 0x1F6CC}, {0x1F6D0, 0x1F6D2}, {0x1F6D5, 0x1F6DF}, {0x1F6EB, 0x1F6EC}, {0x1F6F4, 0x1F6FC},
    {0x1F7E0, 0x1F7F0}, {0x1F90C, 0x1F93A}, {0x1F93C, 0x1F945}, {0x1F947, 0x1F9FF}, {0x1FA70, 0x1FAF6},
    {0x20000, 0x3134A},
};

bool isWide(char32_t c)
{
    if (c < wideRanges[0].first)
        return false;
    const auto* range = std::lower_bound(std::begin(wideRanges), std::end(wideRanges), c,
                                         [](const Range& r, char32_t value) { return r.last < value; });
    return range != std::end(wideRanges) && c >= range->first;
}

int charWidth(char32_t c)
{
    switch (QChar::category(c)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
        return c == 0xAD ? 1 : 0; // a soft hyphen is shown
    default:
        break;
    }
    if (c >= 0x1160 && c <= 0x11FF) // joins the syllable before it
        return 0;
    return isWide(c) ? 2 : 1;
}

bool reversesDirection(char32_t c)
{
    return c == 0x200E || c == 0x200F || c == 0x061C || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

/// Whether a terminal may interpret the character, or break the line at it.
bool isUnsafe(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029 || reversesDirection(c);
}

/// The code point at @p i; advances @p i past it. An unpaired surrogate is returned unchanged.
char32_t next(const QString& text, int& i)
{
    const QChar c = text.at(i++);
    if (c.isHighSurrogate() && i < text.size() && text.at(i).isLowSurrogate())
        return QChar::surrogateToUcs4(c, text.at(i++));
    return c.unicode();
}

} // namespace

QString printable(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < text.size();) {
        const int start = i;
        const char32_t c = next(text, i);
        if (c == '\t')
            result += QLatin1Char(' ');
        else if (c < 0x20)
            result += QChar(ushort(0x2400 + c));
        else if (c == 0x7F)
            result += QChar(0x2421);
        else if (isUnsafe(c) || QChar::isSurrogate(c))
            result += QChar(QChar::ReplacementCharacter);
        else
            result.append(text.constData() + start, i - start);
    }
    return result;
}

int displayWidth(const QString& text)
{
    int width = 0;
    for (int i = 0; i < text.size();)
        width += charWidth(next(text, i));
    return width;
}

QString cutToWidth(const QString& text, int width)
{
    if (width <= 0)
        return QString();
    int used = 0;
    int keep = 0; // the longest beginning that leaves a column for the ellipsis
    for (int i = 0; i < text.size();) {
        used += charWidth(next(text, i));
        if (used < width)
            keep = i;
        if (used > width)
            return text.left(keep) + QChar(0x2026);
    }
    return text;
}

QString sizeText(qint64 bytes)
{
    static const char* const units[] = {"B", "kB", "MB", "GB", "TB"};
    double value = double(bytes);
    size_t unit = 0;
    while (value >= 1000 && unit + 1 < std::size(units)) {
        value /= 1000;
        ++unit;
    }
    return QStringLiteral("%1 %2").arg(value, 0, 'f', unit == 0 ? 0 : 1).arg(QLatin1String(units[unit]));
}

QString durationText(qint64 seconds)
{
    const auto twoDigits = [](qint64 number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    if (seconds < 60)
        return QStringLiteral("%1 s").arg(seconds);
    if (seconds < 3600)
        return QStringLiteral("%1 min %2 s").arg(QString::number(seconds / 60), twoDigits(seconds % 60));
    return QStringLiteral("%1 h %2 min").arg(QString::number(seconds / 3600), twoDigits(seconds / 60 % 60));
}

QString transferText(const QString& name, qint64 received, qint64 total, qint64 rate, int width)
{
    const int longestName = 20;
    const int shortestName = 4; // columns; less says nothing
    const int barWidth = 12;
    const bool isKnown = total > 0;
    const bool hasTime = isKnown && rate > 0;
    const qint64 left = hasTime ? std::max<qint64>(0, total - received) / rate : 0;
    const qint64 done = std::min(received, total);

    QString text = sizeText(received);
    if (isKnown)
        text = Text::tr("%1 of %2").arg(text, sizeText(total));
    text += QStringLiteral(", %1/s").arg(sizeText(rate));
    if (hasTime)
        text += Text::tr(", %1 left").arg(durationText(left));
    if (isKnown) {
        const int full = int(done * barWidth / total);
        const QString bar =
            QStringLiteral("[%1%2] %3 %, ")
                .arg(QString(full, QLatin1Char('#')), QString(barWidth - full, QLatin1Char('.')),
                     QString::number(done * 100 / total));
        if (displayWidth(bar + text) <= width)
            text.prepend(bar);
    }
    if (displayWidth(text) > width) {
        text = QStringLiteral("%1, %2/s").arg(sizeText(received), sizeText(rate));
        if (hasTime) {
            text += QStringLiteral(", %1:%2:%3")
                        .arg(left / 3600)
                        .arg(left / 60 % 60, 2, 10, QLatin1Char('0'))
                        .arg(left % 60, 2, 10, QLatin1Char('0'));
        }
    }
    const int room = std::min(longestName, width - displayWidth(text) - 1);
    return room < shortestName ? text : cutToWidth(printable(name), room) + QLatin1Char(' ') + text;
}

QByteArray jsonText(const QJsonValue& value)
{
    const QJsonDocument document =
        value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    const QString text = QString::fromUtf8(document.toJson(QJsonDocument::Indented));
    QString escaped;
    int copied = 0;
    for (int i = 0; i < text.size(); ++i) {
        const ushort c = text.at(i).unicode();
        if (c < 0x7F || !isUnsafe(c))
            continue;
        escaped.append(text.constData() + copied, i - copied);
        escaped += QStringLiteral("\\u%1").arg(c, 4, 16, QLatin1Char('0'));
        copied = i + 1;
    }
    escaped.append(text.constData() + copied, text.size() - copied);
    return escaped.toUtf8();
}
