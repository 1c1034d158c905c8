#pragma once

// The caches and write buffers of a transaction bracket of the contact store. Internal: not installed, not
// exported.

#include "contactrow_p.h"
#include "storeconnection_p.h"

#include <QSet>

#include <tuple>
#include <utility>

/**
 * A transaction bracket.
 *
 * It is atomic. On a full disk SQLite rolls the transaction back by itself, and later statements would be
 * committed row by row. So if the transaction cannot begin, or a write fails, the bracket fails: it is rolled
 * back at once, and nothing more is written.
 *
 * The tables have no index, so a lookup by uid is a scan, and storing a book of n contacts would be O(n²).
 * During a bracket no other connection can write, so it caches the uids of each book used and the
 * memberships, and buffers new rows to insert many by one statement. Call settle() before reading the tables
 * directly.
 *
 * Belongs to the thread that began the bracket.
 */
class StoreBracket
{
public:
    /// Begins a transaction. If that fails, the bracket has failed.
    explicit StoreBracket(StoreConnection& connection);
    Q_DISABLE_COPY(StoreBracket)

    bool isFailed() const { return m_failed; }
    /// Called after a failed write: rolls back, which invalidates the ids returned so far.
    void fail();
    /// Whether contacts whose id was returned have been lost; resets the flag.
    bool takeLost() { return std::exchange(m_lost, false); }
    /// Flushes the buffers and commits, or rolls back.
    void end();

    /// The id of the contact with this source, type, location and uid, 0 if there is none.
    quint32 contactId(quint32 source, quint32 type, quint32 location, const QString& uid);

    /// Adds a contact for which contactId() returns 0. Returns its id, 0 if the bracket has failed.
    quint32 addContact(const ContactRow& contact);

    /// Whether a contact is buffered and not yet written.
    bool isPending(quint32 id) const;

    bool hasLink(quint32 contact, quint32 group);
    void addLink(quint32 contact, quint32 group);

    /// Removes from the cache the memberships of a contact, of a group or, with both, of the contact in the
    /// group. Returns false if there are none, so that nothing needs to be deleted.
    bool removeLinks(quint32 contact, quint32 group);

    /// Flushes the buffers.
    void settle();

    /// Flushes the buffers and clears the caches, before rows are deleted.
    void forget();
    /// Likewise for one contact.
    void forgetContact(quint32 id);

private:
    using Book = std::tuple<quint32, quint32, quint32>;
    struct Uids
    {
        QHash<QString, quint32> ids;
        QSet<QString> repeated; ///< Uids of several rows; ids contains the first row.
    };

    Uids* book(const Book& book);
    bool loadLinks();
    void writeContacts();
    void writeLinks();
    /// Runs a statement that writes; if it fails, returns false, and the bracket has failed.
    template <typename... Values>
    bool write(StoreStatement statement, const Values&... values)
    {
        if (!m_failed && !m_connection.run(statement, values...).ok())
            fail();
        return !m_failed;
    }

    StoreConnection& m_connection;
    const bool m_begun;
    bool m_failed;
    bool m_lost{false};
    QMap<Book, Uids> m_books;
    QHash<quint32, QSet<quint32>> m_members; ///< The contacts of each group.
    bool m_hasLinks{false};                  ///< m_members is loaded.
    quint32 m_nextId{0};                     ///< The id of the next new contact, 0 while unknown.
    QVector<QPair<quint32, ContactRow>> m_newContacts;
    QVector<QPair<quint32, quint32>> m_newLinks; ///< Contact and group.
};
