#pragma once

// A contact cache in a folder of its own, for the tests of it.

#include "contact.h"
#include "contactgroup.h"
#include "contactlocalstorage.h"
#include "shorthand.h"
#include "storefile.h"
#include "testkit.h"

#include <memory>
#include <optional>

/// A callback for the store: counts its calls through its user data; returns no unit for the uid "null".
inline ContactUnitPtr makeUnit(ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation,
                               const QString& uid, const QString& name, const QString& description,
                               const QString&, const QString& fax, const QString&, const QString&,
                               ContactList members, void* userData)
{
    ++*static_cast<int*>(userData);
    if (uid == QLatin1String("null"))
        return ContactUnitPtr();
    if (type == ContactLocalStorage::TypeGroup) {
        const auto group = QSharedPointer<ContactGroup>::create();
        group->setName(name);
        group->setDescription(description);
        group->setContacts(members);
        return group;
    }
    const auto contact = QSharedPointer<Contact>::create();
    contact->setName(name);
    contact->setFax(fax);
    return contact;
}

/// A list as a text: names, with the members of groups in parentheses.
inline QString spelled(const ContactList& list)
{
    QStringList parts;
    for (const ContactUnitPtr& unit : list.contacts()) {
        if (const auto* group = dynamic_cast<const ContactGroup*>(unit.data()))
            parts += group->name() + QLatin1Char('(') + spelled(group->contacts()) + QLatin1Char(')');
        else
            parts += unit ? static_cast<const Contact*>(unit.data())->name() : s("null");
    }
    return parts.join(QLatin1Char(' '));
}

inline QString spelled(const QList<quint32>& ids)
{
    QStringList parts;
    for (const quint32 id : ids)
        parts += QString::number(id);
    return parts.join(QLatin1Char(' '));
}

/// Base class of tests of the store: a store with one source, its log, and direct access to its file.
class StoreTest : public QObject
{
protected:
    using Store = ContactLocalStorage;

    static inline const QString none;
    static constexpr quint32 account = 1; ///< The source present at the start of every test.
    static constexpr auto people = Store::TypeContact;
    static constexpr auto groups = Store::TypeGroup;
    static constexpr auto global = Store::LocationGlobal;
    static constexpr auto personal = Store::LocationPersonal;
    static constexpr auto anyType = Store::AnyType;
    static constexpr auto anywhere = Store::AnyLocation;

    static Store::PropertyType key(quint32 number) { return static_cast<Store::PropertyType>(number); }

    quint32 add(const QString& uid, const QString& name = none, Store::ContactType type = people,
                Store::ContactLocation location = personal, quint32 source = account, quint32 timestamp = 1)
    {
        return m_store->addContact(source, type, location, uid, timestamp, name, none, none, none, none,
                                   none);
    }
    quint32 add(int uid, const QString& name = none) { return add(QString::number(uid), name); }
    /// The id of one of the people in the account's own book.
    quint32 find(const QString& uid, quint32 source = account) const
    {
        return m_store->getContact(source, people, personal, uid);
    }
    ContactList units(Store::ContactType type, Store::ContactLocation location, quint32 group = 0,
                      uint offset = 0, uint limit = 0)
    {
        int calls = 0;
        return m_store->getContactList(makeUnit, account, type, location, group, offset, limit, &calls);
    }
    static QString raw(const QString& text) { return OtherProgram(text).rows().join(QLatin1Char(' ')); }
    static QString raw(const char* text) { return raw(s(text)); }
    static QString uids() { return raw("SELECT uid FROM contacts"); }
    static QString everything()
    {
        return raw("SELECT * FROM sources") + s("\n") + raw("SELECT * FROM contacts") + s("\n") +
               raw("SELECT * FROM properties") + s("\n") + raw("SELECT * FROM groups");
    }
    int logged(const char* text) const { return m_log->text().count(s(text)); }
    void newStore()
    {
        m_store.reset();
        m_dir = std::make_unique<QTemporaryDir>();
        qputenv("APPDATA", m_dir->path().toLocal8Bit());
        m_log.emplace();
        m_store = std::make_unique<Store>();
        m_store->addSource(s("user@fax"), Store::SourceQuendra);
    }
    void closeStore()
    {
        m_store.reset();
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
        m_log.reset();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::optional<TestLog> m_log;
    std::unique_ptr<Store> m_store;
};
