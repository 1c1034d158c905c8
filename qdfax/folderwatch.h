#pragma once

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

/**
 * Tells when a folder changes: files that come, go or are replaced, and the folder itself.
 *
 * The folder need not exist: then the nearest one above it is watched until it does. Changes are told a
 * moment after the first of them, all that came until then as one: during a long series again and again, and
 * once after its last. A file that is being written is told of when no more is written to it. What changes
 * beside the folder may be told as well.
 */
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    explicit FolderWatch(const QString& folder, QObject* parent = nullptr);

    /// The most files that are watched: each takes one of the few watches that the system has for a user.
    static constexpr int mostFiles = 200;

    /// Also tells of changes inside these files, which a folder knows nothing of: of the first mostFiles that
    /// can be read and are no folders. Replaces those before. What is known of a file tells a change that
    /// came before this call.
    void setFiles(const QFileInfoList& files);

    /// Tells a change in a moment, as if there had been one.
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
