#include "filesremoverunnable.h"

#include "tsan_p.h"

#include <QFile>

FilesRemoveRunnable::FilesRemoveRunnable(const QDir& dir)
    : m_dir(dir)
{}

void FilesRemoveRunnable::run()
{
    tsanTakeOver(this);
    bool result = true;
    const QFileInfoList files = m_dir.entryInfoList();
    for (const QFileInfo& file : files) {
        const QString companion = m_dir.filePath(file.completeBaseName() + QStringLiteral(".TIF"));
        result = QFile::remove(companion) && result;
        result = QFile::remove(file.filePath()) && result;
    }
    Q_EMIT signalRemovingComplete(result);
}
