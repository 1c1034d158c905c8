#pragma once

#include "simtypes.h"

#include <QtCore/QRegularExpression>

#include <map>
#include <set>

/// @brief One fax to one recipient: an entry of the queue and later of the outbound log.
struct SimFax
{
    quint64 id = 0;
    quint64 job = 0;      ///< id of the first fax of the same submission; the name of its spool folder
    QString user;         ///< the submitting user
    QString state;        ///< "pending", "sending", "sent", "failed" or "aborted"
    qint64 created = 0;   ///< all times in ms since 1970
    qint64 changed = 0;   ///< time of the last change of state
    qint64 nextAt = -1;   ///< time of the next automatic change of state; -1: none
    qint64 startTime = 0; ///< time of the first attempt
    qint64 endTime = 0;   ///< time of the final state
    int tryNumber = 0;
    int pages = 0; ///< of the attachments, without the cover page
    QString message;
    SimSchedule schedule;
    SimPerson sender;
    SimPerson recipient;
    SimCoverPage cover;

    bool isFinal() const { return state != QLatin1String("pending") && state != QLatin1String("sending"); }
};

/// @brief A client's submission: the content of a "schedule_fax" document.
struct SimSubmission
{
    SimPerson sender;
    SimCoverPage cover;
    QVector<SimPerson> recipients;
    QVector<SimAttachment> attachments;
    SimSchedule schedule;
};

/// @brief The queue. It has no timer: callers update it to the current time with advance() before they read
/// it.
///
/// At speed 1 a fax is pending for a second, takes a second a page to send, and waits for its try interval
/// before the next attempt. Not thread-safe; SimState guards it.
class SimFaxes
{
public:
    SimFaxes(double speed, const QString& failPattern);

    /// Queues one fax per recipient; returns them in order.
    QVector<SimFax> submit(const QString& user, const SimSubmission& submission, int pages, qint64 now);
    /// Makes all changes of state that are due until @p now.
    void advance(qint64 now);
    /// Null if there is no such fax.
    const SimFax* find(quint64 id) const;
    /// False if the fax is already in a final state.
    bool abort(quint64 id, qint64 now);
    bool reschedule(quint64 id, qint64 at, qint64 now);

    const std::map<quint64, SimFax>& all() const { return m_faxes; } ///< by id, so oldest first
    quint64 nextId() const { return m_nextId; }
    /// Restores a saved fax.
    void restore(const SimFax& fax);
    /// Increases with every change of state.
    quint64 revision() const { return m_revision; }

private:
    void setState(SimFax* fax, const char* state, qint64 when);
    void transition(SimFax* fax);
    qint64 after(qint64 when, qint64 ms) const;

    const double m_speed;
    QRegularExpression m_fails;
    std::map<quint64, SimFax> m_faxes;
    std::set<quint64> m_active;
    quint64 m_nextId = 1;
    quint64 m_revision = 0;
};
