#include "outlookcontactprovider.h"

#include "contactrow_p.h"
#include "log_p.h"
#include "outlookcontact.h"
#include "outlookcontactproviderdisassemblethread.h"
#include "outlookfolderkey_p.h"

OutlookContactProvider::OutlookContactProvider(ContactManager& manager)
    : ContactProvider(manager)
{}

OutlookContactProvider::~OutlookContactProvider()
{
    for (const auto& thread : qAsConst(m_threads)) {
        if (thread)
            thread->wait();
    }
}

// --- The folder

void OutlookContactProvider::setEntryID(const QString& entryID, bool syncNow)
{
    if (!m_storage || entryID == m_entryID)
        return;
    m_entryID = entryID;
    if (m_sourceId != 0) {
        // they store contacts that are about to be deleted, and the deletion waits for their bracket
        for (const auto& thread : qAsConst(m_threads)) {
            if (thread)
                thread->requestInterruption();
        }
        m_storage->deleteSource(m_sourceId);
    }

    const QPointer<OutlookContactProvider> self(this);
    initSource();
    if (!self || !syncNow || isSync())
        return;
    const QList<ContactList::Type> books = contactsTypeList();
    for (const ContactList::Type book : books) {
        if (self)
            syncContacts(book, false);
    }
}

void OutlookContactProvider::initSource()
{
    if (!m_storage || m_entryID.isEmpty())
        return;
    const QSharedPointer<OutlookApplication> application = m_access.createApplication();
    if (!application)
        return;
    const QSharedPointer<OutlookSession> session = application->session();
    bool isRight = false;
    if (session) {
        session->logon();
        const auto folder = outlookFolder(*session, m_entryID);
        isRight = folder && isContactFolder(*folder);
    }
    if (isRight)
        m_sourceId = m_storage->addSource(m_entryID, ContactLocalStorage::SourceOutlook);
    else
        QD_LOG(ERROR, tr("Incorrectly selected directory Outlook", "Logger"));
    if (session)
        session->logoff();
}

ContactProvider::Type OutlookContactProvider::type()
{
    return ContactProvider::OutlookProvider;
}

QList<ContactList::Type> OutlookContactProvider::contactsTypeList() const
{
    return {ContactList::OutlookContacts};
}

// --- Changing

bool OutlookContactProvider::isAddContactSupport(ContactList::Type) const
{
    return false;
}

void OutlookContactProvider::addContact(const ContactUnit&, ContactList::Type)
{
    Q_EMIT errorAddedContact(Task::NotPermitted);
}

bool OutlookContactProvider::isModifyContactSupport(ContactList::Type) const
{
    return false;
}

void OutlookContactProvider::modifyContact(const ContactUnit&, ContactList::Type)
{
    Q_EMIT errorModifiedContact(Task::NotPermitted);
}

bool OutlookContactProvider::isDeleteContactSupport(ContactList::Type) const
{
    return false;
}

void OutlookContactProvider::deleteContact(const ContactUnit&, ContactList::Type)
{
    Q_EMIT errorDeletedContact(Task::NotPermitted);
}

// --- Synchronising

void OutlookContactProvider::syncContacts(ContactList::Type type, bool)
{
    const QPointer<OutlookContactProvider> self(this);
    ++m_syncCount;
    Q_EMIT onSyncStart();
    if (!self)
        return;
    QD_LOG(DEBUG, tr("sync count (%1)", "Logger").arg(m_syncCount));

    if (!m_storage || m_sourceId == 0 || type != ContactList::OutlookContacts) {
        m_isStored = m_isRead = false;
        return slotDisassembleContactFromThread(type);
    }
    m_threads.removeAll(QPointer<OutlookContactProviderDisassembleThread>());
    auto* thread = new OutlookContactProviderDisassembleThread(m_storage, m_sourceId, this);
    m_threads.append(thread);
    thread->setContactsType(ContactList::OutlookContacts);
    thread->setEntryID(m_entryID);
    connect(thread, &OutlookContactProviderDisassembleThread::copied, this,
            [this](bool isStored, bool isRead) {
                m_isStored = isStored;
                m_isRead = isRead;
            });
    connect(thread, &OutlookContactProviderDisassembleThread::doneDisassembleContactFromThread, this,
            &OutlookContactProvider::slotDisassembleContactFromThread);
    thread->start();
}

void OutlookContactProvider::slotDisassembleContactFromThread(ContactList::Type type)
{
    const QPointer<OutlookContactProvider> self(this);
    --m_syncCount;
    Q_EMIT onSyncStop();
    if (!self)
        return;
    QD_LOG(DEBUG, tr("sync count (%1)", "Logger").arg(m_syncCount));
    Q_EMIT syncedContacts(type);
}

// --- Reading

void OutlookContactProvider::getContacts(ContactList::Type type, const QString&, unsigned int offset,
                                         unsigned int limit)
{
    if (!m_storage || type != ContactList::OutlookContacts) {
        Q_EMIT errorGotContacts(Task::NotSupported);
        return;
    }
    ContactList contacts =
        m_storage->getContactList(&makeUnit, m_sourceId, ContactLocalStorage::TypeContact,
                                  ContactLocalStorage::LocationPersonal, 0, offset, limit, this);
    contacts.setContactsType(ContactList::OutlookContacts);
    Q_EMIT gotContacts(contacts);
}

QSharedPointer<ContactUnit>
OutlookContactProvider::makeUnit(ContactLocalStorage::ContactType type, ContactLocalStorage::ContactLocation,
                                 const QString& uid, const QString& name, const QString&,
                                 const QString& phone, const QString& fax, const QString& email,
                                 const QString& organization,
                                 // NOLINTNEXTLINE(performance-unnecessary-value-param)
                                 ContactList, void*) // ContactFactory's signature
{
    if (type != ContactLocalStorage::TypeContact)
        return QSharedPointer<ContactUnit>();
    const auto contact = QSharedPointer<OutlookContact>::create();
    contact->setUid(uid);
    contact->setName(name);
    contact->setPhone(phone);
    contact->setFax(fax);
    contact->setEmail(email);
    contact->setOrganization(organization);
    return contact;
}

QSharedPointer<ContactUnit> OutlookContactProvider::aggregateContact(unsigned int id)
{
    const auto row = ContactRow::read(m_storage, id);
    if (!row)
        return QSharedPointer<ContactUnit>();
    if (row->type != ContactLocalStorage::TypeContact) {
        QD_LOG(ERROR, tr("Unsuported contact type", "Logger"));
        return QSharedPointer<ContactUnit>();
    }
    if (row->source != m_sourceId)
        return QSharedPointer<ContactUnit>();
    return row->build(&makeUnit, ContactList(), this);
}
