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
        // a plain pointer: the body would otherwise own itself where its task goes before this is called
        body->ended = [=, ending = body.get()] {
            ended(reply, ending->isCut ? QNetworkReply::OperationCanceledError : error, ending->bytes);
        };
        body->rest = rest;
        if (!body->isQueued)
            takePortion(body);
    };
    reply->setReadBufferSize(bufferSize);
    QObject::connect(reply, &QNetworkReply::readyRead, context, [=] {
        if (body->isCut)
            return;
        if (!std::exchange(body->isBegun, true))
            reply->setProperty(Task::bodyHeadProperty, reply->peek(Task::bodyHeadSize));
        if (!body->isQueued)
            takePortion(body);
    });
    QObject::connect(reply, &QNetworkReply::finished, context, [=] {
        // one that was aborted is closed
        end(reply->error(), reply->isOpen() ? reply->readAll() : QByteArray());
    });
    QObject::connect(reply, &QObject::destroyed, context,
                     [=] { end(QNetworkReply::OperationCanceledError, QByteArray()); });
}

/// Takes a portion of what has arrived, and leaves the rest to a later turn of the event loop: what arrives
/// compressed may come in blocks of many megabytes. The rest of an ended reply is in the body, otherwise it
/// is in the reply.
void ReplyBodies::takePortion(const std::shared_ptr<Body>& body)
{
    const bool isInReply = !body->ended && body->reply;
    const qint64 left = isInReply ? body->reply->bytesAvailable() : body->rest.size() - body->taken;
    const qint64 size =
        left > maxArrived ? left : qMin<qint64>(left, body->portion); // rather blocked than out of memory
    if (isInReply) {
        take(*body, body->reply->read(size));
    } else {
        take(*body, QByteArray::fromRawData(body->rest.constData() + body->taken, int(size)));
        body->taken += int(size);
    }
    if (body->isCut && isInReply)
        body->reply->abort(); // ends it
    body->isQueued = left > size && !body->isCut;
    if (body->isQueued) {
        const auto next = [this, body] { takePortion(body); };
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
