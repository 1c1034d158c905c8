#include "contactunit.h"

ContactUnit::~ContactUnit() = default;
