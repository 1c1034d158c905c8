#pragma once

// Reading the document of a reply while it arrives. Internal: not installed.

#include "tasks/childbuilder_p.h"
#include "xmlguard_p.h"

#include <QByteArray>

#include <functional>

/**
 * The document of one reply, parsed piece by piece while its bytes arrive.
 *
 * All large replies have the same form: a document element with very many small children. Some 16 KB of whole
 * children are parsed at a time, as a document of their own. What is left, the document without the content
 * of its element, is parsed at the end. Together the pieces are well-formed exactly if the whole document is,
 * and the parser is the DOM's, so that the same replies are taken as by parsing them in one piece.
 *
 * Children are handed out before it is known whether the document ends well-formed: who takes them tells
 * nobody until finish() was true.
 */
class ReplyReader
{
public:
    /// Takes a child of the document element. Returns what is kept of it beside its texts, in bytes of
    /// memory, 0 for nothing at all. @p continues: it is a further part of a divided child.
    using Take = std::function<qint64(const QDomElement& child, bool continues)>;
    /// For an entry or a contact.
    static constexpr qint64 recordSize = 512;

    /// How much becomes a DOM at a time, in bytes: parsing it takes well below a millisecond.
    static constexpr int usualPieceSize = 16 * 1024;

    explicit ReplyReader(Take take, int pieceSize = usualPieceSize);

    /// A child of this name is handed out in parts, divided at this character, which belongs to none of them.
    void setDivided(const QByteArray& name, char divider);

    /// Takes the next bytes. Nothing more is parsed once the document is known to be unusable.
    void add(const QByteArray& block);
    /// Whether the document was well-formed, with nothing missing, and within the limits of a parser.
    bool finish();

    /// What is kept of the children may take this in memory, in bytes.
    qint64 kept() const { return m_kept; }
    /// Whether a child, or what is around all children, was larger than any may be.
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
    QByteArray m_frame;  ///< The document up to the content of its element.
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
