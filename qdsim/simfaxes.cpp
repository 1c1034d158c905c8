#include "simfaxes.h"

#include <algorithm>

namespace {

const qint64 pendingMs = 1000;
const qint64 pageMs = 1000;

} // namespace

SimFaxes::SimFaxes(double speed, const QString& failPattern)
    : m_speed(speed)
    , m_fails(failPattern)
{}

QVector<SimFax> SimFaxes::submit(const QString& user, const SimSubmission& submission, int pages, qint64 now)
{
    QVector<SimFax> faxes;
    const quint64 job = m_nextId;
    for (const SimPerson& recipient : submission.recipients) {
        SimFax fax;
        fax.id = m_nextId++;
        fax.job = job;
        fax.user = user;
        fax.created = now;
        fax.pages = pages;
        fax.schedule = submission.schedule;
        fax.sender = submission.sender;
        fax.recipient = recipient;
        fax.cover = submission.cover;
        setState(&fax, "pending", now);
        fax.nextAt = after(std::max(now, fax.schedule.sendAt), pendingMs);
        restore(fax);
        faxes.append(fax);
    }
    return faxes;
}

void SimFaxes::advance(qint64 now)
{
    for (auto id = m_active.begin(); id != m_active.end();) {
        SimFax& fax = m_faxes.at(*id);
        while (fax.nextAt >= 0 && fax.nextAt <= now)
            transition(&fax);
        id = fax.isFinal() ? m_active.erase(id) : std::next(id);
    }
}

const SimFax* SimFaxes::find(quint64 id) const
{
    const auto found = m_faxes.find(id);
    return found == m_faxes.end() ? nullptr : &found->second;
}

bool SimFaxes::abort(quint64 id, qint64 now)
{
    const auto found = m_faxes.find(id);
    if (found == m_faxes.end() || found->second.isFinal())
        return false;
    SimFax& fax = found->second;
    setState(&fax, "aborted", now);
    fax.nextAt = -1;
    fax.endTime = now;
    fax.message = QStringLiteral("Aborted by user");
    m_active.erase(id);
    return true;
}

bool SimFaxes::reschedule(quint64 id, qint64 at, qint64 now)
{
    const auto found = m_faxes.find(id);
    if (found == m_faxes.end() || found->second.isFinal())
        return false;
    SimFax& fax = found->second;
    setState(&fax, "pending", now);
    fax.schedule.sendAt = at > now ? at : 0;
    fax.nextAt = after(std::max(at, now), pendingMs);
    return true;
}

void SimFaxes::restore(const SimFax& fax)
{
    m_faxes[fax.id] = fax;
    m_nextId = std::max(m_nextId, fax.id + 1);
    if (!fax.isFinal())
        m_active.insert(fax.id);
}

void SimFaxes::setState(SimFax* fax, const char* state, qint64 when)
{
    fax->state = QLatin1String(state);
    fax->changed = when;
    ++m_revision;
}

void SimFaxes::transition(SimFax* fax)
{
    const qint64 when = fax->nextAt;
    if (fax->state == QLatin1String("pending")) {
        setState(fax, "sending", when);
        ++fax->tryNumber;
        if (fax->startTime == 0)
            fax->startTime = when;
        fax->nextAt = after(when, pageMs * std::max(1, fax->pages + (fax->cover.enabled ? 1 : 0)));
        return;
    }
    const QString& number = fax->recipient.fax;
    const bool isUnreachable = !m_fails.pattern().isEmpty() && m_fails.match(number).hasMatch();
    if (isUnreachable && fax->tryNumber < fax->schedule.maxTries) {
        setState(fax, "pending", when);
        fax->message = QStringLiteral("No answer");
        fax->nextAt = after(when, std::max(qint64(1), qint64(fax->schedule.tryInterval)) * 1000);
        return;
    }
    const bool failed = isUnreachable || number.isEmpty();
    setState(fax, failed ? "failed" : "sent", when);
    fax->message = number.isEmpty() ? QStringLiteral("No fax number")
                   : failed         ? QStringLiteral("No answer")
                                    : QString();
    fax->endTime = when;
    fax->nextAt = -1;
}

qint64 SimFaxes::after(qint64 when, qint64 ms) const
{
    return m_speed > 0 ? when + std::max(qint64(1), static_cast<qint64>(static_cast<double>(ms) / m_speed))
                       : -1;
}
