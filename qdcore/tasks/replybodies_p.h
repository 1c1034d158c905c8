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
 * A body is read as it arrives, so that little of it is buffered in the access manager, whose thread would
 * otherwise read and decompress whatever a server sends while the event loop is busy. If a reader consumes
 * the body, its bytes are kept for the log only. Task::maxReplySize limits the bytes of all replies of the
 * task together, and the data that readers keep of them; maxBodySize limits a single body.
 *
 * A reply's result is read while it emits finished(): an application may delete every reply of its access
 * manager in that signal, before any queued slot runs.
 */
class ReplyBodies
{
public:
    /// Limit of a body that is kept as bytes: a QString could not hold much more.
    static constexpr int maxBodySize = 256 * 1024 * 1024;

    /// Called once per reply, from within one of its signals: must not emit anything. @p error is a
    /// QNetworkReply::NetworkError. The body is empty if the reply exceeded the limit, or if a reader
    /// consumed it and it will not be logged.
    using Ended = std::function<void(QNetworkReply* reply, int error, const QByteArray& body)>;

    /// Collects the body of this reply, until @p context, the task, is destroyed. A reply that is deleted
    /// before its end is reported as cancelled, with a dangling pointer that only identifies it. @p reader
    /// may be null.
    void collect(QNetworkReply* reply, QObject* context, const Ended& ended,
                 const std::shared_ptr<ReplyReader>& reader = nullptr);

    /// Whether a limit is exceeded; further replies are then aborted.
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
    qint64 m_kept{0};     ///< Memory kept by the readers, see ReplyReader::kept().
};
