#pragma once

#include "simtypes.h"

/// @brief A received fax. Everything that the log shows is a text, so that a test can have any nonsense
/// there.
struct SimInbound
{
    quint64 id = 0;
    QString filename;     ///< its suffix, .tif or .pdf, decides what the document is
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
    qint64 hugeSize = 0; ///< more than 0: the document is a TIFF of so many bytes, made while it is sent
    QByteArray document; ///< what is served; empty: a document made from the id and the pages

    /// Media type and bytes of the document.
    SimReply reply() const;
};

/// @brief The inbound log, oldest first. Not thread-safe; SimState guards it.
class SimInboundLog
{
public:
    /// As many plausible entries as told, the newest a minute before @p now (ms), and one huge document if
    /// asked for.
    void generate(int count, qint64 hugeSize, quint32 seed, qint64 now);
    /// Appends as the newest entry and gives it an id and, if it has none, a file name.
    quint64 add(SimInbound entry);
    const SimInbound* find(quint64 id) const;
    const QVector<SimInbound>& all() const { return m_entries; }

private:
    QVector<SimInbound> m_entries; // the entry with the id n stands at n - 1
};
