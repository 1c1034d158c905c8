#include "tasks/replybodies_p.h"

#include "log_p.h"
#include "tasks/replyreader_p.h"
#include "tasks/task.h"

#include <QNetworkReply>

#include <utility>

namespace {

/// How much of a reply the access manager buffers until it is read, in bytes.
constexpr qint64 bufferSize = qint64(16) * 1024;

} // namespace

void ReplyBodies::collect(QNetworkReply* reply, QObject* context, const Ended& ended,
                          const std::shared_ptr<ReplyReader>& reader)
{
    m_bodies.insert(reply, {QByteArray(), ended, reader});
    reply->setReadBufferSize(bufferSize);
    QObject::connect(reply, &QNetworkReply::readyRead, context, [this, reply] {
        const auto body = m_bodies.find(reply);
        if (body == m_bodies.end() || body->isCut)
            return;
        if (!std::exchange(body->isBegun, true))
            reply->setProperty(Task::bodyHeadProperty, reply->peek(Task::bodyHeadSize));
        if (!take(*body, reply->readAll()))
            reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::finished, context, [this, reply] {
        // an aborted reply is closed
        end(reply, reply->error(), reply->isOpen() ? reply->readAll() : QByteArray());
    });
    QObject::connect(reply, &QObject::destroyed, context,
                     [this, reply] { end(reply, QNetworkReply::OperationCanceledError, QByteArray()); });
}

void ReplyBodies::end(QNetworkReply* reply, int error, const QByteArray& rest)
{
    if (!m_bodies.contains(reply))
        return; // already reported
    Body body = m_bodies.take(reply);
    if (!body.isCut && !take(body, rest))
        error = QNetworkReply::OperationCanceledError;
    body.ended(reply, error, body.bytes);
}

/// Adds received bytes. False, with the body discarded, if a limit is exceeded.
bool ReplyBodies::take(Body& body, const QByteArray& block)
{
    m_received += block.size();
    if (body.reader) {
        m_kept -= body.reader->kept();
        body.reader->add(block);
        m_kept += body.reader->kept();
    }
    const bool hasRoom = maxBodySize - body.bytes.size() >= block.size();
    // The log level may be raised before the reply ends; bytes that arrived earlier are then missing from the
    // log.
    if (hasRoom && (!body.reader || Logger::inst().level() >= Logger::DEBUG))
        body.bytes.append(block);
    body.isCut = isOverLimit() || (body.reader ? body.reader->isOverLimit() : !hasRoom);
    if (body.isCut)
        body.bytes = QByteArray();
    return !body.isCut;
}

bool ReplyBodies::isOverLimit() const
{
    return m_received > Task::maxReplySize || m_kept > Task::maxReplySize;
}
