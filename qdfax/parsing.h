#pragma once

#include "contact.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

// Parsing user input. Each function returns nothing for an invalid text, and then sets @p error to a text
// that continues the option's name.

/// "NUMBER[,NAME[,ORGANIZATION]]". A backslash escapes a comma or a backslash; the organization may contain
/// commas.
std::optional<Contact> parseRecipient(const QString& text, QString* error);

/// A moment in ISO form, local unless an offset or Z says otherwise: "2026-11-15T14:30", with seconds, or
/// with a blank for the T. Must lie after @p now.
std::optional<QDateTime> parseFutureTime(const QString& text, const QDateTime& now, QString* error);

std::optional<int> parseInteger(const QString& text, int least, int greatest, QString* error);

/// The index of a word in a list, without regard to case.
std::optional<int> parseChoice(const QString& text, const QStringList& choices, QString* error);

/// Whether a server's address is valid: a host with an optional port. Likely mistakes, such as a scheme or
/// credentials, get a hint; the error does not quote a text that may contain a password.
bool checkAddress(const QString& text, QString* error);

/// The root of a server's URLs. The address has passed checkAddress().
QUrl serverUrl(const QString& address, bool useSSL);

/// Whether a URL leads to the configured server: the same host and port. Without a port in either, http and
/// https are equivalent: the configuration decides which is used.
bool namesServer(const QUrl& url, const QString& address, bool useSSL);

/// The URL of a fax as the server gave it, or just its path.
std::optional<QUrl> parseEntryUrl(const QString& text, QString* error);

/// Whether the service's documents can carry a text: no control characters but, if @p lines, line breaks.
bool checkText(const QString& text, bool lines, QString* error);
