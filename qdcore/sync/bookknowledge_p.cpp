#include "bookknowledge_p.h"

#include "contactdisassembly_p.h"

#include <algorithm>

namespace {

template <typename Condition>
void removeIf(ContactList& units, Condition condition)
{
    QVector<ContactUnitPtr>& all = units.contacts();
    const auto isRemoved = [&condition](const ContactUnitPtr& unit) {
        ContactPlace place;
        return unit && placeOf(*unit, place) && condition(place);
    };
    all.erase(std::remove_if(all.begin(), all.end(), isRemoved), all.end());
}

} // namespace

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
    , m_newestOfAll(book.type == ContactLocalStorage::TypeGroup
                        ? storage.getContactLastTimeStamp(book.source, ContactLocalStorage::AnyType,
                                                          ContactLocalStorage::AnyLocation)
                        : any)
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

void BookKnowledge::store(ContactLocalStorage& storage, ContactList& units, unsigned int timestamp) const
{
    QSet<QString> deleted;
    QVector<QList<QString>> lists;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        deleted = m_deleted;
        lists = m_lists;
    }
    QVector<QSet<QString>> listed;
    for (const auto& list : qAsConst(lists))
        listed.append(QSet<QString>(list.begin(), list.end()));
    const auto isMissing = [&](const ContactPlace& place) {
        return !listed.isEmpty() &&
               std::all_of(listed.cbegin(), listed.cend(),
                           [&place](const QSet<QString>& list) { return list.contains(place.uid); }) &&
               !storage.getContact(m_book.source, place.type, place.location, place.uid);
    };
    const bool isOutdated = hasNewerThan(storage, timestamp);
    if (isOutdated || !deleted.isEmpty())
        removeIf(units, [&](const ContactPlace& place) {
            return deleted.contains(place.uid) || (isOutdated && !isMissing(place));
        });

    // members are looked at one by one only where one of them can be newer
    unsigned int latest = std::max(m_newestOfAll, timestamp);
    if (latest != any && storage.getContactLastTimeStamp(m_book.source, ContactLocalStorage::AnyType,
                                                         ContactLocalStorage::AnyLocation) <= latest)
        latest = any;
    for (const auto& unit : qAsConst(units).contacts()) {
        if (unit)
            disassemble(storage, m_book.source, *unit, timestamp, 0, latest);
    }
}
