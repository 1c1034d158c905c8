#include "fileblocks_p.h"

#include <QFile>
#include <QFileInfo>

bool readBlocks(const QString& fileName, qint64 limit, const std::function<void(const QByteArray&)>& take)
{
    QFile file(fileName);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        file.size() > limit)
        return false;
    constexpr int blockSize = 3 * 64 * 1024;
    qint64 total = 0;
    for (int size = blockSize; size == blockSize;) { // a short block is the last one
        QByteArray block(blockSize, Qt::Uninitialized);
        size = 0;
        for (qint64 got = 1; got > 0 && size < blockSize; size += int(got)) {
            got = file.read(block.data() + size, blockSize - size);
            if (got < 0)
                return false;
        }
        total += size;
        if (total > limit)
            return false;
        if (size == 0)
            break;
        block.resize(size);
        take(block);
    }
    return total > 0;
}
