#include "domtext_p.h"

#include <QDomDocument>

DomChildren::DomChildren(const QDomElement& parent)
{
    for (QDomElement child = parent.firstChildElement(); !child.isNull(); child = child.nextSiblingElement())
        m_children.append({child.tagName(), child});
}

QDomElement DomChildren::element(const QString& name) const
{
    for (const Child& child : m_children) {
        if (child.name == name)
            return child.element;
    }
    return QDomElement();
}

bool DomChildren::read(const QString& name, QString& field) const
{
    const QDomElement child = element(name);
    if (child.isNull())
        return false;
    field = child.text();
    return true;
}

QDomElement appendElement(QDomDocument& document, QDomNode& parent, const QString& name)
{
    QDomElement element = document.createElement(name);
    parent.appendChild(element);
    return element;
}

QDomElement appendText(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text)
{
    QDomElement element = appendElement(document, parent, name);
    element.appendChild(document.createTextNode(text));
    return element;
}

void appendTextIfSet(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text)
{
    if (!text.isEmpty())
        appendText(document, parent, name, text);
}

void appendDeclaration(QDomDocument& document)
{
    document.appendChild(document.createProcessingInstruction(
        QStringLiteral("xml"), QStringLiteral("version=\"1.0\" encoding=\"utf-8\"")));
}

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

bool isTrue(const QString& text)
{
    return text == QLatin1String("true");
}
