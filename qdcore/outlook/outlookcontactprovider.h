#pragma once

#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "outlookport.h"
#include "qdcore_global.h"

class OutlookContactProviderDisassembleThread;

/**
 * The contacts of one Outlook folder, which are read and never changed.
 *
 * A synchronisation copies the whole folder into the store by a thread; pages are read from the store alone.
 * Where there is no Outlook, and where the folder is not there or holds no contacts, nothing is found and a
 * synchronisation ends well all the same.
 */
class QDCORE_EXPORT OutlookContactProvider : public ContactProvider
{
    Q_OBJECT
public:
    /// Made by ContactManager::initOutlook(). Has no folder until setEntryID().
    explicit OutlookContactProvider(ContactManager& manager);
    /// Waits, without limit, for the threads that are reading.
    ~OutlookContactProvider() override;

    /// Chooses a folder by its key, as ContactsOptionsOutlook gives it. The contacts of the one before go
    /// from the store at once; those of the new one come with the next synchronisation, which @p syncNow
    /// starts unless one is running. Nothing happens when it is the folder already chosen.
    void setEntryID(const QString& entryID, bool syncNow);
    /// The chosen folder's key; empty for none.
    const QString& entryID() const { return m_entryID; }

    /// Asks Outlook for the chosen folder and, if it holds contacts, registers it as a source in the store.
    void initSource();

    ContactProvider::Type type() override;
    /// OutlookContacts alone.
    QList<ContactList::Type> contactsTypeList() const override;
    //@{
    /// Nothing can be changed: never supported, and answered with NotPermitted.
    bool isAddContactSupport(ContactList::Type type) const override;
    void addContact(const ContactUnit& contact, ContactList::Type type) override;
    bool isModifyContactSupport(ContactList::Type type) const override;
    void modifyContact(const ContactUnit& contact, ContactList::Type type) override;
    bool isDeleteContactSupport(ContactList::Type type) const override;
    void deleteContact(const ContactUnit& contact, ContactList::Type type) override;
    //@}
    /// A book other than OutlookContacts is NotSupported.
    void getContacts(ContactList::Type type, const QString& filter, unsigned int offset,
                     unsigned int limit) override;
    /// Always reads the whole folder, and always ends with syncedContacts().
    void syncContacts(ContactList::Type type, bool full) override;
    /// Whether the last synchronisation that ended changed the store. False where no folder is chosen, and
    /// where the store cannot be written.
    bool isStored() const { return m_isStored; }
    /// Whether the last synchronisation that ended read the folder to its end. Where Outlook failed before,
    /// what it gave until then is what the store holds.
    bool isRead() const { return m_isRead; }
    /// An OutlookContact.
    QSharedPointer<ContactUnit> aggregateContact(unsigned int id) override;

protected Q_SLOTS:
    /// A thread has ended: counts the synchronisation down and emits its end.
    void slotDisassembleContactFromThread(ContactList::Type type);

private:
    static QSharedPointer<ContactUnit>
    makeUnit(ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation location,
             const QString& uid, const QString& name, const QString& description, const QString& phone,
             const QString& fax, const QString& email, const QString& organization, ContactList members,
             void* userData);

    OutlookAccess m_access;
    QString m_entryID;
    bool m_isStored{false};
    bool m_isRead{false};
    QList<QPointer<OutlookContactProviderDisassembleThread>> m_threads;
};
