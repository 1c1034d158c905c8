#pragma once

#include "quendrainfo.h"
#include "tasks/task.h"

/// Reads the server's identity: GET "/qdws/v1/about". A reply without a readable "about" is Error.
class QDCORE_EXPORT TaskGetQuendraInfo : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetQuendraInfo(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// The record; filled before doneGetFaxInfo() is emitted.
    const QuendraInfo& GetQuendraInfo() const { return m_info; }

Q_SIGNALS:
    /// @p info is the server's "about".
    void doneGetFaxInfo(const QuendraInfo& info);

private:
    QuendraInfo m_info;
};
