#pragma once

// The key that identifies an Outlook folder in the settings. Internal: not installed.

#include "outlookport.h"

/// The entry identifier, a colon and the identifier of the store.
inline QString outlookFolderKey(const OutlookFolder& folder)
{
    return folder.entryID() + QLatin1Char(':') + folder.storeID();
}

/// Whether a text has the form of a key.
inline bool isOutlookFolderKey(const QString& key)
{
    return key.contains(QLatin1Char(':'));
}

/// The folder with a key; null if there is none.
inline QSharedPointer<OutlookFolder> outlookFolder(const OutlookSession& session, const QString& key)
{
    const int colon = key.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return QSharedPointer<OutlookFolder>();
    return session.folderFromID(key.left(colon), key.mid(colon + 1));
}

inline bool isContactFolder(const OutlookFolder& folder)
{
    return folder.defaultItemType() == OutlookFolder::contactItems;
}
