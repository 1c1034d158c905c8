#include "faxfollower.h"

#include "command.h"
#include "faxlog.h"
#include "recordjson.h"
#include "session.h"
#include "terminal.h"
#include "text.h"

#include <QElapsedTimer>

#include <algorithm>

namespace {

/// Finished faxes to request with the queue, besides the unfinished ones.
const int recentlyFinished = 100;
/// The number of newest log entries searched for a fax that has left the queue.
const int recentlySent = 500;
/// Polls without finding a fax after which it is given up.
const int mostMissed = 5;

/// The same fax under whatever host name the server calls itself.
bool isSameFax(const QUrl& url, const QString& text)
{
    return !url.path().isEmpty() && url.path() == QUrl(text).path();
}

} // namespace

bool FaxFollower::Fax::isFinal() const
{
    switch (state) {
    case BaseFaxEntry::StateSent:
    case BaseFaxEntry::StateComplete:
    case BaseFaxEntry::StateAborted:
    case BaseFaxEntry::StateFailed:
    case BaseFaxEntry::StateRejected:
        return true;
    default:
        return missed >= mostMissed;
    }
}

bool FaxFollower::Fax::isSent() const
{
    return state == BaseFaxEntry::StateSent || state == BaseFaxEntry::StateComplete;
}

FaxFollower::FaxFollower(const Invocation& call, Session& session,
                         const QVector<QSharedPointer<BaseFaxEntry>>& entries)
    : m_call(call)
    , m_session(session)
{
    for (const auto& entry : entries) {
        Fax fax;
        fax.url = urlText(entry->entryUrl());
        fax.recipient = entry->recipient();
        fax.pages = entry->pages();
        fax.state = entry->state();
        m_faxes.append(fax);
    }
}

bool FaxFollower::isDone() const
{
    return std::all_of(m_faxes.cbegin(), m_faxes.cend(), [](const Fax& fax) { return fax.isFinal(); });
}

bool FaxFollower::read()
{
    FaxLog queue(FaxLog::Queue);
    if (!queue.fetch(m_session, 0, recentlyFinished))
        return false;
    QVector<Fax*> gone;
    for (Fax& fax : m_faxes) {
        if (fax.isFinal())
            continue;
        const auto& entries = queue.faxes();
        const auto found = std::find_if(entries.cbegin(), entries.cend(), [&fax](const auto& entry) {
            return isSameFax(entry->url(), fax.url);
        });
        if (found == entries.cend()) {
            gone.append(&fax);
            continue;
        }
        fax.state = (*found)->state();
        fax.attempt = QStringLiteral("%1/%2")
                          .arg((*found)->schedule().tryNumber())
                          .arg((*found)->schedule().maxTries());
        fax.missed = 0;
    }
    if (gone.isEmpty())
        return true;

    FaxLog sent(FaxLog::Sent);
    if (!sent.fetch(m_session, recentlySent))
        return false;
    for (Fax* fax : qAsConst(gone)) {
        const auto& entries = sent.sent();
        const auto found = std::find_if(entries.cbegin(), entries.cend(), [fax](const auto& entry) {
            return isSameFax(entry->entryUrl(), fax->url);
        });
        if (found == entries.cend()) {
            ++fax->missed;
            continue;
        }
        fax->state = (*found)->state();
        fax->missed = 0;
    }
    return true;
}

void FaxFollower::report(const QVector<Fax>& before) const
{
    for (int i = 0; i < m_faxes.size(); ++i) {
        const Fax& fax = m_faxes.at(i);
        if (before.isEmpty() || before.at(i).state != fax.state)
            m_call.note(QStringLiteral("%1: %2").arg(fax.recipient, stateForPeople(fax.state)));
    }
}

int FaxFollower::follow(int interval)
{
    Terminal::LiveBlock block;
    QElapsedTimer sinceAnswer;
    sinceAnswer.start();
    Terminal::setLastWords(Text::tr("qdfax: Interrupted. The fax goes on; \"qdfax queue\" shows it."));
    m_session.setQuiet(true);
    int status = ExitStatus::Ok;
    QVector<Fax> before;
    while (true) {
        // a line each where they can be written over, else a line for each change
        if (Terminal::isError())
            block.show(table().lines(Terminal::width()));
        else
            report(before);
        if (isDone())
            break;
        m_session.pause(interval * 1000);
        before = m_faxes;
        if (read()) {
            sinceAnswer.restart();
            continue;
        }
        // A fax may be on its way for hours: one request that fails does not end the waiting.
        if (m_session.status() == ExitStatus::AuthError ||
            (m_call.timeout() > 0 && sinceAnswer.elapsed() > m_call.timeout())) {
            status = m_session.status();
            break;
        }
    }
    m_session.setQuiet(false);
    block.show(QStringList());
    Terminal::setLastWords(QString());
    if (status != ExitStatus::Ok)
        return m_call.fail(status, m_session.error() + Text::tr(" The fax may still be on its way."));

    const auto sent =
        std::count_if(m_faxes.cbegin(), m_faxes.cend(), [](const Fax& fax) { return fax.isSent(); });
    if (sent == m_faxes.size())
        return ExitStatus::Ok;
    return m_call.fail(ExitStatus::NotSent, Text::tr("Not every recipient got the fax: %1 of %2 did.")
                                                .arg(QString::number(sent), QString::number(m_faxes.size())));
}

Table FaxFollower::table() const
{
    Table table({{Text::tr("STATE")},
                 {Text::tr("TO"), Table::Left, 12, 1},
                 {Text::tr("PAGES"), Table::Right, 0, 2},
                 {Text::tr("TRY"), Table::Right, 0, 3},
                 {Text::tr("URL")}});
    for (const Fax& fax : m_faxes)
        table.addRow(
            {stateForPeople(fax.state), fax.recipient, QString::number(fax.pages), fax.attempt, fax.url});
    return table;
}
