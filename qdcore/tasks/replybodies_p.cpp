#include "tasks/replybodies_p.h"

#include "tasks/task.h"

#include <QNetworkReply>

namespace {

/// How much of a reply the access manager buffers until it is read, in bytes.
constexpr qint64 bufferSize = qint64(16) * 1024;

} // namespace

void ReplyBodies::collect(QNetworkReply* reply, QObject* context)
{
    m_bodies.insert(reply, QByteArray());
    reply->setReadBufferSize(bufferSize);
    QObject::connect(reply, &QNetworkReply::readyRead, context, [this, reply] {
        const auto body = m_bodies.find(reply);
        if (body == m_bodies.end())
            return;
        if (body->isEmpty())
            reply->setProperty(Task::bodyHeadProperty, reply->peek(Task::bodyHeadSize));
        m_received += reply->bytesAvailable();
        if (!isOverLimit()) {
            body->append(reply->readAll());
        } else {
            m_bodies.erase(body);
            reply->abort();
        }
    });
}

QByteArray ReplyBodies::take(QNetworkReply* reply)
{
    const auto body = m_bodies.find(reply);
    if (body == m_bodies.end())
        return QByteArray();
    const QByteArray rest = reply->readAll();
    m_received += rest.size();
    const QByteArray whole = body->isEmpty() ? rest : body->append(rest);
    m_bodies.erase(body);
    return whole;
}

bool ReplyBodies::isOverLimit() const
{
    return m_received > Task::maxReplySize;
}
