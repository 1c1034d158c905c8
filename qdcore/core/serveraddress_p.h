#pragma once

// Parses server addresses entered by users. Internal: not installed, not exported.

#include <QString>

class QUrl;

/**
 * Sets the host and port of a URL: a host name, an IPv4 address or an IPv6 literal, bare or in brackets, with
 * an optional port ("fax.example.org:8080", "[::1]:8080"). Without a port the scheme's default applies; a
 * bare IPv6 literal is all host. White space around the address is ignored. Returns false for any other text;
 * the URL is then unusable.
 */
bool setServerAddress(QUrl& url, const QString& address);

/// The address as part of a URL text: a bare IPv6 literal is put in brackets.
QString addressForUrl(const QString& address);
