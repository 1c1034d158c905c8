#pragma once

// A fake network: a fuzz target determines the replies.

#include "faxmanager.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>

#include <cstring>

/// A pending reply.
class FakeReply : public QNetworkReply
{
    Q_OBJECT
public:
    FakeReply(const QNetworkRequest& request, QNetworkAccessManager::Operation operation, QObject* parent)
        : QNetworkReply(parent)
    {
        setRequest(request);
        setUrl(request.url());
        setOperation(operation);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    /// Delivers the body in so many pieces, then finishes. A network error other than NoError is emitted
    /// before finished(), as for an HTTP error status. Delivery stops if the reply is aborted or deleted.
    void deliver(const QByteArray& body, int pieces, NetworkError code)
    {
        const QPointer<FakeReply> self(this);
        const int size = qMax(1, (body.size() + pieces - 1) / qMax(1, pieces));
        for (int at = 0; at < body.size(); at += size) {
            m_data += body.mid(at, size);
            Q_EMIT readyRead();
            if (!self || isFinished())
                return;
        }
        end(code);
    }

    void abort() override
    {
        if (!isFinished())
            end(OperationCanceledError);
    }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_data.size() + QNetworkReply::bytesAvailable(); }

protected:
    qint64 readData(char* to, qint64 maxSize) override
    {
        const qint64 size = qMin(maxSize, qint64(m_data.size()));
        std::memcpy(to, m_data.constData(), size_t(size));
        m_data.remove(0, int(size));
        return size == 0 && isFinished() ? -1 : size;
    }

private:
    void end(NetworkError code)
    {
        const QPointer<FakeReply> self(this);
        if (code != NoError) {
            setError(code, QStringLiteral("as the input says"));
            QT_WARNING_PUSH
            QT_WARNING_DISABLE_DEPRECATED
            Q_EMIT error(code);
            QT_WARNING_POP
        }
        if (!self)
            return;
        setFinished(true);
        Q_EMIT finished();
    }

    QByteArray m_data;
};

/// Sends nothing; keeps the pending replies in the order of the requests.
class FakeNetwork : public QNetworkAccessManager
{
    Q_OBJECT
public:
    using QNetworkAccessManager::QNetworkAccessManager;

    /// The next reply to be delivered; null if none is pending.
    FakeReply* next()
    {
        while (!m_pending.isEmpty()) {
            const QPointer<FakeReply> reply = m_pending.takeFirst();
            if (reply && !reply->isFinished())
                return reply.data();
        }
        return nullptr;
    }

    /// The number of replies not yet deleted.
    int left() const { return findChildren<FakeReply*>().size(); }

protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request,
                                 QIODevice* body) override
    {
        if (body)
            body->readAll();
        auto* reply = new FakeReply(request, operation, this);
        m_pending.append(reply);
        return reply;
    }

private:
    QList<QPointer<FakeReply>> m_pending;
};

/// A FaxManager on a fake network, without a ContactManager.
class FakeManager : public FaxManager
{
    Q_OBJECT
public:
    FakeManager();

    FakeNetwork& network() { return static_cast<FakeNetwork&>(nam()); }
};
