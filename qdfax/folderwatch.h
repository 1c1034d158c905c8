#pragma once

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

/**
 * Reports changes of a folder: files that are added, removed or replaced, and the folder itself.
 *
 * The folder need not exist: then its nearest existing ancestor is watched until it does. Changes are
 * debounced: the signal is emitted shortly after the first, repeatedly during a long series, and once after
 * the last. A file being written is reported when writing has stopped. Changes of sibling files and folders
 * may be reported too.
 */
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    explicit FolderWatch(const QString& folder, QObject* parent = nullptr);

    /// Limit of watched files: each uses one of a user's limited number of watches.
    static constexpr int mostFiles = 200;

    /// Also reports changes of these files' content, which a watch on the folder does not: of the first
    /// mostFiles that are readable and not folders. Replaces the previous list. Size and time in the list
    /// reveal a change made before this call.
    void setFiles(const QFileInfoList& files);

    /// Emits changed() shortly, as after a change.
    void note();

Q_SIGNALS:
    void changed();

private:
    QString nearestFolder() const;
    void watchFolder();
    void follow(const QString& folder);

    QString m_folder;
    QFileSystemWatcher m_watcher;
    QTimer m_pause; ///< Since the first change.
    QTimer m_quiet; ///< Since the last change inside a file.
};
