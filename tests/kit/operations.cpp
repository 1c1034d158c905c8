#include "operations.h"

#include "attach.h"
#include "contact.h"
#include "quendracontact.h"
#include "taskkit.h"
#include "tasks/taskabort.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetfaxuser.h"
#include "tasks/taskmodifycontact.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskreschedule.h"
#include "tasks/taskschedule.h"

#include <QDomDocument>
#include <QTest>

namespace {

QByteArray userXml(const QString& host)
{
    return "<user><user_url>" + host.toUtf8() +
           "/qdws/v1/users/7</user_url><name>Anna</name>"
           "<default_cover_page_enabled>true</default_cover_page_enabled>"
           "<default_cover_page_name>plain</default_cover_page_name></user>";
}

FaxUser anna(const QString& host)
{
    FaxUser user;
    QDomDocument document;
    document.setContent(userXml(host));
    user.readFax(document.documentElement(), 1);
    return user;
}

/// A fax to one recipient.
FaxDocument fax()
{
    Contact recipient;
    recipient.setName(QStringLiteral("Bob & <Co>"));
    recipient.setFax(QStringLiteral("555"));
    FaxDocument fax;
    fax.recipients().addContact(recipient);
    return fax;
}

/// What sets the parameters of a task of one class.
template <typename T, typename Set>
std::function<void(Task&, const QString&)> with(Set set)
{
    return [set](Task& task, const QString& host) { set(*qobject_cast<T*>(&task), host); };
}

template <typename T>
std::function<void(Task&, const QString&)> withEntry()
{
    return with<T>([](T& task, const QString& host) {
        task.setFaxEntryUrl(QUrl(host + QStringLiteral("/qdws/v1/ofax/12")));
    });
}

template <typename T>
std::function<void(Task&, const QString&)> withPerson()
{
    return with<T>([](T& task, const QString& host) {
        task.setContact(personAt(host + QStringLiteral("/qdws/v1/contacts/anna/7")),
                        ContactList::PersonalContacts);
    });
}

template <typename T>
std::function<void(Task&, const QString&)> withBook(ContactList::Type book)
{
    return with<T>([book](T& task, const QString&) { task.setContactsType(book); });
}

QByteArray groupXml(const QByteArray& members)
{
    return "<contact_group><contact_group_url>http://elsewhere:9/qdws/v1/contact_groups/anna/5"
           "</contact_group_url><name>Team</name><description/>" +
           members + "</contact_group>";
}

QList<Operation> makeOperations()
{
    const QByteArray done = "<message>Success</message>";
    const QByteArray member = "<contact>http://elsewhere:9/qdws/v1/contacts/anna/";
    const auto nothing = [](Task&, const QString&) {};
    return {
        {"GetQuendraInfo", Task::GetQuendraInfo, "GET /qdws/v1/about", SIGNAL(doneGetFaxInfo(QuendraInfo)),
         "<about><model>ABC40</model><version>3.6.1</version></about>", nothing},
        {"VerifyLogin", Task::VerifyLogin, "GET /qdws/v1/verify", SIGNAL(doneVerifyLogin()),
         "<message>Verified</message>", nothing},
        {"GetFaxUser", Task::GetFaxUser, "GET /qdws/v1/users/anna", SIGNAL(doneGetFaxUser(FaxUser)),
         userXml(QStringLiteral("https://elsewhere")),
         with<TaskGetFaxUser>(
             [](TaskGetFaxUser& task, const QString&) { task.setUser(QStringLiteral("anna")); })},
        {"ModifyFaxUser", Task::ModifyFaxUser, "PUT /qdws/v1/users/7", SIGNAL(doneModifyFaxUser(FaxUser)),
         "<message>Modified</message>",
         with<TaskModifyFaxUser>(
             [](TaskModifyFaxUser& task, const QString& host) { task.setUser(anna(host)); })},
        {"ChekPermissions", Task::ChekPermissions, "GET /qdws/v1/user_options",
         SIGNAL(doneCheckPermissions(unsigned int)),
         done + "<user_options><add_global>true</add_global></user_options>", nothing},
        {"Schedule", Task::Schedule, "POST /qdws/v1/ofax",
         SIGNAL(doneFaxSchedule(BaseFaxEntry::FaxEntriesPtrListPtr)),
         "<fax_entry><state>pending</state></fax_entry>",
         with<TaskSchedule>([](TaskSchedule& task, const QString&) { task.setFaxDocument(fax()); })},
        {"Abort", Task::Abort, "DELETE /qdws/v1/ofax/12", SIGNAL(doneAbort()),
         "<message>Attempting Abort</message>", withEntry<TaskAbort>()},
        {"Reschedule", Task::Reschedule, "PUT /qdws/v1/outbound_log/12?at=now", SIGNAL(doneReschedule()),
         "<message>Attempting reschedule</message>", withEntry<TaskReschedule>()},
        {"GetFaxEntry", Task::GetFaxEntry, "GET /qdws/v1/ofax",
         SIGNAL(doneGetFaxEntry(BaseFaxEntry::FaxEntriesPtrListPtr)), done,
         with<TaskGetFaxEntry>([](TaskGetFaxEntry& task, const QString&) {
             task.setTaskEntryType(TaskGetFaxEntry::EntryQueue);
         })},
        {"GetInboundFaxEntry", Task::GetInboundFaxEntry, "GET /qdws/v1/inbound_log",
         SIGNAL(doneGetInboundFaxEntry(InboundFaxEntriesPtrListPtr)), done, nothing},
        {"GetOutboundFaxEntry", Task::GetOutboundFaxEntry, "GET /qdws/v1/outbound_log",
         SIGNAL(doneGetFaxEntry(BaseFaxEntry::FaxEntriesPtrListPtr)), done, nothing},
        {"GetCoverPages", Task::GetCoverPages, "GET /qdws/v1/data/cover_pages",
         SIGNAL(doneGetCoverPages(CoverPageListPtr)), "", nothing},
        {"GetPrinterNames", Task::GetPrinterNames, "GET /qdws/v1/data/printer_names",
         SIGNAL(doneGetPrinterNames(QStringListPtr)), "", nothing},
        {"GetContacts", Task::GetContacts, "GET /qdws/v1/contacts/anna",
         SIGNAL(doneGetContacts(ContactList, unsigned int)),
         "<query_time>77</query_time>" + memberXml(1) + memberXml(2),
         withBook<TaskGetContacts>(ContactList::PersonalContacts)},
        {"GetContacts of groups", Task::GetContacts, "GET /qdws/v1/contact_groups/anna",
         SIGNAL(doneGetContacts(ContactList, unsigned int)),
         "<query_time>77</query_time>" + groupXml(member + "1</contact>" + member + "2</contact>"),
         withBook<TaskGetContacts>(ContactList::PersonalGroups)},
        {"GetContactsOids", Task::GetContactsOids, "GET /qdws/v1/contact_oids/anna",
         SIGNAL(doneGetContactsOids(QList<QString>, ContactList::Type)), "<oids>1,2</oids>",
         withBook<TaskGetContactsOids>(ContactList::PersonalContacts)},
        {"AddContact", Task::AddContact, "POST /qdws/v1/contacts/anna",
         SIGNAL(doneAddContact(ContactUnit, ContactList::Type)), "<message>Created</message>" + memberXml(9),
         withPerson<TaskAddContact>()},
        {"ModifyContact", Task::ModifyContact, "PUT /qdws/v1/contacts/anna/7",
         SIGNAL(doneModifyContact(ContactUnit, ContactList::Type)), "<message>Modified</message>",
         withPerson<TaskModifyContact>()},
        {"DeleteContact", Task::DeleteContact, "DELETE /qdws/v1/contacts/anna/7",
         SIGNAL(doneDeleteContact(ContactUnit, ContactList::Type)), "<message>Deleted</message>",
         withPerson<TaskDeleteContact>()},
    };
}

} // namespace

bool Operation::hasBody() const
{
    return isChange() && !request.startsWith("DELETE") && type != Task::Reschedule;
}

Task* Operation::make(FaxServer& server, const QString& host) const
{
    Task* task = server.addTask(type);
    prepare(*task, host);
    return task;
}

const QList<Operation>& operations()
{
    static const QList<Operation> all = makeOperations();
    return all;
}

const Operation& operation(Task::Type type)
{
    return *std::find_if(operations().begin(), operations().end(),
                         [type](const Operation& operation) { return operation.type == type; });
}

const Operation& operation(const QByteArray& name)
{
    return *std::find_if(operations().begin(), operations().end(),
                         [&name](const Operation& operation) { return operation.name == name; });
}

void addOperationRows(const std::function<bool(const Operation&)>& wanted)
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < operations().size(); ++i) {
        if (!wanted || wanted(operations().at(i)))
            QTest::newRow(operations().at(i).name.constData()) << i;
    }
}

QByteArray serve(const WireRequest& request)
{
    const QByteArray target = request.target.split('?').first();
    for (const Operation& operation : operations()) {
        if (operation.request.split('?').first() == request.method + ' ' + target)
            return okReply(operation.good);
    }
    if (target.startsWith("/qdws/v1/contacts/anna/"))
        return okReply(memberXml(target.mid(target.lastIndexOf('/') + 1).toInt()));
    if (target.startsWith("/qdws/v1/contact")) // the other books are empty
        return okReply(target.contains("_oids/") ? "<oids/>" : "<query_time>77</query_time>");
    return ScriptedServer::reply("", "404 Not Found");
}

QByteArray memberXml(int number)
{
    const QByteArray n = QByteArray::number(number);
    return "<contact><contact_url>http://elsewhere/qdws/v1/contacts/anna/" + n + "</contact_url><name>M" + n +
           "</name></contact>";
}

QuendraContact personAt(const QString& url)
{
    QuendraContact contact;
    contact.setName(QStringLiteral("Mary\nPoe & <Co>"));
    contact.setFax(QStringLiteral("555"));
    if (!url.isEmpty())
        contact.setUrl(QUrl(url));
    return contact;
}
