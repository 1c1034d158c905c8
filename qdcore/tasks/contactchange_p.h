#pragma once

// The end that the contact-changing tasks have in common. Internal: not installed.

#include "log_p.h"
#include "tasks/taskchangecontact.h"

#include <QDomDocument>

/// What tells one of these replies from another.
struct ContactChange
{
    QString message;   ///< What the server says when it has done it.
    LogText reply;     ///< Goes before the logged body of a good reply.
    LogText invalid;   ///< The reply confirms nothing.
    LogText error;     ///< With %1 for the network error.
    LogText errorBody; ///< Goes before the logged body of a failed reply.
};

template <typename T>
void TaskChangeContact::finishChange(const ContactChange& change,
                                     void (T::*done)(const ContactUnit&, ContactList::Type))
{
    if (!succeeded()) {
        logReplyError(change.error, change.errorBody);
        return fail(errorStatus(ErrorMapping::Contact));
    }

    logBody(change.reply);
    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement root = document.documentElement();
    const QDomElement message = root.firstChildElement(QStringLiteral("message"));
    if (message.text() != change.message || !readBack(root)) {
        Logger::inst().log(Logger::ERROR, change.invalid.text, change.invalid.file, change.invalid.line);
        return fail(Task::InvalidReply);
    }

    const QSharedPointer<ContactUnit> contact = m_contact;
    deleteLater();
    Q_EMIT(static_cast<T*>(this)->*done)(*contact, m_bookType);
}
