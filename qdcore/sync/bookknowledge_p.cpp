#include "bookknowledge_p.h"

#include "contactdisassembly_p.h"
#include "quendracontactgroup.h"

#include <algorithm>

namespace {

/// Removes units from a list and from the groups in it; returns whether there were any. Groups are copied
/// first: the main thread may share the list.
template <typename Condition>
bool removeIf(ContactList& units, Condition condition)
{
    QVector<ContactUnitPtr>& all = units.contacts();
    const auto isRemoved = [&condition](const ContactUnitPtr& unit) {
        ContactPlace place;
        return unit && placeOf(*unit, place) && condition(place);
    };
    const auto kept = std::remove_if(all.begin(), all.end(), isRemoved);
    bool isAny = kept != all.end();
    all.erase(kept, all.end());
    for (ContactUnitPtr& unit : all) {
        const auto* group = dynamic_cast<const QuendraContactGroup*>(unit.data());
        if (!group)
            continue;
        QuendraContactGroup copy(*group);
        if (removeIf(copy.contacts(), condition)) {
            unit = ContactUnitPtr(copy.copy());
            isAny = true;
        }
    }
    return isAny;
}

} // namespace

BookKnowledge::BookKnowledge(const StoredBook& book)
    : m_book(book)
{}

BookKnowledge::BookKnowledge(const StoredBook& book, unsigned int newest)
    : m_book(book)
    , m_newest(newest)
{}

BookKnowledge::BookKnowledge(const StoredBook& book, ContactLocalStorage& storage, const Requests& earlier)
    : m_book(book)
    , m_newest(storage.getContactLastTimeStamp(book.source, book.type, book.location))
    , m_newestOfAll(book.type == ContactLocalStorage::TypeGroup
                        ? storage.getContactLastTimeStamp(book.source, ContactLocalStorage::AnyType,
                                                          ContactLocalStorage::AnyLocation)
                        : any)
    , m_lastId(storage.getLastContactId())
    , m_earlier(earlier)
{}

void BookKnowledge::noteDeleted(const StoredBook& book, const QList<QString>& uids)
{
    if (book.source != m_book.source || uids.isEmpty())
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deleted[{book.type, book.location}].unite(QSet<QString>(uids.begin(), uids.end()));
}

void BookKnowledge::noteListed(const QList<QString>& uids)
{
    const QSet<QString> listed(uids.begin(), uids.end());
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listed = m_listed ? m_listed->intersect(listed) : listed;
}

bool BookKnowledge::hasNewerThan(ContactLocalStorage& storage, unsigned int timestamp) const
{
    return storage.getContactLastTimeStamp(m_book.source, m_book.type, m_book.location) >
           std::max(m_newest, timestamp);
}

void BookKnowledge::deleteRest(ContactLocalStorage& storage, const QList<QString>& listed,
                               const QList<QString>& replied) const
{
    if (m_lastId == any && hasNewerThan(storage, 0))
        return;
    QList<QString> deleted;
    storage.deleteContactsNotListed(m_book.source, m_book.type, m_book.location, listed, replied, m_lastId,
                                    m_earlier.isEmpty() ? nullptr : &deleted);
    for (const auto& weak : m_earlier) {
        const auto earlier = weak.toStrongRef();
        if (!earlier)
            continue;
        earlier->noteDeleted(m_book, deleted);
        if (!listed.isEmpty() && earlier->m_book == m_book)
            earlier->noteListed(listed);
    }
}

void BookKnowledge::store(ContactLocalStorage& storage, ContactList& units, unsigned int timestamp) const
{
    Deleted deleted;
    std::optional<QSet<QString>> listed;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        deleted = m_deleted;
        listed = m_listed;
    }
    const auto isStoredOrUnknown = [&](const ContactUnitPtr& unit) {
        ContactPlace place;
        return !unit || !placeOf(*unit, place) || !listed || !listed->contains(place.uid) ||
               storage.getContact(m_book.source, place.type, place.location, place.uid) != 0;
    };
    bool isWhole = true;
    if (!deleted.isEmpty()) {
        isWhole = !removeIf(units, [&deleted](const ContactPlace& place) {
            return deleted.value({place.type, place.location}).contains(place.uid);
        });
    }
    if (hasNewerThan(storage, timestamp)) {
        QVector<ContactUnitPtr>& all = units.contacts();
        all.erase(std::remove_if(all.begin(), all.end(), isStoredOrUnknown), all.end());
    }

    // members are checked one by one only if one of them can be newer
    unsigned int latest = std::max(m_newestOfAll, timestamp);
    if (latest != any && storage.getContactLastTimeStamp(m_book.source, ContactLocalStorage::AnyType,
                                                         ContactLocalStorage::AnyLocation) <= latest)
        latest = any;
    const unsigned int stamp = isWhole ? timestamp : std::min(timestamp, m_newest);
    for (const auto& unit : qAsConst(units).contacts()) {
        if (unit)
            disassemble(storage, m_book.source, *unit, stamp, 0, latest);
    }
}
