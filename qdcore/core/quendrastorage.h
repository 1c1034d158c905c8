#pragma once

#include "qdcore_global.h"

#include <QString>

class IQuendraStorage;

/**
 * A settings file: an XML document with the root element "settings" around one stored object.
 *
 * A value that contains only the file's name; the file is open only inside Save() and Load(). The client
 * application chooses the name, usually in getAppStoragePath(), and when to load and save. It neither logs
 * nor locks: use it on one thread at a time, usually that of the event loop.
 */
class QDCORE_EXPORT QuendraStorage
{
public:
    /// @p filename is the full path of the settings file, which is not opened.
    explicit QuendraStorage(const QString& filename);

    /// The full path, unmodified. It need not exist.
    const QString& filename() const { return m_filename; }
    void setFilename(const QString& filename);

    /// Writes the object to the file, replacing its content. Returns false if the object's writeStorage()
    /// fails (the file is unchanged then), if the file cannot be opened, or if not everything could be
    /// written (the file is truncated then). This is not atomic; for that, save to a temporary file and
    /// rename it. The file's permissions are restricted to its owner, since it contains passwords. To share
    /// the file (with a group or a backup account), grant the permissions again after each call. The text is
    /// encoded in the codec of the locale (QTextCodec::codecForLocale()), although the file declares UTF-8: a
    /// client has to set that codec to UTF-8 when it starts, or non-ASCII names are corrupted on Windows.
    bool Save(const IQuendraStorage& object);

    /// Reads the object from the file's root element. Returns false if the file cannot be opened (the object
    /// is not called then), otherwise the result of readStorage(). If the file is not well-formed, or nested
    /// more than 256 elements deep, the object gets a null element.
    bool Load(IQuendraStorage& object);

    /// The user's folder for settings files, without a trailing slash. Created on the first call; a failure
    /// to create it is not reported.
    static const QString& getAppStoragePath();

private:
    QString m_filename;
};
