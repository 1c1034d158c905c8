#include "command.h"

#include "contactsession.h"
#include "parsing.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "text.h"

#include <QJsonArray>

#include <algorithm>

namespace {

struct Field
{
    const char* option;
    void (Contact::*set)(const QString&);
};

const Field contactFields[] = {{"organization", &Contact::setOrganization},
                               {"phone", &Contact::setPhone},
                               {"fax", &Contact::setFax},
                               {"email", &Contact::setEmail}};
const char* const groupOptions[] = {"description", "member", "remove-member"};

QList<QCommandLineOption> fieldOptions()
{
    return {{QStringLiteral("fax"), Text::tr("Fax number."), QStringLiteral("NUMBER")},
            {QStringLiteral("phone"), Text::tr("Phone number."), QStringLiteral("NUMBER")},
            {QStringLiteral("email"), Text::tr("E-mail address."), QStringLiteral("ADDRESS")},
            {QStringLiteral("organization"), Text::tr("Organization."), QStringLiteral("TEXT")},
            {QStringLiteral("description"), Text::tr("Of a group: a description."), QStringLiteral("TEXT")},
            {QStringLiteral("member"), Text::tr("Of a group: add this contact. May be given several times."),
             QStringLiteral("ID|NAME")}};
}

/// Checks the texts, and that no option is given that does not apply to a contact, or to a group.
int checkOptions(const Invocation& call, const QString& name, bool isGroup)
{
    QString error;
    if (!checkText(name, false, &error))
        return call.failUsage(Text::tr("The name %1.").arg(error));
    const auto isForeign = [&call](const char* option) {
        return call.command().hasOption(QLatin1String(option)) && call.isSet(option);
    };
    for (const Field& field : contactFields) {
        if (!checkText(call.value(field.option), false, &error))
            return call.failOption(field.option, error);
        if (isGroup && call.isSet(field.option))
            return call.failOption(field.option, Text::tr("is nothing that a group has"));
    }
    for (const char* option : groupOptions) {
        if (!isGroup && isForeign(option))
            return call.failOption(option, Text::tr("is nothing that a contact has"));
    }
    if (!checkText(call.value("description"), false, &error))
        return call.failOption("description", error);
    return ExitStatus::Ok;
}

/// The contacts that an option names.
int readMembers(const Invocation& call, const char* option, const ContactCache& cache,
                QVector<StoredContact>* members)
{
    const QStringList texts = call.values(option);
    for (const QString& text : texts) {
        int status = ExitStatus::Ok;
        QString error;
        const auto member = cache.resolve(text, &status, &error);
        if (!member)
            return call.fail(status, QStringLiteral("--%1: %2").arg(QLatin1String(option), error));
        if (member->isGroup())
            return call.failOption(option,
                                   Text::tr("takes contacts, and \"%1\" is a group").arg(member->name));
        members->append(*member);
    }
    return ExitStatus::Ok;
}

void printOne(const Invocation& call, const ContactCache& cache, quint32 id)
{
    const auto unit = cache.find(id);
    if (!unit) {
        call.note(Text::tr("The server has it, but the cache does not; \"qdfax contacts sync\" fetches "
                           "it."));
        if (call.isJson())
            call.json(QJsonObject());
        return;
    }
    if (call.isJson())
        call.json(toJson(*unit));
    else
        call.table(contactTable({*unit}));
}

int add(Invocation& call)
{
    const QString name = call.arguments().at(0);
    const auto book = readBook(call, ContactList::PersonalContacts);
    if (!book)
        return ExitStatus::Usage;
    const bool isGroup = *book == ContactList::PersonalGroups || *book == ContactList::GlobalGroups;
    if (name.trimmed().isEmpty())
        return call.failUsage(Text::tr("NAME is empty."));
    int status = checkOptions(call, name, isGroup);
    if (status != ExitStatus::Ok)
        return status;
    QVector<StoredContact> members;
    if (call.isSet("member")) {
        // before the server is asked
        const auto cache = ContactCache::open(call, &status);
        if (!cache)
            return status;
        status = readMembers(call, "member", *cache, &members);
        if (status != ExitStatus::Ok)
            return status;
    }

    ContactSession contacts(call);
    if (!contacts.open())
        return contacts.status();
    quint32 id = 0;
    bool ok = false;
    if (isGroup) {
        QuendraContactGroup group;
        group.setName(name);
        group.setDescription(call.value("description"));
        for (const StoredContact& member : qAsConst(members)) {
            if (const auto unit = contacts.unit(member.id))
                group.addContact(*unit);
        }
        ok = contacts.add(group, *book, &id);
    } else {
        QuendraContact contact;
        contact.setName(name);
        for (const Field& field : contactFields)
            (contact.*field.set)(call.value(field.option));
        ok = contacts.add(contact, *book, &id);
    }
    if (!ok)
        return contacts.status();
    printOne(call, contacts.cache(), id);
    return ExitStatus::Ok;
}

int modify(Invocation& call)
{
    int status = ExitStatus::Ok;
    StoredContact stored;
    QVector<StoredContact> members;
    QVector<StoredContact> removed;
    {
        const auto cache = ContactCache::open(call, &status);
        if (!cache)
            return status;
        QString error;
        const auto found = cache->resolve(call.arguments().at(0), &status, &error);
        if (!found)
            return call.fail(status, error);
        stored = *found;
        status = checkOptions(call, call.value("name"), stored.isGroup());
        if (status == ExitStatus::Ok)
            status = readMembers(call, "member", *cache, &members);
        if (status == ExitStatus::Ok)
            status = readMembers(call, "remove-member", *cache, &removed);
        if (status != ExitStatus::Ok)
            return status;
    }
    if (call.isSet("name") && call.value("name").trimmed().isEmpty())
        return call.failOption("name", Text::tr("takes a name, not an empty text"));
    const QList<QCommandLineOption> own = call.command().options;
    if (std::none_of(own.cbegin(), own.cend(), [&call](const QCommandLineOption& option) {
            return call.isSet(option.names().constFirst().toLatin1().constData());
        }))
        return call.failUsage(Text::tr("There is nothing to change: name what is to be new."));

    ContactSession contacts(call);
    if (!contacts.open())
        return contacts.status();
    const auto unit = contacts.unit(stored.id);
    if (!unit)
        return call.fail(ExitStatus::NothingFound, Text::tr("It is not in the cache any more."));
    if (auto* contact = dynamic_cast<QuendraContact*>(unit.data())) {
        if (call.isSet("name"))
            contact->setName(call.value("name"));
        for (const Field& field : contactFields) {
            if (call.isSet(field.option))
                (contact->*field.set)(call.value(field.option));
        }
    } else if (auto* group = dynamic_cast<QuendraContactGroup*>(unit.data())) {
        if (call.isSet("name"))
            group->setName(call.value("name"));
        if (call.isSet("description"))
            group->setDescription(call.value("description"));
        for (const StoredContact& member : qAsConst(members)) {
            const auto added = contacts.unit(member.id);
            if (added && !group->contacts().contains(*added))
                group->addContact(*added);
        }
        for (const StoredContact& member : qAsConst(removed)) {
            if (const auto gone = contacts.unit(member.id))
                group->contacts().removeContact(*gone);
        }
    }
    if (!contacts.modify(*unit, stored.book()))
        return contacts.status();
    printOne(call, contacts.cache(), stored.id);
    return ExitStatus::Ok;
}

int deleteUnits(Invocation& call)
{
    QVector<StoredContact> units;
    {
        int status = ExitStatus::Ok;
        const auto cache = ContactCache::open(call, &status);
        if (!cache)
            return status;
        for (const QString& text : call.arguments()) {
            QString error;
            const auto unit = cache->resolve(text, &status, &error);
            if (!unit)
                return call.fail(status, error + Text::tr(" Nothing was deleted."));
            const bool isThere =
                std::any_of(units.cbegin(), units.cend(),
                            [&unit](const StoredContact& other) { return other.id == unit->id; });
            if (!isThere)
                units.append(*unit);
        }
    }
    ContactSession contacts(call);
    if (!contacts.open())
        return contacts.status();
    QJsonArray deleted;
    int status = ExitStatus::Ok;
    for (const StoredContact& stored : qAsConst(units)) {
        const auto unit = contacts.unit(stored.id);
        if (!unit || !contacts.remove(*unit, stored.book())) {
            status = unit ? contacts.status() : int(ExitStatus::NothingFound);
            call.note(Text::tr("Not deleted: %1. %n of %2 were deleted before it.", "", deleted.size())
                          .arg(stored.line(), QString::number(units.size())));
            break;
        }
        deleted.append(toJson(stored));
        if (!call.isJson())
            call.line(Text::tr("Deleted %1.").arg(stored.line()));
    }
    if (call.isJson())
        call.json(deleted);
    return status;
}

} // namespace

QVector<Command> contactChangeCommands()
{
    Command addCommand;
    addCommand.name = QStringLiteral("contacts add");
    addCommand.arguments = QStringLiteral("NAME [--fax NUMBER]");
    addCommand.summary = Text::tr("Add a contact or a group to a book of the server");
    addCommand.description =
        Text::tr("Without --book it is your own book. With --book personal-groups or global-groups it "
                 "is a group.\nMembers have to be in the cache: see \"qdfax contacts sync\".");
    addCommand.examples = QStringList{
        QStringLiteral(
            "qdfax contacts add \"Mary Poe\" --fax \"+49 30 1234567\" --organization \"Poe, Inc.\""),
        QStringLiteral("qdfax contacts add Reception --fax 5551234 --book global"),
        QStringLiteral(
            "qdfax contacts add Friends --book personal-groups --member \"Mary Poe\" --member 17")};
    addCommand.options =
        QList<QCommandLineOption>{bookOption(Text::tr("The book to add it to (personal)."))} + fieldOptions();
    addCommand.leastArguments = addCommand.mostArguments = 1;
    addCommand.run = add;

    Command modifyCommand;
    modifyCommand.name = QStringLiteral("contacts modify");
    modifyCommand.arguments = QStringLiteral("ID|NAME [--fax NUMBER]");
    modifyCommand.summary = Text::tr("Change a contact or a group on the server");
    modifyCommand.description = Text::tr(
        "What is not named stays as the cache has it; an empty text removes a field. Synchronise first\n"
        "when others change the same book.");
    modifyCommand.examples =
        QStringList{QStringLiteral("qdfax contacts modify \"Mary Poe\" --fax 5554321 --phone \"\""),
                    QStringLiteral("qdfax contacts modify Friends --member 12 --remove-member \"Bob Roe\"")};
    modifyCommand.options =
        QList<QCommandLineOption>{{QStringLiteral("name"), Text::tr("A new name."), QStringLiteral("NAME")}} +
        fieldOptions() +
        QList<QCommandLineOption>{{QStringLiteral("remove-member"),
                                   Text::tr("Of a group: take this contact out of it. May be given "
                                            "several times."),
                                   QStringLiteral("ID|NAME")}};
    modifyCommand.leastArguments = modifyCommand.mostArguments = 1;
    modifyCommand.run = modify;

    Command deleteCommand;
    deleteCommand.name = QStringLiteral("contacts delete");
    deleteCommand.arguments = QStringLiteral("ID|NAME...");
    deleteCommand.summary = Text::tr("Delete contacts and groups on the server");
    deleteCommand.description = Text::tr(
        "The members of a group stay. All that is named has to be found before anything is deleted; the\n"
        "first refusal of the server ends it, and what was deleted until then is said.");
    deleteCommand.examples = QStringList{QStringLiteral("qdfax contacts delete 12 17"),
                                         QStringLiteral("qdfax contacts delete \"Mary Poe\"")};
    deleteCommand.leastArguments = 1;
    deleteCommand.mostArguments = -1;
    deleteCommand.run = deleteUnits;

    return {addCommand, modifyCommand, deleteCommand};
}
