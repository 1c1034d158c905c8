#pragma once

#include "contactlist.h"

#include <QString>

/**
 * A named group of contacts and of other groups. A value; copying it copies its members deeply.
 */
class QDCORE_EXPORT ContactGroup : public ContactUnit
{
public:
    ContactGroup() = default;
    ContactGroup(const ContactGroup&) = default;
    ContactGroup& operator=(const ContactGroup&) = default;

    /// Reads name and description, but no members. False, with nothing changed, if one of the two is missing.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~ContactGroup() override;

    bool operator==(const ContactUnit& other) const override;
    ContactUnit* copy() const override;

    /// Not supported: false.
    bool readStorage(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    /// Element "name".
    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    /// Element "description".
    const QString& description() const { return m_description; }
    void setDescription(const QString& description) { m_description = description; }

    /// The members, which the group owns.
    const ContactList& contacts() const { return m_contacts; }
    ContactList& contacts() { return m_contacts; }
    /// The group keeps a deep copy.
    void setContacts(const ContactList& contacts) { m_contacts = contacts; }

    /// Adds a clone of @p contact to the members.
    void addContact(const ContactUnit& contact) { m_contacts.addContact(contact); }

private:
    QString m_name;
    QString m_description;
    ContactList m_contacts;
};
