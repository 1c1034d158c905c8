#include "datetext_p.h"

namespace {

/// Parses @p digits ASCII digits at @p at as a number; -1 if there are other characters.
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

/// Parses a text of exactly the form 2026-11-15T14:30:05.
bool readPlain(const QString& text, QDate& date, QTime& time)
{
    const QChar* at = text.constData();
    if (text.size() != 19 || at[4] != QLatin1Char('-') || at[7] != QLatin1Char('-') ||
        at[10] != QLatin1Char('T') || at[13] != QLatin1Char(':') || at[16] != QLatin1Char(':'))
        return false;
    const int year = number(at, 4);
    if (year < 0) // -1 would be a valid year
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

    // Qt's parser needs more time for one date than reading all other fields of a log entry takes. It is
    // still used for texts of any other form.
    QDate date;
    QTime time;
    if (!readPlain(text, date, time)) {
        const QDateTime parsed = QDateTime::fromString(text, format);
        date = parsed.date();
        time = parsed.time();
    }
    return date.isNull() ? QDateTime() : QDateTime(date, time, Qt::UTC);
}
