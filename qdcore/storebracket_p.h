#pragma once

// What a transaction bracket of the contact store knows and has yet to write. Internal: not installed, not
// exported.

#include "storeconnection_p.h"

#include <QSet>

#include <tuple>

/// A row of the contacts table as it is stored.
struct StoreContact
{
    quint32 source;
    quint32 type;
    quint32 location;
    QString uid;
    quint32 timestamp;
    QString name;
    QString description;
    QString phone;
    QString fax;
    QString email;
    QString organization;
};

/**
 * A running transaction bracket.
 *
 * The tables have no index, so looking a contact up by its uid is a scan, and a book of n contacts would cost
 * n². While a bracket runs no other connection can write, so it remembers what it has looked up, one book at
 * a time, and new rows are kept back until many can be written at once. Whoever reads the tables by other
 * means calls settle() before.
 *
 * Belongs to the thread that began the bracket.
 */
class StoreBracket
{
public:
    explicit StoreBracket(StoreConnection& connection)
        : m_connection(connection)
    {}
    Q_DISABLE_COPY(StoreBracket)

    /// The id of the contact with that source, type, location and uid, 0 when there is none.
    quint32 contactId(quint32 source, quint32 type, quint32 location, const QString& uid);

    /// Adds a contact that contactId() does not know. Returns its id, 0 when it could not be written.
    quint32 addContact(const StoreContact& contact);

    /// Whether a contact has yet to be written.
    bool isPending(quint32 id) const;

    bool hasLink(quint32 contact, quint32 group);
    void addLink(quint32 contact, quint32 group);

    /// Forgets the memberships of a contact, of a group or, with both, of the contact in the group. Returns
    /// false when there are none, so that nothing needs to be deleted.
    bool removeLinks(quint32 contact, quint32 group);

    /// Writes what was kept back. Returns false when rows could not be written.
    bool settle();

    /// Settles, and forgets what was looked up: rows are about to go.
    void forget();

private:
    using Book = std::tuple<quint32, quint32, quint32>;

    QHash<QString, quint32>* book(const Book& book);
    bool loadLinks();
    bool writeContacts();
    void writeLinks();

    StoreConnection& m_connection;
    QMap<Book, QHash<QString, quint32>> m_books; ///< From uid to id.
    QHash<quint32, QSet<quint32>> m_members;     ///< From group to its contacts.
    bool m_hasLinks{false};                      ///< m_members is loaded.
    quint32 m_nextId{0}; ///< The id that the next new contact will have, 0 while unknown.
    QVector<QPair<quint32, StoreContact>> m_newContacts;
    QVector<QPair<quint32, quint32>> m_newLinks; ///< Contact and group.
};
