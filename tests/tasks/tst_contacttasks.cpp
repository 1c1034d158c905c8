// Reading and changing contact books: the requests, the documents, and how group members are waited for.

#include "contactgroup.h"
#include "operations.h"
#include "outlookcontact.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "shorthand.h"
#include "taskkit.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskmodifycontact.h"
#include "testkit.h"

#include <QTest>

namespace {

QuendraContact person(const QString& path)
{
    return personAt(path.isEmpty() ? path : s("http://elsewhere") + path);
}

QuendraContactGroup team()
{
    QuendraContactGroup group;
    group.setName(s("Team"));
    group.setDescription(s("All"));
    group.addContact(person(s("/qdws/v1/contacts/anna/7")));
    return group;
}

QByteArray memberUrl(int number)
{
    return "<contact>https://elsewhere:1/qdws/v1/contacts/anna/" + QByteArray::number(number) + "</contact>";
}

QByteArray doneSignal(Task::Type type)
{
    return operation(type).done;
}

} // namespace

class TestContactTasks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void books_data()
    {
        const Rows<int, QByteArray, QByteArray> row("book", "contacts", "oids");
        row("personal contacts", 1, "/qdws/v1/contacts/anna", "/qdws/v1/contact_oids/anna");
        row("personal groups", 2, "/qdws/v1/contact_groups/anna", "/qdws/v1/contact_group_oids/anna");
        row("global contacts", 3, "/qdws/v1/contacts/global_contact_list",
            "/qdws/v1/contact_oids/global_contact_list");
        row("global groups", 4, "/qdws/v1/contact_groups/global_contact_list",
            "/qdws/v1/contact_group_oids/global_contact_list");
        row("none", 0, "/", "/");
    }
    void books()
    {
        QFETCH(int, book);
        QFETCH(QByteArray, contacts);
        QFETCH(QByteArray, oids);

        TaskWorld world(okReply("<query_time>77</query_time><oids>1</oids>"));

        auto* all = static_cast<TaskGetContacts*>(world.server.addTask(Task::GetContacts));
        all->setContactsType(ContactList::Type(book));
        unsigned int stamp = 0;
        connect(all, &TaskGetContacts::doneGetContacts, this,
                [&stamp](const ContactList&, unsigned int time) { stamp = time; });
        all->execute();
        QTRY_COMPARE(stamp, 77U);
        QCOMPARE(world.wire.requests().last().target, contacts);

        auto* since = static_cast<TaskGetContacts*>(world.server.addTask(Task::GetContacts));
        since->setContactsType(ContactList::Type(book));
        since->setContactsLastTimeSync(1234);
        Outcome changed(since, SIGNAL(doneGetContactsAfterLastTimeSync(ContactList, unsigned int)));
        world.server.slotError(Task::Error);
        since->execute();
        QTRY_COMPARE(changed.done, 1);
        QCOMPARE(world.server.lastStatus(), Task::Ok); // this outcome is one for the bookkeeping, too
        QCOMPARE(world.wire.requests().last().target, contacts + "?query_time=1234");

        auto* ids = static_cast<TaskGetContactsOids*>(world.server.addTask(Task::GetContactsOids));
        ids->setContactsType(ContactList::Type(book));
        QList<QString> got{s("not yet")};
        connect(ids, &TaskGetContactsOids::doneGetContactsOids, this,
                [&got](const QList<QString>& list, ContactList::Type) { got = list; });
        ids->execute();
        QTRY_COMPARE(got, book ? QList<QString>{s("1")} : QList<QString>());
        QCOMPARE(world.wire.requests().last().target, oids);
    }

    void changes_data()
    {
        const Rows<int, bool, int, QByteArray, QByteArray, QByteArray> row("type", "isGroup", "book",
                                                                           "method", "target", "body");
        const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
        const QByteArray person = "<name>MaryPoe &amp; &lt;Co></name><fax_number>555</fax_number></contact>";
        const QByteArray team = "<name>Team</name><description>All</description>"
                                "<contact>http://elsewhere/qdws/v1/contacts/anna/7</contact></contact_group>";
        const QByteArray added = declaration + "<contact>" + person;
        const QByteArray addedTeam = declaration + "<contact_group>" + team;
        const QByteArray modified =
            declaration + "<contact><contact_url>http://elsewhere/qdws/v1/contacts/an na/7</contact_url>" +
            person;

        const int add = Task::AddContact;
        row("add personal", add, false, 1, "POST", "/qdws/v1/contacts/anna", added);
        row("add global", add, false, 3, "POST", "/qdws/v1/contacts/global_contact_list", added);
        row("add group", add, true, 2, "POST", "/qdws/v1/contact_groups/anna", addedTeam);
        row("add global group", add, true, 4, "POST", "/qdws/v1/contact_groups/global_contact_list",
            addedTeam);
        row("add contact to groups", add, false, 2, "POST", "/", added);
        const char* const one = "/qdws/v1/contacts/an%20na/7";
        row("modify", Task::ModifyContact, false, 1, "PUT", one, modified);
        row("delete", Task::DeleteContact, false, 1, "DELETE", one, QByteArray());
    }
    void changes()
    {
        QFETCH(int, type);
        QFETCH(bool, isGroup);
        QFETCH(int, book);
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);

        TaskWorld world(okReply(""));
        auto* task = static_cast<TaskChangeContact*>(world.server.addTask(Task::Type(type)));
        if (isGroup)
            task->setContact(team(), ContactList::Type(book));
        else
            task->setContact(person(type == Task::AddContact ? QString() : s("/qdws/v1/contacts/an%20na/7")),
                             ContactList::Type(book));
        Outcome outcome(task, doneSignal(Task::Type(type)));
        task->execute();
        task->execute();
        QVERIFY(spinUntil([&] { return !outcome.task; }));
        QCOMPARE(outcome.errors, QList<Task::Status>{Task::InvalidReply}); // confirmed nothing
        QCOMPARE(world.wire.requests().size(), 1);
        QCOMPARE(world.wire.requests().first().method, method);
        QCOMPARE(world.wire.requests().first().target, target);
        QCOMPARE(world.wire.requests().first().body, body);
    }

    void changeEnds_data()
    {
        const Rows<int, QByteArray, int, QString> addRow("type", "answer", "status", "error"); // 0: done
        const struct
        {
            Task::Type type;
            const char* name;
            QByteArray good;
            const char* invalid;
        } tasks[] = {
            {Task::AddContact, "taskaddcontact.cpp TaskAddContact: ",
             "<message>Created</message>" + memberXml(9), "invalid reply!"},
            {Task::ModifyContact, "taskmodifycontact.cpp TaskModifyContact: ", "<message>Modified</message>",
             "invalid reply"},
            {Task::DeleteContact, "taskdeletecontact.cpp TaskDeleteContact: ", "<message>Deleted</message>",
             "invalid reply!"},
        };
        for (const auto& task : tasks) {
            const auto row = [&](const char* fault, const QByteArray& answer, int status,
                                 const QString& error) {
                addRow((QByteArray(task.name) + fault).constData(), task.type, answer, status,
                       error.isEmpty() ? error : s(task.name) + error);
            };
            const QString invalid = QLatin1String(task.invalid);
            row("good", okReply(task.good), 0, {});
            row("message in lower case", okReply(task.good.toLower()), Task::InvalidReply, invalid);
            row("no message", okReply("<x/>"), Task::InvalidReply, invalid);
        }
        addRow("created without an entry", Task::AddContact, okReply("<message>Created</message>"),
               Task::InvalidReply, "taskaddcontact.cpp TaskAddContact: invalid reply!");
    }
    void changeEnds()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, answer);
        QFETCH(int, status);
        QFETCH(QString, error);

        TaskWorld world(answer);
        TestLog log;
        auto* task = static_cast<TaskChangeContact*>(world.server.addTask(Task::Type(type)));
        task->setContact(person(s("/qdws/v1/contacts/anna/7")), ContactList::PersonalContacts);
        QUrl added;
        if (auto* add = qobject_cast<TaskAddContact*>(task)) {
            connect(add, &TaskAddContact::doneAddContact, this,
                    [&added](const ContactUnit& unit, ContactList::Type) {
                        added = dynamic_cast<const QuendraContact&>(unit).url();
                    });
        }
        Outcome outcome(task, doneSignal(Task::Type(type)));
        task->execute();
        QVERIFY(spinUntil([&] { return !outcome.task; }));
        QCOMPARE(outcome.done, status ? 0 : 1);
        QCOMPARE(outcome.errors, status ? QList<Task::Status>{Task::Status(status)} : QList<Task::Status>());
        QCOMPARE(log.messages(s("ERROR")), error.isEmpty() ? QStringList() : QStringList{error});
        if (type == Task::AddContact && !status)
            QCOMPARE(added.path(), s("/qdws/v1/contacts/anna/9"));
    }

    void nothingToChange()
    {
        FaxManager manager(noContacts);
        BareServer server(manager, s("127.0.0.1:1"));
        OutlookContact foreign;
        const QuendraContact own = person(s("/qdws/v1/contacts/anna/7"));
        for (const Task::Type type : {Task::AddContact, Task::ModifyContact, Task::DeleteContact}) {
            for (int way = 0; way < 3; ++way) {
                auto* task = static_cast<TaskChangeContact*>(server.addTask(type));
                Outcome outcome(task, doneSignal(type));
                if (way == 1)
                    task->setContact(own, ContactList::OutlookContacts); // ignored
                else if (way == 2)
                    task->setContact(foreign, ContactList::PersonalContacts);
                task->execute();
                QCOMPARE(outcome.errors, QList<Task::Status>{Task::Error});
            }
        }
    }

    void readBooks()
    {
        TaskWorld world;
        const auto read = [&](ContactList::Type book, const QByteArray& content) {
            world.wire.setAnswer(okReply(content));
            ContactList result;
            auto* task = static_cast<TaskGetContacts*>(world.server.addTask(Task::GetContacts));
            task->setContactsType(book);
            bool done = false;
            connect(task, &TaskGetContacts::doneGetContacts, this,
                    [&](const ContactList& list, unsigned int) {
                        result = list;
                        done = true;
                    });
            task->execute();
            for (int i = 0; i < 500 && !done; ++i)
                QTest::qWait(10);
            return result;
        };
        const ContactList people =
            read(ContactList::GlobalContacts, memberXml(3) + "<x>" + memberXml(4) + "</x>" + memberXml(5));
        QCOMPARE(people.contactsType(), ContactList::GlobalContacts);
        QCOMPARE(people.contacts().size(), 2);
        QCOMPARE(dynamic_cast<const QuendraContact&>(*people.contacts().at(1)).name(), s("M5"));

        // groups that cannot be read are left out; without members there is nothing to wait for
        const int before = world.wire.requests().size();
        const ContactList groups =
            read(ContactList::PersonalGroups, "<contact_group><name>A</name></contact_group>"
                                              "<contact_group><name>B</name><description/></contact_group>");
        QCOMPARE(groups.contacts().size(), 1);
        QCOMPARE(world.wire.requests().size(), before + 1);
    }

    void oids_data()
    {
        const Rows<QByteArray, QStringList> row("content", "oids");
        row("some", "<oids>12, 15,,20 \n</oids>", QStringList{s("12"), s("15"), QString(), s("20")});
        row("empty", "<oids/>", QStringList{QString()});
        row("none", "<x/>", {});
    }
    void oids()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, oids);

        TaskWorld world(okReply(content));
        auto* task = static_cast<TaskGetContactsOids*>(world.server.addTask(Task::GetContactsOids));
        task->setContactsType(ContactList::PersonalContacts);
        QStringList got{s("not yet")};
        connect(task, &TaskGetContactsOids::doneGetContactsOids, this,
                [&got](const QList<QString>& list, ContactList::Type) { got = list; });
        task->execute();
        QTRY_COMPARE(got, oids);
    }

    void members()
    {
        TaskWorld world;
        world.wire.setAnswer([](const WireRequest& request) {
            if (request.target.contains("groups")) {
                return okReply("<contact_group><name>A</name><description/>" + memberUrl(1) + memberUrl(2) +
                               "</contact_group><contact_group><name>B</name><description/>" + memberUrl(3) +
                               "</contact_group>");
            }
            if (request.target.endsWith("/2"))
                return okReply("<message>nobody</message>"); // counts as finished all the same
            return okReply(memberXml(request.target.right(1).toInt()));
        });
        auto* task = static_cast<TaskGetContacts*>(world.server.addTask(Task::GetContacts));
        task->setContactsType(ContactList::GlobalGroups);
        ContactList groups;
        connect(task, &TaskGetContacts::doneGetContacts, this,
                [&groups](const ContactList& list, unsigned int) { groups = list; });
        Outcome outcome(task, doneSignal(Task::GetContacts));
        task->execute();
        QTRY_COMPARE(outcome.done, 1);
        QVERIFY(spinUntil([&] { return !outcome.task; }));
        QCOMPARE(outcome.done + outcome.errors.size(), 1);
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

    void memberFails_data()
    {
        const Rows<QByteArray, QList<int>> row("bad", "statuses");
        row("404", ScriptedServer::reply("", "404 Gone"), QList<int>{Task::Error});
        // the last reply decides, and replies come in any order
        row("not XML", ScriptedServer::reply("<a"), QList<int>{Task::Error, Task::InvalidReply});
    }
    void memberFails()
    {
        QFETCH(QByteArray, bad);
        QFETCH(QList<int>, statuses);

        // one of three fails; the book fails once, after the last
        TaskWorld world;
        world.wire.setAnswer([&bad](const WireRequest& request) {
            if (request.target.contains("groups"))
                return okReply("<contact_group><name>A</name><description/>" + memberUrl(1) + memberUrl(2) +
                               memberUrl(3) + "</contact_group>");
            return request.target.endsWith("/1") ? bad : okReply(memberXml(2));
        });
        auto* task = static_cast<TaskGetContacts*>(world.server.addTask(Task::GetContacts));
        task->setContactsType(ContactList::PersonalGroups);
        Outcome outcome(task, doneSignal(Task::GetContacts));
        task->execute();
        QVERIFY(spinUntil([&] { return !outcome.task; }));
        QCOMPARE(outcome.done, 0);
        QCOMPARE(outcome.errors.size(), 1);
        QVERIFY(statuses.contains(outcome.errors.first()));
        QCOMPARE(world.wire.requests().size(), 4);
    }
};

QTEST_GUILESS_MAIN(TestContactTasks)
#include "tst_contacttasks.moc"
