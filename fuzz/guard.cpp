// The look at a text before the XML parser sees it: what passes is safe for the DOM, and nothing else is
// refused.

#include "fuzz.h"

#include "xmlguard_p.h"

#include <QDomDocument>

namespace {

/// The depth of the deepest element, without recursion.
int depthOf(const QDomDocument& document)
{
    int depth = 0;
    int deepest = 0;
    QDomNode node = document.documentElement();
    while (!node.isNull()) {
        if (node.isElement())
            deepest = qMax(deepest, depth + 1);
        if (!node.firstChild().isNull()) {
            node = node.firstChild();
            ++depth;
            continue;
        }
        while (!node.isNull() && node.nextSibling().isNull()) {
            node = node.parentNode();
            --depth;
        }
        if (depth <= 0)
            break;
        node = node.nextSibling();
    }
    return deepest;
}

} // namespace

FUZZ_TARGET(guard)
{
    const QString text = QString::fromUtf8(input);
    // the parser recurses; a text below this length cannot overflow the stack
    if (text.count(QLatin1Char('<')) > 4000)
        return;
    const bool isFit = isFitForDom(text);
    QDomDocument document;
    if (!document.setContent(text))
        return;
    const int depth = depthOf(document);
    const bool hasSubset =
        !document.doctype().internalSubset().isNull() || text.contains(QLatin1String("<!DOCTYPE"));
    if (isFit)
        PROMISE_THAT(depth <= maxXmlDepth, QString::number(depth));
    // an element without content counts too, unless it is written as an empty tag; a document type may be
    // refused
    else
        PROMISE_THAT(hasSubset || depth > maxXmlDepth, QString::number(depth));
}
