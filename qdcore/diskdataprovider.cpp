#include "diskdataprovider.h"

#include <QFile>
#include <QFileInfo>

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
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return QString();
    bytes = bytes.toBase64();
    return QString::fromLatin1(bytes);
}
