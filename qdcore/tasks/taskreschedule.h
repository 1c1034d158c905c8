#pragma once

#include "tasks/task.h"

#include <QDateTime>
#include <QUrl>

/// Moves a queued fax to another time: an empty PUT to its outbound log resource. Success means that the
/// server will try.
class QDCORE_EXPORT TaskReschedule : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskReschedule(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// The entry's URL as the server gave it; its path is what counts. With an empty one execute() does
    /// nothing.
    void setFaxEntryUrl(const QUrl& url) { m_faxEntryUrl = url; }

    /// When to send, in any time zone; null, the value at first, means now.
    void setDateTime(const QDateTime& dateTime) { m_dateTime = dateTime; }

Q_SIGNALS:
    /// The server has accepted the request.
    void doneReschedule();

private:
    QUrl m_faxEntryUrl;
    QDateTime m_dateTime;
};
