#pragma once

#include "simpeople.h"
#include "simtypes.h"

#include <QtCore/QHash>

#include <map>
#include <vector>

/// @brief One entry of a book: a contact or a group.
struct SimEntry
{
    QString uid;         ///< last part of its address; decimal digits unless a test has set another
    SimPerson person;    ///< a contact's fields; a group uses only the name
    QString description; ///< of a group
    QStringList members; ///< of a group: decoded paths of the members' addresses
    quint32 changed = 0; ///< server time of the last change
};

/// @brief Identifies a book: its owner, and whether it contains groups.
struct SimBookId
{
    QString owner; ///< a user's name, or SimBooks::global()
    bool groups = false;

    bool operator<(const SimBookId& other) const
    {
        return owner != other.owner ? owner < other.owner : groups < other.groups;
    }
    /// Decoded path of the book, or of one of its entries.
    QString path(const QString& uid = QString()) const;
};

/// @brief The entries of one book in order of addition.
class SimBook
{
public:
    const std::map<quint64, SimEntry>& entries() const { return m_entries; }
    int size() const { return static_cast<int>(m_entries.size()); }
    SimEntry* find(const QString& uid);
    const SimEntry* find(const QString& uid) const;
    /// The entry at a position, 0 to below size().
    const SimEntry& at(int index) const;
    /// Adds the entry, or replaces the one with the same uid.
    void put(const SimEntry& entry);
    bool remove(const QString& uid);

private:
    std::map<quint64, SimEntry> m_entries;
    std::vector<quint64> m_order; // the keys of m_entries, for constant-time at()
    QHash<QString, quint64> m_positions;
    quint64 m_next = 1;
};

/// @brief All address books: a personal one for every user and a global one, each with contacts and groups.
///
/// Server time is in seconds, but a change after a read request in the same second gets a later time than the
/// reply reported, so "changed after T" never misses a change. Not thread-safe; SimState guards it.
class SimBooks
{
public:
    /// The owner of the global book.
    static QString global() { return QStringLiteral("global_contact_list"); }

    /// Creates the empty books of an owner unless they exist.
    void addOwner(const QString& owner);
    /// Null if there is no such book.
    const SimBook* book(const SimBookId& id) const;
    const std::map<SimBookId, SimBook>& all() const { return m_books; }
    /// The entry with this decoded path, in any book; null if there is none.
    const SimEntry* entryAt(const QString& path) const;

    /// @name Changes
    /// @p now is in ms since 1970. They return false if the book or the entry does not exist.
    /// @{
    /// Adds an entry, with a new uid unless it has one; replaces an existing entry with the same uid.
    bool add(const SimBookId& id, SimEntry* entry, qint64 now);
    bool modify(const SimBookId& id, const SimEntry& entry, qint64 now);
    /// Also removes the entry from every group, which counts as a change of these groups.
    bool remove(const SimBookId& id, const QString& uid, qint64 now);
    /// @}

    /// Server time in seconds for the reply to a read request at @p now.
    quint32 readingTime(qint64 now);

    /// Fills the books of an owner with generated contacts and groups of them.
    void fill(const QString& owner, int contacts, int groups, SimPeople* people, qint64 now);
    /// Makes @p count random changes in any book: adds, edits, deletes. Returns a log line for each.
    QStringList change(int count, SimPeople* people, qint64 now);

    /// Before a saved state is restored: empties all books and sets the last used uid and server time.
    void reset(quint64 lastUid, quint32 lastTime);
    void restore(const SimBookId& id, const SimEntry& entry);
    quint64 lastUid() const { return m_lastUid; }
    quint32 lastTime() const { return qMax(m_lastReading, m_lastChange); }
    /// Increases with every change.
    quint64 revision() const { return m_revision; }

private:
    quint32 changeTime(qint64 now);
    QString changeOne(SimPeople* people, qint64 now);
    SimEntry somebody(const SimBookId& id, SimPeople* people) const;

    std::map<SimBookId, SimBook> m_books;
    quint64 m_lastUid = 0;
    quint32 m_lastReading = 0;
    quint32 m_lastChange = 0;
    quint64 m_revision = 0;
};
