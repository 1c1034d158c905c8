#include "tasks/replyreader_p.h"

#include "tasks/replydocument_p.h"

#include <utility>

namespace {

/// Limit of a child, and of the document without its children, in bytes.
constexpr int maxPieceSize = 256 * 1024 * 1024;

/// Above this size, saving memory matters more than saving time; in bytes.
constexpr int largePieceSize = 1024 * 1024;

} // namespace

ReplyReader::ReplyReader(Take take, int pieceSize)
    : m_take(std::move(take))
    , m_builder([this](const QDomElement& child) { this->take(child); })
    , m_pieceSize(pieceSize)
{}

void ReplyReader::setDivided(const QByteArray& name, char divider)
{
    m_dividedName = name;
    m_scanner.setDivided(name, divider);
}

void ReplyReader::add(const QByteArray& block)
{
    if (!m_isUsable || m_isEnded)
        return;
    // decoding ends at a null byte, which XML cannot contain
    const int end = block.indexOf('\0');
    m_isEnded = end >= 0;
    m_buffer.append(block.constData(), m_isEnded ? end : block.size());
    scan();
    dropRead();
    m_isOverLimit = m_frame.size() + m_buffer.size() > maxPieceSize;
    m_isUsable = m_isUsable && !m_isOverLimit;
    if (!m_isUsable)
        m_buffer.clear();
}

/// Removes what has been parsed from the buffer.
void ReplyReader::dropRead()
{
    m_scanner.drop(m_begin);
    m_buffer = m_buffer.mid(std::exchange(m_begin, 0));
}

void ReplyReader::scan()
{
    while (m_isUsable) {
        const XmlScanner::Stop stop = m_scanner.next(m_buffer);
        const int position = m_scanner.position();
        switch (stop) {
        case XmlScanner::NeedsMore:
            return;
        case XmlScanner::Unfit:
            m_isUsable = false;
            break;
        case XmlScanner::RootBegins:
            m_isContent = true;
            m_frame = m_buffer.left(position);
            m_begin = position;
            break;
        case XmlScanner::ChildEnds:
        case XmlScanner::DividerReached:
            if (m_isContent && position - m_begin >= m_pieceSize)
                readPiece(position, stop == XmlScanner::DividerReached);
            break;
        case XmlScanner::RootEnds:
            if (std::exchange(m_isContent, false))
                readPiece(position, false);
            break;
        }
    }
}

void ReplyReader::readPiece(int end, bool isDivided)
{
    // what follows a child is parsed differently from what follows a start tag: "]]>" is taken there
    QByteArray piece = std::exchange(m_isFirst, false) || m_continues ? "<r>" : "<r><r/>";
    if (piece.size() > 3)
        m_builder.skipChild();
    if (m_continues)
        piece += '<' + m_dividedName + '>';
    piece.append(m_buffer.constData() + m_begin, end - m_begin);
    if (isDivided)
        piece += "</" + m_dividedName + '>';
    piece += "</r>";
    m_begin = end + int(isDivided);
    m_scanner.resetNodes();
    if (piece.size() > largePieceSize)
        dropRead(); // make room for the text

    m_isUsable =
        withText(std::move(piece), [this](const QString& xml) { return parseChildren(xml, m_builder); });
    m_continues = isDivided;
}

void ReplyReader::take(const QDomElement& child)
{
    const qint64 size = m_take(child, std::exchange(m_continues, false));
    m_kept += size > 0 ? size + m_builder.textSize() : 0;
}

bool ReplyReader::finish()
{
    m_isUsable = m_isUsable && !m_isContent; // or the document element has no end
    if (m_isUsable) {
        QDomDocument document;
        m_isUsable =
            withText(m_frame + m_buffer, [&](const QString& xml) { return document.setContent(xml); });
    }
    m_frame.clear();
    m_buffer.clear();
    return m_isUsable;
}
