#include "contactlist.h"

#include <algorithm>

ContactList::ContactList() = default;

ContactList::ContactList(const ContactList& other)
{
    *this = other;
}

ContactList& ContactList::operator=(const ContactList& other)
{
    if (this == &other)
        return *this;

    // The other list may belong to a group in this one: clone it before destroying anything.
    QVector<ContactUnitPtr> clones;
    clones.reserve(other.m_contacts.size());
    for (const ContactUnitPtr& unit : other.m_contacts) {
        if (unit)
            clones.append(ContactUnitPtr(unit->copy()));
    }
    m_contactsType = other.m_contactsType;
    m_contacts.swap(clones);
    return *this;
}

ContactList::~ContactList() = default;

ContactUnit& ContactList::addContact(const ContactUnit& contact)
{
    m_contacts.append(ContactUnitPtr(contact.copy()));
    return *m_contacts.constLast();
}

void ContactList::removeContact(const ContactUnit& contact)
{
    removeContact(indexOf(contact));
}

void ContactList::removeContact(int index)
{
    if (index >= 0 && index < m_contacts.size())
        m_contacts.remove(index);
}

bool ContactList::contains(const ContactUnit& contact) const
{
    return indexOf(contact) >= 0;
}

bool ContactList::operator==(const ContactList& other) const
{
    if (m_contacts.size() != other.m_contacts.size())
        return false;
    return std::all_of(m_contacts.cbegin(), m_contacts.cend(),
                       [&other](const ContactUnitPtr& unit) { return !unit || other.contains(*unit); });
}

int ContactList::indexOf(const ContactUnit& contact) const
{
    for (int i = 0; i < m_contacts.size(); ++i) {
        if (m_contacts.at(i) && contact == *m_contacts.at(i))
            return i;
    }
    return -1;
}
