#include "entrydate.h"

#include "datetext_p.h"

EntryDate EntryDate::fromText(const QString& text)
{
    EntryDate result(utcFromText(text, QStringLiteral("yyyy-MM-ddThh:mm:ss")));
    result.m_asWritten = true;
    return result;
}

QDateTime EntryDate::dateTime() const
{
    if (!m_asWritten)
        return m_dateTime;
    const QDateTime local(m_dateTime.date(), m_dateTime.time());
    return local.isValid() ? local : QDateTime(); // Local times are skipped when summer time begins.
}
