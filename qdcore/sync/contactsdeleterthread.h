#pragma once

#include "contactlocalstorage.h"
#include "qdcore_global.h"

#include <QPointer>
#include <QSharedPointer>
#include <QStringList>
#include <QThread>

class BookKnowledge;

/**
 * Removes from the store, in the background and in one transaction, the units of a book that its source no
 * longer has.
 *
 * Owned and started by its creator, on whose thread it lives; only run() is on its own. Deletes itself
 * when it has run. Its destructor waits for it, without limit.
 */
class QDCORE_EXPORT ContactsDeleterThread : public QThread
{
    Q_OBJECT
public:
    /// @p uids are the units that stay; with none nothing is deleted.
    ContactsDeleterThread(const QPointer<ContactLocalStorage>& storage, unsigned int source,
                          ContactLocalStorage::ContactType type,
                          ContactLocalStorage::ContactLocation location, const QList<QString>& uids,
                          QObject* parent);
    ~ContactsDeleterThread() override;

    /// getContactLastTimeStamp() of the book when the source was asked for its units. If it is later by now,
    /// newer units have been stored, and nothing is deleted. Set before start().
    void setKnown(unsigned int timestamp);

Q_SIGNALS:
    /// Emitted before doneContactsDeletion(). @p isStored: whether the deletion was committed; if not, the
    /// store is unchanged.
    void deleted(bool isStored);
    /// The transaction was committed or rolled back; emitted by the thread itself.
    void doneContactsDeletion();

protected:
    void run() override;

private:
    friend class QuendraContactProvider;

    /// What the book was when the source was asked: what was added since stays. @p replied are units that
    /// came with the source's reply, which stay besides, and so do @p units. Set before start().
    void setKnown(const QSharedPointer<const BookKnowledge>& known, const QList<QString>& replied,
                  ContactList&& units);

    QPointer<ContactLocalStorage> m_storage;
    QList<QString> m_uids;
    QList<QString> m_replied;
    ContactList m_units; ///< More that were replied.
    QSharedPointer<const BookKnowledge> m_known;
};
