#pragma once

#include "qdcore_global.h"

/**
 * The modem used for a fax. An empty value: the server does not send any data about it.
 */
class QDCORE_EXPORT ModemEntry
{
public:
    ModemEntry() = default;
    ModemEntry(const ModemEntry&) = default;
    ModemEntry& operator=(const ModemEntry&) = default;
    virtual ~ModemEntry();
};
