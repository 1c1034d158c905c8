#include "xmlguard_p.h"

#include <algorithm>

namespace {

/// A cursor that moves over a text once, character by character: a server's answer may have a million tags,
/// and checking them must take little time compared with parsing.
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
    /// Goes to the next tag; text in front of it that is not blank is counted in @p nodes.
    bool goToTag(int& nodes)
    {
        const ushort* const begin = m_at;
        const bool isThere = goTo(u'<');
        nodes += int(std::any_of(begin, m_at, [](ushort c) { return c > u' '; }));
        return isThere;
    }
    void skip(int count) { m_at += std::min<std::ptrdiff_t>(count, m_end - m_at); }

    bool startsWith(QLatin1String text) const
    {
        return m_end - m_at >= text.size() &&
               std::equal(text.begin(), text.end(), m_at, [](char a, ushort b) { return uchar(a) == b; });
    }
    /// Goes behind the end of an end tag; one that is cut off by another tag ends there.
    void skipEndTag()
    {
        m_at = std::find_if(m_at, m_end, [](ushort c) { return c == u'>' || c == u'<'; });
        if (peek(0) == u'>')
            skip(1);
    }
    /// Goes behind the next @p text, or to the end.
    void skipPast(QLatin1String text)
    {
        while (goTo(ushort(text.front().unicode())) && !startsWith(text))
            ++m_at;
        skip(text.size());
    }
    /// Goes to the first of two characters outside quotes, or to the end: an attribute value may hold a ">"
    /// or what looks like a comment. Every quoted value is counted in @p nodes, as
    /// the attribute and its text.
    void goToUnquoted(char16_t one, char16_t other, int& nodes)
    {
        for (; m_at != m_end && *m_at != one && *m_at != other; ++m_at) {
            if (*m_at != u'"' && *m_at != u'\'')
                continue;
            nodes += 2;
            const char16_t quote = *m_at++;
            if (!goTo(quote))
                return;
        }
    }

    /// The character at @p offset from here; null beyond the end.
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
    while (scan.goToTag(nodes)) {
        const char16_t kind = scan.peek(1);
        nodes += int(kind != u'/');
        if (nodes > maxXmlNodes)
            return false;
        if (kind == u'/') {
            depth = std::max(0, depth - 1);
            scan.skip(2);
            scan.skipEndTag();
        } else if (kind == u'?') {
            scan.skip(2);
            scan.skipPast(QLatin1String("?>"));
        } else if (kind != u'!') {
            scan.skip(1);
            scan.goToUnquoted(u'>', u'>', nodes);
            const bool isEmpty = scan.peek(-1) == u'/';
            if (!isEmpty && ++depth > maxXmlDepth)
                return false;
            scan.skip(1);
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
            scan.skip(1);
        }
    }
    return nodes <= maxXmlNodes;
}
