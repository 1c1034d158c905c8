#include "folderwatch.h"

#include <QDateTime>
#include <QDir>
#include <QSet>

namespace {

const int pause = 200; ///< ms from a change until it is told, with those that follow it.

} // namespace

FolderWatch::FolderWatch(const QString& folder, QObject* parent)
    : QObject(parent)
    , m_folder(QDir::cleanPath(folder))
    , m_watcher(this)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(pause);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        watchFolder();
        note();
    });
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FolderWatch::note);
    connect(&m_pause, &QTimer::timeout, this, &FolderWatch::changed);
    watchFolder();
}

void FolderWatch::watchFolder()
{
    QString nearest = m_folder;
    while (!QFileInfo(nearest).isDir() && nearest != QFileInfo(nearest).path())
        nearest = QFileInfo(nearest).path();
    const QStringList watched = m_watcher.directories();
    // A folder that was deleted and made again is another one, which only a new watch sees.
    if (watched == QStringList{nearest} && nearest == m_folder)
        return;
    if (!watched.isEmpty())
        m_watcher.removePaths(watched);
    m_watcher.addPath(nearest);
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
            return note();
    }
}

void FolderWatch::note()
{
    // not started again: a change every moment would never be told
    if (!m_pause.isActive())
        m_pause.start();
}
