#include "storestatements_p.h"

namespace {

/// Indexed by StoreStatement.
const char* const statements[] = {
    // The schema. No index and no pragma, since the user's other programs share the file.
    "CREATE TABLE IF NOT EXISTS contacts (id INTEGER PRIMARY KEY AUTOINCREMENT, uid TEXT, type INTEGER NOT "
    "NULL, location INTEGER NOT NULL, source INTEGER NOT NULL, timestamp INTEGER, name TEXT, description "
    "TEXT, phone TEXT, fax TEXT, email TEXT, organization TEXT, FOREIGN KEY(source) REFERENCES sources(id));",
    "CREATE TABLE IF NOT EXISTS sources (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT, type INTEGER NOT "
    "NULL);",
    "CREATE TABLE IF NOT EXISTS properties (contact INTEGER NOT NULL, type INTEGER NOT NULL, value TEXT, "
    "FOREIGN KEY(contact) REFERENCES contacts(id));",
    "CREATE TABLE IF NOT EXISTS groups (contact INTEGER NOT NULL, contactgroup INTEGER NOT NULL, "
    "FOREIGN KEY(contact) REFERENCES contacts(id), FOREIGN KEY(contactgroup) REFERENCES contacts(id));",
    "CREATE TRIGGER IF NOT EXISTS delete_source BEFORE DELETE ON sources FOR EACH ROW BEGIN "
    "DELETE FROM properties WHERE contact IN (SELECT id FROM contacts WHERE source=OLD.id); "
    "DELETE FROM groups WHERE contact IN (SELECT id FROM contacts WHERE source=OLD.id) "
    "OR contactgroup IN (SELECT id FROM contacts WHERE source=OLD.id); "
    "DELETE FROM contacts WHERE source=OLD.id; END;",
    "CREATE TRIGGER IF NOT EXISTS delete_contact BEFORE DELETE ON contacts FOR EACH ROW BEGIN "
    "DELETE FROM properties WHERE contact=OLD.id; "
    "DELETE FROM groups WHERE contact=OLD.id OR contactgroup=OLD.id; END;",

    // Sources
    "SELECT id FROM sources WHERE name=? AND type=?;",
    "INSERT INTO sources(name, type) VALUES(?, ?);",
    "DELETE FROM sources WHERE id=?;",
    "SELECT id FROM sources;",
    "SELECT id FROM sources WHERE type=?;",
    "SELECT name, type FROM sources WHERE id=?;",

    // Contacts
    "SELECT id FROM contacts WHERE source=? AND type=? AND location=? AND uid=?;",
    "INSERT INTO contacts(uid, type, location, source, timestamp, name, description, phone, fax, email, "
    "organization) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?);",
    "UPDATE contacts SET timestamp=?, name=?, description=?, phone=?, fax=?, email=?, organization=? WHERE "
    "id=?",
    "UPDATE contacts SET name=?, description=?, phone=?, fax=?, email=?, organization=? WHERE id=?",
    "DELETE FROM contacts WHERE id=?;",
    "SELECT uid, type, location, source, timestamp, name, description, phone, fax, email, organization "
    "FROM contacts WHERE id=?;",
    "SELECT max(id) FROM contacts;",

    // Contacts of a source, by StoreFilter
    "DELETE FROM contacts WHERE source=?;",
    "DELETE FROM contacts WHERE source=? AND type=?;",
    "DELETE FROM contacts WHERE source=? AND location=?;",
    "DELETE FROM contacts WHERE source=? AND location=? AND type=?;",

    "DELETE FROM contacts WHERE source=? AND uid NOT IN (",
    "DELETE FROM contacts WHERE source=? AND type=? AND uid NOT IN (",
    "DELETE FROM contacts WHERE source=? AND location=? AND uid NOT IN (",
    "DELETE FROM contacts WHERE source=? AND location=? AND type=? AND uid NOT IN (",

    "SELECT timestamp FROM contacts WHERE source=? ORDER BY timestamp DESC;",
    "SELECT timestamp FROM contacts WHERE source=? AND type=? ORDER BY timestamp DESC;",
    "SELECT timestamp FROM contacts WHERE source=? AND location=? ORDER BY timestamp DESC;",
    "SELECT timestamp FROM contacts WHERE source=? AND location=? AND type=? ORDER BY timestamp DESC;",

    "SELECT id FROM contacts WHERE source=?;",
    "SELECT id FROM contacts WHERE source=? AND type=?;",
    "SELECT id FROM contacts WHERE source=? AND location=?;",
    "SELECT id FROM contacts WHERE source=? AND location=? AND type=?;",

    "SELECT id FROM contacts WHERE source=? AND id IN (SELECT contact FROM groups WHERE contactgroup=?);",
    "SELECT id FROM contacts WHERE source=? AND type=? AND id IN (SELECT contact FROM groups WHERE "
    "contactgroup=?);",
    "SELECT id FROM contacts WHERE source=? AND location=? AND id IN "
    "(SELECT contact FROM groups WHERE contactgroup=?);",

    // Memberships
    "SELECT contact, contactgroup FROM groups WHERE contact=? AND contactgroup=?;",
    "INSERT INTO groups(contact, contactgroup) VALUES(?, ?);",
    "DELETE FROM groups WHERE contact=? AND contactgroup=?;",
    "DELETE FROM groups WHERE contact=?;",
    "DELETE FROM groups WHERE contactgroup=?;",

    // Properties
    "SELECT contact, type, value FROM properties WHERE contact=? AND type=?;",
    "UPDATE properties SET value=? WHERE contact=? AND type=?;",
    "INSERT INTO properties(contact, type, value) VALUES(?, ?, ?);",
    "DELETE FROM properties WHERE contact=? AND type=?;",
    "SELECT value FROM properties WHERE contact=? AND type=?;",

    // Search
    "SELECT id, name FROM contacts WHERE name LIKE ?;",
    "SELECT id, name FROM contacts WHERE name LIKE ? LIMIT ?;",
    "SELECT id, name FROM contacts WHERE name LIKE ? AND source=?;",
    "SELECT id, name FROM contacts WHERE name LIKE ? AND source=? LIMIT ?;",
    "SELECT id, name FROM contacts WHERE name LIKE ? AND source=?) LIMIT ?;",
    "SELECT id, name FROM contacts WHERE name LIKE ? AND (source=? OR source=?);",
    "SELECT id, name FROM contacts WHERE name LIKE ? AND (source=? OR source=?) LIMIT ?;",

    // Brackets
    "BEGIN IMMEDIATE;",
    "COMMIT;",
    "ROLLBACK;",
    "PRAGMA cache_spill=OFF;",
    "PRAGMA cache_spill=ON;",

    // Within a bracket
    "INSERT INTO contacts(id, uid, type, location, source, timestamp, name, description, phone, fax, email, "
    "organization) VALUES",
    "INSERT INTO contacts(id, uid, type, location, source, timestamp, name, description, phone, fax, email, "
    "organization) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?);",
    "INSERT INTO groups(contact, contactgroup) VALUES",
    "SELECT uid, id FROM contacts WHERE source=? AND type=? AND location=?;",
    "SELECT contact, contactgroup FROM groups;",

    // Deleting many
    "SELECT count(*) FROM (SELECT id FROM contacts %1 LIMIT ?);",
    "SELECT uid FROM contacts %1;",
    "DELETE FROM properties WHERE contact IN (SELECT id FROM contacts %1);",
    "WITH gone AS (SELECT id FROM contacts %1) "
    "DELETE FROM groups WHERE contact IN gone OR contactgroup IN gone;",
    "SELECT sql FROM sqlite_master WHERE type='trigger' AND name='delete_contact';",
    "DROP TRIGGER delete_contact;",
};
static_assert(sizeof(statements) / sizeof(*statements) == static_cast<std::size_t>(StoreStatement::End),
              "one text for each statement");

/// @p text followed by @p rows rows of @p values values each.
QString withRows(const QString& text, int rows, int values)
{
    const QString row = QLatin1Char('(') + QStringLiteral("?, ").repeated(values - 1) + QStringLiteral("?)");
    return text + (row + QStringLiteral(", ")).repeated(rows - 1) + row + QLatin1Char(';');
}

} // namespace

QString storeStatement(StoreStatement statement)
{
    const QString text = QLatin1String(statements[static_cast<int>(statement)]);
    switch (statement) {
    case StoreStatement::InsertContacts:
        return withRows(text, storeRowsAtOnce, 12);
    case StoreStatement::InsertLinks:
        return withRows(text, storeRowsAtOnce, 2);
    default:
        return text;
    }
}

QString storeListStatement(StoreStatement list, bool whole, bool paged)
{
    QString text = storeStatement(list);
    if (whole) {
        text.replace(0, int(qstrlen("SELECT id")),
                     QStringLiteral("SELECT id, uid, type, location, name, description, phone, fax, email, "
                                    "organization"));
    }
    if (paged)
        text.replace(text.size() - 1, 1, QStringLiteral(" LIMIT ? OFFSET ?;"));
    return text;
}
