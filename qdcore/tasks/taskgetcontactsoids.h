#pragma once

#include "contactlist.h"
#include "tasks/task.h"

/// Reads the identifiers of a book's entries, without the entries: one that is not among them no longer
/// exists. Every network error is Error.
class QDCORE_EXPORT TaskGetContactsOids : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetContactsOids(FaxServer& server);

    /// The book, one of the four of a fax server. Set before execute().
    void setContactsType(ContactList::Type type) { m_contactsType = type; }

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// The identifiers in the server's order, as it wrote them: untrusted text.
    void doneGetContactsOids(const QList<QString>& contactsOids, ContactList::Type type);

private:
    ContactList::Type m_contactsType{ContactList::Unknown};
    QList<QString> m_oids;
};
