#pragma once

// A client whose requests are answered by the test, in any order.

#include "contactworld.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "scriptedserver.h"
#include "shorthand.h"
#include "storefile.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"

/// A client of a server that never answers. Its tasks wait, and say what the test makes them say.
class SilentWorld
{
public:
    SilentWorld()
    {
        wire.setHangUp(ScriptedServer::HangUp::NoAnswer);
        server = world.faxes->addServer(wire.address(), false, s("alice"), QString());
        provider = server->contactProvider();
        world.watch(provider);
    }

    /// One step: a word and what it is about. False when no request of its kind is under way.
    ///
    /// A contact that is answered is UID or UID=NAME.
    ///
    /// "has UID@TIME ...": contacts of the store. "ask", "ask-all", "ask-groups": a synchronisation begins.
    /// "add UID", "remove UID": the user's. "list UID ...", "changes TIME UID ...", "all TIME UID ...",
    /// "groups TIME GROUP MEMBER ...", "fail": a reply, to the newest request, "all" to the oldest.
    bool play(const QString& step)
    {
        QStringList words = step.split(QLatin1Char(' '));
        const QString verb = words.takeFirst();
        const QuendraContact unit = contact(words.value(0)); // of the user's
        if (verb == s("has")) {
            for (const QString& row : qAsConst(words)) {
                storage->addContact(provider->sourceId(), ContactLocalStorage::TypeContact,
                                    ContactLocalStorage::LocationPersonal,
                                    row.section(QLatin1Char('@'), 0, 0),
                                    row.section(QLatin1Char('@'), 1).toUInt(), row, {}, {}, {}, {}, {});
            }
        } else if (verb.startsWith(s("ask"))) {
            const bool isGroups = verb == s("ask-groups");
            provider->syncContacts(isGroups ? ContactList::PersonalGroups : book, verb != s("ask"));
        } else if (verb == s("add")) {
            provider->addContact(unit, book);
            return end<TaskAddContact>([&](auto* task) { task->doneAddContact(unit, book); });
        } else if (verb == s("remove")) {
            provider->deleteContact(unit, book);
            return end<TaskDeleteContact>([&](auto* task) { task->doneDeleteContact(unit, book); });
        } else if (verb == s("list")) {
            storage->scopeBegin(); // the deleter has the store after all slots
            const bool done =
                end<TaskGetContactsOids>([&](auto* task) { task->doneGetContactsOids(words, book); });
            return storage->scopeEnd() && done;
        } else if (verb == s("fail")) {
            return end<TaskGetContacts>([](auto* task) { task->errorExecute(Task::Error); });
        } else {
            const unsigned int time = words.takeFirst().toUInt();
            const ContactList units = verb == s("groups") ? group(words) : contacts(words);
            return end<TaskGetContacts>(
                [&](auto* task) {
                    verb == s("changes") ? task->doneGetContactsAfterLastTimeSync(units, time)
                                         : task->doneGetContacts(units, time);
                },
                verb == s("all"));
        }
        return true;
    }

    /// The contacts in the order of their ids, each with its timestamp and the name that an answer gave it,
    /// and the memberships.
    static QString content()
    {
        return OtherProgram(
                   s("SELECT uid || '@' || timestamp || CASE WHEN name LIKE '=%' THEN name ELSE '' END "
                     "FROM contacts WHERE type=1 UNION ALL SELECT g.uid || '>' || c.uid FROM groups JOIN "
                     "contacts g ON g.id=contactgroup "
                     "JOIN contacts c ON c.id=contact"))
            .rows()
            .join(QLatin1Char(' '));
    }

    ScriptedServer wire;
    ContactWorld world;
    QPointer<FaxServer> server;
    QPointer<ContactProvider> provider;
    QPointer<ContactLocalStorage> storage{world.contacts->storage()};

private:
    static constexpr auto book = ContactList::PersonalContacts;

    static QuendraContact contact(const QString& text)
    {
        QuendraContact contact;
        const QString uid = text.section(QLatin1Char('='), 0, 0);
        contact.setUrl(QUrl(s("http://fax/qdws/v1/contacts/alice/") + uid));
        contact.setName(text.mid(uid.size()));
        return contact;
    }

    static ContactList contacts(const QStringList& uids)
    {
        ContactList list;
        list.setContactsType(book);
        for (const QString& uid : uids)
            list.addContact(contact(uid));
        return list;
    }

    static ContactList group(const QStringList& uids)
    {
        QuendraContactGroup group;
        group.setUrl(QUrl(s("http://fax/qdws/v1/contact_groups/alice/") + uids.first()));
        group.contacts() = contacts(uids.mid(1));
        ContactList list;
        list.setContactsType(ContactList::PersonalGroups);
        list.addContact(group);
        return list;
    }

    /// Ends the newest task of a class, or the oldest.
    template <typename T, typename Say>
    bool end(Say say, bool isOldest = false)
    {
        const auto tasks = server->findChildren<T*>();
        if (tasks.isEmpty())
            return false;
        T* const task = isOldest ? tasks.first() : tasks.last();
        say(task);
        delete task;
        return true;
    }
};
