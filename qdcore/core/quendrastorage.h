#pragma once

#include "qdcore_global.h"

#include <QString>

class IQuendraStorage;

/**
 * A settings file: an XML document with the root element "settings" around one stored object.
 *
 * A value that holds nothing but the file's name; the file is open only inside Save() and Load(). The client
 * application chooses the name, usually in getAppStoragePath(), and the moments of loading and saving.
 * Nothing is logged, and nothing locks: one thread at a time, in practice that of the event loop.
 */
class QDCORE_EXPORT QuendraStorage
{
public:
    /// @p filename is the full path of the settings file. Nothing is opened.
    explicit QuendraStorage(const QString& filename);

    /// The full path, as it was given. It need not exist.
    const QString& filename() const { return m_filename; }
    void setFilename(const QString& filename);

    /// Writes the object into the file, replacing what was there. False when the object refuses to be written
    /// (the file is untouched then), when the file cannot be opened, or when not everything could be written
    /// (the file is truncated then). Who cannot afford that saves to a side file and renames it.
    /// Nobody but the owner may read or write the file from then on, whatever its rights were: there are
    /// passwords in it. Who shares it (a group, a backup under another account) grants the rights anew after
    /// each call. The text is in the codec of the locale (QTextCodec::codecForLocale()), while the file says
    /// UTF-8: a client sets that codec to UTF-8 at its start, or names outside of ASCII do not come back on
    /// Windows.
    bool Save(const IQuendraStorage& object);

    /// Lets the object read the file's root element. False when the file cannot be opened (the object is not
    /// called then), else what the object returns. A file that is not well-formed, or nested more than 256
    /// deep, reads as empty: the object is handed a null element.
    bool Load(IQuendraStorage& object);

    /// The user's folder for settings files, without a slash at its end. Created on the first call; a failure
    /// to create it is not reported.
    static const QString& getAppStoragePath();

private:
    QString m_filename;
};
