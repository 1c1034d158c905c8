#include "storeconnection_p.h"

StoreConnection::StoreConnection(const QString& name, const QString& path)
    : m_name(name)
    , m_thread(QThread::currentThread())
{
    // An existing name belongs to another store object, or to an ended thread that did not free its
    // connection.
    if (QSqlDatabase::contains(name)) {
        m_database = QSqlDatabase::database(name, false);
        if (!m_database.isValid() || m_database.databaseName() != path) {
            m_database = QSqlDatabase();
            QSqlDatabase::removeDatabase(name);
        }
    }
    if (!m_database.isValid()) {
        m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        m_database.setDatabaseName(path);
    }
    if (!m_database.isOpen())
        m_database.open(); // cppcheck-suppress ignoredReturnErrorCode ; every statement checks isOpen()
}

StoreConnection::~StoreConnection()
{
    const bool isListed = m_database.isValid();
    m_statements.clear();
    m_database.close();
    m_database = QSqlDatabase();
    if (isListed)
        QSqlDatabase::removeDatabase(m_name);
}

StoreRows StoreConnection::run(StoreStatement statement, const QVector<QVariant>& values)
{
    return StoreRows(withValues(prepared(static_cast<int>(statement)), values));
}

StoreRows StoreConnection::runList(StoreStatement list, bool whole, bool paged,
                                   const QVector<QVariant>& values)
{
    return StoreRows(withValues(prepared(static_cast<int>(list), whole, paged), values));
}

bool StoreConnection::execute(const QString& text, const QVector<QVariant>& values)
{
    QSqlQuery query(m_database);
    return isOpen() && query.prepare(text) && StoreRows(withValues(&query, values)).ok();
}

QVector<QVariant> StoreConnection::column(const QString& text, const QVector<QVariant>& values)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!isOpen() || !query.prepare(text))
        return {};
    StoreRows rows(withValues(&query, values));
    QVector<QVariant> found;
    while (rows.next())
        found.append(query.value(0));
    return found;
}

QSqlQuery* StoreConnection::prepared(int statement, bool whole, bool paged)
{
    const int form = (whole ? 1 : 0) + (paged ? 2 : 0);
    const int key = form * static_cast<int>(StoreStatement::End) + statement;
    const auto known = m_statements.find(key);
    if (known != m_statements.end())
        return &*known;

    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    const auto id = static_cast<StoreStatement>(statement);
    if (!isOpen() || !query.prepare(form ? storeListStatement(id, whole, paged) : storeStatement(id)))
        return nullptr;
    return &*m_statements.insert(key, query);
}

QSqlQuery* StoreConnection::withValues(QSqlQuery* query, const QVector<QVariant>& values)
{
    for (int i = 0; query && i < values.size(); ++i)
        query->bindValue(i, values.at(i));
    return query;
}
