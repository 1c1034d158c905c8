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
 * The rows of a statement that ran. The statement is reset when this goes: an open cursor would make the
 * commits of other connections fail.
 */
class StoreRows
{
public:
    /// Takes a prepared query whose values are bound, and runs it. Null: the statement could not be prepared.
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

    /// Whether the statement ran.
    bool ok() const { return m_ok; }
    bool next() { return m_ok && m_query->next(); }
    /// After the last row: whether that was the end, and not an error in the middle.
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
 * A named connection to the contact database and the statements prepared on it. Belongs to the thread that
 * made it.
 *
 * The destructor closes the connection and takes its name out of Qt's list: the name comes from the address
 * of a thread, and Qt refuses a connection that another thread made.
 */
class StoreConnection
{
public:
    /// Opens the file. Where that fails every statement fails.
    StoreConnection(const QString& name, const QString& path);
    ~StoreConnection();
    Q_DISABLE_COPY(StoreConnection)

    /// Whether the connection still serves the calling thread: not when it was made by a thread that is gone
    /// and whose address is used again, or when its name was taken out of Qt's list.
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
    /// Runs a list statement in the form asked for.
    StoreRows runList(StoreStatement list, bool whole, bool paged, const QVector<QVariant>& values);

    /// Runs a text that is not worth keeping prepared. Returns whether it ran.
    bool execute(const QString& text, const QVector<QVariant>& values = {});
    /// The first column of the first row of such a text, null when there is none.
    QVariant first(const QString& text, const QVector<QVariant>& values = {});

    /// A value as it is bound: texts never as NULL, which nothing equals and nothing is like.
    static QVariant bound(quint32 number) { return number; }
    static QVariant bound(const QString& text) { return text.isNull() ? QVariant(QLatin1String("")) : text; }

private:
    /// The prepared statement, null when it cannot be prepared. The other two are for list statements.
    QSqlQuery* prepared(int statement, bool whole = false, bool paged = false);
    static QSqlQuery* withValues(QSqlQuery* query, const QVector<QVariant>& values);

    QString m_name;
    QPointer<QThread> m_thread;
    QSqlDatabase m_database;
    QHash<int, QSqlQuery> m_statements; ///< By statement and form; pointers into it stay valid.
};
