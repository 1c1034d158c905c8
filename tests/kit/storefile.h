#pragma once

// The contacts' database file, accessed without the library.

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

/// Where the store keeps its file.
inline QString storeFile()
{
    return qEnvironmentVariable("APPDATA") +
           QStringLiteral("/Quendra Client Software/Contacts/contacts.sqlite");
}

/// Simulates another program: statements on a connection of its own, whose open transaction ends with it.
class OtherProgram
{
public:
    explicit OtherProgram(const QString& statement, const QString& file = storeFile())
        : m_name(QStringLiteral("beside %1").arg(quintptr(this)))
    {
        auto database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        database.setDatabaseName(file);
        m_query = QSqlQuery(database.open() ? database : QSqlDatabase());
        m_works = m_query.exec(statement);
    }
    ~OtherProgram()
    {
        m_query.exec(QStringLiteral("ROLLBACK"));
        m_query = QSqlQuery();
        QSqlDatabase::removeDatabase(m_name);
    }
    Q_DISABLE_COPY(OtherProgram)

    bool works() const { return m_works; }
    bool next() { return m_query.next(); }

    /// The rows, columns separated by "|"; the error text if the statement fails.
    QStringList rows()
    {
        QStringList rows;
        if (!m_works)
            rows.append(m_query.lastError().text());
        while (m_query.next()) {
            QStringList columns;
            for (int i = 0; i < m_query.record().count(); ++i)
                columns += m_query.isNull(i) ? QStringLiteral("NULL") : m_query.value(i).toString();
            rows.append(columns.join(QLatin1Char('|')));
        }
        return rows;
    }

private:
    QString m_name;
    QSqlQuery m_query;
    bool m_works{false};
};
