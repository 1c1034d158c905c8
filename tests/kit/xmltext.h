#pragma once

// Records to XML text and back, for tests.

#include "iquendraserialization.h"
#include "iquendrastorage.h"

#include <QDomDocument>
#include <QTextStream>

/// An element that holds a text or elements.
inline QString tag(const char* name, const QString& content)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), content);
}

inline QString tag(const char* name, const char* content)
{
    return tag(name, QString::fromUtf8(content));
}

/// Elements made from "name=text name=text"; the texts have no blanks.
inline QString elements(const char* texts)
{
    QString xml;
    const QStringList parts = QString::fromUtf8(texts).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& part : parts)
        xml += QStringLiteral("<%1>%2</%1>")
                   .arg(part.section(QLatin1Char('='), 0, 0), part.section(QLatin1Char('='), 1));
    return xml;
}

/// An element named "record" with children given as XML text.
class XmlRecord
{
public:
    explicit XmlRecord(const QString& children)
    {
        if (!m_document.setContent(QStringLiteral("<record>") + children + QStringLiteral("</record>")))
            qFatal("the test\'s own XML is broken");
    }

    QDomElement element() const { return m_document.documentElement(); }

private:
    QDomDocument m_document;
};

inline bool readFax(IQuendraSerialization& record, const QString& children, int protocolVersion = 2)
{
    return record.readFax(XmlRecord(children).element(), protocolVersion);
}

inline bool readStorage(IQuendraStorage& record, const QString& children, int protocolVersion = 1)
{
    return record.readStorage(XmlRecord(children).element(), protocolVersion);
}

/// The children that @p write appends to an element, without white space between them.
template <typename Write>
QString writtenXml(Write write)
{
    QDomDocument document;
    QDomElement record = document.createElement(QStringLiteral("record"));
    document.appendChild(record);
    write(document, record);
    QString text;
    QTextStream stream(&text);
    for (QDomNode child = record.firstChild(); !child.isNull(); child = child.nextSibling())
        child.save(stream, -1);
    return text;
}

/// What writeFax() appends, or "refused" when it returns false.
inline QString writtenFax(const IQuendraSerialization& record, int protocolVersion = 2)
{
    bool ok = false;
    const QString text = writtenXml([&](QDomDocument& document, QDomElement& parent) {
        ok = record.writeFax(document, parent, protocolVersion);
    });
    return ok ? text : QStringLiteral("refused") + text;
}

/// What writeStorage() appends, or "refused" when it returns false.
inline QString writtenStorage(const IQuendraStorage& record, int protocolVersion = 1)
{
    bool ok = false;
    const QString text = writtenXml([&](QDomDocument& document, QDomElement& parent) {
        ok = record.writeStorage(document, parent, protocolVersion);
    });
    return ok ? text : QStringLiteral("refused") + text;
}
