#include "xmlguard_p.h"

#include <algorithm>

namespace {

/// Where a scan stands in a text, which it crosses once, character by character: a server's answer has a
/// million tags, and looking at them must not take long beside parsing it.
class Scan
{
public:
    explicit Scan(const QString& text)
        : m_at(text.utf16())
        , m_end(m_at + text.size())
    {}

    /// Goes to the next @p c and returns whether there is one.
    bool goTo(char16_t c)
    {
        m_at = std::find(m_at, m_end, c);
        return m_at != m_end;
    }
    void skip(int count) { m_at += std::min<std::ptrdiff_t>(count, m_end - m_at); }

    bool startsWith(QLatin1String text) const
    {
        return m_end - m_at >= text.size() &&
               std::equal(text.begin(), text.end(), m_at, [](char a, ushort b) { return uchar(a) == b; });
    }
    /// Goes behind the next @p text, or to the end.
    void skipPast(QLatin1String text)
    {
        while (goTo(ushort(text.front().unicode())) && !startsWith(text))
            ++m_at;
        skip(text.size());
    }
    /// Goes to the first of two characters outside quotes, or to the end: an attribute value may hold a ">"
    /// or what looks like a comment. Every quoted value is counted in @p nodes.
    void goToUnquoted(char16_t one, char16_t other, int& nodes)
    {
        for (; m_at != m_end && *m_at != one && *m_at != other; ++m_at) {
            if (*m_at != u'"' && *m_at != u'\'')
                continue;
            ++nodes;
            const char16_t quote = *m_at++;
            if (!goTo(quote))
                return;
        }
    }

    /// The character so far from here; null beyond the end.
    char16_t peek(int offset) const { return m_end - m_at > offset ? m_at[offset] : u'\0'; }

private:
    const ushort* m_at;
    const ushort* m_end;
};

} // namespace

bool isFitForDom(const QString& xml)
{
    int depth = 0;
    int nodes = 0;
    Scan scan(xml);
    while (scan.goTo(u'<')) {
        if (++nodes > maxXmlNodes)
            return false;
        const char16_t kind = scan.peek(1);
        if (kind == u'/') {
            depth = std::max(0, depth - 1);
            scan.skip(2);
        } else if (kind == u'?') {
            scan.skip(2);
            scan.skipPast(QLatin1String("?>"));
        } else if (kind != u'!') {
            scan.skip(1);
            scan.goToUnquoted(u'>', u'>', nodes);
            const bool isEmpty = scan.peek(-1) == u'/';
            if (!isEmpty && ++depth > maxXmlDepth)
                return false;
        } else if (scan.startsWith(QLatin1String("<!--"))) {
            scan.skip(4);
            scan.skipPast(QLatin1String("-->"));
        } else if (scan.startsWith(QLatin1String("<![CDATA["))) {
            scan.skip(9);
            scan.skipPast(QLatin1String("]]>"));
        } else {
            scan.skip(2);
            scan.goToUnquoted(u'[', u'>', nodes);
            if (scan.peek(0) == u'[')
                return false;
        }
    }
    return nodes <= maxXmlNodes;
}
