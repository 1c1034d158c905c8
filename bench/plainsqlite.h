#pragma once

// SQLite's C interface, for the baselines of the contact store.

#include "bench.h"

#include <QString>

#include <sqlite3.h>

#include <vector>

/// A connection with its statements. Any failure ends the program.
class Plain
{
public:
    explicit Plain(const QByteArray& file)
    {
        if (sqlite3_open(file.constData(), &m_db) != SQLITE_OK)
            fail("open");
        run("PRAGMA cache_spill=OFF");
    }
    ~Plain()
    {
        for (sqlite3_stmt* statement : m_statements)
            sqlite3_finalize(statement);
        sqlite3_close(m_db);
    }

    void run(const char* text)
    {
        if (sqlite3_exec(m_db, text, nullptr, nullptr, nullptr) != SQLITE_OK)
            fail(sqlite3_errmsg(m_db));
    }

    /// Deletes the source with the id 1 and all that belongs to it by set-wise statements, without the
    /// triggers. Returns the time of the statements in milliseconds.
    double deleteFirstSource()
    {
        run("DROP TRIGGER delete_source");
        run("DROP TRIGGER delete_contact");
        return milliseconds([this] {
            run("BEGIN;"
                "DELETE FROM properties WHERE contact IN (SELECT id FROM contacts WHERE source=1);"
                "DELETE FROM groups WHERE contact IN (SELECT id FROM contacts WHERE source=1) "
                "OR contactgroup IN (SELECT id FROM contacts WHERE source=1);"
                "DELETE FROM contacts WHERE source=1;"
                "DELETE FROM sources WHERE id=1;"
                "COMMIT");
        });
    }

    /// The single number that a query returns.
    int number(const char* text)
    {
        sqlite3_stmt* statement = prepare(text);
        if (sqlite3_step(statement) != SQLITE_ROW)
            fail(sqlite3_errmsg(m_db));
        const int result = sqlite3_column_int(statement, 0);
        sqlite3_reset(statement);
        return result;
    }

    sqlite3_stmt* prepare(const char* text)
    {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_db, text, -1, &statement, nullptr) != SQLITE_OK)
            fail(sqlite3_errmsg(m_db));
        m_statements.push_back(statement);
        return statement;
    }

    /// Binds and runs a statement without result rows.
    template <typename... Values>
    void step(sqlite3_stmt* statement, const Values&... values)
    {
        bindAll(statement, values...);
        if (sqlite3_step(statement) != SQLITE_DONE)
            fail(sqlite3_errmsg(m_db));
        sqlite3_reset(statement);
    }

    template <typename... Values>
    static void bindAll(sqlite3_stmt* statement, const Values&... values)
    {
        int index = 1;
        (bind(statement, index++, values), ...);
    }

    static QString text(sqlite3_stmt* statement, int column)
    {
        const void* data = sqlite3_column_text16(statement, column);
        return QString(static_cast<const QChar*>(data), sqlite3_column_bytes16(statement, column) / 2);
    }

private:
    static void bind(sqlite3_stmt* statement, int index, int value)
    {
        sqlite3_bind_int(statement, index, value);
    }
    static void bind(sqlite3_stmt* statement, int index, const QString& value)
    {
        sqlite3_bind_text16(statement, index, value.utf16(), value.size() * 2, SQLITE_STATIC);
    }

    sqlite3* m_db{nullptr};
    std::vector<sqlite3_stmt*> m_statements;
};
