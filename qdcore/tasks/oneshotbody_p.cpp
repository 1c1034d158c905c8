#include "tasks/oneshotbody_p.h"

#include <cstring>

OneShotBody::OneShotBody(const QByteArray& bytes)
{
    append(bytes);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

void OneShotBody::append(const QByteArray& bytes)
{
    m_blocks.append({bytes, false});
    m_left += bytes.size();
}

void OneShotBody::appendEncoded(const QVector<QByteArray>& blocks)
{
    for (const QByteArray& block : blocks) {
        m_blocks.append({block, true});
        m_left += (block.size() + 2) / 3 * 4;
    }
}

qint64 OneShotBody::readData(char* to, qint64 maxSize)
{
    qint64 done = 0;
    while (done < maxSize) {
        if (m_position == m_current.size()) {
            if (m_next == m_blocks.size())
                break;
            Block& block = m_blocks[m_next++];
            m_current = block.isRaw ? block.bytes.toBase64() : block.bytes;
            block.bytes.clear();
            m_position = 0;
        }
        const qint64 size = qMin(maxSize - done, qint64(m_current.size() - m_position));
        std::memcpy(to + done, m_current.constData() + m_position, size_t(size));
        m_position += int(size);
        done += size;
    }
    m_left -= done;
    return done > 0 || maxSize == 0 ? done : -1;
}
