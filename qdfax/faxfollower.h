#pragma once

#include "faxentry.h"
#include "table.h"

#include <QString>
#include <QVector>

class Invocation;
class Session;

/**
 * Polls submitted faxes until each has reached its final state.
 *
 * A server moves a finished fax from the queue to the log of sent faxes, at a time of its own choice; so both
 * are read until each fax has a final state, or was in neither several times in a row.
 */
class FaxFollower
{
public:
    /// One recipient's fax.
    struct Fax
    {
        QString url; ///< As in the server's reply; the path identifies the fax.
        QString recipient;
        int pages{0};
        BaseFaxEntry::FaxEntryState state{BaseFaxEntry::StateUnknown};
        QString attempt; ///< "2/3" while it is in the queue.
        int missed{0};   ///< Consecutive polls that found it in neither list.
        bool isFinal() const;
        bool isSent() const;
    };

    FaxFollower(const Invocation& call, Session& session,
                const QVector<QSharedPointer<BaseFaxEntry>>& entries);

    /// Returns the exit status: Ok when every fax was sent. @p interval in seconds.
    int follow(int interval);

    const QVector<Fax>& faxes() const { return m_faxes; }
    Table table() const;

private:
    bool isDone() const;
    /// Reads the states once. False when the server did not answer.
    bool read();
    void report(const QVector<Fax>& before) const;

    const Invocation& m_call;
    Session& m_session;
    QVector<Fax> m_faxes;
};
