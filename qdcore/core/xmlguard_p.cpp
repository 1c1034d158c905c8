#include "xmlguard_p.h"

#include <algorithm>
#include <cstring>

namespace {

/// How much text is looked through for dividers at a time, in bytes.
constexpr int textPortion = 16 * 1024;

/// The index of @p c from @p from on, @p end when there is none before.
int find(const QByteArray& xml, char c, int from, int end)
{
    const void* found = std::memchr(xml.constData() + from, c, size_t(end - from));
    return found ? int(static_cast<const char*>(found) - xml.constData()) : end;
}

/// Whether @p text begins at @p at, as far as it goes.
bool mayBegin(const QByteArray& xml, int at, const char* text)
{
    const auto size = std::min(std::strlen(text), size_t(xml.size() - at));
    return std::memcmp(xml.constData() + at, text, size) == 0;
}

bool begins(const QByteArray& xml, int at, const char* text)
{
    return size_t(xml.size() - at) >= std::strlen(text) && mayBegin(xml, at, text);
}

} // namespace

void XmlScanner::setDivided(const QByteArray& name, char divider)
{
    m_dividedName = name;
    m_divider = divider;
}

void XmlScanner::drop(int count)
{
    m_at -= count;
    m_tag -= count;
    m_position -= count;
}

XmlScanner::Stop XmlScanner::next(const QByteArray& xml)
{
    for (;;) {
        switch (m_state) {
        case Text:
            if (scanText(xml))
                return DividerReached;
            if (m_at == xml.size() || (xml.at(m_at) == '<' && !isTagKnown(xml)))
                return NeedsMore;
            if (m_nodes > maxXmlNodes)
                return Unfit;
            if (m_state == EndTag && m_depth == 1) {
                m_position = m_at - 2;
                return RootEnds;
            }
            break;
        case StartTag: {
            if (!goToUnquoted(xml, '>', '>'))
                return NeedsMore;
            const Stop stop = endStartTag(xml);
            if (stop != NeedsMore)
                return stop;
            break;
        }
        case EndTag: {
            // one that is cut off by another tag ends there
            while (m_at < xml.size() && xml.at(m_at) != '>' && xml.at(m_at) != '<')
                ++m_at;
            if (m_at == xml.size())
                return NeedsMore;
            const Stop stop = endEndTag(xml);
            if (stop != NeedsMore)
                return stop;
            break;
        }
        case Comment:
            if (!skipPast(xml, "-->"))
                return NeedsMore;
            break;
        case CData:
            if (!skipPast(xml, "]]>"))
                return NeedsMore;
            break;
        case Instruction:
            if (!skipPast(xml, "?>"))
                return NeedsMore;
            break;
        case Declaration:
            if (!goToUnquoted(xml, '[', '>'))
                return NeedsMore;
            if (xml.at(m_at) == '[')
                return Unfit;
            ++m_at;
            m_state = Text;
            break;
        }
    }
}

/// Goes to the next tag, or the end. True at a divider, behind which it goes on.
bool XmlScanner::scanText(const QByteArray& xml)
{
    const bool isDivided = m_isDivided && m_depth == 2;
    const int portion = isDivided ? std::min(textPortion, xml.size() - m_at) : xml.size() - m_at;
    const int end = find(xml, '<', m_at, m_at + portion);
    const char* const data = xml.constData();
    if (!m_isCounted && std::any_of(data + m_at, data + end, [](char c) { return uchar(c) > uchar(' '); })) {
        m_isCounted = true;
        ++m_nodes; // a text that is not blank
    }
    const int begin = m_at;
    m_at = end;
    if (!isDivided)
        return false;
    for (int at = end; at-- > begin;) {
        if (data[at] == m_divider) {
            m_position = at;
            return true;
        }
    }
    return false;
}

/// Sets the state for the tag that begins here, and goes behind what tells its kind. False when too little of
/// it has come.
bool XmlScanner::isTagKnown(const QByteArray& xml)
{
    if (xml.size() - m_at < 2)
        return false;
    const char kind = xml.at(m_at + 1);
    int skipped = 2;
    if (kind == '/') {
        m_state = EndTag;
    } else if (kind == '?') {
        m_state = Instruction;
    } else if (kind != '!') {
        m_state = StartTag;
        m_tag = m_at;
        skipped = 1;
    } else if (begins(xml, m_at, "<!--")) {
        m_state = Comment;
        skipped = 4;
    } else if (begins(xml, m_at, "<![CDATA[")) {
        m_state = CData;
        skipped = 9;
    } else if (mayBegin(xml, m_at, "<!--") || mayBegin(xml, m_at, "<![CDATA[")) {
        return false;
    } else {
        m_state = Declaration;
    }
    m_nodes += int(kind != '/');
    m_quote = 0;
    m_isCounted = false;
    m_at += skipped;
    return true;
}

bool XmlScanner::skipPast(const QByteArray& xml, const char* end)
{
    const int size = int(std::strlen(end));
    const int found = xml.indexOf(end, m_at);
    m_at = found >= 0 ? found + size : std::max(m_at, xml.size() - size + 1);
    if (found >= 0)
        m_state = Text;
    return found >= 0;
}

/// Goes to the first of two characters outside quotes: an attribute value may hold a ">" or what looks like a
/// comment. Every quoted value is counted as two nodes, the attribute and its text.
bool XmlScanner::goToUnquoted(const QByteArray& xml, char one, char other)
{
    for (; m_at < xml.size(); ++m_at) {
        if (m_quote != 0) {
            m_at = find(xml, m_quote, m_at, xml.size());
            if (m_at == xml.size())
                return false;
            m_quote = 0;
            continue;
        }
        const char c = xml.at(m_at);
        if (c == one || c == other)
            return true;
        if (c == '"' || c == '\'') {
            m_quote = c;
            m_nodes += 2;
        }
    }
    return false;
}

XmlScanner::Stop XmlScanner::endStartTag(const QByteArray& xml)
{
    const bool isEmpty = xml.at(m_at - 1) == '/';
    m_state = Text;
    m_position = ++m_at;
    if (m_nodes > maxXmlNodes)
        return Unfit;
    if (isEmpty) {
        m_hadRoot = true; // at the latest
        return m_depth == 1 ? ChildEnds : NeedsMore;
    }
    if (++m_depth > maxXmlDepth)
        return Unfit;
    if (m_depth == 1 && !m_hadRoot) {
        m_hadRoot = true;
        return RootBegins;
    }
    if (m_depth == 2 && !m_dividedName.isEmpty()) {
        const int name = m_tag + 1;
        const int end = name + m_dividedName.size();
        m_isDivided = begins(xml, name, m_dividedName.constData()) && end < m_position &&
                      std::strchr("> \t\r\n", xml.at(end)) != nullptr;
    }
    return NeedsMore;
}

XmlScanner::Stop XmlScanner::endEndTag(const QByteArray& xml)
{
    m_at += int(xml.at(m_at) == '>');
    m_state = Text;
    m_position = m_at;
    m_depth = std::max(0, m_depth - 1);
    return m_depth == 1 ? ChildEnds : NeedsMore;
}

bool isFitForDom(const QByteArray& utf8)
{
    XmlScanner scanner;
    for (;;) {
        switch (scanner.next(utf8)) {
        case XmlScanner::NeedsMore:
            return true;
        case XmlScanner::Unfit:
            return false;
        default:
            break;
        }
    }
}
