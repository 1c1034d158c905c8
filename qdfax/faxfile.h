#pragma once

#include "attach.h"

#include <QString>
#include <QStringList>

#include <optional>

/// How many bytes of files one fax can hold, all together: the whole request is built in memory, and the
/// library's texts end at 2 GB.
constexpr qint64 largestFax = DiskDataProvider::maxFileSize;

/// The type by which a file travels, found from its content and not from its name. None for a type that fax
/// servers do not take; @p typeName is what the file was recognised as.
Content::Type contentType(const QString& path, QString* typeName);

/// The attachments for these files. Nothing, with a sentence that names the file in @p error, when one of
/// them cannot be sent: the library would leave out silently what it cannot read.
std::optional<QList<Attach>> attachFiles(const QStringList& paths, QString* error);
