#pragma once

// The answer to a discovery query. Internal: not installed, not exported.

#include "discoverentry.h"

#include <QByteArray>

/// Reads the datagram of an answer: "200 OK" in any case, then lines of "key:value". False, and @p entry
/// unchanged, if it is anything else; a missing value is empty.
bool readDiscoverReply(const QByteArray& datagram, DiscoverEntry& entry);
