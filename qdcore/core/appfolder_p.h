#pragma once

// Where the library keeps files. Internal: not installed, not exported.

#include <QFile>
#include <QString>

/// The product's folder of the user followed by @p leaf, for instance "/Logs": the value of the environment
/// variable APPDATA as it stands (empty when unset), the product's folder name, the leaf. Nothing is created.
QString appFolder(const QString& leaf);

/// Takes a file from everybody but its owner, where the platform knows of owners. Does not open it. Inline,
/// so that qdfax has it as well.
inline void keepToOwner(const QString& path)
{
    const QFile::Permissions now = QFile::permissions(path);
    const QFile::Permissions owners = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    if (now & others)
        QFile::setPermissions(path, now & owners);
}

/// Makes an empty file, if there is none, and takes it from everybody but its owner. Does not open one that
/// is there: closing it would give up the locks that this process has on it.
void makePrivate(const QString& path);
