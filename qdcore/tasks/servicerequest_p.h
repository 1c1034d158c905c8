#pragma once

// The URL of a request, and the headers common to all requests. Internal: not installed.

#include <QNetworkRequest>
#include <QUrl>

class FaxServer;

/// The server's URL with this path, in decoded mode. Invalid if the server's address is.
QUrl serviceUrl(const FaxServer& server, const QString& path);

/// A URL from a reply, with scheme, host, port and credentials replaced by those of the configured server.
QUrl resourceUrl(const FaxServer& server, const QUrl& resource);

/// The URL with a query that limits the number of entries; @p query has %1 for it. 0 or less: no limit.
QUrl limitedUrl(const QUrl& url, const QString& query, int limit);

/// A request as every operation sends it: content type, TLS configuration and credentials.
QNetworkRequest serviceRequest(const FaxServer& server, const QUrl& url);
