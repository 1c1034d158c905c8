#include "contactsdeleterthread.h"

#include "bookknowledge_p.h"
#include "contactdisassembly_p.h"
#include "tsan_p.h"

namespace {

QList<QString> uidsOf(const ContactList& contacts)
{
    QList<QString> uids;
    ContactPlace place;
    for (const auto& unit : contacts.contacts()) {
        if (unit && placeOf(*unit, place))
            uids.append(place.uid);
    }
    return uids;
}

} // namespace

ContactsDeleterThread::ContactsDeleterThread(const QPointer<ContactLocalStorage>& storage,
                                             unsigned int source, ContactLocalStorage::ContactType type,
                                             ContactLocalStorage::ContactLocation location,
                                             const QList<QString>& uids, QObject* parent)
    : QThread(parent)
    , m_storage(storage)
    , m_uids(uids)
    , m_known(QSharedPointer<BookKnowledge>::create(StoredBook{source, type, location}))
{}

ContactsDeleterThread::~ContactsDeleterThread()
{
    wait();
    tsanTakeOver(this);
}

void ContactsDeleterThread::setKnown(unsigned int timestamp)
{
    m_known = QSharedPointer<BookKnowledge>::create(m_known->book(), timestamp);
}

void ContactsDeleterThread::setKnown(const QSharedPointer<const BookKnowledge>& known,
                                     const QList<QString>& replied, ContactList&& units)
{
    m_known = known;
    m_replied = replied;
    m_units = std::move(units);
}

void ContactsDeleterThread::run()
{
    bool isStored = false;
    m_replied += uidsOf(m_units);
    m_units = ContactList(); // destroying 100,000 units takes too long for the event loop
    if (m_storage) {
        // a bracket must be ended even if beginning it failed: the mutex is held either way
        const bool begun = m_storage->scopeBegin();
        if (begun)
            m_known->deleteRest(*m_storage, m_uids, m_replied);
        const bool holds = m_storage->scopeEnd();
        isStored = begun && holds;
        m_storage->freeStorageForThread();
    }
    tsanHandOver(this);
    Q_EMIT deleted(isStored);
    Q_EMIT doneContactsDeletion();
    deleteLater();
    tsanHandOver(this);
}
