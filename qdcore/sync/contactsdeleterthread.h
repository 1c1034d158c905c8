#pragma once

#include "contactlocalstorage.h"
#include "qdcore_global.h"

#include <QPointer>
#include <QStringList>
#include <QThread>

#include <optional>

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

    /// What getContactLastTimeStamp() of the book was when the source was asked for its units. Where it is
    /// another by now, somebody has stored newer ones, and nothing is deleted. Set before start().
    void setKnown(unsigned int timestamp) { m_known = timestamp; }

Q_SIGNALS:
    /// Comes before doneContactsDeletion(). @p isStored: whether the store is without the units; where not,
    /// it is as it was.
    void deleted(bool isStored);
    /// The transaction has ended, well or not; comes from the thread itself.
    void doneContactsDeletion();

protected:
    void run() override;

private:
    QPointer<ContactLocalStorage> m_storage;
    unsigned int m_source;
    ContactLocalStorage::ContactType m_type;
    ContactLocalStorage::ContactLocation m_location;
    QList<QString> m_uids;
    std::optional<unsigned int> m_known;
};
