#pragma once

// A guard in front of the XML parser. Internal: not installed, not exported.

#include <QString>

/**
 * Whether elements are nested deeper than @p limit anywhere in @p xml.
 *
 * The DOM is built and destroyed by recursion: some 50,000 levels overflow the stack, and a hostile server can send
 * that in a few hundred kilobytes. This looks at tags only and takes no stack; text that is not well-formed is left
 * to the parser, which stops at the first fault.
 */
bool isNestedDeeperThan(const QString& xml, int limit);
