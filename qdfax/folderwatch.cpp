#include "folderwatch.h"

#include <QDateTime>
#include <QDir>
#include <QSet>

namespace {

const int pause = 200; ///< ms from the first change until the signal.
const int quiet = 500; ///< ms without writing to a file until the signal.
const int mostLooks = 10;

} // namespace

FolderWatch::FolderWatch(const QString& folder, QObject* parent)
    : QObject(parent)
    , m_folder(QDir::cleanPath(folder))
    , m_watcher(this)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(pause);
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(quiet);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderWatch::follow);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_quiet, QOverload<>::of(&QTimer::start));
    for (QTimer* timer : {&m_pause, &m_quiet}) {
        connect(timer, &QTimer::timeout, this, [this] {
            m_pause.stop();
            m_quiet.stop();
            Q_EMIT changed();
        });
    }
    watchFolder();
}

QString FolderWatch::nearestFolder() const
{
    QString nearest = m_folder;
    while (!QFileInfo(nearest).isDir() && nearest != QFileInfo(nearest).path())
        nearest = QFileInfo(nearest).path();
    return nearest;
}

void FolderWatch::watchFolder()
{
    QString nearest = nearestFolder();
    for (int look = 0; look < mostLooks; ++look) {
        const QStringList watched = m_watcher.directories();
        if (!watched.isEmpty())
            m_watcher.removePaths(watched);
        // A watched folder does not report its own renaming; its parent does.
        m_watcher.addPaths({nearest, QFileInfo(nearest).path()});
        // avoids a race: changes before the watch was added are not reported
        const QString before = nearest;
        nearest = nearestFolder();
        if (nearest == before)
            return;
    }
}

void FolderWatch::follow(const QString& folder)
{
    const bool wasThere = m_watcher.directories().contains(m_folder);
    // A watch follows the inode: a folder that was deleted or renamed and recreated needs a new one.
    if (folder != m_folder || !wasThere)
        watchFolder();
    if (wasThere || folder == m_folder || m_watcher.directories().contains(m_folder))
        note();
}

void FolderWatch::setFiles(const QFileInfoList& files)
{
    QSet<QString> wanted;
    for (const QFileInfo& known : files) {
        if (wanted.size() == mostFiles)
            break;
        const QFileInfo file(known.filePath());
        if (file.isFile() && file.isReadable())
            wanted.insert(file.filePath());
    }
    const QStringList watched = m_watcher.files();
    for (const QString& path : watched) {
        if (!wanted.remove(path))
            m_watcher.removePath(path);
    }
    if (!wanted.isEmpty())
        m_watcher.addPaths(wanted.values());

    for (const QFileInfo& known : files) {
        if (!wanted.contains(known.filePath()))
            continue;
        const QFileInfo file(known.filePath());
        if (file.size() != known.size() || file.lastModified() != known.lastModified())
            return m_quiet.start();
    }
}

void FolderWatch::note()
{
    // not restarted: with continuous changes the timer would never expire
    if (!m_pause.isActive())
        m_pause.start();
}
