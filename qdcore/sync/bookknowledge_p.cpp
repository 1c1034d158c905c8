#include "bookknowledge_p.h"

#include "contactdisassembly_p.h"

#include <algorithm>

BookKnowledge::BookKnowledge(const StoredBook& book)
    : m_book(book)
{}

BookKnowledge::BookKnowledge(const StoredBook& book, unsigned int newest)
    : m_book(book)
    , m_newest(newest)
{}

BookKnowledge::BookKnowledge(const StoredBook& book, ContactLocalStorage& storage)
    : m_book(book)
    , m_newest(storage.getContactLastTimeStamp(book.source, book.type, book.location))
    , m_lastId(storage.getLastContactId())
{}

void BookKnowledge::noteDeleted(const QString& uid)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deleted.insert(uid);
}

void BookKnowledge::noteListed(const QList<QString>& uids)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lists.append(uids);
}

bool BookKnowledge::hasNewerThan(ContactLocalStorage& storage, unsigned int timestamp) const
{
    return storage.getContactLastTimeStamp(m_book.source, m_book.type, m_book.location) >
           std::max(m_newest, timestamp);
}

void BookKnowledge::deleteRest(ContactLocalStorage& storage, const QList<QString>& listed,
                               const QList<QString>& replied) const
{
    if (m_lastId != any || !hasNewerThan(storage, 0))
        storage.deleteContactsNotListed(m_book.source, m_book.type, m_book.location, listed, replied,
                                        m_lastId);
}

ContactList BookKnowledge::storable(ContactLocalStorage& storage, const ContactList& units,
                                    unsigned int timestamp) const
{
    QSet<QString> deleted;
    QVector<QList<QString>> lists;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        deleted = m_deleted;
        lists = m_lists;
    }
    const bool isOutdated = hasNewerThan(storage, timestamp);
    if (!isOutdated && deleted.isEmpty())
        return withSameUnits(units);

    QVector<QSet<QString>> listed;
    for (const auto& list : qAsConst(lists))
        listed.append(QSet<QString>(list.begin(), list.end()));
    const auto isMissing = [&](const ContactPlace& place) {
        return !listed.isEmpty() &&
               std::all_of(listed.cbegin(), listed.cend(),
                           [&place](const QSet<QString>& list) { return list.contains(place.uid); }) &&
               !storage.getContact(m_book.source, place.type, place.location, place.uid);
    };
    ContactList result;
    result.setContactsType(units.contactsType());
    for (const auto& unit : units.contacts()) {
        ContactPlace place;
        if (unit && placeOf(*unit, place) && !deleted.contains(place.uid) &&
            (!isOutdated || isMissing(place)))
            result.contacts().append(unit);
    }
    return result;
}
