#pragma once

#include "simtypes.h"

/// @brief A received fax. All fields of the log are texts, so that a test can set invalid values.
struct SimInbound
{
    quint64 id = 0;
    QString filename;     ///< its suffix, .tif or .pdf, determines the document's type
    QString completeTime; ///< yyyy-MM-ddThh:mm:ss
    QString pages;
    QString toName; ///< "recipient_name"
    QString error;  ///< "error" inside "delivery_error"
    QString remoteId;
    QString status = QStringLiteral("complete");
    QVector<QPair<QString, QString>> deliveredTo; ///< type and destination
    QString channel;
    QString modem;
    QString extension;
    qint64 hugeSize = 0; ///< above 0: the document is a generated TIFF of this size in bytes
    QByteArray document; ///< the document's bytes; empty: generated from the id and the pages

    /// Media type and bytes of the document.
    SimReply reply() const;
};

/// @brief The inbound log, oldest first. Not thread-safe; SimState guards it.
class SimInboundLog
{
public:
    /// Generates @p count plausible entries, the newest a minute before @p now (ms), and one with a document
    /// of
    /// @p hugeSize bytes if that is not 0.
    void generate(int count, qint64 hugeSize, quint32 seed, qint64 now);
    /// Appends the newest entry and gives it an id and, if it has none, a file name.
    quint64 add(SimInbound entry);
    const SimInbound* find(quint64 id) const;
    const QVector<SimInbound>& all() const { return m_entries; }

private:
    QVector<SimInbound> m_entries; // the entry with the id n is at index n - 1
};
