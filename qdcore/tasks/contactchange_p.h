#pragma once

// Reply handling shared by the tasks that change contacts. Internal: not installed.

#include "tasks/task_p.h"
#include "tasks/taskchangecontact.h"

#include <QDomDocument>

/// The properties in which these replies differ.
struct ContactChange
{
    QString message;   ///< The server's confirmation.
    LogText reply;     ///< Goes before the logged body of a good reply.
    LogText invalid;   ///< The reply confirms nothing.
    LogText error;     ///< With %1 for the network error.
    LogText errorBody; ///< Goes before the logged body of a failed reply.
};

template <typename T>
void TaskPrivate::finishChange(const ContactChange& change,
                               void (T::*done)(const ContactUnit&, ContactList::Type))
{
    if (!m_task.succeeded())
        return failReply(change.error, change.errorBody);

    logBody(change.reply);
    QDomDocument document;
    if (!m_task.parseBody(document))
        return;

    TaskChangeContact& task = static_cast<T&>(m_task);
    const QDomElement root = document.documentElement();
    const QDomElement message = root.firstChildElement(QStringLiteral("message"));
    if (message.text() != change.message || !task.readBack(root)) {
        Logger::inst().log(Logger::ERROR, change.invalid.text, change.invalid.file, change.invalid.line);
        return task.fail(Task::InvalidReply);
    }

    const QSharedPointer<ContactUnit> contact = task.m_contact;
    const ContactList::Type book = task.m_bookType;
    task.deleteLater();
    Q_EMIT(static_cast<T&>(task).*done)(*contact, book);
}
