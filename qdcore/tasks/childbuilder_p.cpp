#include "tasks/childbuilder_p.h"

#include <QXmlDefaultHandler>
#include <QXmlSimpleReader>

#include <utility>

ChildBuilder::ChildBuilder(Take take)
    : m_take(std::move(take))
{}

void ChildBuilder::startElement(const QString& name, const QXmlAttributes& attributes)
{
    if (++m_depth == 1 || m_isSkipping)
        return;
    if (m_depth == 2)
        m_textSize = 0;
    QDomNode& old = m_depth == 2 ? m_child : m_old;
    if (old.isElement() && attributes.count() == 0 && old.nodeName() == name && !old.hasAttributes()) {
        m_parent = old;
        m_old = m_parent.firstChild();
        return;
    }
    QDomElement element = m_document.createElement(name);
    for (int i = 0; i < attributes.count(); ++i)
        element.setAttribute(attributes.qName(i), attributes.value(i));
    if (m_depth == 2) {
        m_child = element;
    } else {
        dropOld();
        m_parent.appendChild(element);
    }
    m_parent = element;
    m_old.clear();
}

void ChildBuilder::text(const QString& text)
{
    if (m_depth < 2)
        return;
    m_textSize += text.size() * qint64(sizeof(QChar));
    if (m_old.isText()) {
        m_old.setNodeValue(text);
        m_old = m_old.nextSibling();
    } else {
        dropOld();
        m_parent.appendChild(m_document.createTextNode(text));
    }
}

void ChildBuilder::endElement()
{
    if (m_depth == 2 && std::exchange(m_isSkipping, false)) {
        --m_depth;
        return;
    }
    if (m_depth > 1)
        dropOld();
    if (m_depth == 2)
        m_take(m_child);
    if (m_depth > 2) {
        m_old = m_parent.nextSibling();
        m_parent = m_parent.parentNode();
    }
    --m_depth;
}

/// Removes the previous child's remaining nodes, which this child does not have.
void ChildBuilder::dropOld()
{
    while (!m_old.isNull()) {
        const QDomNode next = m_old.nextSibling();
        m_parent.removeChild(m_old);
        m_old = next;
    }
}

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED // the DOM's own parser, so that the same documents are accepted

    namespace
{
    class Events : public QXmlDefaultHandler
    {
    public:
        explicit Events(ChildBuilder& builder)
            : m_builder(builder)
        {}

        bool startElement(const QString&, const QString&, const QString& name,
                          const QXmlAttributes& attributes) override
        {
            m_builder.startElement(name, attributes);
            return true;
        }
        bool endElement(const QString&, const QString&, const QString&) override
        {
            m_builder.endElement();
            return true;
        }
        bool characters(const QString& text) override
        {
            m_builder.text(text);
            return true;
        }

    private:
        ChildBuilder& m_builder;
    };

} // namespace

bool parseChildren(const QString& xml, ChildBuilder& builder)
{
    Events events(builder);
    QXmlSimpleReader parser;
    // as QDomDocument::setContent() does
    parser.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    parser.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    parser.setFeature(QStringLiteral("http://qt-project.org/xml/features/report-whitespace-only-CharData"),
                      false);
    parser.setContentHandler(&events);
    QXmlInputSource source;
    source.setData(xml);
    return parser.parse(source);
}

QT_WARNING_POP
