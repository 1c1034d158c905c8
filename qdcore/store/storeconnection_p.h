#pragma once

// One thread's connection to the contact database. Internal: not installed, not exported.

#include "storestatements_p.h"

#include <QHash>
#include <QPointer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QVariant>
#include <QVector>

/**
 * The result rows of a statement. RAII: the destructor resets the statement, since an open cursor would make
 * commits of other connections fail.
 */
class StoreRows
{
public:
    /// Runs a prepared query with bound values. Null: the statement could not be prepared.
    explicit StoreRows(QSqlQuery* query)
        : m_query(query)
        , m_ok(query && query->exec())
    {}
    ~StoreRows()
    {
        if (m_query)
            m_query->finish();
    }
    Q_DISABLE_COPY(StoreRows)

    /// Whether the statement succeeded.
    bool ok() const { return m_ok; }
    bool next() { return m_ok && m_query->next(); }
    /// After the last row: whether all rows were read without an error.
    bool isComplete() const { return m_ok && !m_query->lastError().isValid(); }

    quint32 number(int column) const { return m_query->value(column).toUInt(); }
    QString text(int column) const { return m_query->value(column).toString(); }
    bool isNull(int column) const { return m_query->isNull(column); }
    quint32 insertedId() const { return m_query->lastInsertId().toUInt(); }

private:
    QSqlQuery* m_query;
    bool m_ok;
};

/**
 * A named connection to the contact database and its prepared statements. Belongs to the thread that created
 * it.
 *
 * The destructor closes the connection and removes its name from Qt's list: the name contains the address of
 * the thread, which may be reused, and Qt rejects a connection created by another thread.
 */
class StoreConnection
{
public:
    /// Opens the file. If that fails, every statement fails.
    StoreConnection(const QString& name, const QString& path);
    ~StoreConnection();
    Q_DISABLE_COPY(StoreConnection)

    /// Whether the calling thread can use the connection: not if it was created by an ended thread whose
    /// address has been reused, or if its name has been removed from Qt's list.
    bool isUsable() const { return m_thread == QThread::currentThread() && m_database.isValid(); }

    bool isOpen() const { return m_database.isOpen(); }
    QStringList tables() const { return m_database.tables(); }

    /// Runs a statement of the table with values for its placeholders.
    template <typename... Values>
    StoreRows run(StoreStatement statement, const Values&... values)
    {
        QSqlQuery* query = prepared(static_cast<int>(statement));
        if (query) {
            int index = 0;
            (query->bindValue(index++, bound(values)), ...);
        }
        return StoreRows(query);
    }

    /// Likewise with the values in a list.
    StoreRows run(StoreStatement statement, const QVector<QVariant>& values);
    /// Runs a list statement in one of its forms, see storeListStatement().
    StoreRows runList(StoreStatement list, bool whole, bool paged, const QVector<QVariant>& values);

    /// Runs an SQL text once, without caching the prepared statement. Returns whether it succeeded.
    bool execute(const QString& text, const QVector<QVariant>& values = {});
    /// Likewise; returns the first column of all rows.
    QVector<QVariant> column(const QString& text, const QVector<QVariant>& values = {});
    /// Likewise, of the first row, null if there is none.
    QVariant first(const QString& text, const QVector<QVariant>& values = {})
    {
        return column(text, values).value(0);
    }

    /// A value for binding. A null QString is bound as an empty text, since NULL matches neither = nor LIKE.
    static QVariant bound(quint32 number) { return number; }
    static QVariant bound(const QString& text) { return text.isNull() ? QVariant(QLatin1String("")) : text; }

private:
    /// The prepared statement, null if it cannot be prepared. @p whole and @p paged are for list statements.
    QSqlQuery* prepared(int statement, bool whole = false, bool paged = false);
    static QSqlQuery* withValues(QSqlQuery* query, const QVector<QVariant>& values);

    QString m_name;
    QPointer<QThread> m_thread;
    QSqlDatabase m_database;
    QHash<int, QSqlQuery> m_statements; ///< By statement and form; pointers into it stay valid.
};
