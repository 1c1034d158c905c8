#pragma once

// The properties of a contact book of a fax server. Internal: not installed.

#include "contactlist.h"

#include <QString>

/// The properties of one of the four books of a fax server, from which everything that depends on the book is
/// derived.
struct ContactBook
{
    bool isValid;  ///< Is a book of a fax server.
    bool isGroup;  ///< Contains groups, not contacts.
    bool isGlobal; ///< Is the server's, not the user's personal one.

    explicit ContactBook(ContactList::Type type)
        : isValid(type >= ContactList::PersonalContacts && type <= ContactList::GlobalGroups)
        , isGroup(type == ContactList::PersonalGroups || type == ContactList::GlobalGroups)
        , isGlobal(type == ContactList::GlobalContacts || type == ContactList::GlobalGroups)
    {}

    /// The path of the book, below the path for contacts or for groups; empty if the book is invalid. The
    /// login is appended without percent-encoding.
    QString path(const QString& contacts, const QString& groups, const QString& login) const
    {
        if (!isValid)
            return QString();
        return (isGroup ? groups : contacts) + QLatin1Char('/') +
               (isGlobal ? QStringLiteral("global_contact_list") : login);
    }
};
