#include "storebracket_p.h"

quint32 StoreBracket::contactId(quint32 source, quint32 type, quint32 location, const QString& uid)
{
    // A text that is not valid UTF-16 comes back from the database as another one, so no map finds it.
    if (const QHash<QString, quint32>* ids = uid.isValidUtf16() ? book({source, type, location}) : nullptr)
        return ids->value(uid);
    settle();
    StoreRows rows = m_connection.run(StoreStatement::FindContact, source, type, location, uid);
    return rows.next() ? rows.number(0) : 0;
}

quint32 StoreBracket::addContact(const StoreContact& contact)
{
    quint32 id = 0;
    if (m_nextId) {
        id = m_nextId++;
        m_newContacts.append({id, contact});
    } else {
        // The database says where ids begin; from there on they are consecutive.
        StoreRows rows =
            m_connection.run(StoreStatement::InsertContact, contact.uid, contact.type, contact.location,
                             contact.source, contact.timestamp, contact.name, contact.description,
                             contact.phone, contact.fax, contact.email, contact.organization);
        if (!rows.ok())
            return 0;
        id = rows.insertedId();
        m_nextId = id + 1;
    }

    const auto ids = m_books.find({contact.source, contact.type, contact.location});
    if (ids != m_books.end())
        ids->insert(contact.uid, id);
    if (m_newContacts.size() >= storeRowsAtOnce && !writeContacts())
        return 0;
    return id;
}

bool StoreBracket::isPending(quint32 id) const
{
    return !m_newContacts.isEmpty() && id >= m_newContacts.first().first;
}

bool StoreBracket::hasLink(quint32 contact, quint32 group)
{
    if (loadLinks()) {
        const auto members = m_members.constFind(group);
        return members != m_members.constEnd() && members->contains(contact);
    }
    StoreRows rows = m_connection.run(StoreStatement::FindLink, contact, group);
    return !rows.ok() || rows.next();
}

void StoreBracket::addLink(quint32 contact, quint32 group)
{
    if (m_hasLinks)
        m_members[group].insert(contact);
    m_newLinks.append({contact, group});
    if (m_newLinks.size() >= storeRowsAtOnce)
        writeLinks();
}

bool StoreBracket::removeLinks(quint32 contact, quint32 group)
{
    bool any = !loadLinks();
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

bool StoreBracket::settle()
{
    const bool ok = writeContacts();
    writeLinks();
    return ok;
}

void StoreBracket::forget()
{
    settle();
    m_books.clear();
    m_members.clear();
    m_hasLinks = false;
}

QHash<QString, quint32>* StoreBracket::book(const Book& book)
{
    const auto known = m_books.find(book);
    if (known != m_books.end())
        return &*known;

    settle();
    const auto [source, type, location] = book;
    StoreRows rows = m_connection.run(StoreStatement::ListUids, source, type, location);
    if (!rows.ok())
        return nullptr;
    QHash<QString, quint32>& ids = m_books[book];
    while (rows.next()) {
        // Of several rows with one uid the plain statement finds the first; it never finds NULL.
        const QString uid = rows.text(0);
        if (!rows.isNull(0) && !ids.contains(uid))
            ids.insert(uid, rows.number(1));
    }
    return &ids;
}

bool StoreBracket::loadLinks()
{
    if (m_hasLinks)
        return true;
    writeLinks();
    StoreRows rows = m_connection.run(StoreStatement::ListLinks);
    m_hasLinks = rows.ok();
    while (rows.next())
        m_members[rows.number(1)].insert(rows.number(0));
    return m_hasLinks;
}

bool StoreBracket::writeContacts()
{
    const QVector<QPair<quint32, StoreContact>> contacts = std::exchange(m_newContacts, {});
    const auto append = [](QVector<QVariant>& values, const QPair<quint32, StoreContact>& row) {
        const StoreContact& c = row.second;
        for (const quint32 number : {row.first})
            values.append(number);
        values.append(StoreConnection::bound(c.uid));
        for (const quint32 number : {c.type, c.location, c.source, c.timestamp})
            values.append(number);
        for (const QString* text : {&c.name, &c.description, &c.phone, &c.fax, &c.email, &c.organization})
            values.append(StoreConnection::bound(*text));
    };

    QVector<QVariant> values;
    values.reserve(storeRowsAtOnce * 12);
    if (contacts.size() == storeRowsAtOnce) {
        for (const auto& row : contacts)
            append(values, row);
        if (m_connection.run(StoreStatement::InsertContacts, values).ok())
            return true;
    }
    // Fewer than a full statement takes, or one of them is refused: each by itself, with the id it was
    // promised.
    bool ok = true;
    for (const auto& row : contacts) {
        values.clear();
        append(values, row);
        ok &= m_connection.run(StoreStatement::InsertContactWithId, values).ok();
    }
    if (!ok)
        m_books.clear();
    return ok;
}

void StoreBracket::writeLinks()
{
    const QVector<QPair<quint32, quint32>> links = std::exchange(m_newLinks, {});
    if (links.size() == storeRowsAtOnce) {
        QVector<QVariant> values;
        values.reserve(storeRowsAtOnce * 2);
        for (const auto& link : links)
            values << link.first << link.second;
        if (m_connection.run(StoreStatement::InsertLinks, values).ok())
            return;
    }
    for (const auto& link : links)
        m_connection.run(StoreStatement::InsertLink, link.first, link.second);
}
