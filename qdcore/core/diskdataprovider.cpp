#include "diskdataprovider.h"

#include <QFile>
#include <QFileInfo>

namespace {

/// Bytes read at once. A multiple of three, so that the blocks are encoded independently without padding.
constexpr int blockSize = 3 * 64 * 1024;

} // namespace

void DiskDataProvider::setFileName(const QString& fileName)
{
    m_fileName = fileName;
}

QString DiskDataProvider::toBase64() const
{
    QFile file(m_fileName);
    // a pipe or a device may have no end
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > maxFileSize)
        return QString();

    // Block by block, to avoid copies of the whole file and of its base64 in addition to the text.
    QString text;
    text.reserve(int((file.size() + 2) / 3 * 4));
    QByteArray block;
    qint64 total = 0;
    do { // a short block is the last one, since padding is allowed only at the end
        block = file.read(blockSize);
        total += block.size();
        if (total > maxFileSize)
            return QString();
        const QByteArray encoded = block.toBase64();
        text += QLatin1String(encoded.constData(), encoded.size());
    } while (block.size() == blockSize);
    return file.error() == QFileDevice::NoError ? text : QString();
}
