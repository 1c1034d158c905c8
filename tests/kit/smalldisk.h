#pragma once

// Disks that are full or not to be written, for tests of what then happens.

#include <QFile>
#include <QStorageInfo>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>
#endif

/// A disk of 4 MB on a folder, or the folder made read-only, in a namespace of the calling thread. Needs the
/// rights of root.
class SmallDisk
{
public:
    explicit SmallDisk(const QString& folder, bool readOnly = false)
        : m_folder(folder)
    {
#ifdef Q_OS_LINUX
        m_usual = open("/proc/thread-self/ns/mnt", O_RDONLY | O_CLOEXEC);
        m_root = open("/", O_PATH | O_CLOEXEC);
        m_current = open(".", O_PATH | O_CLOEXEC);
        const QByteArray path = m_folder.toLocal8Bit();
        m_works =
            m_usual >= 0 && unshare(CLONE_NEWNS) == 0 &&
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
            (readOnly ? mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
                            mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0
                      : mount("tmpfs", path, "tmpfs", 0, "size=4m") == 0);
#else
        Q_UNUSED(readOnly)
#endif
    }
    ~SmallDisk()
    {
#ifdef Q_OS_LINUX
        if (m_works)
            umount2(m_folder.toLocal8Bit(), MNT_DETACH);
        // Back to the usual namespace, unless threads made since then share this one's; without the disk it
        // is like the usual. Going back changes the root to that of the namespace, which in a changed root is
        // another.
        if (m_usual >= 0 && setns(m_usual, CLONE_NEWNS) == 0 &&
            !(fchdir(m_root) == 0 && chroot(".") == 0 && fchdir(m_current) == 0))
            qFatal("cannot go back to the root");
        for (const int descriptor : {m_usual, m_root, m_current}) {
            if (descriptor >= 0)
                close(descriptor);
        }
#endif
    }
    Q_DISABLE_COPY(SmallDisk)
    bool works() const
    {
        return m_works;
    }
    QString ballast() const
    {
        return m_folder + QStringLiteral("/ballast");
    }
    /// Leaves so many bytes free.
    bool fill(qint64 free) const
    {
        QFile file(ballast());
        const qint64 size = QStorageInfo(m_folder).bytesAvailable() - free;
        return file.open(QIODevice::WriteOnly) && file.write(QByteArray(int(size), 'x')) == size;
    }

private:
    QString m_folder;
    int m_usual{-1}; ///< The namespace, and what of it was seen.
    int m_root{-1};
    int m_current{-1};
    bool m_works{false};
};
