#pragma once

// Where a request goes, and what every request carries. Internal: not installed.

#include <QNetworkRequest>
#include <QUrl>

class FaxServer;

/// The server's URL with this path, taken in decoded mode. Invalid when the server's address is.
QUrl serviceUrl(const FaxServer& server, const QString& path);

/// A URL that the server named, with scheme, host, port and credentials of the configured server put over it.
QUrl resourceUrl(const FaxServer& server, const QUrl& resource);

/// The URL with a query that limits how much is sent; @p query holds %1 for the limit. 0 and less is none.
QUrl limitedUrl(const QUrl& url, const QString& query, int limit);

/// A request as every operation sends it: content type, TLS configuration and credentials.
QNetworkRequest serviceRequest(const FaxServer& server, const QUrl& url);
