#include "xmldepth_p.h"

namespace {

/// The position after the next @p end from @p from on, or the end of the text.
int skipPast(const QString& xml, QLatin1String end, int from)
{
    const int at = xml.indexOf(end, from);
    return at < 0 ? xml.size() : at + end.size();
}

/// The position of the first of @p stops outside quotes from @p from on, or the end of the text. An attribute
/// value may hold a ">" or what looks like a comment.
int skipTo(const QString& xml, QLatin1String stops, int from)
{
    for (int i = from; i < xml.size(); ++i) {
        const QChar c = xml.at(i);
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
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

bool isNestedDeeperThan(const QString& xml, int limit)
{
    int depth = 0;
    int at = xml.indexOf(QLatin1Char('<'));
    while (at >= 0) {
        const QStringView rest = QStringView(xml).mid(at);
        if (rest.startsWith(QLatin1String("<!--"))) {
            at = skipPast(xml, QLatin1String("-->"), at + 4);
        } else if (rest.startsWith(QLatin1String("<![CDATA["))) {
            at = skipPast(xml, QLatin1String("]]>"), at + 9);
        } else if (rest.startsWith(QLatin1String("<?"))) {
            at = skipPast(xml, QLatin1String("?>"), at + 2);
        } else if (rest.startsWith(QLatin1String("<!"))) {
            // a document type; its declarations come as "<!" of their own behind the bracket
            at = skipTo(xml, QLatin1String("[>"), at + 2);
        } else if (rest.startsWith(QLatin1String("</"))) {
            --depth;
            at += 2;
        } else {
            const int end = skipTo(xml, QLatin1String(">"), at + 1);
            const bool isEmpty = xml.at(end - 1) == QLatin1Char('/');
            if (!isEmpty && ++depth > limit)
                return true;
            at = end;
        }
        at = xml.indexOf(QLatin1Char('<'), at);
    }
    return false;
}
