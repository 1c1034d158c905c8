#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

/**
 * Tells when a folder changes: files that come, go or are replaced, and the folder itself.
 *
 * The folder need not exist: then the nearest one above it is watched until it does. Many changes in a row
 * are one.
 */
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    explicit FolderWatch(const QString& folder, QObject* parent = nullptr);

    /// Also tells of changes inside these files, which a folder knows nothing of. Replaces those before.
    void setFiles(const QStringList& files);

Q_SIGNALS:
    void changed();

private:
    void watchFolder();

    QString m_folder;
    QFileSystemWatcher m_watcher;
    QTimer m_pause;
};
