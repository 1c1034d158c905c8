#pragma once

#include "contactlist.h"
#include "contactlocalstorage.h"
#include "qdcore_global.h"

#include <QPointer>
#include <QThread>

class OutlookAccess;
class OutlookItem;

/**
 * Copies the contacts of an Outlook folder into the store, in the background and in one transaction: until it
 * is committed, readers of the store see the previous contacts.
 *
 * Owned and started by its provider, on whose thread it lives; only run() runs on the new thread. Deletes
 * itself when run() has ended, for which the destructor waits without a time-out. If it is interrupted, the
 * store contains no contacts of the folder.
 */
class QDCORE_EXPORT OutlookContactProviderDisassembleThread : public QThread
{
    Q_OBJECT
public:
    /// @p source is the id of the folder's source in the store.
    OutlookContactProviderDisassembleThread(const QPointer<ContactLocalStorage>& storage, unsigned int source,
                                            QObject* parent);
    ~OutlookContactProviderDisassembleThread() override;

    /// The book that doneDisassembleContactFromThread() passes; OutlookContacts by default. Set before
    /// start().
    void setContactsType(ContactList::Type type) { m_type = type; }
    /// The folder's key. Set before start().
    void setEntryID(const QString& entryID) { m_entryID = entryID; }

Q_SIGNALS:
    /// Emitted before doneDisassembleContactFromThread(). @p isStored: whether the transaction was committed;
    /// otherwise the store is unchanged. @p isRead: whether the folder was read to its end.
    void copied(bool isStored, bool isRead);
    /// run() has ended, successfully or not; emitted from the thread itself.
    void doneDisassembleContactFromThread(ContactList::Type type);

protected:
    void run() override;

private:
    void dropContacts();
    /// Returns whether the folder was read to its end.
    bool copyFolder(const OutlookAccess& access);
    void store(const OutlookItem& item);

    QPointer<ContactLocalStorage> m_storage;
    unsigned int m_source;
    ContactList::Type m_type{ContactList::OutlookContacts};
    QString m_entryID;
};
