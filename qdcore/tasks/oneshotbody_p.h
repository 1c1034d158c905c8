#pragma once

// The body of a request that must not be sent twice. Internal: not installed.

#include <QByteArray>
#include <QIODevice>
#include <QVector>

/**
 * A request body that can be read once.
 *
 * When a connection ends before the reply has begun, QNetworkAccessManager silently sends the request again;
 * for a submission that would be a second fax. It cannot do so with a sequential device, which can be neither
 * buffered nor rewound.
 *
 * Files are encoded while they are read, block by block; each block is freed after encoding.
 */
class OneShotBody : public QIODevice
{
public:
    explicit OneShotBody(const QByteArray& bytes = QByteArray());

    void append(const QByteArray& bytes);
    /// Appends the base64 encoding of the concatenated blocks; the size of each but the last must be a
    /// multiple of three.
    void appendEncoded(const QVector<QByteArray>& blocks);

    bool isSequential() const override { return true; }
    /// What is left to be read, in bytes.
    qint64 size() const override { return m_left; }
    /// Called by the access manager; refuses without the warning that QIODevice would print.
    bool seek(qint64) override { return false; }
    qint64 bytesAvailable() const override { return m_left + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char* to, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    struct Block
    {
        QByteArray bytes;
        bool isRaw;
    };

    QVector<Block> m_blocks;
    int m_next{0};        ///< The block that is read next.
    QByteArray m_current; ///< As it is sent.
    int m_position{0};    ///< In it.
    qint64 m_left{0};
};
