#pragma once

#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "qdcore_global.h"

#include <QMap>
#include <QSet>

#include <functional>

class BookKnowledge;
class FaxServer;
class QuendraContactProviderDisassembleThread;
class StoreWrites;

/**
 * The contact books of one fax server: the user's personal contacts and groups, and the server's global ones.
 *
 * Changes go to the server by tasks of the linked FaxServer. A synchronisation asks the server for the whole
 * book, or first for the identifiers it has and then for what changed since the last time; threads delete and
 * store what comes back, and the last of them ends the synchronisation. Pages are read from the store alone.
 */
class QDCORE_EXPORT QuendraContactProvider : public ContactProvider
{
    Q_OBJECT
public:
    /// Made by FaxServer::initProvider(). Has no books until linkFaxServer().
    explicit QuendraContactProvider(ContactManager& manager);
    /// Waits for the threads that are storing.
    ~QuendraContactProvider() override;

    /// Links the server and registers it as a source in the store.
    void linkFaxServer(const QPointer<FaxServer>& server);
    /// Removes the server's source, with all its units, from the store and forgets the server.
    void unlinkFaxServer();
    /// The linked server, or null.
    QPointer<FaxServer> server() const { return m_server; }

    ContactProvider::Type type() override;
    /// Personal contacts, global contacts, personal groups, global groups.
    QList<ContactList::Type> contactsTypeList() const override;
    //@{
    /// True for the four books. The server checks permissions: a forbidden change ends with NotPermitted or
    /// AccessDenied.
    bool isAddContactSupport(ContactList::Type type) const override;
    void addContact(const ContactUnit& contact, ContactList::Type type) override;
    bool isModifyContactSupport(ContactList::Type type) const override;
    void modifyContact(const ContactUnit& contact, ContactList::Type type) override;
    bool isDeleteContactSupport(ContactList::Type type) const override;
    void deleteContact(const ContactUnit& contact, ContactList::Type type) override;
    //@}
    void getContacts(ContactList::Type type, const QString& filter, unsigned int offset,
                     unsigned int limit) override;
    void syncContacts(ContactList::Type type, bool full) override;
    /// Whether the last successful synchronisation of this book was stored. syncedContacts() is also emitted
    /// if writing failed (disk full, file read-only or locked); the book is then unchanged, or has only lost
    /// entries that the server no longer lists.
    bool isStored(ContactList::Type type) const { return m_stored.contains(type); }
    /// A QuendraContact or QuendraContactGroup; its URL begins with "http://" whatever the connection uses.
    QSharedPointer<ContactUnit> aggregateContact(unsigned int id) override;

protected Q_SLOTS:
    //@{
    /// A task that changes a unit has ended: what it changed on the server is changed in the store too, and
    /// the signal that answers the call is emitted.
    void slotAddedContact(const ContactUnit& contact, ContactList::Type type);
    void slotErrorAddedContacts(Task::Status status);
    void slotModifiedContact(const ContactUnit& contact, ContactList::Type type);
    void slotErrorModifiedContacts(Task::Status status);
    void slotDeletedContact(const ContactUnit& contact, ContactList::Type type);
    void slotErrorDeletedContacts(Task::Status status);
    //@}
    /// The whole book: a thread stores it. If a list of the book has arrived meanwhile, entries in neither
    /// are deleted before; otherwise none are. @p timestamp is the server's.
    void slotSyncedContact(const ContactList& contacts, unsigned int timestamp);
    /// The changes of a book since the last time: a thread stores them. @p timestamp is the server's.
    void slotSyncedContactAfterLastTimeSync(const ContactList& contacts, unsigned int timestamp);
    /// The identifiers that the server has: a thread deletes all others, and the changes are requested.
    void slotSyncedContactOids(const QList<QString>& oids, ContactList::Type type);
    /// A request of a synchronisation has failed, which ends it.
    void slotErrorSyncedContacts(Task::Status status);
    /// The thread that stored a book has ended, which ends the synchronisation.
    void slotDisassembleContactFromThread(ContactList::Type type);

protected:
    /// Implements both slots that receive a book; @p full for the whole one.
    void onSyncContacts(const ContactList& contacts, unsigned int timestamp, bool full);
    /// Stores a unit, with its members if it is a group, on this thread. A @p timestamp of 0 keeps the stored
    /// one; @p group is the store id of the group it becomes a member of, 0 for none.
    void disassembleContact(const ContactUnit& contact, unsigned int timestamp, unsigned int group);

private:
    /// The threads of a book between the server's reply and the end of its synchronisation.
    struct BookWork
    {
        int deleters{0}; ///< Deleter threads that have not ended.
        QList<QPointer<QuendraContactProviderDisassembleThread>> waiting; ///< To be started after them.
    };

    static QSharedPointer<ContactUnit>
    makeUnit(ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation location,
             const QString& uid, const QString& name, const QString& description, const QString& phone,
             const QString& fax, const QString& email, const QString& organization, ContactList members,
             void* userData);

    using Known = QSharedPointer<BookKnowledge>;
    Known knownNow(ContactList::Type type);
    void requestContacts(ContactList::Type type, unsigned int lastTimeSync, const Known& known);
    void storeUnit(const ContactUnitPtr& unit, const std::function<void()>& done);
    void useOids(const QList<QString>& oids, ContactList::Type type, const Known& known);
    void useContacts(const ContactList& contacts, unsigned int timestamp, bool full, const Known& known);
    void bookWritten(ContactList::Type type, bool isStored);
    void startDeleter(ContactList::Type type, const QList<QString>& listed, const QList<QString>& replied,
                      const Known& known, ContactList&& units);
    void startThread(const QPointer<QThread>& thread);
    void deleterEnded(ContactList::Type type);
    bool endSync();
    QUrl unitUrl(ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation location,
                 const QString& uid) const;

    StoreWrites* const m_writes;
    QPointer<FaxServer> m_server;
    QList<QPointer<QuendraContactProviderDisassembleThread>> m_threads;
    QMap<ContactList::Type, QList<QString>> m_syncOids; ///< What the server said it has, while synchronising.
    QMap<ContactList::Type, BookWork> m_work;
    QList<QWeakPointer<BookKnowledge>> m_known; ///< Of what is under way, in the order of the requests.
    QSet<ContactList::Type> m_undeleted;        ///< Books that a deleter failed on since the first run began.
    QSet<ContactList::Type> m_stored;           ///< Books of which the last synchronisation is in the store.
};
