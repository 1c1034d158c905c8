#pragma once

#include "contactlocalstorage.h"
#include "qdcore_global.h"

#include <QPointer>
#include <QStringList>
#include <QThread>

/**
 * Removes from the store, in the background and in one transaction, the units of a book that its source no
 * longer has.
 *
 * Started by its creator; deletes itself when it has run. Its destructor waits for it, without limit.
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

Q_SIGNALS:
    void doneContactsDeletion();

protected:
    void run() override;

private:
    QPointer<ContactLocalStorage> m_storage;
    unsigned int m_source;
    ContactLocalStorage::ContactType m_type;
    ContactLocalStorage::ContactLocation m_location;
    QList<QString> m_uids;
};
