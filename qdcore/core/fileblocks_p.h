#pragma once

// Reading a file whole, for a document. Internal: not installed.

#include <QByteArray>

#include <functional>

class QString;

/// Reads a file to its end in blocks of a multiple of three bytes, so that the base64 of the blocks is that
/// of the whole; the last one may be shorter. False when the file is empty, larger than @p limit bytes, not
/// readable to its end, or no regular file: a pipe or a device may have no end. Some blocks may have been
/// taken then.
bool readBlocks(const QString& fileName, qint64 limit, const std::function<void(const QByteArray&)>& take);
