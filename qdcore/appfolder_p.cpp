#include "appfolder_p.h"

#include <QFile>

QString appFolder(const QString& leaf)
{
    return qEnvironmentVariable("APPDATA") + QStringLiteral("/Quendra Client Software") + leaf;
}

void keepToOwner(const QString& path)
{
    const QFile::Permissions now = QFile::permissions(path);
    const QFile::Permissions owners = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (now & others)
        QFile::setPermissions(path, now & owners);
}
