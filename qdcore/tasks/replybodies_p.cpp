#include "tasks/replybodies_p.h"

#include "log_p.h"
#include "tasks/replyreader_p.h"
#include "tasks/task.h"

#include <QNetworkReply>

#include <limits>
#include <utility>

namespace {

/// How much of a reply the access manager buffers until it is read, in bytes.
constexpr qint64 bufferSize = qint64(16) * 1024;

/// How much is parsed in a turn of the event loop, in bytes: some milliseconds.
constexpr int portionSize = 64 * 1024;

/// How much may wait to be parsed, in bytes.
constexpr int maxArrived = 128 * 1024 * 1024;

} // namespace

void ReplyBodies::collect(QNetworkReply* reply, QObject* context, const Ended& ended,
                          const std::shared_ptr<ReplyReader>& reader, Reading reading)
{
    const auto body = std::make_shared<Body>();
    body->reply = reply;
    body->context = context;
    body->reader = reader;
    body->portion = reading == InPortions ? portionSize : std::numeric_limits<int>::max();
    const auto end = [=](int error, const QByteArray& rest) {
        if (body->ended)
            return; // it was told before
        body->ended = [=] {
            ended(reply, body->isCut ? QNetworkReply::OperationCanceledError : error, body->bytes);
        };
        arrive(body, rest);
    };
    reply->setReadBufferSize(bufferSize);
    QObject::connect(reply, &QNetworkReply::readyRead, context, [=] {
        if (body->isCut)
            return;
        if (!std::exchange(body->isBegun, true))
            reply->setProperty(Task::bodyHeadProperty, reply->peek(Task::bodyHeadSize));
        arrive(body, reply->readAll());
    });
    QObject::connect(reply, &QNetworkReply::finished, context, [=] {
        // one that was aborted is closed
        end(reply->error(), reply->isOpen() ? reply->readAll() : QByteArray());
    });
    QObject::connect(reply, &QObject::destroyed, context,
                     [=] { end(QNetworkReply::OperationCanceledError, QByteArray()); });
}

void ReplyBodies::arrive(const std::shared_ptr<Body>& body, const QByteArray& block)
{
    if (!body->isCut)
        body->arrived.append(block);
    if (!body->isQueued)
        takeArrived(body);
}

/// Takes a portion of what has arrived, and leaves the rest to a later turn of the event loop: what arrives
/// compressed may come in blocks of many megabytes.
void ReplyBodies::takeArrived(const std::shared_ptr<Body>& body)
{
    const int left = body->arrived.size() - body->taken;
    const int size =
        left > maxArrived ? left : qMin(left, body->portion); // better blocked than out of memory
    take(*body, QByteArray::fromRawData(body->arrived.constData() + body->taken, size));
    body->taken += size;
    if (body->isCut || size == left) {
        body->arrived.clear();
        body->taken = 0;
    }
    if (body->isCut && body->reply && !body->ended)
        body->reply->abort(); // ends it
    body->isQueued = !body->arrived.isEmpty();
    if (body->isQueued) {
        const auto next = [this, body] { takeArrived(body); };
        QMetaObject::invokeMethod(body->context, next, Qt::QueuedConnection);
    } else if (body->ended) {
        const auto ended = std::exchange(body->ended, [] {});
        ended();
    }
}

/// Takes bytes that have come; the body is gone when that exceeds a limit.
void ReplyBodies::take(Body& body, const QByteArray& block)
{
    if (body.isCut)
        return;
    m_received += block.size();
    if (body.reader) {
        m_kept -= body.reader->kept();
        body.reader->add(block);
        m_kept += body.reader->kept();
    }
    // The log level may be raised before the reply ends: half a body is not logged.
    const bool hasRoom = maxBodySize - body.bytes.size() >= block.size();
    body.isKept = body.isKept && hasRoom && (!body.reader || Logger::inst().level() >= Logger::DEBUG);
    if (body.isKept)
        body.bytes.append(block.constData(), block.size());
    else
        body.bytes.clear();
    body.isCut = isOverLimit() || (body.reader ? body.reader->isOverLimit() : !hasRoom);
    if (body.isCut)
        body.bytes = QByteArray();
}

bool ReplyBodies::isOverLimit() const
{
    return m_received > Task::maxReplySize || m_kept > Task::maxReplySize;
}
