#pragma once

#include "qdcore_global.h"

#include <QString>

/**
 * A file on disk as the content of a fax attachment.
 *
 * A value that holds the file's name; the file is opened only inside toBase64(). Any thread, one at a time.
 */
class QDCORE_EXPORT DiskDataProvider
{
public:
    DiskDataProvider() = default;
    DiskDataProvider(const DiskDataProvider&) = default;
    DiskDataProvider& operator=(const DiskDataProvider&) = default;

    /// The path of the file, empty at first.
    const QString& fileName() const { return m_fileName; }
    void setFileName(const QString& fileName);

    /// Larger files, in bytes, cannot be read: their base64 would not fit into a string. A submission encodes
    /// files without such a string, and has a limit of its own, TaskSchedule::maxAttachmentSize.
    static constexpr qint64 maxFileSize = qint64(512) * 1024 * 1024;

    /// The whole file in base64, padded, without line breaks, as the element "content" carries it. Empty when
    /// the file is empty, larger than maxFileSize, or cannot be read to its end, and when it is no regular
    /// file: reading a pipe or a device could hold the caller for ever. Who attaches one spools it first.
    QString toBase64() const;

private:
    QString m_fileName;
};
