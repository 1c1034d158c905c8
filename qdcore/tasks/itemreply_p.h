#pragma once

// The end that the log and list tasks have in common. Internal: not installed.

#include "domtext_p.h"
#include "tasks/task_p.h"

#include <QDomDocument>
#include <QSharedPointer>

#include <type_traits>

/// What tells one of these replies from another.
struct ItemReply
{
    QString element;   ///< The name of an item, a child of the document element.
    LogText reply;     ///< Goes before the logged body of a good reply.
    LogText error;     ///< With %1 for the network error.
    LogText errorBody; ///< Goes before the logged body of a failed reply.
    bool isLog{false}; ///< Logs carry a message, lists do not.
    LogText invalid{}; ///< Logs only: the message was not "Success".
};

template <typename T, typename ListPtr, typename Read>
void TaskPrivate::finishItems(const ItemReply& reply, void (T::*done)(ListPtr), Read read)
{
    if (!m_task.succeeded())
        return failReply(reply.error, reply.errorBody);

    logBody(reply.reply);
    QDomDocument document;
    if (!m_task.parseBody(document))
        return;

    QDomElement root = document.documentElement();
    const auto items = std::decay_t<ListPtr>::create();
    takeElements(root, reply.element, [&](const QDomElement& item) { read(item, *items); });
    const bool isValid =
        !reply.isLog || root.firstChildElement(QStringLiteral("message")).text() == QLatin1String("Success");

    // the entries are reported whatever the message says, and the error is logged afterwards
    m_task.deleteLater();
    Q_EMIT(static_cast<T&>(m_task).*done)(items);
    if (!isValid)
        Logger::inst().log(Logger::ERROR, reply.invalid.text, reply.invalid.file, reply.invalid.line);
}

template <typename Entry>
auto TaskPrivate::entryReader() const
{
    return [version = m_task.protocolVersion()](const QDomElement& element, auto& entries) {
        const auto entry = QSharedPointer<Entry>::create();
        if (entry->readFax(element, version))
            entries.append(entry);
    };
}
