#pragma once

#include "qdcore_global.h"

#include <QString>
#include <QUrl>

/**
 * An address in a log entry. A value.
 *
 * Kept as the server wrote it and parsed each time it is asked for, for the same reason as EntryDate: of ten
 * thousand entries few are ever opened.
 */
class QDCORE_EXPORT EntryUrl
{
public:
    /// Empty.
    EntryUrl() = default;
    /// An address that is given and not read; url() returns it as it is.
    // cppcheck-suppress noExplicitConstructor ; an address may stand for it
    EntryUrl(const QUrl& url)
        : m_url(url)
    {}

    /// The address that a text means, read tolerantly.
    static EntryUrl fromText(const QString& text);

    /// Invalid where the text was none.
    QUrl url() const;

private:
    QUrl m_url;
    QString m_text; ///< Empty when the address was given and not read.
};
