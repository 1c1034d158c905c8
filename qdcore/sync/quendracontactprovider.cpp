#include "quendracontactprovider.h"

#include "bookknowledge_p.h"
#include "contactbook_p.h"
#include "contactdisassembly_p.h"
#include "contactrow_p.h"
#include "contactsdeleterthread.h"
#include "faxserver.h"
#include "log_p.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "quendracontactproviderdisassemblethread.h"
#include "serveraddress_p.h"
#include "storewrites_p.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskmodifycontact.h"

namespace {

ContactLocalStorage::ContactType kindOf(ContactList::Type type)
{
    return ContactBook(type).isGroup ? ContactLocalStorage::TypeGroup : ContactLocalStorage::TypeContact;
}

ContactLocalStorage::ContactLocation locationOf(ContactList::Type type)
{
    return ContactBook(type).isGlobal ? ContactLocalStorage::LocationGlobal
                                      : ContactLocalStorage::LocationPersonal;
}

/// A task of a server; null, logged as @p failure, when it is not of the expected class.
template <typename T>
T* createTask(FaxServer& server, Task::Type type, const LogText& failure)
{
    auto* task = qobject_cast<T*>(server.addTask(type));
    if (!task)
        Logger::inst().log(Logger::ERROR, failure.text, failure.file, failure.line);
    return task;
}

QString unsupportedType()
{
    return QuendraContactProvider::tr("Unsuported contact type", "Logger");
}

} // namespace

// --- Storing

bool placeOf(const ContactUnit& unit, ContactPlace& place)
{
    QUrl url;
    if (const auto* contact = dynamic_cast<const QuendraContact*>(&unit)) {
        place.type = ContactLocalStorage::TypeContact;
        url = contact->url();
    } else if (const auto* group = dynamic_cast<const QuendraContactGroup*>(&unit)) {
        place.type = ContactLocalStorage::TypeGroup;
        url = group->url();
    } else {
        QD_LOG(ERROR, unsupportedType());
        return false;
    }
    const QString path = url.path(QUrl::FullyDecoded);
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return false;
    place.uid = path.mid(slash + 1);
    place.location = path.contains(QLatin1String("global_contact_list"))
                         ? ContactLocalStorage::LocationGlobal
                         : ContactLocalStorage::LocationPersonal;
    return true;
}

ContactList withSameUnits(const ContactList& list)
{
    ContactList same;
    same.setContactsType(list.contactsType());
    same.contacts() = list.contacts();
    return same;
}

void disassemble(ContactLocalStorage& storage, unsigned int source, const ContactUnit& unit,
                 unsigned int timestamp, unsigned int group, unsigned int latest)
{
    ContactPlace place;
    if (!placeOf(unit, place))
        return;

    unsigned int id = 0;
    if (group != 0 && latest != std::numeric_limits<unsigned int>::max()) {
        id = storage.getContact(source, place.type, place.location, place.uid);
        const auto row = ContactRow::read(&storage, id);
        if (row && row->timestamp > latest)
            return storage.linkContactAndGroup(id, group);
    }
    if (place.type == ContactLocalStorage::TypeContact) {
        const auto& contact = static_cast<const QuendraContact&>(unit);
        id = storage.addContact(source, place.type, place.location, place.uid, timestamp, contact.name(),
                                QLatin1String(""), contact.phone(), contact.fax(), contact.email(),
                                contact.organization());
    } else {
        const auto& stored = static_cast<const QuendraContactGroup&>(unit);
        const QString none = QLatin1String("");
        id = storage.addContact(source, place.type, place.location, place.uid, timestamp, stored.name(),
                                stored.description(), none, none, none, none);
        storage.unlinkContactAndGroup(0, id);
        for (const auto& member : stored.contacts().contacts()) {
            if (member)
                disassemble(storage, source, *member, 0, id, latest);
        }
    }
    if (group != 0)
        storage.linkContactAndGroup(id, group);
}

/// As disassemble(), a group and its members in one transaction.
static void disassembleWhole(ContactLocalStorage& storage, unsigned int source, const ContactUnit& unit,
                             unsigned int timestamp, unsigned int group)
{
    const bool isGroup = dynamic_cast<const QuendraContactGroup*>(&unit) != nullptr;
    if (isGroup)
        storage.scopeBegin();
    disassemble(storage, source, unit, timestamp, group);
    if (isGroup)
        storage.scopeEnd();
}

void QuendraContactProvider::disassembleContact(const ContactUnit& contact, unsigned int timestamp,
                                                unsigned int group)
{
    // unlinking the server deleted its source; a late reply must not store units of it again
    if (m_storage && m_server)
        disassembleWhole(*m_storage, m_sourceId, contact, timestamp, group);
}

// --- The link

QuendraContactProvider::QuendraContactProvider(ContactManager& manager)
    : ContactProvider(manager)
    , m_writes(new StoreWrites(m_storage, this))
{}

QuendraContactProvider::~QuendraContactProvider()
{
    for (const auto& thread : qAsConst(m_threads)) {
        if (thread)
            thread->wait();
    }
}

void QuendraContactProvider::linkFaxServer(const QPointer<FaxServer>& server)
{
    if (!server)
        QD_LOG(ERROR, tr("Error to link with server (init contact provider)", "Logger"));
    m_server = server;
    if (m_storage && m_server)
        m_sourceId = m_storage->addSource(m_server->genUID(), ContactLocalStorage::SourceQuendra);
}

void QuendraContactProvider::unlinkFaxServer()
{
    if (m_storage)
        m_storage->deleteSource(m_sourceId);
    m_server.clear();
}

ContactProvider::Type QuendraContactProvider::type()
{
    return ContactProvider::QuendraProvider;
}

QList<ContactList::Type> QuendraContactProvider::contactsTypeList() const
{
    return {ContactList::PersonalContacts, ContactList::GlobalContacts, ContactList::PersonalGroups,
            ContactList::GlobalGroups};
}

// --- Changing

bool QuendraContactProvider::isAddContactSupport(ContactList::Type type) const
{
    return ContactBook(type).isValid;
}

bool QuendraContactProvider::isModifyContactSupport(ContactList::Type type) const
{
    return ContactBook(type).isValid;
}

bool QuendraContactProvider::isDeleteContactSupport(ContactList::Type type) const
{
    return ContactBook(type).isValid;
}

void QuendraContactProvider::addContact(const ContactUnit& contact, ContactList::Type type)
{
    if (!m_server || !ContactBook(type).isValid) {
        Q_EMIT errorAddedContact(Task::Error);
        return;
    }
    auto* task = createTask<TaskAddContact>(*m_server, Task::AddContact,
                                            LOG_TEXT(tr("Error to add contact (create task)", "Logger")));
    if (!task)
        return slotErrorAddedContacts(Task::Error);
    task->setContact(contact, type);
    connect(task, &TaskAddContact::doneAddContact, this, &QuendraContactProvider::slotAddedContact);
    connect(task, &Task::errorExecute, this, &QuendraContactProvider::slotErrorAddedContacts);
    task->execute();
}

void QuendraContactProvider::modifyContact(const ContactUnit& contact, ContactList::Type type)
{
    if (!m_server || !ContactBook(type).isValid) {
        Q_EMIT errorModifiedContact(Task::Error);
        return;
    }
    auto* task = createTask<TaskModifyContact>(
        *m_server, Task::ModifyContact, LOG_TEXT(tr("Error to modify contact (modify task)", "Logger")));
    if (!task)
        return slotErrorModifiedContacts(Task::Error);
    task->setContact(contact, type);
    connect(task, &TaskModifyContact::doneModifyContact, this, &QuendraContactProvider::slotModifiedContact);
    connect(task, &Task::errorExecute, this, &QuendraContactProvider::slotErrorModifiedContacts);
    task->execute();
}

void QuendraContactProvider::deleteContact(const ContactUnit& contact, ContactList::Type type)
{
    if (!m_server || !ContactBook(type).isValid) {
        Q_EMIT errorDeletedContact(Task::Error);
        return;
    }
    auto* task = createTask<TaskDeleteContact>(
        *m_server, Task::DeleteContact, LOG_TEXT(tr("Error to delete contact (delete task)", "Logger")));
    if (!task)
        return slotErrorDeletedContacts(Task::Error);
    task->setContact(contact, type);
    connect(task, &TaskDeleteContact::doneDeleteContact, this, &QuendraContactProvider::slotDeletedContact);
    connect(task, &Task::errorExecute, this, &QuendraContactProvider::slotErrorDeletedContacts);
    task->execute();
}

void QuendraContactProvider::slotAddedContact(const ContactUnit& contact, ContactList::Type type)
{
    ContactPlace place;
    if (m_syncCount != 0 && placeOf(contact, place) && !place.uid.isEmpty())
        m_syncOids[type].append(place.uid);
    const ContactUnitPtr unit(contact.copy());
    storeUnit(unit, [this, unit, type] { Q_EMIT addedContact(*unit, type); });
}

void QuendraContactProvider::slotModifiedContact(const ContactUnit& contact, ContactList::Type type)
{
    const ContactUnitPtr unit(contact.copy());
    storeUnit(unit, [this, unit, type] { Q_EMIT modifiedContact(*unit, type); });
}

void QuendraContactProvider::storeUnit(const ContactUnitPtr& unit, const std::function<void()>& done)
{
    // unlinking the server deleted its source; a late reply must not store units of it again
    if (!m_server)
        return done();
    const auto write = [unit, source = m_sourceId](ContactLocalStorage& storage) {
        QString name;
        ContactLocalStorage::SourceType kind;
        if (!storage.getSourceInfo(source, name, kind))
            return; // the unit was deleted while this was queued
        disassembleWhole(storage, source, *unit, 0, 0);
    };
    m_writes->add(write, done);
}

void QuendraContactProvider::slotDeletedContact(const ContactUnit& contact, ContactList::Type type)
{
    ContactPlace place;
    const bool hasPlace = placeOf(contact, place);
    if (hasPlace) {
        // Recorded before the row is deleted, which waits for a running bracket: a storing thread that has
        // missed the record has stored the unit by then.
        for (const auto& weak : qAsConst(m_known)) {
            if (const Known known = weak.toStrongRef())
                known->noteDeleted({m_sourceId, place.type, place.location}, {place.uid});
        }
    }
    const ContactUnitPtr unit(contact.copy());
    const auto write = [place, hasPlace, source = m_sourceId](ContactLocalStorage& storage) {
        if (hasPlace)
            storage.deleteContact(source, place.type, place.location, place.uid);
    };
    m_writes->add(write, [this, unit, type] { Q_EMIT deletedContact(*unit, type); });
}

void QuendraContactProvider::slotErrorAddedContacts(Task::Status status)
{
    Q_EMIT errorAddedContact(status);
}

void QuendraContactProvider::slotErrorModifiedContacts(Task::Status status)
{
    Q_EMIT errorModifiedContact(status);
}

void QuendraContactProvider::slotErrorDeletedContacts(Task::Status status)
{
    Q_EMIT errorDeletedContact(status);
}

// --- Synchronising

void QuendraContactProvider::syncContacts(ContactList::Type type, bool full)
{
    const QPointer<QuendraContactProvider> self(this);
    ++m_syncCount;
    if (m_syncCount == 1)
        m_undeleted.clear(); // not at the end, after which a deleter may still fail
    Q_EMIT onSyncStart();
    if (!self)
        return;
    QD_LOG(DEBUG, tr("sync count (%1)", "Logger").arg(m_syncCount));

    if (!m_server || !m_storage || !ContactBook(type).isValid)
        return slotErrorSyncedContacts(Task::Error);
    if (m_server->lastStatus() == Task::AuthError)
        m_server->verifyUser(false);

    const Known known = knownNow(type);
    if (full || known->newest() == 0)
        return requestContacts(type, 0, known);

    auto* task = createTask<TaskGetContactsOids>(
        *m_server, Task::GetContactsOids,
        LOG_TEXT(tr("Error to sync contact (get contacts oids task)", "Logger")));
    if (!task)
        return slotErrorSyncedContacts(Task::Error);
    task->setContactsType(type);
    connect(
        task, &TaskGetContactsOids::doneGetContactsOids, this,
        [this, known](const QList<QString>& oids, ContactList::Type book) { useOids(oids, book, known); });
    connect(task, &Task::errorExecute, this, &QuendraContactProvider::slotErrorSyncedContacts);
    task->execute();
}

/// The store's present content of a book; to be called when a request about it is sent.
QuendraContactProvider::Known QuendraContactProvider::knownNow(ContactList::Type type)
{
    const StoredBook book{m_sourceId, kindOf(type), locationOf(type)};
    m_known.erase(std::remove_if(m_known.begin(), m_known.end(),
                                 [](const QWeakPointer<BookKnowledge>& weak) { return weak.isNull(); }),
                  m_known.end());
    const Known known = m_storage ? Known::create(book, *m_storage, m_known) : Known::create(book);
    m_known.append(known);
    return known;
}

void QuendraContactProvider::requestContacts(ContactList::Type type, unsigned int lastTimeSync,
                                             const Known& known)
{
    auto* task = createTask<TaskGetContacts>(
        *m_server, Task::GetContacts, LOG_TEXT(tr("Error to sync contact (get contacts task)", "Logger")));
    if (!task)
        return slotErrorSyncedContacts(Task::Error);
    task->setContactsType(type);
    task->setContactsLastTimeSync(lastTimeSync);
    connect(task, &TaskGetContacts::doneGetContacts, this,
            [this, known](const ContactList& contacts, unsigned int timestamp) {
                useContacts(contacts, timestamp, true, known);
            });
    connect(task, &TaskGetContacts::doneGetContactsAfterLastTimeSync, this,
            [this, known](const ContactList& contacts, unsigned int timestamp) {
                useContacts(contacts, timestamp, false, known);
            });
    connect(task, &Task::errorExecute, this, &QuendraContactProvider::slotErrorSyncedContacts);
    task->execute();
}

void QuendraContactProvider::slotSyncedContactOids(const QList<QString>& oids, ContactList::Type type)
{
    useOids(oids, type, knownNow(type));
}

void QuendraContactProvider::useOids(const QList<QString>& oids, ContactList::Type type, const Known& known)
{
    if (known->book().source != m_sourceId) // another server was linked meanwhile
        return slotErrorSyncedContacts(Task::Error);
    if (m_server && m_storage && ContactBook(type).isValid) {
        m_syncOids[type] = oids;
        startDeleter(type, oids, {}, known, ContactList());
    }
    // the second half: what changed since the last time
    if (!m_server || !m_storage || !ContactBook(type).isValid)
        return slotErrorSyncedContacts(Task::Error);
    requestContacts(type, known->newest(), known);
}

void QuendraContactProvider::slotSyncedContact(const ContactList& contacts, unsigned int timestamp)
{
    onSyncContacts(contacts, timestamp, true);
}

void QuendraContactProvider::slotSyncedContactAfterLastTimeSync(const ContactList& contacts,
                                                                unsigned int timestamp)
{
    onSyncContacts(contacts, timestamp, false);
}

void QuendraContactProvider::onSyncContacts(const ContactList& contacts, unsigned int timestamp, bool full)
{
    useContacts(contacts, timestamp, full, knownNow(contacts.contactsType()));
}

void QuendraContactProvider::useContacts(const ContactList& contacts, unsigned int timestamp, bool full,
                                         const Known& known)
{
    const ContactList::Type type = contacts.contactsType();
    if (!ContactBook(type).isValid)
        return; // the synchronisation stays open; only the destructor closes it
    if (!m_storage)
        return slotDisassembleContactFromThread(type);
    if (known->book().source != m_sourceId) // another server was linked meanwhile
        return slotErrorSyncedContacts(Task::Error);
    if (full) {
        // Units added meanwhile stay. So do those just received: they would be stored again under new ids,
        // but lost as members of groups. An identifier that is not a number protects only its own row, also
        // if it was listed or added.
        const QList<QString> listed = m_syncOids.value(type); // none: nothing will be deleted
        startDeleter(type, {}, listed, known, listed.isEmpty() ? ContactList() : withSameUnits(contacts));
    }

    m_threads.removeAll(QPointer<QuendraContactProviderDisassembleThread>());
    auto* thread = new QuendraContactProviderDisassembleThread(m_storage, m_sourceId, this);
    m_threads.append(thread);
    thread->setContacts(withSameUnits(contacts), timestamp);
    thread->setKnown(known);
    connect(thread, &QuendraContactProviderDisassembleThread::written, this,
            [this, type](bool isStored) { bookWritten(type, isStored); });
    connect(thread, &QuendraContactProviderDisassembleThread::doneDisassembleContactFromThread, this,
            &QuendraContactProvider::slotDisassembleContactFromThread);
    if (m_work.value(type).deleters > 0)
        m_work[type].waiting.append(thread);
    else
        startThread(thread);
}

/// Starts a thread behind the writes that are queued: what it stores or deletes comes from a later reply.
void QuendraContactProvider::startThread(const QPointer<QThread>& thread)
{
    m_writes->whenWritten([thread] {
        if (thread)
            thread->start();
    });
}

/// Starts a thread that deletes what the server no longer has. The thread that stores the book's units waits
/// for it. Race otherwise: the deleter could remove a row just updated, if the server has reused an
/// identifier between its two replies.
void QuendraContactProvider::startDeleter(ContactList::Type type, const QList<QString>& listed,
                                          const QList<QString>& replied, const Known& known,
                                          ContactList&& units)
{
    auto* deleter =
        new ContactsDeleterThread(m_storage, m_sourceId, kindOf(type), locationOf(type), listed, this);
    deleter->setKnown(known, replied, std::move(units));
    ++m_work[type].deleters;
    connect(deleter, &ContactsDeleterThread::deleted, this, [this, type](bool isStored) {
        if (!isStored)
            m_undeleted.insert(type);
        deleterEnded(type);
    });
    startThread(deleter);
}

void QuendraContactProvider::bookWritten(ContactList::Type type, bool isStored)
{
    if (isStored && !m_undeleted.contains(type))
        m_stored.insert(type);
    else
        m_stored.remove(type);
}

void QuendraContactProvider::deleterEnded(ContactList::Type type)
{
    BookWork& work = m_work[type];
    if (--work.deleters > 0)
        return;
    const BookWork ended = m_work.take(type);
    for (const auto& thread : ended.waiting)
        startThread(thread.data());
}

/// Decrements the count of synchronisations. False if a slot has destroyed this provider.
bool QuendraContactProvider::endSync()
{
    const QPointer<QuendraContactProvider> self(this);
    --m_syncCount;
    if (m_syncCount == 0)
        m_syncOids.clear();
    Q_EMIT onSyncStop();
    if (self)
        QD_LOG(DEBUG, tr("sync count (%1)", "Logger").arg(m_syncCount));
    return self;
}

void QuendraContactProvider::slotDisassembleContactFromThread(ContactList::Type type)
{
    if (endSync())
        Q_EMIT syncedContacts(type);
}

void QuendraContactProvider::slotErrorSyncedContacts(Task::Status status)
{
    if (endSync())
        Q_EMIT errorSyncedContacts(status);
}

// --- Reading

void QuendraContactProvider::getContacts(ContactList::Type type, const QString&, unsigned int offset,
                                         unsigned int limit)
{
    if (!m_server || !m_storage || !ContactBook(type).isValid) {
        Q_EMIT errorGotContacts(Task::Error);
        return;
    }
    ContactList contacts = m_storage->getContactList(&makeUnit, m_sourceId, kindOf(type), locationOf(type), 0,
                                                     offset, limit, this);
    contacts.setContactsType(type);
    Q_EMIT gotContacts(contacts);
}

QUrl QuendraContactProvider::unitUrl(ContactLocalStorage::ContactType type,
                                     ContactLocalStorage::ContactLocation location, const QString& uid) const
{
    QUrl url;
    ContactList::Type book = ContactList::Unknown;
    switch (location) {
    case ContactLocalStorage::LocationPersonal:
        book = type == ContactLocalStorage::TypeGroup ? ContactList::PersonalGroups
                                                      : ContactList::PersonalContacts;
        break;
    case ContactLocalStorage::LocationGlobal:
        book =
            type == ContactLocalStorage::TypeGroup ? ContactList::GlobalGroups : ContactList::GlobalContacts;
        break;
    default:
        QD_LOG(ERROR, tr("Unsuported contact location", "Logger"));
        return url;
    }
    if (!m_server)
        return url;
    url.setPath(ContactBook(book).path(QStringLiteral("/qdws/v1/contacts"),
                                       QStringLiteral("/qdws/v1/contact_groups"), m_server->login()) +
                    QLatin1Char('/') + uid,
                QUrl::DecodedMode);
    url.setScheme(QStringLiteral("http"));
    setServerAddress(url, m_server->address());
    return url;
}

QSharedPointer<ContactUnit> QuendraContactProvider::makeUnit(
    ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation location, const QString& uid,
    const QString& name, const QString& description, const QString& phone, const QString& fax,
    const QString& email, const QString& organization, ContactList members, void* userData)
{
    const auto* provider = static_cast<const QuendraContactProvider*>(userData);
    switch (type) {
    case ContactLocalStorage::TypeContact: {
        const auto contact = QSharedPointer<QuendraContact>::create();
        contact->setName(name);
        contact->setOrganization(organization);
        contact->setPhone(phone);
        contact->setFax(fax);
        contact->setEmail(email);
        contact->setUrl(provider->unitUrl(type, location, uid));
        return contact;
    }
    case ContactLocalStorage::TypeGroup: {
        const auto group = QSharedPointer<QuendraContactGroup>::create();
        group->setName(name);
        group->setDescription(description);
        group->contacts() = std::move(members);
        group->setUrl(provider->unitUrl(type, location, uid));
        return group;
    }
    default:
        return QSharedPointer<ContactUnit>();
    }
}

QSharedPointer<ContactUnit> QuendraContactProvider::aggregateContact(unsigned int id)
{
    const auto row = ContactRow::read(m_storage, id);
    if (!row || row->source != m_sourceId)
        return QSharedPointer<ContactUnit>();
    ContactList members;
    if (row->type == ContactLocalStorage::TypeGroup) {
        members = m_storage->getContactList(&makeUnit, m_sourceId, ContactLocalStorage::AnyType,
                                            ContactLocalStorage::AnyLocation, id, 0, 0, this);
    } else if (row->type != ContactLocalStorage::TypeContact) {
        QD_LOG(ERROR, unsupportedType());
        return QSharedPointer<ContactUnit>();
    }
    return row->build(&makeUnit, members, this);
}
