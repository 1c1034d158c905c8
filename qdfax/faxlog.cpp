#include "faxlog.h"

#include "recordjson.h"
#include "session.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "text.h"

#include <algorithm>

namespace {

using EntriesPtr = BaseFaxEntry::FaxEntriesPtrListPtr;

QDateTime timeOf(const FaxEntry& entry)
{
    return entry.createTime();
}

QDateTime timeOf(const OutboundFaxEntry& entry)
{
    return entry.sentAt().isValid() ? entry.sentAt() : entry.startTime();
}

QDateTime timeOf(const InboundFaxEntry& entry)
{
    return entry.completeTime();
}

template <typename T>
QVector<QSharedPointer<T>> ofClass(const EntriesPtr& entries)
{
    QVector<QSharedPointer<T>> result;
    result.reserve(entries->size());
    for (const QSharedPointer<BaseFaxEntry>& entry : qAsConst(*entries)) {
        if (const auto typed = entry.dynamicCast<T>())
            result.append(typed);
    }
    return result;
}

template <typename T>
void sortNewestFirst(QVector<QSharedPointer<T>>& entries, int limit)
{
    // compare numbers: QDateTime looks up its time zone in each comparison
    QVector<QPair<qint64, QSharedPointer<T>>> keyed;
    keyed.reserve(entries.size());
    for (const QSharedPointer<T>& entry : qAsConst(entries)) {
        const QDateTime time = timeOf(*entry);
        keyed.append({time.isValid() ? time.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min(), entry});
    }
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    entries.clear();
    for (const auto& entry : qAsConst(keyed)) {
        if (limit <= 0 || entries.size() < limit)
            entries.append(entry.second);
    }
}

} // namespace

QStringList FaxLog::names()
{
    return {QStringLiteral("queue"), QStringLiteral("status"), QStringLiteral("sent"),
            QStringLiteral("inbox")};
}

bool FaxLog::fetch(Session& session, int limit, int finished)
{
    bool ok = false;
    switch (m_kind) {
    case Queue:
    case Status: {
        auto* task = session.task<TaskGetFaxEntry>(Task::GetFaxEntry);
        task->setTaskEntryType(m_kind == Queue ? TaskGetFaxEntry::EntryQueue
                                               : TaskGetFaxEntry::EntryOutboundStatus);
        task->setCompleteLimit(m_kind == Queue ? finished : limit);
        ok = session.run(
            task, &TaskGetFaxEntry::doneGetFaxEntry,
            [this](const EntriesPtr& entries) { m_faxes = ofClass<FaxEntry>(entries); },
            m_kind == Queue ? Text::tr("Reading the queue") : Text::tr("Reading the status"));
        sortNewestFirst(m_faxes, m_kind == Queue ? limit : 0);
        break;
    }
    case Sent: {
        auto* task = session.task<TaskGetOutboundFaxEntry>(Task::GetOutboundFaxEntry);
        task->setCompleteLimit(limit);
        ok = session.run(
            task, &TaskGetOutboundFaxEntry::doneGetFaxEntry,
            [this](const EntriesPtr& entries) { m_sent = ofClass<OutboundFaxEntry>(entries); },
            Text::tr("Reading the log of sent faxes"));
        sortNewestFirst(m_sent, limit);
        break;
    }
    case Inbox: {
        auto* task = session.task<TaskGetInboundFaxEntry>(Task::GetInboundFaxEntry);
        task->setCompleteLimit(limit);
        ok = session.run(
            task, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
            [this](const InboundFaxEntriesPtrListPtr& entries) { m_received = *entries; },
            Text::tr("Reading the log of received faxes"));
        sortNewestFirst(m_received, limit);
        break;
    }
    }
    return ok;
}

int FaxLog::size() const
{
    return m_faxes.size() + m_sent.size() + m_received.size();
}

Table FaxLog::table() const
{
    switch (m_kind) {
    case Queue:
    case Status: {
        Table table({{Text::tr("STATE")},
                     {Text::tr("TO"), Table::Left, 12},
                     {Text::tr("PAGES"), Table::Right, 0, 2},
                     {Text::tr("TRY"), Table::Right, 0, 4},
                     {Text::tr("CREATED"), Table::Left, 0, 1},
                     {Text::tr("SEND AT"), Table::Left, 0, 3},
                     {Text::tr("SUBJECT"), Table::Left, 8, 5},
                     {Text::tr("URL")}});
        for (const auto& entry : m_faxes) {
            const FaxScheduleOptions& schedule = entry->schedule();
            table.addRow({stateForPeople(entry->state()), entry->recipient(), QString::number(entry->pages()),
                          QStringLiteral("%1/%2").arg(schedule.tryNumber()).arg(schedule.maxTries()),
                          timeText(entry->createTime()), timeText(schedule.dateToSend()), entry->subject(),
                          urlText(entry->url())});
        }
        return table;
    }
    case Sent: {
        Table table({{Text::tr("STATE")},
                     {Text::tr("ENDED"), Table::Left, 0, 1},
                     {Text::tr("TO"), Table::Left, 12},
                     {Text::tr("PAGES"), Table::Right, 0, 2},
                     {Text::tr("SUBJECT"), Table::Left, 8, 3},
                     {Text::tr("USER"), Table::Left, 6, 4}});
        for (const auto& entry : m_sent) {
            table.addRow({stateForPeople(entry->state()), timeText(timeOf(*entry)), entry->recipient(),
                          QString::number(entry->pages()), entry->subject(), entry->username()});
        }
        return table;
    }
    case Inbox:
        break;
    }
    Table table({{Text::tr("N"), Table::Right},
                 {Text::tr("RECEIVED"), Table::Left, 0, 1},
                 {Text::tr("FROM"), Table::Left, 10},
                 {Text::tr("TO"), Table::Left, 8, 4},
                 {Text::tr("PAGES"), Table::Right, 0, 2},
                 {Text::tr("STATUS"), Table::Left, 8, 3},
                 {Text::tr("FILE"), Table::Left, 10, 5},
                 {Text::tr("DELIVERED TO"), Table::Left, 12, 6},
                 {Text::tr("ERROR"), Table::Left, 8, 7}});
    int number = 0;
    for (const auto& entry : m_received) {
        table.addRow({QString::number(++number), timeText(entry->completeTime()), entry->remoteId(),
                      entry->toName(), QString::number(entry->pages()), entry->status(), entry->filename(),
                      entry->deliveredTo(), entry->error()});
    }
    return table;
}

QJsonObject FaxLog::json(int index) const
{
    switch (m_kind) {
    case Sent:
        return toJson(*m_sent.at(index));
    case Inbox:
        return toJson(*m_received.at(index));
    default:
        return toJson(*m_faxes.at(index));
    }
}
