#pragma once

// The body of a request that must not be sent twice. Internal: not installed.

#include <QByteArray>
#include <QIODevice>

#include <cstring>

/**
 * A request body that can be read once.
 *
 * When a connection ends before the reply has begun, QNetworkAccessManager silently sends the request again;
 * for a submission that would be a second fax. It cannot do so with a body that it can neither buffer nor
 * rewind, which is what a sequential device says of itself.
 */
class OneShotBody : public QIODevice
{
public:
    OneShotBody(const QByteArray& data, QObject* parent)
        : QIODevice(parent)
        , m_data(data)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    /// The access manager tries; it gets its no without the warning that QIODevice would print.
    bool seek(qint64) override { return false; }
    qint64 bytesAvailable() const override
    {
        return m_data.size() - m_position + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char* to, qint64 maxSize) override
    {
        const qint64 size = qMin(maxSize, qint64(m_data.size()) - m_position);
        if (size <= 0)
            return -1;
        std::memcpy(to, m_data.constData() + m_position, size_t(size));
        m_position += size;
        return size;
    }

    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_data;
    qint64 m_position{0};
};
