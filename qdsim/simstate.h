#pragma once

#include "simbooks.h"
#include "simclock.h"
#include "simdocuments.h"
#include "simfaxes.h"
#include "siminbound.h"
#include "simtypes.h"

#include <map>
#include <mutex>

/// @brief Everything the simulated server knows: users, faxes, logs, books, time.
///
/// Guarded by one mutex: whoever reads or changes anything holds a Lock meanwhile. The options and the clock
/// need none.
class SimState
{
public:
    explicit SimState(const SimOptions& options);

    const SimOptions& options() const { return m_options; }
    const SimFeatures& features() const { return m_features; }
    SimClock& clock() { return m_clock; }

    /// Holds the state; taking it lets the time pass, so that whoever looks sees what is true now.
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
    SimPeople& people() { return m_people; } ///< who invents the changes
    SimInboundLog& inbound() { return m_inbound; }
    const QVector<SimCoverPage>& coverPages() const { return m_coverPages; }
    const QStringList& printers() const { return m_printers; }

    /// Attachments of the submission whose first fax has this id. Under a Lock.
    QVector<SimAttachment>& attachments(quint64 job) { return m_attachments[job]; }

    /// Under a Lock: whether something worth saving has changed since the last call.
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
