#include "contactsession.h"

#include "command.h"
#include "contactmanager.h"
#include "contactprovider.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "quendracontactprovider.h"
#include "text.h"

namespace {

/// The server's id of a unit.
QString objectId(const ContactUnit& unit)
{
    const auto* contact = dynamic_cast<const QuendraContact*>(&unit);
    const auto* group = dynamic_cast<const QuendraContactGroup*>(&unit);
    const QUrl url = contact ? contact->url() : group ? group->url() : QUrl();
    return url.path(QUrl::FullyDecoded).section(QLatin1Char('/'), -1);
}

} // namespace

ContactSession::ContactSession(const Invocation& call)
    : m_call(call)
    , m_session(call)
{}

ContactSession::~ContactSession() = default;

bool ContactSession::open()
{
    m_session.useContacts();
    if (!m_session.open())
        return false;
    if (!m_session.server().contactProvider() || provider().sourceId() == 0) {
        m_status = m_call.fail(ExitStatus::File, ContactCache::unusableStore());
        return false;
    }
    m_cache = std::make_unique<ContactCache>(*m_session.contacts().storage(), provider().sourceId());
    return true;
}

ContactProvider& ContactSession::provider()
{
    return *m_session.server().contactProvider();
}

QSharedPointer<ContactUnit> ContactSession::unit(quint32 id)
{
    return provider().aggregateContact(id);
}

bool ContactSession::add(const ContactUnit& unit, ContactList::Type book, quint32* id)
{
    QString uid;
    if (!m_session.request(
            &provider(), &ContactProvider::addedContact, &ContactProvider::errorAddedContact,
            [&] { provider().addContact(unit, book); },
            [&uid](const ContactUnit& added, ContactList::Type) { uid = objectId(added); },
            Text::tr("Adding to the %1").arg(bookText(book))))
        return false;
    *id = m_cache->idOf(book, uid);
    return true;
}

bool ContactSession::modify(const ContactUnit& unit, ContactList::Type book)
{
    return m_session.request(
        &provider(), &ContactProvider::modifiedContact, &ContactProvider::errorModifiedContact,
        [&] { provider().modifyContact(unit, book); }, [](const ContactUnit&, ContactList::Type) {},
        Text::tr("Changing the %1").arg(bookText(book)));
}

bool ContactSession::remove(const ContactUnit& unit, ContactList::Type book)
{
    return m_session.request(
        &provider(), &ContactProvider::deletedContact, &ContactProvider::errorDeletedContact,
        [&] { provider().deleteContact(unit, book); }, [](const ContactUnit&, ContactList::Type) {},
        Text::tr("Deleting from the %1").arg(bookText(book)));
}

bool ContactSession::synchronise(ContactList::Type book, bool full)
{
    m_session.setPatientWhileIdle(true);
    const bool ok = m_session.request(
        &provider(), &ContactProvider::syncedContacts, &ContactProvider::errorSyncedContacts,
        [&] { provider().syncContacts(book, full); }, [](ContactList::Type) {},
        Text::tr("Reading the %1").arg(bookText(book)));
    m_session.setPatientWhileIdle(false);
    const auto* books = qobject_cast<const QuendraContactProvider*>(&provider());
    if (!ok || !books || books->isStored(book))
        return ok;
    m_session.fail(ExitStatus::File, Text::tr("The %1 could not be stored: check permissions and free space, "
                                              "and whether another program has the file.")
                                         .arg(bookText(book)));
    return false;
}
