#pragma once

// The answer to a discovery query. Internal: not installed, not exported.

#include "discoverentry.h"

#include <QByteArray>

/// Reads the datagram of an answer: "200 OK" in whatever case, then lines of "key:value". False, and @p entry
/// as it was, when it is something else; a value that is missing is empty.
bool readDiscoverReply(const QByteArray& datagram, DiscoverEntry& entry);
