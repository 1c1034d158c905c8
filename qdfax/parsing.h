#pragma once

#include "contact.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

// Reading what users type. Each function returns nothing for a text that is not understood, and then says in
// @p error what is wrong, in words that fit behind the option's name.

/// "NUMBER[,NAME[,ORGANIZATION]]". A backslash keeps a comma or a backslash from being taken as such; the
/// organization may hold commas.
std::optional<Contact> parseRecipient(const QString& text, QString* error);

/// A moment in ISO form, local unless an offset or Z says otherwise: "2026-11-15T14:30", with seconds, or
/// with a blank for the T. Must lie after @p now.
std::optional<QDateTime> parseFutureTime(const QString& text, const QDateTime& now, QString* error);

std::optional<int> parseInteger(const QString& text, int least, int greatest, QString* error);

/// The index of a word in a list, without regard to case.
std::optional<int> parseChoice(const QString& text, const QStringList& choices, QString* error);

/// Whether a server's address is one: a host with an optional port and nothing else. What a user may have
/// typed by mistake, such as a scheme or credentials, gets a hint; the text is not repeated where it may hold
/// a password.
bool checkAddress(const QString& text, QString* error);

/// The root of a server's URLs. The address has passed checkAddress().
QUrl serverUrl(const QString& address, bool useSSL);

/// Whether a URL leads to the configured server itself: the same host and port. Without a
/// port in either, http and https are the same: which of them is used is the configuration's affair.
bool namesServer(const QUrl& url, const QString& address, bool useSSL);

/// The URL of a fax as the server gave it, or just its path.
std::optional<QUrl> parseEntryUrl(const QString& text, QString* error);

/// Whether a text can travel in the service's documents: no control characters but, if @p lines, line breaks.
bool checkText(const QString& text, bool lines, QString* error);
