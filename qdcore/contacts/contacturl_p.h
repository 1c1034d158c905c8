#pragma once

// The address of a contact or group on its server. Internal: not installed, not exported.

#include <QUrl>

/// Parses an address from a server. Servers send https addresses even if their books are only served over
/// plain http, so https becomes http; a request uses the scheme of the configured server anyway.
inline QUrl contactUrl(const QString& text)
{
    QUrl url(text, QUrl::TolerantMode);
    if (url.scheme().compare(QLatin1String("https"), Qt::CaseInsensitive) == 0)
        url.setScheme(QStringLiteral("http"));
    return url;
}
