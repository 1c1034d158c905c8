#pragma once

// A row of the contacts table. Internal: not installed.

#include "contactlocalstorage.h"

#include <QString>

#include <optional>

/// A contact or group as it is stored, without its id.
struct ContactRow
{
    quint32 source{0};
    ContactLocalStorage::ContactType type{};
    ContactLocalStorage::ContactLocation location{};
    QString uid;
    quint32 timestamp{0};
    QString name;
    QString description;
    QString phone;
    QString fax;
    QString email;
    QString organization;

    /// The row with an id. Empty if there is none, or no store.
    static std::optional<ContactRow> read(ContactLocalStorage* storage, quint32 id)
    {
        ContactRow row;
        if (storage &&
            storage->getContactInfo(id, row.source, row.type, row.location, row.uid, row.timestamp, row.name,
                                    row.description, row.phone, row.fax, row.email, row.organization)) {
            return row;
        }
        return std::nullopt;
    }

    /// The unit that a factory creates from it; may be null.
    QSharedPointer<ContactUnit> build(ContactLocalStorage::ContactFactory factory, const ContactList& members,
                                      void* userData) const
    {
        return factory(type, location, uid, name, description, phone, fax, email, organization, members,
                       userData);
    }
};
