#include "simbooks.h"

#include <algorithm>
#include <iterator>

namespace {

const QLatin1String contactsPath("/qdws/v1/contacts/");
const QLatin1String groupsPath("/qdws/v1/contact_groups/");

} // namespace

QString SimBookId::path(const QString& uid) const
{
    const QString book = (groups ? groupsPath : contactsPath) + owner;
    return uid.isNull() ? book : book + QLatin1Char('/') + uid;
}

SimEntry* SimBook::find(const QString& uid)
{
    const auto position = m_positions.constFind(uid);
    return position == m_positions.constEnd() ? nullptr : &m_entries.at(*position);
}

const SimEntry* SimBook::find(const QString& uid) const
{
    const auto position = m_positions.constFind(uid);
    return position == m_positions.constEnd() ? nullptr : &m_entries.at(*position);
}

const SimEntry& SimBook::at(int index) const
{
    return m_entries.at(m_order.at(static_cast<size_t>(index)));
}

void SimBook::put(const SimEntry& entry)
{
    if (SimEntry* old = find(entry.uid)) {
        *old = entry;
        return;
    }
    m_positions[entry.uid] = m_next;
    m_order.push_back(m_next);
    m_entries[m_next++] = entry;
}

bool SimBook::remove(const QString& uid)
{
    const auto position = m_positions.constFind(uid);
    if (position == m_positions.constEnd())
        return false;
    m_entries.erase(*position);
    m_order.erase(std::lower_bound(m_order.begin(), m_order.end(), *position));
    m_positions.erase(position);
    return true;
}

void SimBooks::addOwner(const QString& owner)
{
    m_books[{owner, false}];
    m_books[{owner, true}];
}

const SimBook* SimBooks::book(const SimBookId& id) const
{
    const auto found = m_books.find(id);
    return found == m_books.end() ? nullptr : &found->second;
}

const SimEntry* SimBooks::entryAt(const QString& path) const
{
    const bool isGroup = path.startsWith(groupsPath);
    if (!isGroup && !path.startsWith(contactsPath))
        return nullptr;
    const int begin = isGroup ? groupsPath.size() : contactsPath.size();
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    const SimBook* book = this->book({path.mid(begin, slash - begin), isGroup});
    return book ? book->find(path.mid(slash + 1)) : nullptr;
}

bool SimBooks::add(const SimBookId& id, SimEntry* entry, qint64 now)
{
    const auto found = m_books.find(id);
    if (found == m_books.end())
        return false;
    if (entry->uid.isEmpty())
        entry->uid = QString::number(++m_lastUid);
    entry->changed = changeTime(now);
    found->second.put(*entry);
    return true;
}

bool SimBooks::modify(const SimBookId& id, const SimEntry& entry, qint64 now)
{
    const auto found = m_books.find(id);
    SimEntry* old = found == m_books.end() ? nullptr : found->second.find(entry.uid);
    if (!old)
        return false;
    *old = entry;
    old->changed = changeTime(now);
    return true;
}

bool SimBooks::remove(const SimBookId& id, const QString& uid, qint64 now)
{
    const auto found = m_books.find(id);
    if (found == m_books.end() || !found->second.remove(uid))
        return false;
    const quint32 time = changeTime(now);
    const QString path = id.path(uid);
    for (auto& other : m_books) {
        if (!other.first.groups)
            continue;
        for (const auto& group : other.second.entries()) {
            if (!group.second.members.contains(path))
                continue;
            SimEntry* changed = other.second.find(group.second.uid);
            QStringList left = changed->members; // a copy: another connection may still read the list
            left.removeAll(path);
            changed->members = left;
            changed->changed = time;
        }
    }
    return true;
}

quint32 SimBooks::readingTime(qint64 now)
{
    m_lastReading = std::max({m_lastReading, m_lastChange, static_cast<quint32>(now / 1000)});
    return m_lastReading;
}

quint32 SimBooks::changeTime(qint64 now)
{
    ++m_revision;
    m_lastChange = std::max({m_lastChange, m_lastReading + 1, static_cast<quint32>(now / 1000)});
    return m_lastChange;
}

SimEntry SimBooks::somebody(const SimBookId& id, SimPeople* people) const
{
    SimEntry entry;
    if (!id.groups) {
        entry.person = people->person();
        return entry;
    }
    entry.person.name = people->groupName();
    entry.description = QStringLiteral("Made up, %1").arg(entry.person.name.toLower());
    const SimBookId contacts{id.owner, false};
    const SimBook* book = this->book(contacts);
    const int count = book->size() == 0 ? 0 : 2 + people->below(10);
    for (int i = 0; i < count; ++i) {
        const QString member = contacts.path(book->at(people->below(book->size())).uid);
        if (!entry.members.contains(member))
            entry.members.append(member);
    }
    return entry;
}

void SimBooks::fill(const QString& owner, int contacts, int groups, SimPeople* people, qint64 now)
{
    addOwner(owner);
    for (int i = 0; i < contacts; ++i) {
        SimEntry entry = somebody({owner, false}, people);
        add({owner, false}, &entry, now);
    }
    for (int i = 0; i < groups; ++i) {
        SimEntry entry = somebody({owner, true}, people);
        add({owner, true}, &entry, now);
    }
}

QStringList SimBooks::change(int count, SimPeople* people, qint64 now)
{
    QStringList lines;
    for (int i = 0; i < count && !m_books.empty(); ++i)
        lines.append(changeOne(people, now));
    return lines;
}

QString SimBooks::changeOne(SimPeople* people, qint64 now)
{
    const auto chosen = std::next(m_books.begin(), people->below(static_cast<int>(m_books.size())));
    const SimBookId id = chosen->first;
    const int action = chosen->second.size() == 0 ? 0 : people->below(10);
    SimEntry entry = somebody(id, people);
    if (action < 3) {
        add(id, &entry, now);
        return QStringLiteral("added ") + id.path(entry.uid);
    }
    const QString uid = chosen->second.at(people->below(chosen->second.size())).uid;
    if (action < 5) {
        remove(id, uid, now);
        return QStringLiteral("deleted ") + id.path(uid);
    }
    entry.uid = uid;
    modify(id, entry, now);
    return QStringLiteral("modified ") + id.path(uid);
}

void SimBooks::reset(quint64 lastUid, quint32 lastTime)
{
    for (auto& book : m_books)
        book.second = SimBook();
    m_lastUid = lastUid;
    m_lastReading = lastTime;
    m_lastChange = lastTime;
}

void SimBooks::restore(const SimBookId& id, const SimEntry& entry)
{
    const auto found = m_books.find(id);
    if (found != m_books.end())
        found->second.put(entry);
}
