#pragma once

// Reading the document of a reply while it arrives. Internal: not installed.

#include "tasks/childbuilder_p.h"
#include "xmlguard_p.h"

#include <QByteArray>

#include <functional>

/**
 * The document of one reply, parsed piece by piece while its bytes arrive.
 *
 * All large replies have the same form: a document element with very many small children. About 16 KB of
 * complete children are parsed at a time, as a document of their own. The remainder, the document without the
 * content of its element, is parsed at the end. The pieces are all well-formed exactly if the whole document
 * is, and the parser is the DOM's, so the same replies are accepted as by parsing them in one piece.
 *
 * Children are delivered before the document is known to be well-formed; the callback must emit nothing until
 * finish() has returned true.
 */
class ReplyReader
{
public:
    /// Takes a child of the document element. Returns what is kept of it beside its texts, in bytes of
    /// memory, 0 for nothing at all. @p continues: it is a further part of a divided child.
    using Take = std::function<qint64(const QDomElement& child, bool continues)>;
    /// For an entry or a contact.
    static constexpr qint64 recordSize = 512;

    /// Size of a piece that is parsed at a time, in bytes; parsing it takes well below a millisecond.
    static constexpr int usualPieceSize = 16 * 1024;

    explicit ReplyReader(Take take, int pieceSize = usualPieceSize);

    /// A child of this name is delivered in parts, split at this character, which belongs to no part.
    void setDivided(const QByteArray& name, char divider);

    /// Takes the next bytes. Nothing more is parsed once the document is known to be unusable.
    void add(const QByteArray& block);
    /// Whether the document was well-formed, with nothing missing, and within the limits of a parser.
    bool finish();

    /// Estimated memory of the data kept of the children, in bytes.
    qint64 kept() const { return m_kept; }
    /// Whether a child, or the document without its children, exceeded the size limit.
    bool isOverLimit() const { return m_isOverLimit; }

private:
    void scan();
    void dropRead();
    void readPiece(int end, bool isDivided);
    void take(const QDomElement& child);

    const Take m_take;
    ChildBuilder m_builder;
    const int m_pieceSize;
    XmlScanner m_scanner;
    QByteArray m_buffer; ///< What is not parsed yet.
    QByteArray m_frame;  ///< The document up to the content of its root element.
    QByteArray m_dividedName;
    int m_begin{0}; ///< Where in the buffer the next piece begins.
    qint64 m_kept{0};
    bool m_isContent{false}; ///< Between the tags of the document element.
    bool m_isFirst{true};    ///< The next piece is.
    bool m_isUsable{true};
    bool m_isOverLimit{false};
    bool m_isEnded{false};   ///< At a null byte.
    bool m_continues{false}; ///< The next piece begins in a divided child.
};
