#pragma once

// Collecting the bodies of replies. Internal: not installed.

#include <QByteArray>
#include <QPointer>

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

    /// Whether a reader gets what has arrived within the reply's signals, or in several turns of the event
    /// loop where that is much. The end may then be told when the reply is gone already.
    enum Reading { AtOnce, InPortions };

    /// Collects the body of this reply. @p context, the task, ends it. A reply that is deleted before its end
    /// ends as one that was cancelled; the pointer is then only good for telling which it was. @p reader may
    /// be null.
    void collect(QNetworkReply* reply, QObject* context, const Ended& ended,
                 const std::shared_ptr<ReplyReader>& reader = nullptr, Reading reading = AtOnce);

    /// Whether a limit is exceeded; further replies are then aborted.
    bool isOverLimit() const;

private:
    struct Body
    {
        QPointer<QNetworkReply> reply;
        QObject* context{nullptr};
        std::shared_ptr<ReplyReader> reader;
        int portion{0};
        QByteArray rest; ///< What had not been read when the reply ended,
        int taken{0};    ///< and how much of it has been taken since.
        QByteArray bytes;
        std::function<void()> ended; ///< Set when the reply has ended.
        bool isBegun{false};
        bool isKept{true}; ///< In bytes.
        bool isCut{false};
        bool isQueued{false}; ///< A call of takePortion() is.
    };

    void takePortion(const std::shared_ptr<Body>& body);
    void take(Body& body, const QByteArray& block);

    qint64 m_received{0}; ///< The bytes of all replies together.
    qint64 m_kept{0};     ///< Memory kept by the readers, see ReplyReader::kept().
};
