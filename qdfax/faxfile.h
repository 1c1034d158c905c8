#pragma once

#include "attach.h"

#include <QString>
#include <QStringList>

#include <optional>

/// Limit of the files of one fax together, in bytes: the whole request is built in memory, and a text is
/// limited to 2 GB.
constexpr qint64 largestFax = DiskDataProvider::maxFileSize;

/// The type of a file, detected from its content, not its name. None for a type that fax servers do not
/// accept;
/// @p typeName is the detected type.
Content::Type contentType(const QString& path, QString* typeName);

/// The attachments for these files. Nothing, with a sentence that names the file in @p error, if one of them
/// cannot be sent: the library would silently leave it out.
std::optional<QList<Attach>> attachFiles(const QStringList& paths, QString* error);
