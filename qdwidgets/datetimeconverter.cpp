#include "datetimeconverter.h"

DateTimeConverter::DateTimeConverter(QObject* parent)
    : QObject(parent)
{}

void DateTimeConverter::setFormat(const QString& format)
{
    if (m_format == format)
        return;
    m_format = format;
    Q_EMIT changed();
}

void DateTimeConverter::setLocale(const QLocale& locale)
{
    if (m_locale == locale)
        return;
    m_locale = locale;
    Q_EMIT changed();
}

void DateTimeConverter::setTimeZone(const QTimeZone& timeZone)
{
    if (m_timeZone == timeZone)
        return;
    m_timeZone = timeZone;
    Q_EMIT changed();
}

QDateTime DateTimeConverter::toZone(const QDateTime& time) const
{
    if (!time.isValid())
        return QDateTime();
    return m_timeZone.isValid() ? time.toTimeZone(m_timeZone) : time.toLocalTime();
}

QString DateTimeConverter::toText(const QDateTime& time) const
{
    const QDateTime there = toZone(time);
    if (!there.isValid())
        return QString();
    return m_format.isEmpty() ? m_locale.toString(there, QLocale::ShortFormat)
                              : m_locale.toString(there, m_format);
}
