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
 * that counting the signals shows when none is running.
 *
 * Made by ContactManager::addProvider() only and owned by the manager. Lives and emits on the manager's
 * thread.
 */
class QDCORE_EXPORT ContactProvider : public QObject
{
    Q_OBJECT
public:
    /// The argument of ContactManager::addProvider().
    enum Type : int {
        QuendraProvider = 0, ///< The books of a fax server.
        OutlookProvider = 1  ///< A contact folder of Microsoft Outlook.
    };
    Q_ENUM(Type)

    /// Ends the running synchronisations: each emits onSyncStop() and errorSyncedContacts(Task::Error). Slots
    /// must not call the provider then; it is partly destroyed.
    ~ContactProvider() override;

    /// Whether a synchronisation is running.
    bool isSync() const { return m_syncCount != 0; }

    /// The source in the contact store; 0 until one is registered.
    unsigned int sourceId() const { return m_sourceId; }

    /// The kind of source, which determines the provider's class.
    virtual ContactProvider::Type type() = 0;

    /// The books of this source, in the order in which they are synchronised.
    virtual QList<ContactList::Type> contactsTypeList() const = 0;

    /// Whether addContact() is supported for a book; the user's permissions are not checked.
    virtual bool isAddContactSupport(ContactList::Type type) const = 0;
    /// Adds a unit to a book of the source, and then to the store. Answered by addedContact() or
    /// errorAddedContact().
    virtual void addContact(const ContactUnit& contact, ContactList::Type type) = 0;
    /// As isAddContactSupport(), for modifyContact().
    virtual bool isModifyContactSupport(ContactList::Type type) const = 0;
    /// Changes the unit that has the identifier of @p contact. Answered by modifiedContact() or
    /// errorModifiedContact().
    virtual void modifyContact(const ContactUnit& contact, ContactList::Type type) = 0;
    /// As isAddContactSupport(), for deleteContact().
    virtual bool isDeleteContactSupport(ContactList::Type type) const = 0;
    /// Deletes the unit that has the identifier of @p contact. Answered by deletedContact() or
    /// errorDeletedContact().
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
    /// @p contact is the unit as the source has it now, its identifier included. It lives as long as the
    /// signal.
    void addedContact(const ContactUnit& contact, ContactList::Type type);
    /// addContact() has failed. The signal does not identify the call; a caller that needs to know must have
    /// only one pending.
    void errorAddedContact(Task::Status status);
    /// @p contact is the unit that was sent. It lives as long as the signal.
    void modifiedContact(const ContactUnit& contact, ContactList::Type type);
    /// modifyContact() has failed; as errorAddedContact().
    void errorModifiedContact(Task::Status status);
    /// @p contact is the unit that is gone. It lives as long as the signal.
    void deletedContact(const ContactUnit& contact, ContactList::Type type);
    /// deleteContact() has failed; as errorAddedContact().
    void errorDeletedContact(Task::Status status);
    /// The page that getContacts() was asked for.
    void gotContacts(const ContactList& contacts);
    /// getContacts() was asked for a book that this source does not have, or has lost its source.
    void errorGotContacts(Task::Status status);
    /// The synchronisation of this book has ended without an error.
    void syncedContacts(ContactList::Type type);
    /// The synchronisation of some book has failed, and the store may hold a part of what has changed.
    void errorSyncedContacts(Task::Status status);
    /// A synchronisation of one book has begun.
    void onSyncStart();
    /// A synchronisation of one book has ended; its result follows.
    void onSyncStop();

protected:
    /// A child of the manager, whose store it uses.
    explicit ContactProvider(ContactManager& manager);

    QPointer<ContactLocalStorage> m_storage; ///< The manager's store.
    int m_syncCount{0};                      ///< Synchronisations started and not yet ended.
    unsigned int m_sourceId{0};              ///< What sourceId() returns.
};
