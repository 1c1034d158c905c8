#pragma once

#include "qdcore_global.h"

#include <QString>

/**
 * A file on disk as the content of a fax attachment.
 *
 * A value that contains the file's name; the file is opened only inside toBase64(). Any thread, one at a
 * time.
 */
class QDCORE_EXPORT DiskDataProvider
{
public:
    DiskDataProvider() = default;
    DiskDataProvider(const DiskDataProvider&) = default;
    DiskDataProvider& operator=(const DiskDataProvider&) = default;

    /// The path of the file, empty by default.
    const QString& fileName() const { return m_fileName; }
    void setFileName(const QString& fileName);

    /// The limit in bytes: the base64 of a larger file would not fit into a QString. A submission encodes
    /// files without a QString, up to TaskSchedule::maxAttachmentSize.
    static constexpr qint64 maxFileSize = qint64(512) * 1024 * 1024;

    /// The whole file in base64, padded, without line breaks, as in the element "content". Empty if the file
    /// is empty, larger than maxFileSize, cannot be read to its end, or is not a regular file: reading a pipe
    /// or a device could block for ever, so copy its data to a file first.
    QString toBase64() const;

private:
    QString m_fileName;
};
