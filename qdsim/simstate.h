#pragma once

#include "simbooks.h"
#include "simclock.h"
#include "simdocuments.h"
#include "simfaxes.h"
#include "siminbound.h"
#include "simtypes.h"

#include <map>
#include <mutex>

/// @brief The state of the simulated server: users, faxes, logs, books, time.
///
/// Guarded by one mutex: all access needs a Lock, except to the options and the clock.
class SimState
{
public:
    explicit SimState(const SimOptions& options);

    const SimOptions& options() const { return m_options; }
    const SimFeatures& features() const { return m_features; }
    SimClock& clock() { return m_clock; }

    /// RAII: locks the state and brings the queue up to date with the clock.
    class Lock
    {
    public:
        explicit Lock(SimState& state)
            : m_guard(state.m_mutex)
        {
            state.m_faxes.advance(state.m_clock.now());
        }

    private:
        std::lock_guard<std::mutex> m_guard;
    };

    /// Under a Lock. Null if there is no such user.
    SimUser* user(const QString& name);
    const std::map<QString, SimUser>& users() const { return m_users; }
    SimFaxes& faxes() { return m_faxes; }
    SimBooks& books() { return m_books; }
    SimPeople& people() { return m_people; } ///< the generator of random changes
    SimInboundLog& inbound() { return m_inbound; }
    const QVector<SimCoverPage>& coverPages() const { return m_coverPages; }
    const QStringList& printers() const { return m_printers; }

    /// Attachments of the submission whose first fax has this id. Under a Lock.
    QVector<SimAttachment>& attachments(quint64 job) { return m_attachments[job]; }

    /// Under a Lock: whether state that is saved has changed since the last call.
    bool takeChanged();
    void markChanged() { m_changed = true; }

private:
    const SimOptions m_options;
    const SimFeatures m_features;
    SimClock m_clock;
    std::mutex m_mutex;
    std::map<QString, SimUser> m_users;
    SimFaxes m_faxes;
    std::map<quint64, QVector<SimAttachment>> m_attachments;
    SimBooks m_books;
    SimPeople m_people;
    SimInboundLog m_inbound;
    QVector<SimCoverPage> m_coverPages;
    QStringList m_printers;
    quint64 m_savedRevision = 0;
    bool m_changed = false;
};
