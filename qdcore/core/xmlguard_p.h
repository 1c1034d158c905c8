#pragma once

// A guard in front of the XML parser. Internal: not installed, not exported.

#include <QString>

/// Elements nested deeper than this are refused; real documents have five levels.
constexpr int maxXmlDepth = 256;

/// More elements, texts, attributes, comments and the like than this are refused. The largest real document,
/// an address book of 100,000 entries, has a million; the DOM takes 220 to 290 bytes for each, beside its text.
constexpr int maxXmlNodes = 2 * 1000 * 1000;

/**
 * Whether a text may be given to the DOM.
 *
 * The DOM is built and destroyed by recursion: some 50,000 levels overflow the stack, and a hostile server
 * can send that in a few hundred kilobytes; compressed, it can send millions of elements in as much. This
 * looks at tags only and takes no stack. A document type with declarations of its own is refused as well: its
 * parameter entities are expanded by the parser and could hide anything from this, and no real document has
 * one. Text that is not well-formed is otherwise left to the parser, which stops at the first fault.
 */
bool isFitForDom(const QString& xml);
