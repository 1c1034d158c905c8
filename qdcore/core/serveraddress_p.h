#pragma once

// Addresses as users type them. Internal: not installed, not exported.

#include <QString>

class QUrl;

/**
 * Puts a server's address into a URL: a host name, an IPv4 address or an IPv6 literal, bare or in brackets,
 * with an optional port ("fax.example.org:8080", "[::1]:8080"). Without a port none is set, so that the
 * scheme's default holds; a bare IPv6 literal is all host. Blanks around it, as pasting leaves them, do not
 * count. Returns false for anything else; the URL is then of no use.
 */
bool setServerAddress(QUrl& url, const QString& address);

/// The address as it stands in a URL text: a bare IPv6 literal gets its brackets.
QString addressForUrl(const QString& address);
