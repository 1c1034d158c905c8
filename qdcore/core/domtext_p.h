#pragma once

// How records read and write their fields. Internal: not installed, not exported.

#include <QDomElement>
#include <QString>
#include <QVarLengthArray>

/**
 * The direct child elements of an element, walked once.
 *
 * QDomElement::firstChildElement() walks the children from the start for every field, and QDomElement::text()
 * copies the text, which is slow for a log of 10,000 entries of 15 fields each. Of several children with the
 * same name the first is used.
 */
class DomChildren
{
public:
    explicit DomChildren(const QDomElement& parent);

    /// The first child element with this name, null if there is none.
    QDomElement element(const QString& name) const;

    bool has(const QString& name) const { return find(name); }

    /// The text of the first child element with this name, empty if there is none.
    QString text(const QString& name) const;

    /// The text as a decimal number, 0 if it is not a number.
    int number(const QString& name) const;

    /// Assigns the child's text to @p field. Returns false, with @p field unchanged, if there is no such
    /// child.
    bool read(const QString& name, QString& field) const;

private:
    struct Child
    {
        QString name;
        QString text;
        int node; ///< Index into m_nodes unless the content is a single text, otherwise -1.
    };

    const Child* find(const QString& name) const;
    QString textOf(const Child& child) const;

    QDomElement m_parent;
    QVarLengthArray<Child, 20> m_children;
    QVarLengthArray<QDomNode, 4>
        m_nodes; ///< Only of some children: a QDomNode for each would cost as much as walking them.
};

/// Calls @p take with each child element of this name and then removes the element, so that the records made
/// of a million elements reuse their memory.
template <typename Take>
void takeElements(QDomElement& parent, const QString& name, Take take)
{
    for (QDomElement element = parent.firstChildElement(name); !element.isNull();) {
        const QDomElement next = element.nextSiblingElement(name);
        take(element);
        parent.removeChild(element);
        element = next;
    }
}

/// Appends `<name>text</name>` to @p parent and returns the new element. The only function that creates
/// fields; characters that are not allowed in XML are omitted.
QDomElement appendText(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text);

/// Appends `<name>text</name>` unless the text is empty.
void appendTextIfSet(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text);

/// Appends an empty `<name/>` to @p parent and returns it, for the caller to fill.
QDomElement appendElement(QDomDocument& document, QDomNode& parent, const QString& name);

/// Appends the declaration `<?xml version="1.0" encoding="utf-8"?>`, with which every document begins.
void appendDeclaration(QDomDocument& document);

/// "true" or "false".
QString boolText(bool value);

/// Whether a text is exactly "true".
bool isTrue(const QString& text);
