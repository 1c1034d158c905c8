#include "folderwatch.h"

#include <QDir>
#include <QFileInfo>

namespace {

const int pause = 200; ///< ms without a change before one is told.

} // namespace

FolderWatch::FolderWatch(const QString& folder, QObject* parent)
    : QObject(parent)
    , m_folder(QDir::cleanPath(folder))
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(pause);
    const auto note = [this] {
        watchFolder();
        // not started again: a change every moment would never be told
        if (!m_pause.isActive())
            m_pause.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, note);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, note);
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

void FolderWatch::setFiles(const QStringList& files)
{
    const QStringList watched = m_watcher.files();
    if (watched == files)
        return;
    if (!watched.isEmpty())
        m_watcher.removePaths(watched);
    if (!files.isEmpty())
        m_watcher.addPaths(files);
}
