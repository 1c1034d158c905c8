#include "domtext_p.h"

#include <QDomDocument>

#include <algorithm>
#include <cstring>

namespace {

bool isSame(const QString& a, const QString& b)
{
    return a.size() == b.size() &&
           std::memcmp(a.constData(), b.constData(), size_t(a.size()) * sizeof(QChar)) == 0;
}

/// QString::toInt() with a fast path: handling signs, blanks and overflow, it takes as long as finding the
/// field.
int plainNumber(const QString& text)
{
    if (text.size() > 9)
        return text.toInt();
    int value = 0;
    for (const QChar c : text) {
        const int digit = c.unicode() - '0';
        if (digit < 0 || digit > 9)
            return text.toInt();
        value = value * 10 + digit;
    }
    return value;
}

} // namespace

DomChildren::DomChildren(const QDomElement& parent)
    : m_parent(parent)
{
    for (QDomNode node = parent.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (!node.isElement())
            continue;
        m_children.append({node.nodeName(), QString(), -1});
        Child& child = m_children.last();
        const QDomNode content = node.firstChild();
        if (content.isNull())
            continue;
        if (content.isText() && content.nextSibling().isNull()) {
            child.text = content.nodeValue();
        } else {
            child.node = m_nodes.size();
            m_nodes.append(node);
        }
    }
}

QDomElement DomChildren::element(const QString& name) const
{
    const Child* child = find(name);
    if (!child)
        return QDomElement();
    return child->node < 0 ? m_parent.firstChildElement(name) : m_nodes[child->node].toElement();
}

QString DomChildren::text(const QString& name) const
{
    const Child* child = find(name);
    return child ? textOf(*child) : QString();
}

int DomChildren::number(const QString& name) const
{
    return plainNumber(text(name));
}

bool DomChildren::read(const QString& name, QString& field) const
{
    const Child* child = find(name);
    if (child)
        field = textOf(*child);
    return child;
}

QString DomChildren::textOf(const Child& child) const
{
    return child.node < 0 ? child.text : m_nodes[child.node].toElement().text();
}

const DomChildren::Child* DomChildren::find(const QString& name) const
{
    for (const Child& child : m_children) {
        if (isSame(child.name, name))
            return &child;
    }
    return nullptr;
}

QDomElement appendElement(QDomDocument& document, QDomNode& parent, const QString& name)
{
    QDomElement element = document.createElement(name);
    parent.appendChild(element);
    return element;
}

namespace {

/// The length of the character at @p at in UTF-16 units, 1 or 2; 0 if it is not allowed in XML.
int allowedUnits(const QString& text, int at)
{
    const QChar c = text.at(at);
    if (c.isHighSurrogate())
        return at + 1 < text.size() && text.at(at + 1).isLowSurrogate() ? 2 : 0;
    const bool isForbidden =
        c.isLowSurrogate() || c.unicode() >= 0xfffe ||
        (c.unicode() < 0x20 && c != QLatin1Char('\t') && c != QLatin1Char('\n') && c != QLatin1Char('\r'));
    return isForbidden ? 0 : 1;
}

/// The text without the characters that are not allowed in XML, not even escaped. One of them makes a
/// document unreadable, and Qt's parser accepts them as numeric references, so a server could make the
/// settings file unreadable.
QString xmlText(const QString& text)
{
    // Fast path for attachments: texts of many megabytes with plain characters only.
    const auto isPlain = [](QChar c) { return c.unicode() >= 0x20 && c.unicode() < 0xd800; };
    int at = int(std::find_if_not(text.cbegin(), text.cend(), isPlain) - text.cbegin());
    while (at < text.size()) {
        const int units = allowedUnits(text, at);
        if (units == 0)
            break;
        at += units;
    }
    if (at == text.size())
        return text;
    QString kept = text.left(at);
    while (at < text.size()) {
        const int units = allowedUnits(text, at);
        kept += text.midRef(at, units);
        at += qMax(1, units);
    }
    return kept;
}

} // namespace

QDomElement appendText(QDomDocument& document, QDomElement& parent, const QString& name, const QString& text)
{
    QDomElement element = appendElement(document, parent, name);
    element.appendChild(document.createTextNode(xmlText(text)));
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
