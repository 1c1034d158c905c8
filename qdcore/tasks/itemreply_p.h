#pragma once

// What the log and list tasks have in common. Internal: not installed.

#include "domtext_p.h"
#include "tasks/task_p.h"

#include <QSharedPointer>

#include <type_traits>

/// The properties in which these tasks' replies differ.
struct ItemReply
{
    LogText reply;     ///< Goes before the logged body of a good reply.
    LogText error;     ///< With %1 for the network error.
    LogText errorBody; ///< Goes before the logged body of a failed reply.
    bool isLog{false}; ///< Logs carry a message, lists do not.
    LogText invalid{}; ///< Logs only: the message was not "Success".
};

template <typename T, typename ListPtr, typename Read>
void TaskPrivate::readItems(const QString& item, void (T::*done)(ListPtr), Read read)
{
    if (isStarted())
        return;
    const auto items = std::decay_t<ListPtr>::create();
    m_emitItems = [task = static_cast<T*>(&m_task), done, items] { Q_EMIT(task->*done)(items); };
    readChildren([this, item, items, read, hadMessage = false](const QDomElement& child, bool) mutable {
        const QString name = child.tagName();
        if (name == item) {
            read(child, *items);
            return ReplyReader::recordSize;
        }
        if (name == QLatin1String("message") && !std::exchange(hadMessage, true))
            m_saysSuccess = child.text() == QLatin1String("Success");
        return qint64(0);
    });
}

template <typename Entry, typename T, typename ListPtr>
void TaskPrivate::readEntries(const QString& item, void (T::*done)(ListPtr))
{
    readItems(item, done, [this](const QDomElement& element, auto& entries) {
        const auto entry = QSharedPointer<Entry>::create();
        if (entry->readFax(element, m_task.protocolVersion()))
            entries.append(entry);
    });
}
