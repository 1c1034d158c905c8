#pragma once

#include "contactlist.h"
#include "contactlocalstorage.h"
#include "qdcore_global.h"

#include <QPointer>
#include <QThread>

class OutlookAccess;
class OutlookItem;

/**
 * Copies the contacts of an Outlook folder into the store, in the background and in one transaction: whoever
 * reads the store meanwhile sees what was there before.
 *
 * Owned and started by its provider, on whose thread it lives; only run() is on its own. Deletes itself when
 * it has run. Its destructor waits for it, without limit. Once interrupted it leaves no contacts of the
 * folder.
 */
class QDCORE_EXPORT OutlookContactProviderDisassembleThread : public QThread
{
    Q_OBJECT
public:
    /// @p source is the id of the folder's source in the store.
    OutlookContactProviderDisassembleThread(const QPointer<ContactLocalStorage>& storage, unsigned int source,
                                            QObject* parent);
    ~OutlookContactProviderDisassembleThread() override;

    /// The book that the end is told of: OutlookContacts until it is set. Set before start().
    void setContactsType(ContactList::Type type) { m_type = type; }
    /// The folder's key. Set before start().
    void setEntryID(const QString& entryID) { m_entryID = entryID; }

Q_SIGNALS:
    /// Comes before doneDisassembleContactFromThread(). @p isStored: whether the store holds what was
    /// written; where not, it is as it was. @p isRead: whether Outlook gave the folder to its end.
    void copied(bool isStored, bool isRead);
    /// It has run, with whatever success; comes from the thread itself.
    void doneDisassembleContactFromThread(ContactList::Type type);

protected:
    void run() override;

private:
    void dropContacts();
    /// Returns whether it came to the end of the folder.
    bool copyFolder(const OutlookAccess& access);
    void store(const OutlookItem& item);

    QPointer<ContactLocalStorage> m_storage;
    unsigned int m_source;
    ContactList::Type m_type{ContactList::OutlookContacts};
    QString m_entryID;
};
