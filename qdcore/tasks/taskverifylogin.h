#pragma once

#include "tasks/task.h"

/// Verifies the configured credentials: GET "/qdws/v1/verify". A reply that does not verify them is
/// AuthError.
class QDCORE_EXPORT TaskVerifyLogin : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskVerifyLogin(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// Whether the login is verified; false until doneVerifyLogin().
    bool GetResult() const { return m_result; }

Q_SIGNALS:
    /// The server knows the login and the password.
    void doneVerifyLogin();

private:
    bool m_result{false};
};
