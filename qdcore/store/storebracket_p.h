#pragma once

// What a transaction bracket of the contact store knows and has yet to write. Internal: not installed, not
// exported.

#include "contactrow_p.h"
#include "storeconnection_p.h"

#include <QSet>

#include <tuple>
#include <utility>

/**
 * A transaction bracket.
 *
 * It is atomic. On a full disk SQLite rolls the transaction back by itself, and whatever ran after that would
 * be committed row by row; so the first write that fails, or a beginning that fails, makes the bracket a
 * failed one: it is rolled back at once, and nothing is written any more.
 *
 * The tables have no index, so looking a contact up by its uid is a scan, and a book of n contacts would cost
 * n². While a bracket runs no other connection can write, so it caches the uids, one book at a time, and the
 * memberships, and buffers new rows until many can be inserted by one statement. Whoever reads the tables by
 * other means calls settle() before.
 *
 * Belongs to the thread that began the bracket.
 */
class StoreBracket
{
public:
    /// Begins a transaction. Where that fails so has the bracket.
    explicit StoreBracket(StoreConnection& connection);
    Q_DISABLE_COPY(StoreBracket)

    bool isFailed() const { return m_failed; }
    /// A write failed: rolls back, which makes the ids that it gave out void.
    void fail();
    /// Whether contacts that had got an id are lost; tells it once.
    bool takeLost() { return std::exchange(m_lost, false); }
    /// Flushes the buffers and commits, or rolls back.
    void end();

    /// The id of the contact with that source, type, location and uid, 0 when there is none.
    quint32 contactId(quint32 source, quint32 type, quint32 location, const QString& uid);

    /// Adds a contact that contactId() does not know. Returns its id, 0 when the bracket has failed.
    quint32 addContact(const ContactRow& contact);

    /// Whether a contact has yet to be written.
    bool isPending(quint32 id) const;

    bool hasLink(quint32 contact, quint32 group);
    void addLink(quint32 contact, quint32 group);

    /// Forgets the memberships of a contact, of a group or, with both, of the contact in the group. Returns
    /// false when there are none, so that nothing needs to be deleted.
    bool removeLinks(quint32 contact, quint32 group);

    /// Flushes the buffers.
    void settle();

    /// Flushes, and invalidates the caches: rows will be deleted.
    void forget();
    /// Likewise for one contact.
    void forgetContact(quint32 id);

private:
    using Book = std::tuple<quint32, quint32, quint32>;
    struct Uids
    {
        QHash<QString, quint32> ids;
        QSet<QString> repeated; ///< Those of several rows; ids has the first.
    };

    Uids* book(const Book& book);
    bool loadLinks();
    void writeContacts();
    void writeLinks();
    /// Runs a statement that writes; false, and the bracket has failed, when it does not run.
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
    QHash<quint32, QSet<quint32>> m_members; ///< From group to its contacts.
    bool m_hasLinks{false};                  ///< m_members is loaded.
    quint32 m_nextId{0};                     ///< The id that the next new contact will have, 0 while unknown.
    QVector<QPair<quint32, ContactRow>> m_newContacts;
    QVector<QPair<quint32, quint32>> m_newLinks; ///< Contact and group.
};
