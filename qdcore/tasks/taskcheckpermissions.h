#pragma once

#include "tasks/task.h"

/// Reads what the user may do with contact books: GET "/qdws/v1/user_options".
class QDCORE_EXPORT TaskChekPermissions : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskChekPermissions(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// @p permissions are the bits of FaxUserPermissions.
    void doneCheckPermissions(unsigned int permissions);
};
