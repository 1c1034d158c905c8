#pragma once

// The state of a book when a request about it was sent. Internal: not installed, not exported.

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
 * The state of a book when a request about it was sent, and what was deleted from it or listed of it since.
 *
 * A reply with identifiers or units shows the book as of the request. Units added to the store since are
 * missing from it and must not be deleted; units deleted since may be in it and must not come back; units
 * stored from a newer reply must not be overwritten. All code that deletes or stores because of a reply of a
 * synchronisation consults the object that was made with the request. Row ids, which only grow and are shared
 * by all programs that use the file, show what was added since. A reply is outdated only if the store has a
 * timestamp later than both the reply's and the newest known at the request, since the server's clock may
 * have been set back.
 *
 * The provider records the user's deletions, on its thread. Worker threads call within their transaction
 * bracket, and there pass the content of a list on to the objects of earlier requests.
 */
class BookKnowledge
{
public:
    /// Nothing is known: every row may be deleted, every unit stored.
    explicit BookKnowledge(const StoredBook& book);
    /// Only getContactLastTimeStamp() is known: if it is later by now, nothing is deleted.
    BookKnowledge(const StoredBook& book, unsigned int newest);
    using Requests = QList<QWeakPointer<BookKnowledge>>;
    /// The present content of the store. @p earlier: the pending requests, of any book.
    BookKnowledge(const StoredBook& book, ContactLocalStorage& storage, const Requests& earlier);
    Q_DISABLE_COPY(BookKnowledge)

    /// getContactLastTimeStamp() at the request, 0 for an empty book.
    unsigned int newest() const { return m_newest; }
    const StoredBook& book() const { return m_book; }

    /// Units of a book, this or another, were deleted on the server.
    void noteDeleted(const StoredBook& book, const QList<QString>& uids);

    /// Deletes the units of the book that are neither in @p listed nor in @p replied and that were stored
    /// when the request was sent, see ContactLocalStorage::deleteContactsNotListed(). Also records them, and
    /// the list, in the earlier requests.
    void deleteRest(ContactLocalStorage& storage, const QList<QString>& listed,
                    const QList<QString>& replied) const;

    /// Stores those of a reply's units that are not outdated, and removes the others from @p units: units
    /// deleted since, also as members of groups, and, if the book has newer units by now, all units except
    /// those that it lacks and that every later list contains. Members with newer rows are only linked. @p
    /// timestamp is the reply's; if units were removed, the rest is stored with the timestamp known before,
    /// so that the next run requests all of it again: the server may have reused an identifier for another
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
    mutable std::mutex m_mutex; ///< Guards the members below.
    Deleted m_deleted;
    std::optional<QSet<QString>> m_listed; ///< The identifiers that every later list contains.
};
