#pragma once

#include "contactlocalstorage.h"
#include "contactprovider.h"
#include "outlookport.h"
#include "qdcore_global.h"

class OutlookContactProviderDisassembleThread;

/**
 * The contacts of one Outlook folder, read-only.
 *
 * A synchronisation copies the whole folder into the store on a background thread; pages are read from the
 * store only. Without Outlook, or if the folder does not exist or is not a contact folder, nothing is found,
 * and a synchronisation still ends with success.
 */
class QDCORE_EXPORT OutlookContactProvider : public ContactProvider
{
    Q_OBJECT
public:
    /// Created by ContactManager::initOutlook(). Has no folder until setEntryID().
    explicit OutlookContactProvider(ContactManager& manager);
    /// Waits for the running threads, without a time-out.
    ~OutlookContactProvider() override;

    /// Chooses a folder by its key, see ContactsOptionsOutlook. The contacts of the previous folder are
    /// deleted from the store at once; those of the new one are added by the next synchronisation, which
    /// @p syncNow starts unless one is running. Does nothing if the folder is already chosen.
    void setEntryID(const QString& entryID, bool syncNow);
    /// The chosen folder's key; empty for none.
    const QString& entryID() const { return m_entryID; }

    /// Opens the chosen folder in Outlook and, if it is a contact folder, adds it to the store as a source.
    void initSource();

    ContactProvider::Type type() override;
    /// Only OutlookContacts.
    QList<ContactList::Type> contactsTypeList() const override;
    //@{
    /// Read-only: changes are not supported and fail with NotPermitted.
    bool isAddContactSupport(ContactList::Type type) const override;
    void addContact(const ContactUnit& contact, ContactList::Type type) override;
    bool isModifyContactSupport(ContactList::Type type) const override;
    void modifyContact(const ContactUnit& contact, ContactList::Type type) override;
    bool isDeleteContactSupport(ContactList::Type type) const override;
    void deleteContact(const ContactUnit& contact, ContactList::Type type) override;
    //@}
    /// Fails with NotSupported for a book other than OutlookContacts.
    void getContacts(ContactList::Type type, const QString& filter, unsigned int offset,
                     unsigned int limit) override;
    /// Always reads the whole folder, and always ends with syncedContacts().
    void syncContacts(ContactList::Type type, bool full) override;
    /// Whether the last completed synchronisation changed the store. False if no folder is chosen or the
    /// store cannot be written.
    bool isStored() const { return m_isStored; }
    /// Whether the last completed synchronisation read the folder to its end. If Outlook failed earlier, the
    /// store contains what had been read until then.
    bool isRead() const { return m_isRead; }
    /// An OutlookContact.
    QSharedPointer<ContactUnit> aggregateContact(unsigned int id) override;

protected Q_SLOTS:
    /// Called when a thread has ended: decrements the number of synchronisations and emits the end signals.
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
