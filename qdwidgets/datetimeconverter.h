#pragma once

#include "qdwidgets_global.h"

#include <QDateTime>
#include <QLocale>
#include <QObject>
#include <QString>
#include <QTimeZone>

/**
 * Turns moments into texts: one place for the format, the locale and the time zone in which an application
 * shows times.
 *
 * Owned by the application, which hands it to those who show times; it must outlive them. Changes take effect
 * at once: who shows times listens to changed().
 */
class QDWIDGETS_EXPORT DateTimeConverter : public QObject
{
    Q_OBJECT

public:
    /// The locale's short format, the locale that is the default at that time, and the time zone of the
    /// system.
    explicit DateTimeConverter(QObject* parent = nullptr);

    /// A format as QLocale::toString() takes it. Empty: the locale's own short one, or "2024-11-22 16:05" in
    /// the C locale.
    const QString& format() const { return m_format; }
    void setFormat(const QString& format);

    /// Names of months, order and digits come from it.
    const QLocale& locale() const { return m_locale; }
    void setLocale(const QLocale& locale);

    /// Invalid: the time zone of the system.
    const QTimeZone& timeZone() const { return m_timeZone; }
    void setTimeZone(const QTimeZone& timeZone);

    /// The moment as a clock in the time zone shows it. Invalid stays invalid.
    QDateTime toZone(const QDateTime& time) const;

    /// The text to show; empty for an invalid time.
    QString toText(const QDateTime& time) const;

Q_SIGNALS:
    /// The same moment now has another text.
    void changed();

private:
    QString m_format;
    QLocale m_locale;
    QTimeZone m_timeZone;
};
