#pragma once

// A guard in front of the XML parser. Internal: not installed, not exported.

#include <QByteArray>
#include <QString>

/// Elements nested deeper than this are refused; real documents have five levels.
constexpr int maxXmlDepth = 256;

/// More elements, texts, attributes, comments and the like than this are refused in what becomes one DOM,
/// which takes 220 to 290 bytes for each, beside its text.
constexpr int maxXmlNodes = 2 * 1000 * 1000;

/**
 * Finds out where the elements of a document begin and end, without parsing it, and whether a parser may have
 * it.
 *
 * The DOM is built and destroyed by recursion: some 50,000 levels overflow the stack, and a hostile server
 * can send that in a few hundred kilobytes; compressed, it can send millions of elements in as much. This
 * looks at tags only and takes no stack. A document type with declarations of its own is refused as well: its
 * parameter entities are expanded by the parser and could hide anything from this, and no real document has
 * one. Text that is not well-formed is otherwise left to the parser, which stops at the first fault.
 *
 * The text is UTF-8 and may come in blocks of any size: next() is called with what has come so far, and goes
 * over every byte once.
 */
class XmlScanner
{
public:
    enum Stop {
        NeedsMore,      ///< The text has been scanned to its end.
        RootBegins,     ///< position() is behind the start tag of the document element.
        ChildEnds,      ///< position() is behind a child element of the document element.
        DividerReached, ///< position() is at a divider in the text of the divided child.
        RootEnds,       ///< position() is at the end tag of the document element.
        Unfit           ///< No parser may have this.
    };

    XmlScanner() = default;

    /// Asks for stops at a character in the text of child elements of this name.
    void setDivided(const QByteArray& name, char divider);

    /// Goes on to the next stop. Each call gets the text of the last one, which may have grown.
    Stop next(const QByteArray& xml);
    int position() const { return m_position; }

    /// Tells that the text has lost so many bytes at its beginning, all in front of position().
    void drop(int count);
    /// Counts nodes anew.
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
    bool m_isCounted{false}; ///< The text in front of the next tag is.
    bool m_hadRoot{false};
    bool m_isDivided{false}; ///< In a child with dividers.
    int m_at{0};
    int m_tag{0}; ///< Where the start tag begins.
    int m_position{0};
    int m_depth{0};
    int m_nodes{0};
};

/// Whether a whole text may be given to the DOM.
bool isFitForDom(const QByteArray& utf8);
inline bool isFitForDom(const QString& xml)
{
    return isFitForDom(xml.toUtf8());
}
