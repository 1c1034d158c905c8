#pragma once

// Collecting the bodies of replies. Internal: not installed.

#include <QByteArray>
#include <QHash>

#include <functional>
#include <memory>

class QNetworkReply;
class QObject;
class ReplyReader;

/**
 * The bodies of the replies of one task while they arrive.
 *
 * A body is read as it comes, so that little of it waits in the access manager, whose thread would otherwise
 * go on reading, and decompressing, whatever a server sends for as long as the event loop is busy. Where a
 * reader takes the body, its bytes are kept for the log only. What all replies of the task bring is limited
 * by Task::maxReplySize, and so is what is kept of it; a body as such by maxBodySize.
 *
 * What a reply ended with is taken while it emits finished(): an application may release every reply of its
 * access manager there, before anything that is queued.
 */
class ReplyBodies
{
public:
    /// Limit of a body that is kept as bytes: no text could hold very much more.
    static constexpr int maxBodySize = 256 * 1024 * 1024;

    /// Told once of each reply, from within a signal of it: nothing may be emitted. @p error is a
    /// QNetworkReply::NetworkError. The body is empty where the reply exceeded the limit, and where a reader
    /// took it and no log line will carry it.
    using Ended = std::function<void(QNetworkReply* reply, int error, const QByteArray& body)>;

    /// Collects the body of this reply. @p context, the task, ends it. A reply that is deleted before its end
    /// ends as one that was cancelled; the pointer is then only good for telling which it was. @p reader may
    /// be null.
    void collect(QNetworkReply* reply, QObject* context, const Ended& ended,
                 const std::shared_ptr<ReplyReader>& reader = nullptr);

    /// Whether a limit is exceeded: any further reply will be aborted.
    bool isOverLimit() const;

private:
    struct Body
    {
        QByteArray bytes;
        Ended ended;
        std::shared_ptr<ReplyReader> reader;
        bool isBegun{false};
        bool isCut{false};
    };

    bool take(Body& body, const QByteArray& block);
    void end(QNetworkReply* reply, int error, const QByteArray& rest);

    QHash<QNetworkReply*, Body> m_bodies;
    qint64 m_received{0}; ///< The bytes of all replies together.
    qint64 m_kept{0};     ///< What readers have made of them, as ReplyReader::kept().
};
