#pragma once

#include "faxuser.h"
#include "tasks/task.h"

/// Writes a user's record back: PUT to the URL that the record itself carries.
class QDCORE_EXPORT TaskModifyFaxUser : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskModifyFaxUser(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// The record to write, copied. Without it execute() sends nothing and the task never ends.
    void setUser(const FaxUser& user);

Q_SIGNALS:
    /// @p user is the record that was sent.
    void doneModifyFaxUser(const FaxUser& user);

private:
    FaxUser m_user;
    bool m_userSet{false};
};
