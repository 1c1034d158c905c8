#pragma once

#include "contactlist.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QStringList>

#include <functional>
#include <mutex>

class QThread;
class StoreConnection;

/**
 * The cache of the contacts of all sources, in one SQLite file of the user.
 *
 * ContactManager owns the only instance. All functions are thread-safe; each runs on the calling thread, with
 * that thread's own connection. A thread that has used the store must call freeStorageForThread() before it
 * ends. Functions that write wait until other threads have closed their bracket. A bracket is an atomic
 * transaction: see scopeBegin().
 *
 * Only the owner can read the file and SQLite's journal files beside it.
 *
 * Ids are row ids; 0 is none. A filter argument of 0 does not filter. Errors are reported only by the return
 * value: an id or timestamp of 0, false, an empty list.
 */
class QDCORE_EXPORT ContactLocalStorage : public QObject
{
    Q_OBJECT

public:
    /// The type of a row.
    enum ContactType : quint32 {
        AnyType = 0,     ///< As a filter.
        TypeContact = 1, ///< A single contact.
        TypeGroup = 2    ///< A group; its members are other rows.
    };
    /// The book that a row belongs to.
    enum ContactLocation : quint32 {
        AnyLocation = 0,     ///< As a filter.
        LocationGlobal = 1,  ///< The server's global book.
        LocationPersonal = 2 ///< The user's personal book, and all contacts from Outlook.
    };
    /// The type of a source of contacts.
    enum SourceType : quint32 {
        AnySource = 0,     ///< As a filter.
        SourceQuendra = 1, ///< A fax server, identified by its genUID().
        SourceOutlook = 2  ///< An Outlook folder, identified by its key.
    };
    /// The key of a custom property of a contact: any number chosen by the client.
    enum PropertyType : quint32 {};

    /// Creates a unit from a row; @p members are those of a group. May return null.
    using ContactFactory = QSharedPointer<ContactUnit> (*)(ContactType type, ContactLocation location,
                                                           const QString& uid, const QString& name,
                                                           const QString& description, const QString& phone,
                                                           const QString& fax, const QString& email,
                                                           const QString& organization, ContactList members,
                                                           void* userData);

    /// Opens the file, creating missing folders and tables. If the file cannot be used, the object finds
    /// nothing and stores nothing.
    explicit ContactLocalStorage(QObject* parent = nullptr);
    ~ContactLocalStorage() override;

    /// The id of a source; 0 if it is not stored.
    quint32 getSource(const QString& name, SourceType type);
    /// Adds a source unless it exists. Returns its id.
    quint32 addSource(const QString& name, SourceType type);
    /// Deletes a source with its contacts, their memberships and their properties.
    void deleteSource(quint32 id);
    void deleteSource(const QString& name, SourceType type);
    /// The ids of the sources. The last two arguments are ignored.
    QList<quint32> getSourceList(SourceType type, uint offset = 0, uint limit = 0);
    /// Returns false, with the arguments unchanged, if there is no such source.
    bool getSourceInfo(quint32 id, QString& name, SourceType& type);

    /// The id of a contact; 0 if it is not stored.
    quint32 getContact(quint32 source, ContactType type, ContactLocation location, const QString& uid);
    /// Adds a contact, or updates the one with this source, type, location and uid. @p timestamp is the
    /// source's, in Unix seconds; 0 keeps the stored one. Returns the contact's id. Within a bracket the row
    /// may be written later; an error is then only logged, and the bracket has failed.
    quint32 addContact(quint32 source, ContactType type, ContactLocation location, const QString& uid,
                       quint32 timestamp, const QString& name, const QString& description,
                       const QString& phone, const QString& fax, const QString& email,
                       const QString& organization);
    /// A timestamp of 0 keeps the stored one.
    void updateContactInfo(quint32 id, quint32 timestamp, const QString& name, const QString& description,
                           const QString& phone, const QString& fax, const QString& email,
                           const QString& organization);
    /// Deletes a contact with its memberships, as member or as group, and its properties.
    void deleteContact(quint32 id);
    void deleteContact(quint32 source, ContactType type, ContactLocation location, const QString& uid);
    /// Deletes all contacts of a source, a type and a location, like deleteContact().
    void deleteContactList(quint32 source, ContactType type, ContactLocation location);
    /// Deletes the contacts whose uid is not among @p uids, the object ids listed by a server. An empty list
    /// deletes nothing, nor does one with anything but numbers of 1 to 18 digits without leading zeros: the
    /// ids are untrusted and become numbers in an SQL statement. A single empty id stands for an empty book
    /// and deletes everything.
    void deleteContactsIfNotInUIDS(quint32 source, ContactType type, ContactLocation location,
                                   const QList<QString>& uids);
    /// The latest timestamp, 0 if there is none.
    quint32 getContactLastTimeStamp(quint32 source, ContactType type, ContactLocation location);
    /// Returns false, with the arguments unchanged, if there is no such contact.
    bool getContactInfo(quint32 id, quint32& source, ContactType& type, ContactLocation& location,
                        QString& uid, quint32& timestamp, QString& name, QString& description, QString& phone,
                        QString& fax, QString& email, QString& organization);

    /// The ids of the contacts of a source, in the order of the table. A @p limit of 0 lists all. With a type
    /// and a location, @p group is ignored.
    QList<quint32> getContactList(quint32 source, ContactType type, ContactLocation location, quint32 group,
                                  uint offset, uint limit);
    /// Likewise, as units created by the factory, groups with their members. The list also contains null
    /// units that the factory returns. A group that contains itself, directly or not, has no members at the
    /// inner level.
    ContactList getContactList(ContactFactory factory, quint32 source, ContactType type,
                               ContactLocation location, quint32 group, uint offset, uint limit,
                               void* userData);

    /// Makes a contact a member of a group unless it is one.
    void linkContactAndGroup(quint32 contact, quint32 group);
    /// Deletes a membership; if one argument is 0, all memberships of the other.
    void unlinkContactAndGroup(quint32 contact, quint32 group);
    /// Removes a contact from all its groups.
    void unlinkContact(quint32 contact) { unlinkContactAndGroup(contact, 0); }
    /// Removes all members of a group.
    void unlinkGroup(quint32 group) { unlinkContactAndGroup(0, group); }

    /// Adds or changes a property.
    void addProperty(quint32 contact, PropertyType type, const QString& value);
    /// Does nothing if there is no such property.
    void deleteProperty(quint32 contact, PropertyType type);
    /// Returns false, with the argument unchanged, if there is no such property.
    bool getPropertyInfo(quint32 contact, PropertyType type, QString& value);

    /// Names that contain a text, by id. "%" and "_" in the text are wildcards, and ASCII letters are
    /// compared without case. A @p limit of 0 is no limit. @p source1 and @p source2 restrict the search to
    /// one or two sources; @p source2 without @p source1 is ignored, or finds nothing if there is a limit.
    QMap<quint32, QString> quickSearch(const QString& text, uint limit, quint32 source1, quint32 source2);

    /// Opens a bracket: until scopeEnd() only this thread can write, in one transaction. Waits for the
    /// bracket of another thread. Brackets of a thread can be nested; the outermost is the transaction.
    /// Returns whether the transaction has begun; scopeEnd() must be called in any case.
    ///
    /// A bracket fails if it cannot begin (another program has locked the file for 5 s) or if a write in it
    /// fails (disk full, read-only file): it is rolled back, the ids that it returned are invalid, and
    /// nothing is written until its end. addContact() and addSource() then return 0 for what does not exist
    /// and log it, other writes do nothing, and reads return the state before the bracket.
    bool scopeBegin();
    /// Ends a bracket. The outermost one commits, or rolls back if the bracket has failed or cannot be
    /// committed, and lets other threads write. Returns whether the bracket has not failed; for the outermost
    /// one, whether it was committed.
    bool scopeEnd();

    /// Closes the calling thread's connection. Must be called before a thread ends; using the store again
    /// opens a new one.
    void freeStorageForThread();

    /// The highest id of any contact, 0 if there is none. Contacts added later have higher ids.
    quint32 getLastContactId();
    /// Like deleteContactsIfNotInUIDS() with the ids that a server @p listed, but keeps contacts added since
    /// the request was sent, when getLastContactId() was @p lastId, and the contacts @p replied, which were
    /// in a full reply. An id in @p replied that is not a number only keeps its own contact. Without
    /// @p listed those alone are kept. @p deleted receives the ids of those that were deleted.
    void deleteContactsNotListed(quint32 source, ContactType type, ContactLocation location,
                                 const QList<QString>& listed, const QList<QString>& replied, quint32 lastId,
                                 QList<QString>* deleted = nullptr);

    /// Calls @p write while no other thread writes, unless one does at the moment: then returns false at
    /// once.
    bool writeIfIdle(const std::function<void()>& write);
    /// The same, but waits until no other thread writes.
    void writeWhenIdle(const std::function<void()>& write);

private:
    struct Thread;

    static QString folder();
    bool checkDB();
    bool makeDB();

    /// The calling thread's connection, opened on first use.
    Thread& getDbForThread();
    /// The calling thread's connection, with the buffers of its bracket flushed.
    StoreConnection& settled();
    /// The calling thread's connection for writing, which needs m_transactionMutex; null in a failed bracket.
    Thread* writer();

    /// Deletes the contacts that match a condition, by @p statement, without running the row trigger for
    /// each.
    /// @p cascades: the statement itself deletes their memberships and properties.
    void deleteMany(const QString& condition, const QString& statement, const QVector<QVariant>& values,
                    bool cascades = false);

    ContactList units(ContactFactory factory, quint32 source, ContactType type, ContactLocation location,
                      quint32 group, uint offset, uint limit, void* userData, QVector<quint32>& path);

    QString m_file;
    QHash<QThread*, QSharedPointer<Thread>> m_threads;
    std::recursive_mutex m_threadsMutex;     ///< Guards m_threads.
    std::recursive_mutex m_transactionMutex; ///< Held for the length of a bracket, and for each single write.
    int m_depth{0}; ///< The number of open brackets, all of one thread. Guarded by m_transactionMutex.
};
