#pragma once

#include "tasks/taskchangecontact.h"

/// Changes an entry of a contact book: PUT to the path of the entry's URL.
class QDCORE_EXPORT TaskModifyContact : public TaskChangeContact
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskModifyContact(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// @p contact is the entry that was sent.
    void doneModifyContact(const ContactUnit& contact, ContactList::Type bookType);
};
