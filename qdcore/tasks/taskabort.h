#pragma once

#include "tasks/task.h"

#include <QUrl>

/// Cancels a queued fax: DELETE of its entry. Success means that the server will try.
class QDCORE_EXPORT TaskAbort : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskAbort(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// The entry's URL as the server gave it; its path and query are what counts. With an empty one
    /// execute() does nothing.
    void setFaxEntryUrl(const QUrl& url) { m_faxEntryUrl = url; }

Q_SIGNALS:
    /// The server has accepted the request; the fax's state shows whether it was stopped.
    void doneAbort();

private:
    QUrl m_faxEntryUrl;
};
