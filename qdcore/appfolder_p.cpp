#include "appfolder_p.h"

#include <QtGlobal>

QString appFolder(const QString& leaf)
{
    return qEnvironmentVariable("APPDATA") + QStringLiteral("/Quendra Client Software") + leaf;
}
