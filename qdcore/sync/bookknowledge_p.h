#pragma once

// What a book was when its server was asked about it. Internal: not installed, not exported.

#include "contactlist.h"
#include "contactlocalstorage.h"

#include <QMap>
#include <QPair>
#include <QSet>
#include <QWeakPointer>

#include <limits>
#include <mutex>
#include <optional>

/// A book in the store.
struct StoredBook
{
    unsigned int source;
    ContactLocalStorage::ContactType type;
    ContactLocalStorage::ContactLocation location;

    bool operator==(const StoredBook& other) const
    {
        return source == other.source && type == other.type && location == other.location;
    }
};

/**
 * What a book was when a request about it went out, and what was deleted from it or listed of it since.
 *
 * A list of identifiers or units is only as new as the moment it was asked for. What was added to the store
 * after that is not in it and must not be deleted; what was deleted after that may be in it and must not come
 * back; what a newer reply has stored must not be overwritten. Everything that deletes or stores because of a
 * reply of a synchronisation asks the object that was made with the request. Row ids, which only grow and are
 * shared by all programs that use the file, tell what was added since. Timestamps tell which of two replies
 * is newer, and only where they have passed both the reply and the newest one known then: the clock of the
 * server may have been set back.
 *
 * The provider notes what the user deletes, on its thread. Threads ask inside their bracket, and there tell
 * the objects of earlier requests what a list says.
 */
class BookKnowledge
{
public:
    /// Nothing is known: every row may be deleted, every unit stored.
    explicit BookKnowledge(const StoredBook& book);
    /// Only what getContactLastTimeStamp() was is known: where it is later by now, nothing is deleted.
    BookKnowledge(const StoredBook& book, unsigned int newest);
    using Requests = QList<QWeakPointer<BookKnowledge>>;
    /// What the store holds now. @p earlier are the requests that are under way, of any book.
    BookKnowledge(const StoredBook& book, ContactLocalStorage& storage, const Requests& earlier);
    Q_DISABLE_COPY(BookKnowledge)

    /// getContactLastTimeStamp() of the moment, 0 for an empty book.
    unsigned int newest() const { return m_newest; }
    const StoredBook& book() const { return m_book; }

    /// Units of a book, this or another, were deleted on the server.
    void noteDeleted(const StoredBook& book, const QList<QString>& uids);

    /// Deletes the units of the book that are neither among @p listed nor among @p replied and that were
    /// known when the server was asked, see ContactLocalStorage::deleteContactsNotListed(). Earlier requests
    /// note them, and what is listed.
    void deleteRest(ContactLocalStorage& storage, const QList<QString>& listed,
                    const QList<QString>& replied) const;

    /// Stores those of a reply's units that may be stored, and takes the others out of @p units: what was
    /// deleted since, also as a member of a group, and where the book has newer units by now, all but what it
    /// lacks and every later list has. Members that are newer by now are only linked. @p timestamp is the
    /// reply's; the rest of a reply that something was taken out of is stamped like what was known before,
    /// so that the next run asks for all of it again: the server may have given an identifier to another
    /// unit.
    void store(ContactLocalStorage& storage, ContactList& units, unsigned int timestamp) const;

private:
    /// Uids by type and location.
    using Deleted =
        QMap<QPair<ContactLocalStorage::ContactType, ContactLocalStorage::ContactLocation>, QSet<QString>>;

    static constexpr unsigned int any = std::numeric_limits<unsigned int>::max();

    void noteListed(const QList<QString>& uids);
    bool hasNewerThan(ContactLocalStorage& storage, unsigned int timestamp) const;

    const StoredBook m_book;
    const unsigned int m_newest{any};
    const unsigned int m_newestOfAll{any}; ///< Of all books of the source; only for groups, whose members
                                           ///< belong to other books.
    const unsigned int m_lastId{any};      ///< Rows with a higher id were added since.
    const Requests m_earlier;
    mutable std::mutex m_mutex; ///< Guards what was noted.
    Deleted m_deleted;
    std::optional<QSet<QString>> m_listed; ///< What every later list has.
};
