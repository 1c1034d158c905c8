#pragma once

#include "qdcore_global.h"

#include <QString>
#include <QUrl>

/**
 * An address in a log entry. A value.
 *
 * Stored as text and parsed on each call of url(), for the same reason as EntryDate: of ten thousand entries
 * few are ever opened.
 */
class QDCORE_EXPORT EntryUrl
{
public:
    /// Empty.
    EntryUrl() = default;
    /// An explicit address; url() returns it unmodified.
    // cppcheck-suppress noExplicitConstructor ; an implicit conversion is intended
    EntryUrl(const QUrl& url)
        : m_url(url)
    {}

    /// An address from a text, parsed in tolerant mode.
    static EntryUrl fromText(const QString& text);

    /// Invalid if the text is not a URL.
    QUrl url() const;

private:
    QUrl m_url;
    QString m_text; ///< Empty for an explicit address.
};
