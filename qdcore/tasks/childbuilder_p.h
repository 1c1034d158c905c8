#pragma once

// From a parser's events to elements. Internal: not installed.

#include <QDomDocument>

#include <functional>

class QXmlAttributes;

/**
 * Makes the children of a document element, one after the other.
 *
 * The children of a long list have the same form. Each is built out of the nodes of the one before as far as
 * it has, so that a log of 100,000 entries costs the allocations of one. Who takes a child reads it at once
 * and keeps no node of it. CDATA becomes plain text; comments and processing instructions are left out.
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
    QDomNode m_parent; ///< Of what comes next.
    QDomNode m_old;    ///< What stands in its place, from the child before.
    int m_depth{0};
    qint64 m_textSize{0};
    bool m_isSkipping{false};
};

/// Parses a document and has its children built. False when it is not well-formed.
bool parseChildren(const QString& xml, ChildBuilder& builder);
