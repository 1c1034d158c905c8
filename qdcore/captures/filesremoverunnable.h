#pragma once

#include "qdcore_global.h"

#include <QDir>
#include <QObject>
#include <QRunnable>

/**
 * Deletes the files of a folder, and for each the ".TIF" file of the same base name, on a thread pool.
 *
 * Made without a parent by whoever starts it, and then deleted by the pool. Touches nothing but files.
 */
class QDCORE_EXPORT FilesRemoveRunnable : public QObject, public QRunnable
{
    Q_OBJECT

public:
    /// @p dir lists what is to be deleted: its name filter counts.
    explicit FilesRemoveRunnable(const QDir& dir);

    void run() override;

Q_SIGNALS:
    /// Everything was tried; comes from the pool's thread. @p result is true when every file and its ".TIF"
    /// file were deleted, so a file that never had one makes it false, and an empty folder leaves it true.
    void signalRemovingComplete(bool result);

private:
    QDir m_dir;
};
