#pragma once

// A contact manager and a fax manager connected to a simulated server, and the contents of both sides.

#include "contactlocalstorage.h"
#include "contactmanager.h"
#include "contactprovider.h"
#include "contactrow_p.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "simserver.h"
#include "testkit.h"

/// One entry of a book, as text for comparison: fields and, for a group, the uids of its members in order.
using BookContent = QMap<QString, QString>;

/// Counts the signals of a contact manager and its providers.
struct SyncCounts
{
    int starts{0};
    int stops{0};
    int providerStarts{0};
    int providerStops{0};
    int ends{0}; ///< syncedContacts() and errorSyncedContacts().
    int errors{0};

    bool isPaired() const
    {
        return starts == stops && providerStarts == providerStops && ends == providerStops;
    }
};

/// The client's side. Destroying it destroys the managers in the right order.
class ContactWorld
{
public:
    ContactWorld()
        : contacts(new ContactManager)
        , faxes(new FaxManager(contacts.data()))
    {
        QObject::connect(contacts, &ContactManager::onSyncStart, [this] { ++counts->starts; });
        QObject::connect(contacts, &ContactManager::onSyncStop, [this] { ++counts->stops; });
    }
    ~ContactWorld()
    {
        delete faxes;
        delete contacts;
    }

    QPointer<FaxServer> add(const SimServer& sim, const QString& login = QStringLiteral("alice"))
    {
        const QPointer<FaxServer> server =
            faxes->addServer(sim.address(), sim.options().tls, login, QStringLiteral("secret"));
        watch(server->contactProvider());
        return server;
    }

    void watch(ContactProvider* provider)
    {
        const auto tally = counts;
        QObject::connect(provider, &ContactProvider::onSyncStart, [tally] { ++tally->providerStarts; });
        QObject::connect(provider, &ContactProvider::onSyncStop, [tally] { ++tally->providerStops; });
        QObject::connect(provider, &ContactProvider::syncedContacts, [tally] { ++tally->ends; });
        QObject::connect(provider, &ContactProvider::errorSyncedContacts, [tally] {
            ++tally->ends;
            ++tally->errors;
        });
    }

    /// Waits for all synchronisations to end. False after a minute.
    bool settle()
    {
        return spinUntil([this] { return !contacts->isSync(); }, 60);
    }

    /// Logs in, and waits for the synchronisation that follows it.
    bool settleLogin(FaxServer* server)
    {
        bool isIn = false;
        const QObject context;
        QObject::connect(server, &FaxServer::changedFaxUser, &context, [&isIn] { isIn = true; });
        return spinUntil([&isIn] { return isIn; }, 60) && settle();
    }

    bool sync(ContactProvider* provider, bool full)
    {
        const QList<ContactList::Type> books = provider->contactsTypeList();
        for (const ContactList::Type book : books)
            provider->syncContacts(book, full);
        return settle();
    }

    BookContent stored(unsigned int source, bool global, bool groups) const
    {
        const auto storage = contacts->storage();
        const auto location =
            global ? ContactLocalStorage::LocationGlobal : ContactLocalStorage::LocationPersonal;
        const auto type = groups ? ContactLocalStorage::TypeGroup : ContactLocalStorage::TypeContact;
        BookContent content;
        const auto ids = storage->getContactList(source, type, location, 0, 0, 0);
        for (const unsigned int id : ids) {
            const ContactRow row = rowOf(id);
            QStringList fields{row.name, row.description, row.phone, row.fax, row.email, row.organization};
            if (groups) {
                QStringList members;
                const auto memberIds =
                    storage->getContactList(source, ContactLocalStorage::ContactType(0),
                                            ContactLocalStorage::ContactLocation(0), id, 0, 0);
                for (const unsigned int member : memberIds)
                    members << rowOf(member).uid;
                members.sort();
                fields << members;
            }
            content.insert(row.uid, fields.join(QLatin1Char('|')));
        }
        return content;
    }

    static BookContent onServer(const SimServer& sim, const QString& login, bool global, bool groups)
    {
        BookContent content;
        const auto entries = sim.book(global ? SimBooks::global() : login, groups);
        for (const SimEntry& entry : entries) {
            const SimPerson person = groups ? SimPerson() : entry.person;
            QStringList fields{entry.person.name, entry.description, person.phone,
                               person.fax,        person.email,      person.organization};
            if (groups) {
                QStringList members;
                for (const QString& member : entry.members)
                    members << member.section(QLatin1Char('/'), -1);
                members.removeDuplicates();
                members.sort();
                fields << members;
            }
            content.insert(entry.uid, fields.join(QLatin1Char('|')));
        }
        return content;
    }

    QPointer<ContactManager> contacts;
    QPointer<FaxManager> faxes;
    QSharedPointer<SyncCounts> counts{QSharedPointer<SyncCounts>::create()};

private:
    ContactRow rowOf(unsigned int id) const
    {
        return ContactRow::read(contacts->storage(), id).value_or(ContactRow());
    }
};

/// A simulated server with filled books and a client that has synchronised them.
struct SynchronisedWorld
{
    SimServer sim;
    ContactWorld world;
    QPointer<FaxServer> server;
    QPointer<ContactProvider> provider;
    bool isReady{false};

    SynchronisedWorld(int contacts, int groups, quint32 seed = 1)
        : sim(books(contacts, groups, seed))
    {
        if (!sim.start())
            return;
        server = world.add(sim);
        provider = server->contactProvider();
        isReady = world.settleLogin(server);
    }

    static SimOptions books(int contacts, int groups, quint32 seed = 1)
    {
        SimOptions options;
        options.contacts = contacts;
        options.groups = groups;
        options.seed = seed;
        return options;
    }
};
