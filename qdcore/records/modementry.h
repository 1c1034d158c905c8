#pragma once

#include "qdcore_global.h"

/**
 * The modem that a fax goes through. A value that holds nothing: the server tells nothing about it so far.
 */
class QDCORE_EXPORT ModemEntry
{
public:
    ModemEntry() = default;
    ModemEntry(const ModemEntry&) = default;
    ModemEntry& operator=(const ModemEntry&) = default;
    virtual ~ModemEntry();
};
