#pragma once

// What a contact book of a fax server is. Internal: not installed.

#include "contactlist.h"

#include <QString>

/// One of the four books of a fax server, taken apart. Everything else that depends on a book follows from
/// this.
struct ContactBook
{
    bool isValid;  ///< A book of a fax server at all.
    bool isGroup;  ///< Holds groups, not contacts.
    bool isGlobal; ///< The server's, not the user's own.

    explicit ContactBook(ContactList::Type type)
        : isValid(type >= ContactList::PersonalContacts && type <= ContactList::GlobalGroups)
        , isGroup(type == ContactList::PersonalGroups || type == ContactList::GlobalGroups)
        , isGlobal(type == ContactList::GlobalContacts || type == ContactList::GlobalGroups)
    {}

    /// The resource of the book below the collection of contacts or of groups; empty for no book. The user's
    /// login is appended as it is.
    QString path(const QString& contacts, const QString& groups, const QString& login) const
    {
        if (!isValid)
            return QString();
        return (isGroup ? groups : contacts) + QLatin1Char('/') +
               (isGlobal ? QStringLiteral("global_contact_list") : login);
    }
};
