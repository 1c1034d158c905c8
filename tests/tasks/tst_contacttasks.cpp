// Reading and changing contact books: the requests, the documents, and how group members are waited for.

#include "contactgroup.h"
#include "outlookcontact.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "shorthand.h"
#include "taskkit.h"
#include "tasks/operationtable_p.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

namespace {

QuendraContact person(const QString& path)
{
    return personAt(path.isEmpty() ? path : s("http://elsewhere") + path);
}

/// A group with members of these numbers.
QByteArray groupOf(const QByteArray& name, const char* numbers)
{
    QByteArray members;
    for (const char* number = numbers; *number; ++number)
        members += QByteArray("<contact>https://elsewhere:1/qdws/v1/contacts/anna/") + *number + "</contact>";
    return "<contact_group><name>" + name + "</name><description/>" + members + "</contact_group>";
}

TaskGetContacts* reading(TaskWorld& world, ContactList::Type book)
{
    auto* task = static_cast<TaskGetContacts*>(world.server.addTask(Task::GetContacts));
    task->setContactsType(book);
    return task;
}

ContactList readBook(TaskWorld& world, ContactList::Type book)
{
    return resultOf(reading(world, book), &TaskGetContacts::doneGetContacts);
}

QList<QString> readOids(TaskWorld& world, ContactList::Type book)
{
    auto* task = static_cast<TaskGetContactsOids*>(world.server.addTask(Task::GetContactsOids));
    task->setContactsType(book);
    return resultOf(task, &TaskGetContactsOids::doneGetContactsOids);
}

/// The usual idiom of applications.
void releaseReplies(TaskWorld& world)
{
    auto* const nam = &world.manager.nam();
    QObject::connect(nam, &QNetworkAccessManager::finished, nam,
                     [](QNetworkReply* reply) { reply->deleteLater(); });
}

} // namespace

class TestContactTasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void books_data()
    {
        const Rows<ContactList::Type, QByteArray, QByteArray> row; // kind and owner of a book
        row("personal contacts", ContactList::PersonalContacts, "contact", "/anna");
        row("personal groups", ContactList::PersonalGroups, "contact_group", "/anna");
        row("global contacts", ContactList::GlobalContacts, "contact", "/global_contact_list");
        row("global groups", ContactList::GlobalGroups, "contact_group", "/global_contact_list");
        row("none", ContactList::Type(0), {}, {});
    }
    void books()
    {
        const auto [book, kind, owner] = cells<ContactList::Type, QByteArray, QByteArray>();
        const QByteArray contacts = book ? "/qdws/v1/" + kind + 's' + owner : "/";
        const QByteArray oids = book ? "/qdws/v1/" + kind + "_oids" + owner : "/";
        TaskWorld world(okReply("<query_time>77</query_time><oids>1</oids>"));

        auto* all = reading(world, book);
        unsigned int stamp = 0;
        connect(all, &TaskGetContacts::doneGetContacts, this,
                [&stamp](const ContactList&, unsigned int time) { stamp = time; });
        QCOMPARE(Outcome(all).run(), Task::Ok);
        QCOMPARE(stamp, 77U);
        QCOMPARE(world.wire.requests().last().target, contacts);

        auto* since = reading(world, book);
        since->setContactsLastTimeSync(1234);
        Outcome changed(since, SIGNAL(doneGetContactsAfterLastTimeSync(ContactList, unsigned int)));
        world.server.slotError(Task::Error);
        QCOMPARE(changed.run(), Task::Ok);
        QCOMPARE(world.server.lastStatus(), Task::Ok); // the server's bookkeeping counts this outcome too
        QCOMPARE(world.wire.requests().last().target, contacts + "?query_time=1234");

        QCOMPARE(readOids(world, book), book ? QList<QString>{s("1")} : QList<QString>());
        QCOMPARE(world.wire.requests().last().target, oids);
    }

    void changes_data()
    {
        const Rows<Task::Type, bool, int, QByteArray, QByteArray> row;
        const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
        const QByteArray person = "<name>MaryPoe &amp; &lt;Co></name><fax_number>555</fax_number></contact>";
        const QByteArray team = "<name>Team</name><description>All</description>"
                                "<contact>http://elsewhere/qdws/v1/contacts/anna/7</contact></contact_group>";
        const QByteArray added = declaration + "<contact>" + person;
        const QByteArray addedTeam = declaration + "<contact_group>" + team;
        const QByteArray modified =
            declaration + "<contact><contact_url>http://elsewhere/qdws/v1/contacts/an na/7</contact_url>" +
            person;

        const auto add = Task::AddContact;
        row("add personal", add, false, 1, "POST /qdws/v1/contacts/anna", added);
        row("add global", add, false, 3, "POST /qdws/v1/contacts/global_contact_list", added);
        row("add group", add, true, 2, "POST /qdws/v1/contact_groups/anna", addedTeam);
        row("add global group", add, true, 4, "POST /qdws/v1/contact_groups/global_contact_list", addedTeam);
        row("add contact to groups", add, false, 2, "POST /", added);
        row("modify", Task::ModifyContact, false, 1, "PUT /qdws/v1/contacts/an%20na/7", modified);
        row("delete", Task::DeleteContact, false, 1, "DELETE /qdws/v1/contacts/an%20na/7", {});
    }
    void changes()
    {
        const auto [type, isGroup, book, request, body] =
            cells<Task::Type, bool, int, QByteArray, QByteArray>();
        TaskWorld world(okReply(""));
        auto* task = static_cast<TaskChangeContact*>(world.server.addTask(type));
        QuendraContactGroup team;
        team.setName(s("Team"));
        team.setDescription(s("All"));
        team.addContact(person(s("/qdws/v1/contacts/anna/7")));
        if (isGroup)
            task->setContact(team, ContactList::Type(book));
        else
            task->setContact(person(type == Task::AddContact ? QString() : s("/qdws/v1/contacts/an%20na/7")),
                             ContactList::Type(book));
        task->execute();
        QCOMPARE(Outcome(task).run(), Task::InvalidReply); // sent once, and nothing is confirmed
        QCOMPARE(world.wire.requests().size(), 1);
        const WireRequest& sent = world.wire.requests().first();
        QCOMPARE(QByteArray(sent.method + ' ' + sent.target), request);
        QCOMPARE(sent.body, body);
    }

    void changeEnds()
    {
        const QByteArray entry = memberXml(9);
        const std::pair<Task::Type, QByteArray> invalid[] = {
            {Task::AddContact, "<message>created</message>" + entry},
            {Task::AddContact, "<message>Created</message>"},
            {Task::AddContact, entry},
            {Task::ModifyContact, "<message>modified</message>"},
            {Task::DeleteContact, "<message>deleted</message>"},
            {Task::DeleteContact, "<x/>"}};
        for (const auto& [type, content] : invalid) {
            TaskWorld world(okReply(content));
            TestLog log;
            QCOMPARE(world.run(operation(type)), Task::InvalidReply);
            const QByteArray name = "Task" + operation(type).name;
            const char* const mark = type == Task::ModifyContact ? "" : "!";
            QCOMPARE(log.messages(s("ERROR")),
                     QStringList{s(name.toLower() + ".cpp " + name + ": invalid reply" + mark)});
        }

        TaskWorld world(okReply("<message>Created</message>" + entry));
        auto* add = static_cast<TaskAddContact*>(operation(Task::AddContact).make(world.server));
        QUrl added;
        connect(add, &TaskAddContact::doneAddContact, this, [&added](const ContactUnit& unit) {
            added = dynamic_cast<const QuendraContact&>(unit).url();
        });
        QCOMPARE(Outcome(add).run(), Task::Ok);
        QCOMPARE(added.path(), s("/qdws/v1/contacts/anna/9"));
    }

    void nothingToChange()
    {
        TaskWorld world;
        OutlookContact foreign;
        const QuendraContact own = person(s("/qdws/v1/contacts/anna/7"));
        for (const Task::Type type : {Task::AddContact, Task::ModifyContact, Task::DeleteContact}) {
            for (int way = 0; way < 3; ++way) {
                auto* task = static_cast<TaskChangeContact*>(world.server.addTask(type));
                Outcome outcome(task);
                if (way == 1)
                    task->setContact(own, ContactList::OutlookContacts); // ignored
                else if (way == 2)
                    task->setContact(foreign, ContactList::PersonalContacts);
                task->execute();
                QCOMPARE(outcome.ends, QList<Task::Status>{Task::Error});
            }
        }

        // an entry that cannot be written is a separate error, logged after the request's line
        struct Unwritable : QuendraContact
        {
            bool writeFax(QDomDocument&, QDomElement&, int) const override { return false; }
            ContactUnit* copy() const override { return new Unwritable(*this); }
        };
        for (const Task::Type type : {Task::AddContact, Task::ModifyContact}) {
            TestLog log;
            auto* task = static_cast<TaskChangeContact*>(world.server.addTask(type));
            task->setContact(Unwritable(), ContactList::PersonalContacts);
            Outcome outcome(task);
            task->execute();
            QCOMPARE(outcome.ends, QList<Task::Status>{Task::Error});
            QCOMPARE(log.messages(s("DEBUG")).size(), 1);
        }
        QVERIFY(world.wire.requests().isEmpty());
    }

    void readBooks()
    {
        TaskWorld world(okReply(memberXml(3) + "<x>" + memberXml(4) + "</x>" + memberXml(5)));
        const ContactList people = readBook(world, ContactList::GlobalContacts);
        QCOMPARE(people.contactsType(), ContactList::GlobalContacts);
        QCOMPARE(people.contacts().size(), 2);
        QCOMPARE(dynamic_cast<const QuendraContact&>(*people.contacts().at(1)).name(), s("M5"));

        // unreadable groups are left out; without members nothing more is requested
        world.wire.setAnswer(okReply("<contact_group><name>A</name></contact_group>" + groupOf("B", "")));
        QCOMPARE(readBook(world, ContactList::PersonalGroups).contacts().size(), 1);
        QCOMPARE(world.wire.requests().size(), 2);
    }

    void oids()
    {
        const std::pair<const char*, const char*> lists[] = {// with a bar behind each
                                                             {"<oids>12, 15,,20 \n</oids>", "12|15||20|"},
                                                             {"<oids/>", "|"},
                                                             {"<x/>", ""}};
        for (const auto& [content, expected] : lists) {
            TaskWorld world{okReply(content)};
            QString oids;
            for (const QString& oid : readOids(world, ContactList::PersonalContacts))
                oids += oid + QLatin1Char('|');
            QCOMPARE(oids, s(expected));
        }
    }

    void members()
    {
        TaskWorld world;
        releaseReplies(world);
        world.wire.setAnswer([](const WireRequest& request) {
            if (request.target.contains("groups"))
                return okReply(groupOf("A", "12") + groupOf("B", "3"));
            if (request.target.endsWith("/2"))
                return okReply("<message>nobody</message>"); // counts as finished nevertheless
            return okReply(memberXml(request.target.right(1).toInt()));
        });
        const ContactList groups = readBook(world, ContactList::GlobalGroups);
        QCOMPARE(groups.contacts().size(), 2);
        const auto& first = dynamic_cast<const QuendraContactGroup&>(*groups.contacts().at(0));
        const auto& second = dynamic_cast<const QuendraContactGroup&>(*groups.contacts().at(1));
        QCOMPARE(first.contacts().contacts().size(), 1);
        QCOMPARE(dynamic_cast<const QuendraContact&>(*second.contacts().contacts().at(0)).name(), s("M3"));
        // members are fetched from the configured server, whatever host the group names
        QCOMPARE(world.wire.requests().size(), 4);
        QCOMPARE(world.wire.requests().last().header("Authorization"),
                 "Basic " + QByteArray("anna:se:cret").toBase64());
    }

    void memberFails()
    {
        for (const QByteArray& bad : {ScriptedServer::reply("", "404 Gone"), ScriptedServer::reply("<a")}) {
            // one of three fails; the book fails once, after the last
            TaskWorld world;
            releaseReplies(world);
            world.wire.setAnswer([&bad](const WireRequest& request) {
                if (request.target.contains("groups"))
                    return okReply(groupOf("A", "123"));
                return request.target.endsWith("/1") ? bad : okReply(memberXml(2));
            });
            // the last reply decides, and replies come in any order
            const Task::Status status = world.run(operation("GetContacts of groups"));
            QVERIFY(status == Task::Error || (status == Task::InvalidReply && bad.endsWith("<a")));
            QCOMPARE(world.wire.requests().size(), 4);
        }
    }
};

QTEST_GUILESS_MAIN(TestContactTasks)
#include "tst_contacttasks.moc"
