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
class StoreBracket;
class StoreConnection;

/**
 * The cache of the contacts of all sources, in one SQLite file of the user.
 *
 * ContactManager owns the one instance. Every function runs on the calling thread, with a connection of that
 * thread, and may be called from any thread; a thread that used the store calls freeStorageForThread() before
 * it ends. Functions that write wait for a bracket that another thread has open. What is written in a bracket
 * is stored whole or not at all: see scopeBegin().
 *
 * The file is readable by its owner only, and so is what SQLite puts beside it.
 *
 * Ids are those of the tables' rows; 0 is none. Where a filter argument is 0 it does not filter. Nothing is
 * reported but by the return value: an id or timestamp of 0, false, an empty list.
 */
class QDCORE_EXPORT ContactLocalStorage : public QObject
{
    Q_OBJECT

public:
    /// What a row is.
    enum ContactType : quint32 {
        AnyType = 0,     ///< As a filter.
        TypeContact = 1, ///< A single contact.
        TypeGroup = 2    ///< A group, whose members are other rows.
    };
    /// Whose book a row belongs to.
    enum ContactLocation : quint32 {
        AnyLocation = 0,     ///< As a filter.
        LocationGlobal = 1,  ///< The server's global book.
        LocationPersonal = 2 ///< The user's own book, and everything of Outlook.
    };
    /// Where contacts come from.
    enum SourceType : quint32 {
        AnySource = 0,     ///< As a filter.
        SourceQuendra = 1, ///< A fax server, named by its genUID().
        SourceOutlook = 2  ///< An Outlook folder, named by its key.
    };
    /// The key of a free property of a contact: any number that a client chooses.
    enum PropertyType : quint32 {};

    /// Makes a unit of a row; @p members are those of a group. May return null.
    using ContactFactory = QSharedPointer<ContactUnit> (*)(ContactType type, ContactLocation location,
                                                           const QString& uid, const QString& name,
                                                           const QString& description, const QString& phone,
                                                           const QString& fax, const QString& email,
                                                           const QString& organization, ContactList members,
                                                           void* userData);

    /// Opens the file, creating folder and tables that are missing. An object whose file cannot be used is
    /// usable: it finds nothing and stores nothing.
    explicit ContactLocalStorage(QObject* parent = nullptr);
    ~ContactLocalStorage() override;

    /// The id of a source; 0 when it is not stored.
    quint32 getSource(const QString& name, SourceType type);
    /// Adds a source unless it exists. Returns its id.
    quint32 addSource(const QString& name, SourceType type);
    /// Deletes a source with its contacts, their memberships and their properties.
    void deleteSource(quint32 id);
    void deleteSource(const QString& name, SourceType type);
    /// The ids of the sources. The last two arguments do nothing.
    QList<quint32> getSourceList(SourceType type, uint offset = 0, uint limit = 0);
    /// Returns false, with the arguments untouched, when there is no such source.
    bool getSourceInfo(quint32 id, QString& name, SourceType& type);

    /// The id of a contact; 0 when it is not stored.
    quint32 getContact(quint32 source, ContactType type, ContactLocation location, const QString& uid);
    /// Adds a contact, or updates the one of that source, type, location and uid. @p timestamp is the
    /// source's, in Unix seconds; 0 keeps the stored one. Returns the contact's id. Within a bracket the
    /// row may be written later; where that fails only the log tells, and the bracket has failed.
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
    /// Deletes all contacts of a source, a type and a location, as deleteContact() would.
    void deleteContactList(quint32 source, ContactType type, ContactLocation location);
    /// Deletes the contacts whose uid is not among @p uids, the object ids that a server listed. An empty
    /// list deletes nothing, and so does one with anything but numbers of 1 to 18 digits without leading
    /// zeros: the ids come from outside and become numbers in a statement. A single empty id is what an empty
    /// book looks like, and deletes everything.
    void deleteContactsIfNotInUIDS(quint32 source, ContactType type, ContactLocation location,
                                   const QList<QString>& uids);
    /// The latest timestamp, 0 when there is none.
    quint32 getContactLastTimeStamp(quint32 source, ContactType type, ContactLocation location);
    /// Returns false, with the arguments untouched, when there is no such contact.
    bool getContactInfo(quint32 id, quint32& source, ContactType& type, ContactLocation& location,
                        QString& uid, quint32& timestamp, QString& name, QString& description, QString& phone,
                        QString& fax, QString& email, QString& organization);

    /// The ids of the contacts of a source, in the order of the table. A @p limit of 0 lists all. With a type
    /// and a location the @p group is not considered.
    QList<quint32> getContactList(quint32 source, ContactType type, ContactLocation location, quint32 group,
                                  uint offset, uint limit);
    /// Likewise as units that the factory makes, groups with their members. What the factory returns is in
    /// the list also when it is null. A group that contains itself, by whatever way, is given without members
    /// there.
    ContactList getContactList(ContactFactory factory, quint32 source, ContactType type,
                               ContactLocation location, quint32 group, uint offset, uint limit,
                               void* userData);

    /// Makes a contact a member of a group, unless it is.
    void linkContactAndGroup(quint32 contact, quint32 group);
    /// Deletes a membership; with one argument 0 all those of the other.
    void unlinkContactAndGroup(quint32 contact, quint32 group);
    /// Takes a contact out of all its groups.
    void unlinkContact(quint32 contact) { unlinkContactAndGroup(contact, 0); }
    /// Takes all members out of a group.
    void unlinkGroup(quint32 group) { unlinkContactAndGroup(0, group); }

    /// Adds or changes a property.
    void addProperty(quint32 contact, PropertyType type, const QString& value);
    /// Nothing when there is no such property.
    void deleteProperty(quint32 contact, PropertyType type);
    /// Returns false, with the argument untouched, when there is no such property.
    bool getPropertyInfo(quint32 contact, PropertyType type, QString& value);

    /// Names that contain a text, by id. "%" and "_" in the text are wildcards, and ASCII letters match in
    /// either case. With a @p limit of 0 there is no limit. @p source1 and @p source2 restrict the search to
    /// one or two sources; the second without the first is ignored, or with a limit finds nothing.
    QMap<quint32, QString> quickSearch(const QString& text, uint limit, quint32 source1, quint32 source2);

    /// Opens a bracket: until scopeEnd() this thread alone writes, all in one transaction. Waits for the
    /// bracket of another thread. Brackets of one thread may be nested; the outermost counts. Returns whether
    /// the transaction runs; scopeEnd() is due also when it does not.
    ///
    /// A bracket that could not begin (another program has had the file for 5 s), and one in which a write
    /// failed (no room, a read-only file), has failed: all that it wrote is taken back, the ids that it gave
    /// out are void, and until its end nothing is written. Then addContact() and addSource() return 0 for
    /// what is not there and log that, other writes do nothing, and what is read is the state before the
    /// bracket.
    bool scopeBegin();
    /// Ends a bracket. That of the outermost one commits, or takes everything back when the bracket has
    /// failed or cannot be committed, and lets other threads write. Returns whether what the bracket wrote
    /// holds: that of the outermost one, whether it is stored.
    bool scopeEnd();

    /// Closes the calling thread's connection. Due before a thread ends; using the store again opens a new
    /// one.
    void freeStorageForThread();

    /// The highest id of any contact, 0 when there is none. What is added later has a higher one.
    quint32 getLastContactId();
    /// As deleteContactsIfNotInUIDS() with the ids that a server @p listed, where the server was asked when
    /// getLastContactId() was @p lastId: what was added since stays. So do the contacts @p replied, whose
    /// units came with the reply: an id of another form keeps its own contact, and the others are judged.
    void deleteContactsNotListed(quint32 source, ContactType type, ContactLocation location,
                                 const QList<QString>& listed, const QList<QString>& replied, quint32 lastId);

private:
    struct Thread;

    static QString folder();
    bool checkDB();
    bool makeDB();

    /// The calling thread's connection, opened on first use.
    Thread& getDbForThread();
    /// Its connection, with the buffers of its bracket flushed.
    StoreConnection& settled();
    /// What the calling thread writes with, while it holds m_transactionMutex; null in a failed bracket.
    Thread* writer();

    /// Deletes the contacts that a condition names, by @p statement, without running the row trigger once for
    /// each.
    /// @p cascades: the statement itself deletes what hangs on them.
    void deleteMany(const QString& condition, const QString& statement, const QVector<QVariant>& values,
                    bool cascades = false);

    ContactList units(ContactFactory factory, quint32 source, ContactType type, ContactLocation location,
                      quint32 group, uint offset, uint limit, void* userData, QVector<quint32>& path);

    QString m_file;
    QHash<QThread*, QSharedPointer<Thread>> m_threads;
    std::recursive_mutex m_threadsMutex;     ///< Guards m_threads.
    std::recursive_mutex m_transactionMutex; ///< Held for the length of a bracket, and for each single write.
    int m_depth{0}; ///< Brackets open, all of one thread. Guarded by m_transactionMutex.
};
