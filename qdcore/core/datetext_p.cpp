#include "datetext_p.h"

namespace {

/// The number that @p digits digits from @p at on spell, -1 if they are not all ASCII digits.
int number(const QChar* at, int digits)
{
    int value = 0;
    for (int i = 0; i < digits; ++i) {
        const int digit = at[i].unicode() - '0';
        if (digit < 0 || digit > 9)
            return -1;
        value = value * 10 + digit;
    }
    return value;
}

/// Reads a text that has exactly the shape of 2026-11-15T14:30:05.
bool readPlain(const QString& text, QDate& date, QTime& time)
{
    const QChar* at = text.constData();
    if (text.size() != 19 || at[4] != QLatin1Char('-') || at[7] != QLatin1Char('-') ||
        at[10] != QLatin1Char('T') || at[13] != QLatin1Char(':') || at[16] != QLatin1Char(':'))
        return false;
    const int year = number(at, 4);
    if (year < 0) // -1 would be a year.
        return false;
    date = QDate(year, number(at + 5, 2), number(at + 8, 2));
    time = QTime(number(at + 11, 2), number(at + 14, 2), number(at + 17, 2));
    return date.isValid() && time.isValid();
}

} // namespace

QDateTime utcFromText(const QString& text, const QString& format)
{
    if (text.isEmpty())
        return QDateTime();

    // Qt's parser takes longer over one date than over all other fields of a log entry together. It still
    // decides about every text of another shape.
    QDate date;
    QTime time;
    if (!readPlain(text, date, time)) {
        const QDateTime parsed = QDateTime::fromString(text, format);
        date = parsed.date();
        time = parsed.time();
    }
    return date.isNull() ? QDateTime() : QDateTime(date, time, Qt::UTC);
}
