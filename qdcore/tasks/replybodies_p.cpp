#include "tasks/replybodies_p.h"

#include "tasks/task.h"

#include <QNetworkReply>

namespace {

/// How much of a reply the access manager buffers until it is read, in bytes.
constexpr qint64 bufferSize = qint64(16) * 1024;

} // namespace

void ReplyBodies::collect(QNetworkReply* reply, QObject* context, const Ended& ended)
{
    m_bodies.insert(reply, {QByteArray(), ended});
    reply->setReadBufferSize(bufferSize);
    QObject::connect(reply, &QNetworkReply::readyRead, context, [this, reply] {
        const auto body = m_bodies.find(reply);
        if (body == m_bodies.end() || body->isCut)
            return;
        if (body->bytes.isEmpty())
            reply->setProperty(Task::bodyHeadProperty, reply->peek(Task::bodyHeadSize));
        m_received += reply->bytesAvailable();
        if (!isOverLimit()) {
            body->bytes.append(reply->readAll());
        } else {
            body->isCut = true;
            body->bytes = QByteArray();
            reply->abort();
        }
    });
    QObject::connect(reply, &QNetworkReply::finished, context, [this, reply] {
        // one that was aborted is closed
        end(reply, reply->error(), reply->isOpen() ? reply->readAll() : QByteArray());
    });
    QObject::connect(reply, &QObject::destroyed, context,
                     [this, reply] { end(reply, QNetworkReply::OperationCanceledError, QByteArray()); });
}

void ReplyBodies::end(QNetworkReply* reply, int error, const QByteArray& rest)
{
    if (!m_bodies.contains(reply))
        return; // it was told before
    Body body = m_bodies.take(reply);
    m_received += rest.size();
    if (body.isCut)
        body.bytes.clear();
    else if (body.bytes.isEmpty())
        body.bytes = rest;
    else
        body.bytes.append(rest);
    body.ended(reply, error, body.bytes);
}

bool ReplyBodies::isOverLimit() const
{
    return m_received > Task::maxReplySize;
}
