#pragma once

#include "tasks/taskchangecontact.h"

/// Creates an entry in a contact book: POST to the book's collection. The entry takes its identifier and URL
/// from the reply.
class QDCORE_EXPORT TaskAddContact : public TaskChangeContact
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskAddContact(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// @p contact is the entry as the server returned it.
    void doneAddContact(const ContactUnit& contact, ContactList::Type bookType);

protected:
    bool readBack(const QDomElement& root) override;
};
