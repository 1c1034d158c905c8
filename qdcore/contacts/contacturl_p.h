#pragma once

// The address of a contact or group on its server. Internal: not installed, not exported.

#include <QUrl>

/// The address that a server's text means. Servers hand out https addresses also where their books are only
/// served over plain http, so the scheme is taken down; a request puts the scheme of the configured server
/// over it anyway.
inline QUrl contactUrl(const QString& text)
{
    QUrl url(text, QUrl::TolerantMode);
    if (url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0)
        url.setScheme(QStringLiteral("http"));
    return url;
}
