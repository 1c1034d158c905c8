#pragma once

#include "contactlist.h"
#include "contactlocalstorage.h"
#include "qdcore_global.h"

#include <QPointer>
#include <QSharedPointer>
#include <QThread>

class BookKnowledge;

/**
 * Stores the units of a book as a fax server sent them, in the background and in one transaction.
 *
 * Owned and started by its provider, on whose thread it lives; only run() is on its own. Deletes itself when
 * it has run. Its destructor waits for it, without limit.
 */
class QDCORE_EXPORT QuendraContactProviderDisassembleThread : public QThread
{
    Q_OBJECT
public:
    /// @p source is the id of the server's source in the store.
    QuendraContactProviderDisassembleThread(const QPointer<ContactLocalStorage>& storage, unsigned int source,
                                            QObject* parent);
    ~QuendraContactProviderDisassembleThread() override;

    /// The units, whose list names the book, and the server's time that they are stamped with. Set before
    /// start().
    void setContacts(const ContactList& contacts, unsigned int timestamp);

    /// What getContactLastTimeStamp() of the book was when the server was asked. Where it is later by now
    /// than that and than the units' own, somebody has stored newer ones, and nothing is stored. (Later than
    /// the units' alone says nothing: the server's clock may have been set back.) Set before start().
    void setKnown(ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation location,
                  unsigned int timestamp);

Q_SIGNALS:
    /// Comes before doneDisassembleContactFromThread(). @p isStored: whether the store holds the units, or
    /// newer ones; where not, it is as it was.
    void written(bool isStored);
    /// It has run, with whatever success; comes from the thread itself.
    void doneDisassembleContactFromThread(ContactList::Type type);

protected:
    void run() override;

private:
    friend class QuendraContactProvider;

    /// What the book was when the server was asked: what was deleted since does not come back, and of units
    /// older than what is stored by now only the missing ones are stored. Set before start().
    void setKnown(const QSharedPointer<const BookKnowledge>& known) { m_known = known; }
    /// As setContacts(), without copying the units.
    void setContacts(ContactList&& contacts, unsigned int timestamp);

    QPointer<ContactLocalStorage> m_storage;
    unsigned int m_source;
    ContactList m_contacts;
    unsigned int m_timestamp{0};
    QSharedPointer<const BookKnowledge> m_known;
};
