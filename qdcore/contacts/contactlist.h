#pragma once

#include "contactunit.h"
#include "qdcore_global.h"

#include <QMetaType>
#include <QVector>

/**
 * Contacts and groups in order of insertion, and the book they belong to.
 *
 * A value that owns its units: added units are cloned, and a copy of a list clones every unit, so two lists
 * never share one. An element is null if a store's factory returned null; all functions skip such elements.
 */
class QDCORE_EXPORT ContactList
{
public:
    /// The books.
    enum Type : int {
        Unknown = 0,          ///< No book.
        PersonalContacts = 1, ///< The user's personal contacts on a fax server.
        PersonalGroups = 2,   ///< The user's personal groups on a fax server.
        GlobalContacts = 3,   ///< The contacts of the server's global book.
        GlobalGroups = 4,     ///< The groups of the server's global book.
        OutlookContacts = 5   ///< Contacts and distribution lists of one Outlook folder.
    };

    ContactList();
    //@{
    /// Clones every unit.
    ContactList(const ContactList& other);
    ContactList& operator=(const ContactList& other);
    //@}
    ContactList(ContactList&& other) noexcept = default;
    ContactList& operator=(ContactList&& other) noexcept = default;
    ~ContactList();

    /// The book that the units were read from or are to be written to; Unknown by default.
    Type contactsType() const { return m_contactsType; }
    void setContactsType(Type type) { m_contactsType = type; }

    /// The units, which the list owns, including those added through the reference.
    const QVector<ContactUnitPtr>& contacts() const { return m_contacts; }
    QVector<ContactUnitPtr>& contacts() { return m_contacts; }

    /// Appends a clone of @p contact and returns the clone, which the list owns.
    ContactUnit& addContact(const ContactUnit& contact);

    /// Removes the first unit that @p contact equals, if any.
    void removeContact(const ContactUnit& contact);
    /// Removes the unit at @p index; does nothing if there is none.
    void removeContact(int index);

    /// Whether @p contact equals a unit of the list.
    bool contains(const ContactUnit& contact) const;

    /// Whether the lists have the same size and each unit of this one equals a unit of the other. Order, book
    /// and the number of occurrences of a unit are ignored.
    bool operator==(const ContactList& other) const;

private:
    int indexOf(const ContactUnit& contact) const;

    Type m_contactsType{Unknown};
    QVector<ContactUnitPtr> m_contacts;
};

Q_DECLARE_METATYPE(ContactList)
Q_DECLARE_METATYPE(ContactList::Type)
