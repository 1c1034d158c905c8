#include "xmlguard_p.h"

namespace {

/// The position after the next @p end from @p from on, or the end of the text.
int skipPast(const QString& xml, QLatin1String end, int from)
{
    const int at = xml.indexOf(end, from);
    return at < 0 ? xml.size() : at + end.size();
}

/// The position of the first of @p stops outside quotes from @p from on, or the end of the text: an attribute
/// value may hold a ">" or what looks like a comment. Every quoted value is counted in @p nodes.
int skipTo(const QString& xml, QLatin1String stops, int from, int& nodes)
{
    for (int i = from; i < xml.size(); ++i) {
        const QChar c = xml.at(i);
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            ++nodes;
            i = xml.indexOf(c, i + 1);
            if (i < 0)
                return xml.size();
        } else if (c.unicode() < 0x80 && stops.contains(c)) {
            return i;
        }
    }
    return xml.size();
}

} // namespace

bool isFitForDom(const QString& xml)
{
    int depth = 0;
    int nodes = 0;
    int at = xml.indexOf(QLatin1Char('<'));
    while (at >= 0) {
        if (++nodes > maxXmlNodes)
            return false;
        const QStringView rest = QStringView(xml).mid(at);
        if (rest.startsWith(QLatin1String("<!--"))) {
            at = skipPast(xml, QLatin1String("-->"), at + 4);
        } else if (rest.startsWith(QLatin1String("<![CDATA["))) {
            at = skipPast(xml, QLatin1String("]]>"), at + 9);
        } else if (rest.startsWith(QLatin1String("<?"))) {
            at = skipPast(xml, QLatin1String("?>"), at + 2);
        } else if (rest.startsWith(QLatin1String("<!"))) {
            at = skipTo(xml, QLatin1String("[>"), at + 2, nodes);
            if (at < xml.size() && xml.at(at) == QLatin1Char('['))
                return false;
        } else if (rest.startsWith(QLatin1String("</"))) {
            depth = qMax(0, depth - 1);
            at += 2;
        } else {
            const int end = skipTo(xml, QLatin1String(">"), at + 1, nodes);
            const bool isEmpty = xml.at(end - 1) == QLatin1Char('/');
            if (!isEmpty && ++depth > maxXmlDepth)
                return false;
            at = end;
        }
        at = xml.indexOf(QLatin1Char('<'), at);
    }
    return nodes <= maxXmlNodes;
}
