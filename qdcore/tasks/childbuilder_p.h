#pragma once

// From a parser's events to elements. Internal: not installed.

#include <QDomDocument>

#include <functional>

class QXmlAttributes;

/**
 * Makes the children of a document element, one after the other.
 *
 * Each child reuses the DOM nodes of the previous one where the structure matches, so a log of 100,000
 * entries allocates little more than one entry. The callback reads the child at once and keeps no reference
 * to its nodes. CDATA becomes plain text; comments and processing instructions are left out.
 */
class ChildBuilder
{
public:
    using Take = std::function<void(const QDomElement& child)>;

    explicit ChildBuilder(Take take);

    void startElement(const QString& name, const QXmlAttributes& attributes);
    void text(const QString& text);
    void endElement();

    /// The next child, which is empty, is not handed out.
    void skipChild() { m_isSkipping = true; }

    /// What the texts of the child take in memory, in bytes.
    qint64 textSize() const { return m_textSize; }

private:
    void dropOld();

    const Take m_take;
    QDomDocument m_document;
    QDomElement m_child;
    QDomNode m_parent; ///< Parent of the next node.
    QDomNode m_old;    ///< The previous child's node at this position.
    int m_depth{0};
    qint64 m_textSize{0};
    bool m_isSkipping{false};
};

/// Parses a document and has its children built. False when it is not well-formed.
bool parseChildren(const QString& xml, ChildBuilder& builder);
