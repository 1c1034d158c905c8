#include "storebracket_p.h"

namespace {

/// Whether a text survives a round trip through the database unchanged, so that the cache can find it: not
/// invalid UTF-16, nor a text that begins with a byte order mark, which is removed or obeyed.
bool isStoredAsIs(const QString& text)
{
    return text.isValidUtf16() && !text.startsWith(QChar(QChar::ByteOrderMark)) &&
           !text.startsWith(QChar(QChar::ByteOrderSwapped));
}

} // namespace

StoreBracket::StoreBracket(StoreConnection& connection)
    : m_connection(connection)
    , m_begun(connection.execute(storeStatement(StoreStatement::Begin)))
    , m_failed(!m_begun)
{}

void StoreBracket::fail()
{
    if (m_failed)
        return;
    m_failed = true;
    m_lost = m_nextId != 0;
    m_newContacts.clear();
    m_newLinks.clear();
    m_books.clear();
    m_members.clear();
    // Fails if SQLite has already rolled back by itself.
    m_connection.execute(storeStatement(StoreStatement::Rollback));
}

void StoreBracket::end()
{
    settle();
    if (!m_failed && !m_connection.execute(storeStatement(StoreStatement::Commit)))
        fail();
}

quint32 StoreBracket::contactId(quint32 source, quint32 type, quint32 location, const QString& uid)
{
    if (isStoredAsIs(uid)) {
        const Uids* const known = book({source, type, location});
        return known ? known->ids.value(uid) : 0;
    }
    settle();
    StoreRows rows = m_connection.run(StoreStatement::FindContact, source, type, location, uid);
    return rows.next() ? rows.number(0) : 0;
}

quint32 StoreBracket::addContact(const ContactRow& contact)
{
    if (m_failed)
        return 0;
    quint32 id = 0;
    if (m_nextId) {
        id = m_nextId++;
        m_newContacts.append({id, contact});
    } else {
        // The database assigns the first id; the next ones are consecutive.
        StoreRows rows =
            m_connection.run(StoreStatement::InsertContact, contact.uid, contact.type, contact.location,
                             contact.source, contact.timestamp, contact.name, contact.description,
                             contact.phone, contact.fax, contact.email, contact.organization);
        if (!rows.ok()) {
            fail();
            return 0;
        }
        id = rows.insertedId();
        m_nextId = id + 1;
    }

    const auto known = m_books.find({contact.source, contact.type, contact.location});
    if (known != m_books.end() && isStoredAsIs(contact.uid))
        known->ids.insert(contact.uid, id);
    else if (known != m_books.end())
        m_books.erase(known); // Only the database knows the uid as stored.
    if (m_newContacts.size() >= storeRowsAtOnce)
        writeContacts();
    return m_failed ? 0 : id;
}

bool StoreBracket::isPending(quint32 id) const
{
    return !m_newContacts.isEmpty() && id >= m_newContacts.first().first;
}

bool StoreBracket::hasLink(quint32 contact, quint32 group)
{
    if (!loadLinks())
        return false;
    const auto members = m_members.constFind(group);
    return members != m_members.constEnd() && members->contains(contact);
}

void StoreBracket::addLink(quint32 contact, quint32 group)
{
    if (m_failed)
        return;
    if (m_hasLinks)
        m_members[group].insert(contact);
    m_newLinks.append({contact, group});
    if (m_newLinks.size() >= storeRowsAtOnce)
        writeLinks();
}

bool StoreBracket::removeLinks(quint32 contact, quint32 group)
{
    if (!loadLinks())
        return false;
    bool any = false;
    if (group) {
        const auto members = m_members.find(group);
        if (members != m_members.end() && contact)
            any |= members->remove(contact);
        else if (members != m_members.end())
            any |= !m_members.take(group).isEmpty();
    } else {
        for (QSet<quint32>& members : m_members)
            any |= members.remove(contact);
    }
    if (any)
        writeLinks();
    return any;
}

void StoreBracket::settle()
{
    writeContacts();
    writeLinks();
}

void StoreBracket::forget()
{
    settle();
    m_books.clear();
    m_members.clear();
    m_hasLinks = false;
}

void StoreBracket::forgetContact(quint32 id)
{
    settle();
    if (m_failed)
        return;
    StoreRows rows = m_connection.run(StoreStatement::ContactInfo, id);
    if (!rows.next())
        return; // Without a row the trigger does not run, so the memberships of such an id remain.
    const QString uid = rows.text(0);
    const auto known = m_books.find({rows.number(3), rows.number(1), rows.number(2)});
    if (known != m_books.end() && known->repeated.contains(uid))
        m_books.erase(known);
    else if (known != m_books.end() && known->ids.value(uid) == id)
        known->ids.remove(uid);
    m_members.remove(id);
    for (QSet<quint32>& members : m_members)
        members.remove(id);
}

StoreBracket::Uids* StoreBracket::book(const Book& book)
{
    const auto known = m_books.find(book);
    if (known != m_books.end())
        return &*known;

    settle();
    if (m_failed)
        return nullptr;
    const auto [source, type, location] = book;
    StoreRows rows = m_connection.run(StoreStatement::ListUids, source, type, location);
    Uids& uids = m_books[book];
    while (rows.next()) {
        // As the statement FindContact: of several rows with the same uid the first, and never NULL.
        const QString uid = rows.text(0);
        if (rows.isNull(0))
            continue;
        if (uids.ids.contains(uid))
            uids.repeated.insert(uid);
        else
            uids.ids.insert(uid, rows.number(1));
    }
    if (rows.isComplete())
        return &uids;
    fail(); // Contacts missing from the cache would be added twice.
    return nullptr;
}

bool StoreBracket::loadLinks()
{
    if (m_hasLinks || m_failed)
        return !m_failed;
    writeLinks();
    if (m_failed)
        return false;
    StoreRows rows = m_connection.run(StoreStatement::ListLinks);
    while (rows.next())
        m_members[rows.number(1)].insert(rows.number(0));
    if (!rows.isComplete())
        fail();
    m_hasLinks = !m_failed;
    return m_hasLinks;
}

void StoreBracket::writeContacts()
{
    const QVector<QPair<quint32, ContactRow>> contacts = std::exchange(m_newContacts, {});
    const bool atOnce = contacts.size() == storeRowsAtOnce;
    QVector<QVariant> values;
    values.reserve(storeRowsAtOnce * 12);
    for (const auto& [id, c] : contacts) {
        values << id << StoreConnection::bound(c.uid) << c.type << c.location << c.source << c.timestamp;
        for (const QString* text : {&c.name, &c.description, &c.phone, &c.fax, &c.email, &c.organization})
            values.append(StoreConnection::bound(*text));
        if (atOnce)
            continue;
        if (!write(StoreStatement::InsertContactWithId, values))
            return;
        values.clear();
    }
    if (atOnce)
        write(StoreStatement::InsertContacts, values);
}

void StoreBracket::writeLinks()
{
    const QVector<QPair<quint32, quint32>> links = std::exchange(m_newLinks, {});
    if (links.size() == storeRowsAtOnce) {
        QVector<QVariant> values;
        values.reserve(storeRowsAtOnce * 2);
        for (const auto& link : links)
            values << link.first << link.second;
        write(StoreStatement::InsertLinks, values);
        return;
    }
    for (const auto& link : links) {
        if (!write(StoreStatement::InsertLink, link.first, link.second))
            return;
    }
}
