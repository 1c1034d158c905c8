#include "contactlocalstorage.h"

#include "appfolder_p.h"
#include "log_p.h"
#include "storebracket_p.h"

#include <QDir>
#include <QTextStream>

#include <algorithm>
#include <limits>
#include <memory>

namespace {

/// Up to this number of contacts the row trigger runs for each; for more, dropping and recreating it is
/// cheaper.
const uint fewContacts = 32;

const quint32 anyId = std::numeric_limits<quint32>::max();

using Lock = std::lock_guard<std::recursive_mutex>;

/// The form of a filter, and its values in the order in which they are bound.
StoreFilter filterOf(quint32 source, quint32 type, quint32 location, QVector<QVariant>& values)
{
    values = {source};
    if (location)
        values.append(location);
    if (type)
        values.append(type);
    if (location)
        return type ? StoreFilter::LocationAndType : StoreFilter::Location;
    return type ? StoreFilter::Type : StoreFilter::None;
}

/// Whether a text from a server is safe as a number in an SQL statement. Leading zeros are not: they are lost
/// in a number, so the contact that is stored with them would be deleted.
bool isObjectId(const QString& text)
{
    if (text.size() > 1 && text.startsWith(QLatin1Char('0')))
        return false;
    return !text.isEmpty() && text.size() <= 18 && std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    });
}

/// The condition of a statement that deletes contacts.
QString conditionOf(QString deletion)
{
    deletion.remove(0, int(qstrlen("DELETE FROM contacts ")));
    deletion.chop(1);
    return deletion;
}

} // namespace

/// The data of a thread: a connection and, while one is open, its bracket.
struct ContactLocalStorage::Thread
{
    Thread(const QString& name, const QString& file)
        : connection(name, file)
    {}

    /// Runs a statement that writes, unless the bracket has failed; if the statement fails, so does the
    /// bracket.
    template <typename... Values>
    bool write(StoreStatement statement, const Values&... values)
    {
        return !hasFailed() && result(connection.run(statement, values...).ok());
    }
    bool hasFailed() const { return bracket && bracket->isFailed(); }
    bool result(bool ok)
    {
        if (!ok && bracket)
            bracket->fail();
        return ok;
    }

    StoreConnection connection;
    std::unique_ptr<StoreBracket> bracket;
};

ContactLocalStorage::ContactLocalStorage(QObject* parent)
    : QObject(parent)
    , m_file(folder() + QStringLiteral("/contacts.sqlite"))
{
    const QString path = folder();
    if (!QDir(path).exists() && !QDir().mkpath(path))
        QD_LOG(ERROR, tr("Error creating path %1", "Logger").arg(path));
    makePrivate(m_file); // SQLite creates its journal files with the same permissions
    if (!checkDB() && !makeDB())
        QD_LOG(ERROR, tr("Error creating database", "Logger"));
}

ContactLocalStorage::~ContactLocalStorage()
{
    const Lock lock(m_threadsMutex);
    QD_LOG(INFO, tr("Closing database", "Logger"));
    freeStorageForThread();
    QD_LOG(INFO, tr("Database closed", "Logger"));
}

QString ContactLocalStorage::folder()
{
    return appFolder(QStringLiteral("/Contacts"));
}

bool ContactLocalStorage::checkDB()
{
    const QStringList tables = getDbForThread().connection.tables();
    for (const char* table : {"contacts", "sources", "properties", "groups"}) {
        if (!tables.contains(QLatin1String(table)))
            return false;
    }
    return true;
}

bool ContactLocalStorage::makeDB()
{
    // In one transaction: a crash between the tables and the triggers would leave an incomplete schema that
    // checkDB() accepts.
    StoreConnection& connection = getDbForThread().connection;
    const auto run = [&connection](StoreStatement text) { return connection.execute(storeStatement(text)); };
    bool ok = run(StoreStatement::Begin);
    for (int i = 0; ok && i < static_cast<int>(StoreStatement::SchemaEnd); ++i)
        ok = run(static_cast<StoreStatement>(i));
    if (ok && run(StoreStatement::Commit))
        return true;
    run(StoreStatement::Rollback);
    return false;
}

ContactLocalStorage::Thread& ContactLocalStorage::getDbForThread()
{
    const Lock lock(m_threadsMutex);
    QThread* const current = QThread::currentThread();
    QSharedPointer<Thread>& thread = m_threads[current];
    if (thread && thread->connection.isUsable())
        return *thread;

    QString name;
    QTextStream(&name) << "contacts.sqlite:" << static_cast<const void*>(current);
    thread.reset();
    thread = QSharedPointer<Thread>::create(name, m_file);
    if (!thread->connection.isOpen())
        QD_LOG(ERROR, tr("Error opening database", "Logger"));
    return *thread;
}

StoreConnection& ContactLocalStorage::settled()
{
    Thread& thread = getDbForThread();
    if (thread.bracket)
        thread.bracket->settle();
    return thread.connection;
}

ContactLocalStorage::Thread* ContactLocalStorage::writer()
{
    Thread& thread = getDbForThread();
    // If a thread has closed its connection within a bracket, its writes are lost.
    const bool isLost = m_depth && !thread.bracket;
    return isLost || thread.hasFailed() ? nullptr : &thread;
}

quint32 ContactLocalStorage::getSource(const QString& name, SourceType type)
{
    StoreRows rows = settled().run(StoreStatement::FindSource, name, type);
    return rows.next() ? rows.number(0) : 0;
}

quint32 ContactLocalStorage::addSource(const QString& name, SourceType type)
{
    const Lock lock(m_transactionMutex);
    quint32 id = getSource(name, type);
    if (id)
        return id;
    Thread* const thread = writer();
    if (thread && thread->write(StoreStatement::InsertSource, name, type))
        id = getSource(name, type);
    if (!id)
        QD_LOG(ERROR, tr("Error to add source (db insert)", "Logger"));
    return id;
}

void ContactLocalStorage::deleteSource(quint32 id)
{
    deleteMany(conditionOf(storeStatement(StoreStatement::DeleteContacts)),
               storeStatement(StoreStatement::DeleteSource), {id}, true);
}

void ContactLocalStorage::deleteSource(const QString& name, SourceType type)
{
    const Lock lock(m_transactionMutex);
    if (const quint32 id = getSource(name, type))
        deleteSource(id);
}

QList<quint32> ContactLocalStorage::getSourceList(SourceType type, uint, uint)
{
    QVector<QVariant> values;
    if (type)
        values.append(static_cast<quint32>(type));
    StoreRows rows =
        settled().run(type ? StoreStatement::ListSourcesOfType : StoreStatement::ListSources, values);
    QList<quint32> ids;
    while (rows.next())
        ids.append(rows.number(0));
    return ids;
}

bool ContactLocalStorage::getSourceInfo(quint32 id, QString& name, SourceType& type)
{
    StoreRows rows = settled().run(StoreStatement::SourceInfo, id);
    if (!rows.next())
        return false;
    name = rows.text(0);
    type = static_cast<SourceType>(rows.number(1));
    return true;
}

quint32 ContactLocalStorage::getContact(quint32 source, ContactType type, ContactLocation location,
                                        const QString& uid)
{
    Thread& thread = getDbForThread();
    if (thread.bracket && !thread.hasFailed())
        return thread.bracket->contactId(source, type, location, uid);
    StoreRows rows = thread.connection.run(StoreStatement::FindContact, source, type, location, uid);
    return rows.next() ? rows.number(0) : 0;
}

quint32 ContactLocalStorage::addContact(quint32 source, ContactType type, ContactLocation location,
                                        const QString& uid, quint32 timestamp, const QString& name,
                                        const QString& description, const QString& phone, const QString& fax,
                                        const QString& email, const QString& organization)
{
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    quint32 id = thread ? getContact(source, type, location, uid) : 0;
    if (id) {
        updateContactInfo(id, timestamp, name, description, phone, fax, email, organization);
    } else if (thread && thread->bracket) {
        id = thread->bracket->addContact(
            {source, type, location, uid, timestamp, name, description, phone, fax, email, organization});
    } else if (thread && thread->write(StoreStatement::InsertContact, uid, type, location, source, timestamp,
                                       name, description, phone, fax, email, organization)) {
        id = getContact(source, type, location, uid);
    }
    if (id && !thread->hasFailed())
        return id;
    if (thread && thread->bracket)
        thread->bracket->takeLost();
    QD_LOG(ERROR, tr("Error to add contact (db insert)", "Logger"));
    return 0;
}

void ContactLocalStorage::updateContactInfo(quint32 id, quint32 timestamp, const QString& name,
                                            const QString& description, const QString& phone,
                                            const QString& fax, const QString& email,
                                            const QString& organization)
{
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    if (!thread)
        return;
    if (thread->bracket && thread->bracket->isPending(id))
        thread->bracket->settle();
    if (timestamp) {
        thread->write(StoreStatement::UpdateContact, timestamp, name, description, phone, fax, email,
                      organization, id);
    } else {
        thread->write(StoreStatement::UpdateContactKeepTimestamp, name, description, phone, fax, email,
                      organization, id);
    }
}

void ContactLocalStorage::deleteContact(quint32 id)
{
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    if (thread && thread->bracket)
        thread->bracket->forgetContact(id);
    if (thread)
        thread->write(StoreStatement::DeleteContact, id);
}

void ContactLocalStorage::deleteContact(quint32 source, ContactType type, ContactLocation location,
                                        const QString& uid)
{
    const Lock lock(m_transactionMutex);
    if (const quint32 id = getContact(source, type, location, uid))
        deleteContact(id);
}

void ContactLocalStorage::deleteContactList(quint32 source, ContactType type, ContactLocation location)
{
    QVector<QVariant> values;
    const StoreFilter filter = filterOf(source, type, location, values);
    const QString statement = storeStatement(StoreStatement::DeleteContacts + filter);
    deleteMany(conditionOf(statement), statement, values);
}

void ContactLocalStorage::deleteContactsIfNotInUIDS(quint32 source, ContactType type,
                                                    ContactLocation location, const QList<QString>& uids)
{
    deleteContactsNotListed(source, type, location, uids, {}, anyId);
}

void ContactLocalStorage::deleteContactsNotListed(quint32 source, ContactType type, ContactLocation location,
                                                  const QList<QString>& listed, const QList<QString>& replied,
                                                  quint32 lastId, QList<QString>* deleted)
{
    if (listed.isEmpty() && replied.isEmpty())
        return;
    const bool isEmptyBook = listed.size() == 1 && listed.first().isEmpty() && replied.isEmpty();
    if (!isEmptyBook && !std::all_of(listed.cbegin(), listed.cend(), isObjectId))
        return;

    const Lock lock(m_transactionMutex);
    QStringList uids(listed);
    QStringList ids; // row ids of the contacts whose uids are not safe in a statement
    for (const QString& uid : replied) {
        if (isObjectId(uid))
            uids.append(uid);
        else
            ids.append(QString::number(getContact(source, type, location, uid)));
    }
    QVector<QVariant> values;
    const StoreFilter filter = filterOf(source, type, location, values);
    const QString comma = QStringLiteral(", ");
    QString statement = storeStatement(StoreStatement::DeleteContactsNotIn + filter) + uids.join(comma);
    if (!ids.isEmpty())
        statement += QStringLiteral(") AND id NOT IN (") + ids.join(comma);
    statement += QLatin1Char(')');
    if (lastId != anyId)
        statement += QStringLiteral(" AND id<=") + QString::number(lastId);
    statement += QLatin1Char(';');
    const QString condition = conditionOf(statement);
    if (deleted) {
        const auto found =
            settled().column(storeStatement(StoreStatement::UidsOfContacts).arg(condition), values);
        for (const QVariant& uid : found)
            deleted->append(uid.toString());
    }
    deleteMany(condition, statement, values);
}

void ContactLocalStorage::deleteMany(const QString& condition, const QString& statement,
                                     const QVector<QVariant>& values, bool cascades)
{
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    if (thread && thread->bracket)
        thread->bracket->forget();
    if (!thread || thread->hasFailed())
        return;
    StoreConnection& db = thread->connection;

    const auto completed = [&condition](StoreStatement text) { return storeStatement(text).arg(condition); };
    const QVariant count =
        db.first(completed(StoreStatement::CountContacts), QVector<QVariant>(values) << fewContacts + 1);
    if (count.isValid() && count.toUInt() <= fewContacts) {
        thread->result(db.execute(statement, values));
        return;
    }

    // The row trigger scans two tables for each deleted contact. Instead, one statement per table does its
    // work for all contacts, and the trigger is dropped inside a transaction, so that no other connection
    // sees the schema without it.
    const auto run = [&db](StoreStatement text) { return db.execute(storeStatement(text)); };
    const bool own = !thread->bracket;
    if (own && !run(StoreStatement::Begin))
        return;
    const QString trigger = db.first(storeStatement(StoreStatement::DeleteTriggerText)).toString();
    const bool ok = (cascades || (db.execute(completed(StoreStatement::DeletePropertiesOfContacts), values) &&
                                  db.execute(completed(StoreStatement::DeleteLinksOfContacts), values))) &&
                    (trigger.isEmpty() || run(StoreStatement::DropDeleteTrigger)) &&
                    db.execute(statement, values) && (trigger.isEmpty() || db.execute(trigger));
    if (!own)
        thread->result(ok);
    else if (!ok || !run(StoreStatement::Commit))
        run(StoreStatement::Rollback);
}

quint32 ContactLocalStorage::getLastContactId()
{
    StoreRows rows = settled().run(StoreStatement::LastContactId);
    return rows.next() ? rows.number(0) : 0;
}

quint32 ContactLocalStorage::getContactLastTimeStamp(quint32 source, ContactType type,
                                                     ContactLocation location)
{
    QVector<QVariant> values;
    const StoreFilter filter = filterOf(source, type, location, values);
    StoreRows rows = settled().run(StoreStatement::LastTimestamp + filter, values);
    return rows.next() ? rows.number(0) : 0;
}

bool ContactLocalStorage::getContactInfo(quint32 id, quint32& source, ContactType& type,
                                         ContactLocation& location, QString& uid, quint32& timestamp,
                                         QString& name, QString& description, QString& phone, QString& fax,
                                         QString& email, QString& organization)
{
    StoreRows rows = settled().run(StoreStatement::ContactInfo, id);
    if (!rows.next())
        return false;
    uid = rows.text(0);
    type = static_cast<ContactType>(rows.number(1));
    location = static_cast<ContactLocation>(rows.number(2));
    source = rows.number(3);
    timestamp = rows.number(4);
    name = rows.text(5);
    description = rows.text(6);
    phone = rows.text(7);
    fax = rows.text(8);
    email = rows.text(9);
    organization = rows.text(10);
    return true;
}

namespace {

/// The list statement for a filter, and its values without limit and offset.
StoreStatement listOf(quint32 source, quint32 type, quint32 location, quint32 group, uint offset, uint limit,
                      QVector<QVariant>& values)
{
    const StoreFilter filter = filterOf(source, type, location, values);
    const bool ofGroup = group && filter != StoreFilter::LocationAndType;
    if (ofGroup)
        values.append(group);
    if (limit)
        values << limit << offset;
    return (ofGroup ? StoreStatement::ListContactsOfGroup : StoreStatement::ListContacts) + filter;
}

} // namespace

QList<quint32> ContactLocalStorage::getContactList(quint32 source, ContactType type, ContactLocation location,
                                                   quint32 group, uint offset, uint limit)
{
    QVector<QVariant> values;
    const StoreStatement list = listOf(source, type, location, group, offset, limit, values);
    StoreRows rows = settled().runList(list, false, limit != 0, values);
    QList<quint32> ids;
    while (rows.next())
        ids.append(rows.number(0));
    return ids;
}

ContactList ContactLocalStorage::getContactList(ContactFactory factory, quint32 source, ContactType type,
                                                ContactLocation location, quint32 group, uint offset,
                                                uint limit, void* userData)
{
    QVector<quint32> path;
    return units(factory, source, type, location, group, offset, limit, userData, path);
}

ContactList ContactLocalStorage::units(ContactFactory factory, quint32 source, ContactType type,
                                       ContactLocation location, quint32 group, uint offset, uint limit,
                                       void* userData, QVector<quint32>& path)
{
    QVector<QPair<quint32, ContactRow>> found; // with their ids
    {
        // Read all rows before any members, since members are read with the same prepared statement.
        QVector<QVariant> values;
        const StoreStatement list = listOf(source, type, location, group, offset, limit, values);
        StoreRows rows = settled().runList(list, true, limit != 0, values);
        while (rows.next()) {
            found.append({rows.number(0),
                          {source, static_cast<ContactType>(rows.number(2)),
                           static_cast<ContactLocation>(rows.number(3)), rows.text(1), 0, rows.text(4),
                           rows.text(5), rows.text(6), rows.text(7), rows.text(8), rows.text(9)}});
        }
    }

    ContactList result;
    result.contacts().reserve(found.size());
    for (const auto& [id, row] : qAsConst(found)) {
        ContactList members;
        if (row.type == TypeGroup && !path.contains(id)) {
            path.append(id);
            members = units(factory, source, AnyType, AnyLocation, id, 0, 0, userData, path);
            path.removeLast();
        }
        result.contacts().append(row.build(factory, members, userData));
    }
    return result;
}

void ContactLocalStorage::linkContactAndGroup(quint32 contact, quint32 group)
{
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    if (!thread)
        return;
    if (thread->bracket) {
        if (!thread->bracket->hasLink(contact, group))
            thread->bracket->addLink(contact, group);
        return;
    }
    bool isMissing = false;
    {
        StoreRows rows = thread->connection.run(StoreStatement::FindLink, contact, group);
        isMissing = rows.ok() && !rows.next();
    }
    if (isMissing)
        thread->write(StoreStatement::InsertLink, contact, group);
}

void ContactLocalStorage::unlinkContactAndGroup(quint32 contact, quint32 group)
{
    if (!contact && !group)
        return;
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    if (!thread || (thread->bracket && !thread->bracket->removeLinks(contact, group)))
        return;
    if (contact && group)
        thread->write(StoreStatement::DeleteLink, contact, group);
    else if (contact)
        thread->write(StoreStatement::DeleteLinksOfContact, contact);
    else
        thread->write(StoreStatement::DeleteLinksOfGroup, group);
}

void ContactLocalStorage::addProperty(quint32 contact, PropertyType type, const QString& value)
{
    const Lock lock(m_transactionMutex);
    Thread* const thread = writer();
    if (!thread)
        return;
    const bool exists = settled().run(StoreStatement::FindProperty, contact, type).next();
    if (exists)
        thread->write(StoreStatement::UpdateProperty, value, contact, type);
    else
        thread->write(StoreStatement::InsertProperty, contact, type, value);
}

void ContactLocalStorage::deleteProperty(quint32 contact, PropertyType type)
{
    const Lock lock(m_transactionMutex);
    settled();
    if (Thread* const thread = writer())
        thread->write(StoreStatement::DeleteProperty, contact, type);
}

bool ContactLocalStorage::getPropertyInfo(quint32 contact, PropertyType type, QString& value)
{
    StoreRows rows = settled().run(StoreStatement::PropertyInfo, contact, type);
    if (!rows.next())
        return false;
    value = rows.text(0);
    return true;
}

QMap<quint32, QString> ContactLocalStorage::quickSearch(const QString& text, uint limit, quint32 source1,
                                                        quint32 source2)
{
    StoreStatement statement = StoreStatement::Search;
    QVector<QVariant> values{QLatin1Char('%') + text + QLatin1Char('%')};
    if (source1 && source2) {
        statement = StoreStatement::SearchSources;
        values << source1 << source2;
    } else if (source1) {
        statement = StoreStatement::SearchSource;
        values << source1;
    } else if (source2 && limit) {
        values << source2;
    }
    if (limit) {
        statement = source2 && !source1 ? StoreStatement::SearchSecondSourceLimited : statement + 1;
        values << limit;
    }

    QMap<quint32, QString> result;
    StoreRows rows = settled().run(statement, values);
    while (rows.next())
        result.insert(rows.number(0), rows.text(1));
    return result;
}

bool ContactLocalStorage::scopeBegin()
{
    m_transactionMutex.lock();
    QD_LOG(DEBUG, tr("Transaction mutex locked", "Logger"));
    Thread& thread = getDbForThread();
    if (m_depth++ == 0) {
        thread.connection.execute(storeStatement(StoreStatement::SpillOff));
        thread.bracket = std::make_unique<StoreBracket>(thread.connection);
    }
    return thread.bracket && !thread.hasFailed();
}

bool ContactLocalStorage::scopeEnd()
{
    std::unique_lock<std::recursive_mutex> lock(m_transactionMutex);
    if (!m_depth) // No bracket is open, so there is none to unlock.
        return false;
    QD_LOG(DEBUG, tr("Transaction commit started", "Logger"));
    Thread& thread = getDbForThread();
    bool holds = thread.bracket && !thread.hasFailed();
    if (--m_depth == 0) {
        const std::unique_ptr<StoreBracket> bracket = std::move(thread.bracket);
        if (bracket) {
            bracket->end();
            holds = !bracket->isFailed();
            if (bracket->takeLost())
                QD_LOG(ERROR, tr("Error to add contact (db insert)", "Logger"));
        }
        thread.connection.execute(storeStatement(StoreStatement::SpillOn));
    }
    QD_LOG(DEBUG, tr("Transaction commit finished", "Logger"));
    m_transactionMutex.unlock();
    lock.unlock();
    QD_LOG(DEBUG, tr("Transaction mutex unlocked", "Logger"));
    return holds;
}

bool ContactLocalStorage::writeIfIdle(const std::function<void()>& write)
{
    const std::unique_lock<std::recursive_mutex> lock(m_transactionMutex, std::try_to_lock);
    if (lock)
        write();
    return lock.owns_lock();
}

void ContactLocalStorage::writeWhenIdle(const std::function<void()>& write)
{
    const Lock lock(m_transactionMutex);
    write();
}

void ContactLocalStorage::freeStorageForThread()
{
    const Lock lock(m_threadsMutex);
    m_threads.remove(QThread::currentThread());
}
