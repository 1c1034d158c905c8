// Documents that are parsed piece by piece as they arrive: acceptance and content are the same as by parsing
// them whole, however the bytes are split.

#include "fuzz.h"

#include "tasks/replydocument_p.h"
#include "tasks/replyreader_p.h"

#include <QDomDocument>
#include <QStringList>

namespace {

/// Everything in an element that a record could read, as text.
QString contentOf(const QDomElement& element)
{
    QString content = QLatin1Char('<') + element.tagName();
    const QDomNamedNodeMap attributes = element.attributes();
    QStringList values;
    for (int i = 0; i < attributes.size(); ++i)
        values.append(attributes.item(i).nodeName() + QLatin1Char('=') + attributes.item(i).nodeValue());
    values.sort();
    content += values.join(QLatin1Char(' ')) + QLatin1Char('>');
    for (QDomNode node = element.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isElement())
            content += contentOf(node.toElement());
        else if (node.isText())
            content += node.nodeValue();
    }
    return content + QLatin1String("</>");
}

QStringList partsOf(const QDomElement& element)
{
    QStringList parts;
    const QStringList all = element.text().split(QLatin1Char(','));
    for (const QString& part : all)
        parts.append(part.trimmed());
    return parts;
}

} // namespace

FUZZ_TARGET(pieces)
{
    FuzzChoices choices(input);
    const int pieceSize = 1 << choices.choose(6);
    const int blockSize = 1 + choices.choose(20);
    const QByteArray body = choices.rest();
    const QString divided = QStringLiteral("oids");

    QDomDocument document;
    const QString text = withAmpersands(body);
    const bool isWhole = isFitForDom(text) && document.setContent(text);

    QStringList children;
    QStringList parts;
    ReplyReader reader(
        [&](const QDomElement& child, bool) {
            children.append(contentOf(child));
            return 1;
        },
        pieceSize);
    ReplyReader divider(
        [&](const QDomElement& child, bool) {
            if (child.tagName() == divided)
                parts += partsOf(child);
            return 1;
        },
        pieceSize);
    divider.setDivided(divided.toLatin1(), ',');
    for (int at = 0; at < body.size(); at += blockSize) {
        reader.add(body.mid(at, blockSize));
        divider.add(body.mid(at, blockSize));
    }
    PROMISE(reader.finish() == isWhole);
    PROMISE(divider.finish() == isWhole);
    if (!isWhole)
        return;

    QStringList wholeChildren;
    QStringList wholeParts;
    for (QDomElement child = document.documentElement().firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        wholeChildren.append(contentOf(child));
        if (child.tagName() == divided)
            wholeParts += partsOf(child);
    }
    PROMISE_THAT(children == wholeChildren, children.join(QLatin1Char('\n')));
    PROMISE_THAT(parts == wholeParts, parts.join(QLatin1Char('|')));
}
