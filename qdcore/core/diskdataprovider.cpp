#include "diskdataprovider.h"

#include "fileblocks_p.h"

#include <QFileInfo>

void DiskDataProvider::setFileName(const QString& fileName)
{
    m_fileName = fileName;
}

QString DiskDataProvider::toBase64() const
{
    QString text;
    const auto encode = [&text](const QByteArray& block) {
        const QByteArray encoded = block.toBase64();
        text += QLatin1String(encoded.constData(), encoded.size());
    };
    const qint64 size = QFileInfo(m_fileName).size();
    if (size <= maxFileSize)
        text.reserve(int((size + 2) / 3 * 4));
    return readBlocks(m_fileName, maxFileSize, encode) ? text : QString();
}
