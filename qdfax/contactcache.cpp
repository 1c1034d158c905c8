#include "contactcache.h"

#include "command.h"
#include "contact.h"
#include "parsing.h"
#include "recordjson.h"
#include "settingsfile.h"
#include "text.h"

#include <QDir>

#include <algorithm>

namespace {

const int mostCandidates = 10; // that an error text lists

bool isGroupBook(ContactList::Type book)
{
    return book == ContactList::PersonalGroups || book == ContactList::GlobalGroups;
}

ContactLocalStorage::ContactType typeOf(ContactList::Type book)
{
    return isGroupBook(book) ? ContactLocalStorage::TypeGroup : ContactLocalStorage::TypeContact;
}

ContactLocalStorage::ContactLocation locationOf(ContactList::Type book)
{
    return book == ContactList::GlobalContacts || book == ContactList::GlobalGroups
               ? ContactLocalStorage::LocationGlobal
               : ContactLocalStorage::LocationPersonal;
}

QString bookWord(ContactList::Type book)
{
    return bookWords().value(book - ContactList::PersonalContacts);
}

QString lines(const QVector<StoredContact>& units)
{
    QStringList texts;
    const QVector<StoredContact> candidates = units.mid(0, mostCandidates);
    for (const StoredContact& unit : candidates)
        texts.append(unit.line());
    if (units.size() > mostCandidates)
        texts.append(Text::tr("and %1 more").arg(units.size() - mostCandidates));
    return texts.join(QStringLiteral("; "));
}

} // namespace

// --- StoredContact

ContactList::Type StoredContact::book() const
{
    if (location == ContactLocalStorage::LocationGlobal)
        return isGroup() ? ContactList::GlobalGroups : ContactList::GlobalContacts;
    return isGroup() ? ContactList::PersonalGroups : ContactList::PersonalContacts;
}

Contact StoredContact::contact() const
{
    Contact contact;
    contact.setName(name);
    contact.setOrganization(organization);
    contact.setPhone(phone);
    contact.setFax(fax);
    contact.setEmail(email);
    return contact;
}

QString StoredContact::line() const
{
    QStringList details{bookWord(book())};
    for (const QString& detail : {organization, fax}) {
        if (!detail.isEmpty())
            details.append(detail);
    }
    return QStringLiteral("%1 %2 (%3)").arg(QString::number(id), name, details.join(QStringLiteral(", ")));
}

// --- ContactCache

std::unique_ptr<ContactCache> ContactCache::open(const Invocation& call, int* status)
{
    StoredServer server;
    SettingsFile settings;
    const QString problem = settings.choose(call.serverName(), &server);
    call.note(settings.takeRemark());
    if (!problem.isEmpty()) {
        *status = call.fail(ExitStatus::Settings, problem);
        return nullptr;
    }
    auto store = std::make_unique<ContactLocalStorage>();
    // Adding fails only if the store cannot be used; a look-up could not distinguish that from a new source.
    const quint32 source = store->addSource(server.uid, ContactLocalStorage::SourceQuendra);
    if (source == 0) {
        *status = call.fail(ExitStatus::File, unusableStore());
        return nullptr;
    }
    auto cache = std::make_unique<ContactCache>(*store, source);
    cache->m_owned = std::move(store);
    return cache;
}

QString ContactCache::unusableStore(const char* refill)
{
    return Text::tr("The contacts kept in %1 cannot be used: the file contacts.sqlite there is damaged, "
                    "locked, or not permitted. When it is damaged, move it away and run \"qdfax %2\".")
        .arg(QDir::toNativeSeparators(SettingsFile::defaultPath().section(QLatin1Char('/'), 0, -3) +
                                      QStringLiteral("/Contacts")),
             QLatin1String(refill));
}

ContactCache::ContactCache(ContactLocalStorage& store, quint32 source)
    : m_store(store)
    , m_source(source)
{}

ContactCache::~ContactCache() = default;

QVector<StoredContact> ContactCache::rows(const QList<quint32>& ids) const
{
    QVector<StoredContact> found;
    found.reserve(ids.size());
    for (const quint32 id : ids) {
        if (const auto unit = find(id))
            found.append(*unit);
    }
    return found;
}

QVector<StoredContact> ContactCache::list(ContactList::Type book, uint offset, uint limit) const
{
    return rows(m_store.getContactList(m_source, typeOf(book), locationOf(book), 0, offset, limit));
}

QVector<StoredContact> ContactCache::list(ContactLocalStorage::ContactType type, uint offset,
                                          uint limit) const
{
    return rows(m_store.getContactList(m_source, type, ContactLocalStorage::AnyLocation, 0, offset, limit));
}

int ContactCache::count(ContactList::Type book) const
{
    return m_store.getContactList(m_source, typeOf(book), locationOf(book), 0, 0, 0).size();
}

QVector<StoredContact> ContactCache::search(const QString& text, uint limit) const
{
    return rows(m_store.quickSearch(text, limit, m_source, 0).keys());
}

std::optional<StoredContact> ContactCache::find(quint32 id) const
{
    StoredContact unit;
    quint32 source = 0;
    quint32 timestamp = 0;
    unit.id = id;
    if (!m_store.getContactInfo(id, source, unit.type, unit.location, unit.uid, timestamp, unit.name,
                                unit.description, unit.phone, unit.fax, unit.email, unit.organization) ||
        source != m_source)
        return std::nullopt;
    return unit;
}

quint32 ContactCache::idOf(ContactList::Type book, const QString& uid) const
{
    return m_store.getContact(m_source, typeOf(book), locationOf(book), uid);
}

QVector<StoredContact> ContactCache::members(quint32 group) const
{
    return rows(m_store.getContactList(m_source, ContactLocalStorage::AnyType,
                                       ContactLocalStorage::AnyLocation, group, 0, 0));
}

int ContactCache::memberCount(quint32 group) const
{
    return m_store
        .getContactList(m_source, ContactLocalStorage::AnyType, ContactLocalStorage::AnyLocation, group, 0, 0)
        .size();
}

std::optional<StoredContact> ContactCache::resolve(const QString& text, int* status, QString* error) const
{
    bool isNumber = false;
    const quint32 id = text.toUInt(&isNumber);
    if (isNumber) {
        if (const auto unit = find(id))
            return unit;
    }
    const QVector<StoredContact> similar = text.isEmpty() ? QVector<StoredContact>() : search(text);
    QVector<StoredContact> same;
    std::copy_if(
        similar.cbegin(), similar.cend(), std::back_inserter(same),
        [&text](const StoredContact& unit) { return unit.name.compare(text, Qt::CaseInsensitive) == 0; });
    if (same.size() == 1)
        return same.first();
    if (same.size() > 1) {
        *status = ExitStatus::Usage;
        *error = Text::tr("\"%1\" is the name of several; choose one by its ID: %2.").arg(text, lines(same));
    } else {
        *status = ExitStatus::NothingFound;
        *error = Text::tr("No contact or group is called \"%1\", nor has that ID. %2")
                     .arg(text, similar.isEmpty() ? Text::tr("\"qdfax contacts sync\" fetches what is new.")
                                                  : Text::tr("Similar: %1.").arg(lines(similar)));
    }
    return std::nullopt;
}

void ContactCache::expand(const StoredContact& unit, Recipients& recipients) const
{
    if (recipients.seen.contains(unit.id))
        return;
    recipients.seen.insert(unit.id);
    if (unit.isGroup()) {
        const QVector<StoredContact> inside = members(unit.id);
        for (const StoredContact& member : inside)
            expand(member, recipients);
    } else if (unit.fax.trimmed().isEmpty()) {
        recipients.withoutFax.append(unit.name);
    } else {
        recipients.contacts.append(unit);
    }
}

// --- Books

QStringList bookWords()
{
    return {QStringLiteral("personal"), QStringLiteral("personal-groups"), QStringLiteral("global"),
            QStringLiteral("global-groups")};
}

QString bookText(ContactList::Type book)
{
    return QStringList{Text::tr("personal contacts"), Text::tr("personal groups"),
                       Text::tr("global contacts"), Text::tr("global groups")}
        .value(book - ContactList::PersonalContacts);
}

QCommandLineOption bookOption(const QString& description, const QStringList& words)
{
    return {QStringLiteral("book"), description, words.join(QLatin1Char('|'))};
}

std::optional<ContactList::Type> readBook(const Invocation& call, ContactList::Type missing)
{
    if (!call.isSet("book"))
        return missing;
    QString error;
    const auto index = parseChoice(call.value("book"), bookWords(), &error);
    if (!index) {
        call.failOption("book", error);
        return std::nullopt;
    }
    return ContactList::Type(ContactList::PersonalContacts + *index);
}

// --- Showing

QJsonObject toJson(const StoredContact& unit)
{
    QJsonObject object = unit.isGroup() ? QJsonObject{{QStringLiteral("name"), unit.name},
                                                      {QStringLiteral("description"), unit.description}}
                                        : toJson(unit.contact());
    object.insert(QStringLiteral("id"), qint64(unit.id));
    object.insert(QStringLiteral("book"), bookWord(unit.book()));
    object.insert(QStringLiteral("objectId"), unit.uid);
    return object;
}

Table contactTable(const QVector<StoredContact>& units)
{
    Table table({{Text::tr("ID"), Table::Right},
                 {Text::tr("NAME"), Table::Left, 12},
                 {Text::tr("ORGANIZATION"), Table::Left, 12, 2},
                 {Text::tr("FAX"), Table::Left, 0, 1},
                 {Text::tr("PHONE"), Table::Left, 0, 3},
                 {Text::tr("E-MAIL"), Table::Left, 12, 4},
                 {Text::tr("BOOK"), Table::Left, 0, 5}});
    for (const StoredContact& unit : units) {
        table.addRow({QString::number(unit.id), unit.name, unit.organization, unit.fax, unit.phone,
                      unit.email, bookWord(unit.book())});
    }
    return table;
}
