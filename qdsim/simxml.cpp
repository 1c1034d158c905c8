#include "simxml.h"

#include <QtCore/QStringList>
#include <QtCore/QTextCodec>
#include <QtCore/QXmlStreamReader>

namespace {

const char declaration[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
const int deepest = 8;

void appendEscaped(QByteArray* out, const QByteArray& text)
{
    int begin = 0;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const char* replacement = nullptr;
        if (c == '&')
            replacement = "&amp;";
        else if (c == '<')
            replacement = "&lt;";
        else if (c == '>')
            replacement = "&gt;";
        else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
            replacement = "";
        if (!replacement)
            continue;
        out->append(text.constData() + begin, i - begin).append(replacement);
        begin = i + 1;
    }
    out->append(text.constData() + begin, text.size() - begin);
}

/// Removes the texts of "content" elements from the document, so that the parser skips attachments of 100 MB.
QByteArray withoutContents(const QByteArray& body, QVector<QByteArray>* contents)
{
    const QByteArray opening = QByteArrayLiteral("<content>");
    const QByteArray closing = QByteArrayLiteral("</content>");
    QByteArray rest;
    int from = 0;
    for (;;) {
        const int begin = body.indexOf(opening, from);
        const int end = begin < 0 ? -1 : body.indexOf(closing, begin);
        if (end < 0)
            break;
        const int text = begin + opening.size();
        contents->append(QByteArray::fromRawData(body.constData() + text, end - text));
        rest.append(body.constData() + from, text - from);
        from = end;
    }
    return rest.append(body.constData() + from, body.size() - from);
}

class Builder
{
public:
    Builder(const QByteArray& document, const QVector<QByteArray>& contents)
        : m_reader(document)
        , m_contents(contents)
    {}

    bool read(SimElement* root, QString* why)
    {
        m_reader.readNext(); // the declaration, which parse() has checked
        m_reader.readNext();
        if (m_reader.isStartElement())
            readElement(root, 1);
        if (m_why.isEmpty() && !m_reader.hasError()) {
            while (!m_reader.atEnd() && m_why.isEmpty()) {
                m_reader.readNext();
                if (m_reader.isComment() || m_reader.isProcessingInstruction() || m_reader.isDTD())
                    complain(QStringLiteral("something besides the document element"));
            }
        }
        if (m_why.isEmpty() && m_reader.hasError())
            complain(m_reader.errorString());
        *why = m_why;
        return m_why.isEmpty();
    }

private:
    void complain(const QString& what)
    {
        if (m_why.isEmpty())
            m_why = QStringLiteral("line %1: %2").arg(m_reader.lineNumber()).arg(what);
    }

    void readElement(SimElement* element, int depth)
    {
        element->name = m_reader.qualifiedName().toString();
        if (depth > deepest)
            complain(QStringLiteral("elements nested too deep"));
        if (!m_reader.attributes().isEmpty() || !m_reader.namespaceDeclarations().isEmpty())
            complain(QStringLiteral("element \"%1\" has attributes").arg(element->name));
        while (m_why.isEmpty() && !m_reader.atEnd()) {
            m_reader.readNext();
            if (m_reader.isStartElement()) {
                element->children.append(SimElement());
                readElement(&element->children.last(), depth + 1);
            } else if (m_reader.isCharacters()) {
                element->text += m_reader.text();
            } else if (m_reader.isEndElement()) {
                break;
            } else if (!m_reader.hasError()) {
                complain(QStringLiteral("element \"%1\" holds something besides texts and elements")
                             .arg(element->name));
            }
        }
        finish(element);
    }

    void finish(SimElement* element)
    {
        if (!element->children.isEmpty() && !element->text.trimmed().isEmpty())
            complain(QStringLiteral("element \"%1\" holds a text beside its children").arg(element->name));
        if (!element->children.isEmpty())
            element->text.clear();
        if (element->name == QLatin1String("content")) {
            element->content = element->text.isEmpty() && m_nextContent < m_contents.size()
                                   ? m_contents[m_nextContent++]
                                   : element->text.toUtf8();
            element->text.clear();
        }
    }

    QXmlStreamReader m_reader;
    const QVector<QByteArray>& m_contents;
    int m_nextContent = 0;
    QString m_why;
};

} // namespace

SimXmlWriter::SimXmlWriter(int expectedSize)
{
    m_bytes.reserve(expectedSize);
    m_bytes.append(declaration).append('\n');
}

SimXmlWriter& SimXmlWriter::open(const char* name)
{
    m_bytes.append('<').append(name).append('>');
    return *this;
}

SimXmlWriter& SimXmlWriter::close(const char* name)
{
    m_bytes.append("</").append(name).append('>');
    return *this;
}

SimXmlWriter& SimXmlWriter::text(const char* name, const QString& value)
{
    open(name);
    appendEscaped(&m_bytes, value.toUtf8());
    return close(name);
}

SimXmlWriter& SimXmlWriter::text(const char* name, const char* value)
{
    open(name);
    m_bytes.append(value);
    return close(name);
}

SimXmlWriter& SimXmlWriter::number(const char* name, qint64 value)
{
    open(name);
    m_bytes.append(QByteArray::number(value));
    return close(name);
}

SimXmlWriter& SimXmlWriter::boolean(const char* name, bool value)
{
    return text(name, value ? "true" : "false");
}

SimXmlWriter& SimXmlWriter::textIfAny(const char* name, const QString& value)
{
    return value.isEmpty() ? *this : text(name, value);
}

bool SimXml::parse(const QByteArray& body, SimElement* root, QString* why)
{
    if (!body.startsWith(declaration)) {
        *why = QStringLiteral("the body does not begin with %1").arg(QLatin1String(declaration));
        return false;
    }
    QVector<QByteArray> contents;
    const QByteArray document = withoutContents(body, &contents);
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(document.constData(), document.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0) {
        *why = QStringLiteral("the body is not UTF-8");
        return false;
    }
    return Builder(document, contents).read(root, why);
}

SimCursor::SimCursor(const SimElement& element, QString* why)
    : m_element(element)
    , m_why(why)
{}

const SimElement* SimCursor::takeElement(const char* name)
{
    if (!ok() || m_next >= m_element.children.size())
        return nullptr;
    const SimElement& child = m_element.children[m_next];
    if (child.name != QLatin1String(name))
        return nullptr;
    ++m_next;
    return &child;
}

const SimElement* SimCursor::requireElement(const char* name)
{
    const SimElement* child = takeElement(name);
    require(name, child != nullptr);
    return child;
}

bool SimCursor::takeText(const char* name, QString* value)
{
    const SimElement* child = takeElement(name);
    if (!child)
        return false;
    if (!child->children.isEmpty())
        complain(QStringLiteral("\"%1\" has children").arg(child->name));
    *value = child->text;
    return true;
}

bool SimCursor::takeFilled(const char* name, QString* value)
{
    if (!takeText(name, value))
        return false;
    if (value->isEmpty())
        complain(QStringLiteral("\"%1\" is empty, which is left out").arg(QLatin1String(name)));
    return true;
}

bool SimCursor::takeNumber(const char* name, int least, int most, int* value)
{
    QString text;
    if (!takeText(name, &text))
        return false;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber || text != QString::number(number) || number < least || number > most)
        complain(QStringLiteral("\"%1\" is \"%2\" and not a number from %3 to %4")
                     .arg(QLatin1String(name), text.left(40))
                     .arg(least)
                     .arg(most));
    *value = number;
    return true;
}

bool SimCursor::takeBoolean(const char* name, bool* value)
{
    QString text;
    if (!takeOneOf(name, {QStringLiteral("true"), QStringLiteral("false")}, &text))
        return false;
    *value = text == QLatin1String("true");
    return true;
}

bool SimCursor::takeOneOf(const char* name, const QStringList& values, QString* value)
{
    if (!takeText(name, value))
        return false;
    if (!values.contains(*value))
        complain(QStringLiteral("\"%1\" is \"%2\" and none of %3")
                     .arg(QLatin1String(name), value->left(40), values.join(QStringLiteral(", "))));
    return true;
}

void SimCursor::require(const char* name, bool taken)
{
    if (taken || !ok())
        return;
    const bool more = m_next < m_element.children.size();
    complain(QStringLiteral("\"%1\" expected, but there is %2")
                 .arg(QLatin1String(name), more
                                               ? QStringLiteral("\"%1\"").arg(m_element.children[m_next].name)
                                               : QStringLiteral("nothing more")));
}

void SimCursor::complain(const QString& what)
{
    if (ok())
        *m_why = QStringLiteral("in \"%1\": %2").arg(m_element.name, what);
}

void SimCursor::end()
{
    if (m_next < m_element.children.size())
        complain(
            QStringLiteral("unknown, repeated or out of order: \"%1\"").arg(m_element.children[m_next].name));
    else if (m_element.children.isEmpty() && !m_element.text.trimmed().isEmpty())
        complain(QStringLiteral("a text where elements belong"));
}
