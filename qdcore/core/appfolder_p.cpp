#include "appfolder_p.h"

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

QString appFolder(const QString& leaf)
{
    return qEnvironmentVariable("APPDATA") + QStringLiteral("/Quendra Client Software") + leaf;
}

void makePrivate(const QString& path)
{
#ifdef Q_OS_UNIX
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor >= 0)
        ::close(descriptor);
#endif
    keepToOwner(path);
}
