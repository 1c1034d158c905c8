#include "diskdataprovider.h"

#include <QFile>

void DiskDataProvider::setFileName(const QString& fileName)
{
    m_fileName = fileName;
}

QString DiskDataProvider::toBase64() const
{
    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromLatin1(file.readAll().toBase64());
}
