#pragma once

// How records read and write their fields. Internal: not installed, not exported.

#include <QDomElement>
#include <QString>
#include <QVarLengthArray>

/**
 * The direct child elements of an element, walked once.
 *
 * QDomElement::firstChildElement() walks the children from the start for every field, and QDomElement::text()
 * copies the text; a log of 10,000 entries of 15 fields each pays for that. Of several children with one name
 * the first counts.
 */
class DomChildren
{
public:
    explicit DomChildren(const QDomElement& parent);

    /// The first child element of that name, null if there is none.
    QDomElement element(const QString& name) const;

    bool has(const QString& name) const { return find(name); }

    /// The text of the first child element of that name, empty if there is none.
    QString text(const QString& name) const;

    /// The same as a decimal number, 0 if it is none.
    int number(const QString& name) const;

    /// Puts the child's text into @p field if there is such a child. Returns whether there is.
    bool read(const QString& name, QString& field) const;

private:
    struct Child
    {
        QString name;
        QString text;
        int node; ///< Index into m_nodes where the text does not say all, -1 elsewhere.
    };

    const Child* find(const QString& name) const;
    QString textOf(const Child& child) const;

    QDomElement m_parent;
    QVarLengthArray<Child, 20> m_children;
    QVarLengthArray<QDomNode, 4>
        m_nodes; ///< Apart, since a handle on every child would cost as much as the walk.
};

/// Calls @p take with each child element of this name, and then removes the element: what is made of a
/// million of them has the room that they give up.
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

/// Appends `<name>text</name>` to @p parent and returns the new element. The one place that creates fields;
/// characters that XML cannot hold are left out.
QDomElement appendText(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text);

/// Appends `<name>text</name>` unless the text is empty.
void appendTextIfSet(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text);

/// Appends an empty `<name/>` to @p parent and returns it, to be filled by the caller.
QDomElement appendElement(QDomDocument& document, QDomNode& parent, const QString& name);

/// Appends the declaration `<?xml version="1.0" encoding="utf-8"?>`, which opens every document of this
/// system.
void appendDeclaration(QDomDocument& document);

/// "true" or "false".
QString boolText(bool value);

/// Whether a text says true: exactly "true", nothing else.
bool isTrue(const QString& text);
