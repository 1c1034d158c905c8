#include "datetext_p.h"

QDateTime dateTimeFromText(const QString& text, const QString& format, Qt::TimeSpec spec)
{
    QDateTime dateTime = QDateTime::fromString(text, format);
    if (!dateTime.isValid())
        return QDateTime();
    dateTime.setTimeSpec(spec);
    return dateTime;
}
