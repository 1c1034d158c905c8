#include "entryurl.h"

EntryUrl EntryUrl::fromText(const QString& text)
{
    EntryUrl result;
    result.m_text = text;
    return result;
}

QUrl EntryUrl::url() const
{
    return m_text.isEmpty() ? m_url : QUrl(m_text, QUrl::TolerantMode);
}
