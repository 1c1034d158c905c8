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
    if (!m_format.isEmpty())
        return m_locale.toString(there, m_format);
    // the short format of no locale at all is a long one, with the month in English
    if (m_locale.language() == QLocale::C)
        return there.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    return m_locale.toString(there, QLocale::ShortFormat);
}
