#pragma once

#include "contactlist.h"
#include "qdcore_global.h"
#include "tasks/task.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSharedPointer>

class ContactLocalStorage;
class ContactManager;

/**
 * A source of contacts: the books of a fax server, or an Outlook folder.
 *
 * A provider changes contacts in its source, keeps the store's copy of its books current, and reads pages of
 * them from the store. It counts its running synchronisations; every start is matched by exactly one end, so
 * that whoever counts the signals sees when nothing runs any more.
 *
 * Made by ContactManager::addProvider() only and owned by the manager. Lives and emits on the manager's
 * thread.
 */
class QDCORE_EXPORT ContactProvider : public QObject
{
    Q_OBJECT
public:
    enum Type : int {
        QuendraProvider = 0, ///< The books of a fax server.
        OutlookProvider = 1  ///< A contact folder of Microsoft Outlook.
    };
    Q_ENUM(Type)

    /// Ends the running synchronisations: each emits onSyncStop() and errorSyncedContacts(Task::Error). Slots must
    /// not call the provider then; it is half gone.
    ~ContactProvider() override;

    /// Whether a synchronisation is running.
    bool isSync() const { return m_syncCount != 0; }

    /// The source in the contact store; 0 until one is registered.
    unsigned int sourceId() const { return m_sourceId; }

    virtual ContactProvider::Type type() = 0;

    /// The books of this source, in the order in which they are synchronised.
    virtual QList<ContactList::Type> contactsTypeList() const = 0;

    // Whether the operation can succeed for a book, and the operation: answered by the signal of its name or
    // its error.
    virtual bool isAddContactSupport(ContactList::Type type) const = 0;
    virtual void addContact(const ContactUnit& contact, ContactList::Type type) = 0;
    virtual bool isModifyContactSupport(ContactList::Type type) const = 0;
    virtual void modifyContact(const ContactUnit& contact, ContactList::Type type) = 0;
    virtual bool isDeleteContactSupport(ContactList::Type type) const = 0;
    virtual void deleteContact(const ContactUnit& contact, ContactList::Type type) = 0;

    /// Reads a page of a book from the store: at most @p limit units (0: all) from @p offset on. Answered at
    /// once, by gotContacts() or errorGotContacts(). The filter is not used.
    virtual void getContacts(ContactList::Type type, const QString& filter, unsigned int offset,
                             unsigned int limit) = 0;

    /// Brings the store's copy of a book up to date; with @p full from scratch. Answered by syncedContacts()
    /// or errorSyncedContacts().
    virtual void syncContacts(ContactList::Type type, bool full) = 0;

    /// The unit of a store id as this provider's own class, with its members. Null when there is none.
    virtual QSharedPointer<ContactUnit> aggregateContact(unsigned int id) = 0;

Q_SIGNALS:
    void addedContact(const ContactUnit& contact, ContactList::Type type);
    void errorAddedContact(Task::Status status);
    void modifiedContact(const ContactUnit& contact, ContactList::Type type);
    void errorModifiedContact(Task::Status status);
    void deletedContact(const ContactUnit& contact, ContactList::Type type);
    void errorDeletedContact(Task::Status status);
    void gotContacts(const ContactList& contacts);
    void errorGotContacts(Task::Status status);
    void syncedContacts(ContactList::Type type);
    void errorSyncedContacts(Task::Status status);
    /// A synchronisation of one book has begun.
    void onSyncStart();
    /// A synchronisation of one book has ended; its result follows.
    void onSyncStop();

protected:
    explicit ContactProvider(ContactManager& manager);

    QPointer<ContactLocalStorage> m_storage; ///< The manager's store.
    int m_syncCount{0};                      ///< Synchronisations started and not yet ended.
    unsigned int m_sourceId{0};
};
