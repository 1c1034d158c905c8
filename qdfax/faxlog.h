#pragma once

#include "faxentry.h"
#include "inboundfaxentry.h"
#include "outboundfaxentry.h"
#include "table.h"

#include <QJsonObject>
#include <QString>

#include <optional>

class Session;

/// The logs of a server, as commands fetch and show them: sorted, the newest first; entries without a time
/// last.
class FaxLog
{
public:
    enum Kind { Queue, Status, Sent, Inbox };

    /// "queue", "status", "sent", "inbox".
    static QStringList names();

    explicit FaxLog(Kind kind)
        : m_kind(kind)
    {}

    /// Fetches the log. @p limit: at most so many entries, of the status log so many of each state; the queue
    /// is not limited. @p finished: for the queue alone, how many finished faxes it may hold as well. 0: all,
    /// or none.
    bool fetch(Session& session, int limit, int finished = 0);

    int size() const;
    Table table() const;
    QJsonObject json(int index) const;

    /// What was fetched, of the kind that the log has.
    const QVector<QSharedPointer<FaxEntry>>& faxes() const { return m_faxes; }
    const QVector<QSharedPointer<OutboundFaxEntry>>& sent() const { return m_sent; }
    const QVector<QSharedPointer<InboundFaxEntry>>& received() const { return m_received; }

private:
    Kind m_kind;
    QVector<QSharedPointer<FaxEntry>> m_faxes;
    QVector<QSharedPointer<OutboundFaxEntry>> m_sent;
    QVector<QSharedPointer<InboundFaxEntry>> m_received;
};
