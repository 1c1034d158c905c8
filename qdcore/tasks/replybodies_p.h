#pragma once

// Collecting the bodies of replies. Internal: not installed.

#include <QByteArray>
#include <QHash>

class QNetworkReply;
class QObject;

/**
 * The bodies of the replies of one task while they arrive.
 *
 * A body is read as it comes, so that little of it waits in the access manager, whose thread would otherwise
 * go on reading, and decompressing, whatever a server sends for as long as the event loop is busy. What all
 * replies of the task bring is limited by Task::maxReplySize.
 */
class ReplyBodies
{
public:
    /// Collects the body of this reply until take(). @p context, which owns this object, ends the connection.
    void collect(QNetworkReply* reply, QObject* context);

    /// What was collected of a finished reply, once; nothing of one that exceeded the limit.
    QByteArray take(QNetworkReply* reply);

    /// Whether the limit is exceeded: any further reply will be aborted.
    bool isOverLimit() const;

private:
    QHash<QNetworkReply*, QByteArray> m_bodies;
    qint64 m_received{0}; ///< The bytes of all replies together.
};
