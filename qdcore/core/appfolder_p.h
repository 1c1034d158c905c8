#pragma once

// The folders and permissions of the library's files. Internal: not installed, not exported.

#include <QFile>
#include <QString>

/// The user's folder of the product, followed by @p leaf, for instance "/Logs": the unmodified value of the
/// environment variable APPDATA (empty when unset), the product's folder name, the leaf. Creates nothing.
QString appFolder(const QString& leaf);

/// Restricts a file's permissions to its owner, on platforms with file permissions. Does not open it. Inline,
/// so that qdfax can use it too.
inline void keepToOwner(const QString& path)
{
    const QFile::Permissions now = QFile::permissions(path);
    const QFile::Permissions owners = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (now & others)
        QFile::setPermissions(path, now & owners);
}

/// Creates an empty file unless it exists, and restricts its permissions to its owner. Does not open an
/// existing file: closing it would release the POSIX locks that this process holds on it.
void makePrivate(const QString& path);
