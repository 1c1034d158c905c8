#pragma once

#include "faxuser.h"
#include "tasks/task.h"

/// Reads a user's record: GET "/qdws/v1/users/" and the name. Every network error is Error, 401 included.
class QDCORE_EXPORT TaskGetFaxUser : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetFaxUser(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// The user's login on the server. Set before execute().
    void setUser(const QString& name) { m_userName = name; }

Q_SIGNALS:
    /// @p user is the record as the server has it.
    void doneGetFaxUser(const FaxUser& user);

private:
    QString m_userName;
    FaxUser m_user;
};
