#pragma once

#include "tasks/taskchangecontact.h"

/// Removes an entry of a contact book: DELETE of the path of the entry's URL.
class QDCORE_EXPORT TaskDeleteContact : public TaskChangeContact
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskDeleteContact(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// @p contact is the entry that was removed.
    void doneDeleteContact(const ContactUnit& contact, ContactList::Type bookType);
};
