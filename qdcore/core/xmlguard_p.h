#pragma once

// Limits checked before XML is parsed. Internal: not installed, not exported.

#include <QString>

/// The maximum nesting depth of elements; real documents have five levels.
constexpr int maxXmlDepth = 256;

/// The maximum number of nodes: elements, texts, attributes, comments and the like. The largest real
/// document, an address book of 100,000 entries, has a million; the DOM needs 220 to 290 bytes for each plus
/// its text.
constexpr int maxXmlNodes = 2 * 1000 * 1000;

/**
 * Whether a text may be given to the DOM.
 *
 * The DOM is built and destroyed by recursion: some 50,000 levels overflow the stack, and a malicious server
 * can send them in a few hundred kilobytes; compressed, it can send millions of elements in as much. This
 * function only scans tags and does not recurse. It also rejects a document type with declarations, which no
 * real document has: the parser expands its parameter entities, which could hide anything from the scan.
 * Other text that is not well-formed is left to the parser, which stops at the first error.
 */
bool isFitForDom(const QString& xml);
