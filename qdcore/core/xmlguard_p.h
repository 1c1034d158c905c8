#pragma once

// Limits checked before XML is parsed. Internal: not installed, not exported.

#include <QByteArray>
#include <QString>

/// The maximum nesting depth of elements; real documents have five levels.
constexpr int maxXmlDepth = 256;

/// The maximum number of nodes in a DOM: elements, texts, attributes, comments and the like. Each needs 220
/// to 290 bytes plus its text.
constexpr int maxXmlNodes = 2 * 1000 * 1000;

/**
 * Finds the boundaries of a document's elements without parsing it, and checks whether it is safe to parse.
 *
 * The DOM is built and destroyed by recursion: some 50,000 levels overflow the stack, and a malicious server
 * can send them in a few hundred kilobytes; compressed, it can send millions of elements in as much. The
 * scanner only looks at tags and does not recurse. It also rejects a document type with declarations, which
 * no real document has: the parser expands its parameter entities, which could hide anything from the scan.
 * Other text that is not well-formed is left to the parser, which stops at the first error.
 *
 * The input is UTF-8 and may arrive in blocks of any size; every byte is scanned once.
 */
class XmlScanner
{
public:
    enum Stop {
        NeedsMore,      ///< The input has been scanned to its end.
        RootBegins,     ///< position() is behind the start tag of the document element.
        ChildEnds,      ///< position() is behind a child element of the document element.
        DividerReached, ///< position() is at a divider in the text of a divided child.
        RootEnds,       ///< position() is at the end tag of the document element.
        Unfit           ///< The document exceeds a limit, or has a document type with declarations.
    };

    XmlScanner() = default;

    /// Child elements of this name are divided: next() also stops at this character in their text.
    void setDivided(const QByteArray& name, char divider);

    /// Scans on to the next stop. @p xml is the input of the previous call, with new bytes appended.
    Stop next(const QByteArray& xml);
    int position() const { return m_position; }

    /// Must be called when @p count bytes were removed from the front of the input; none behind position().
    void drop(int count);
    /// Restarts the count of nodes, for input that is parsed in pieces.
    void resetNodes() { m_nodes = 0; }

private:
    enum State { Text, StartTag, EndTag, Comment, CData, Instruction, Declaration };

    bool scanText(const QByteArray& xml);
    bool isTagKnown(const QByteArray& xml);
    bool skipPast(const QByteArray& xml, const char* end);
    bool goToUnquoted(const QByteArray& xml, char one, char other);
    Stop endStartTag(const QByteArray& xml);
    Stop endEndTag(const QByteArray& xml);

    QByteArray m_dividedName;
    char m_divider{0};
    State m_state{Text};
    char m_quote{0};         ///< The quote that is open in a tag.
    bool m_isCounted{false}; ///< Whether the text before the next tag is.
    bool m_hadRoot{false};
    bool m_isDivided{false}; ///< In a child with dividers.
    int m_at{0};
    int m_tag{0}; ///< Where the start tag begins.
    int m_position{0};
    int m_depth{0};
    int m_nodes{0};
};

/// Whether a whole document is safe to parse to a DOM.
bool isFitForDom(const QByteArray& utf8);
inline bool isFitForDom(const QString& xml)
{
    return isFitForDom(xml.toUtf8());
}
