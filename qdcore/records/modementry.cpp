#include "modementry.h"

ModemEntry::~ModemEntry() = default;
