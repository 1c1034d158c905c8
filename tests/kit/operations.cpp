#include "operations.h"

#include "attach.h"
#include "contact.h"
#include "quendracontact.h"
#include "taskkit.h"
#include "tasks/operationtable_p.h"

#include <QDomDocument>
#include <QMetaEnum>
#include <QMetaMethod>

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

QByteArray groupXml(const QByteArray& members)
{
    return "<contact_group><contact_group_url>http://elsewhere:9/qdws/v1/contact_groups/anna/5"
           "</contact_group_url><name>Team</name><description/>" +
           members + "</contact_group>";
}

/// Test data of an operation that is not in the library's table.
struct Sample
{
    QByteArray rest; ///< Appended to the path of the operation.
    QByteArray good{"<message>Success</message>"};
};

QHash<int, Sample> samples()
{
    return {
        {Task::GetQuendraInfo, {"", "<about><model>ABC40</model><version>3.6.1</version></about>"}},
        {Task::VerifyLogin, {"", "<message>Verified</message>"}},
        {Task::GetFaxUser, {"anna", userXml(QStringLiteral("https://elsewhere"))}},
        {Task::ModifyFaxUser, {"7", "<message>Modified</message>"}},
        {Task::ChekPermissions,
         {"", Sample().good + "<user_options><add_global>true</add_global></user_options>"}},
        {Task::Schedule, {"", "<fax_entry><state>pending</state></fax_entry>"}},
        {Task::Abort, {"12", "<message>Attempting Abort</message>"}},
        {Task::Reschedule, {"12?at=now", "<message>Attempting reschedule</message>"}},
        {Task::GetContacts, {"anna", "<query_time>77</query_time>" + memberXml(1) + memberXml(2)}},
        {Task::GetContactsOids, {"anna", "<oids>1,2</oids>"}},
        {Task::AddContact, {"anna", "<message>Created</message>" + memberXml(9)}},
        {Task::ModifyContact, {"anna/7", "<message>Modified</message>"}},
        {Task::DeleteContact, {"anna/7", "<message>Deleted</message>"}},
    };
}

QList<Operation> makeOperations()
{
    const QHash<int, Sample> known = samples();
    QList<Operation> all;
    forEachOperation([&](const WebOperation& row, auto done, auto...) {
        const Sample sample = known.value(row.type);
        all.append({QMetaEnum::fromType<Task::Type>().valueToKey(row.type), row.type,
                    QByteArray(row.method) + ' ' + row.path + sample.rest,
                    QByteArray::number(QSIGNAL_CODE) + QMetaMethod::fromSignal(done).methodSignature(),
                    sample.good, row});
    });

    Operation groups = *std::find_if(all.begin(), all.end(), [](const Operation& operation) {
        return operation.type == Task::GetContacts;
    });
    const QByteArray member = "<contact>http://elsewhere:9/qdws/v1/contacts/anna/";
    groups.name = "GetContacts of groups";
    groups.request = "GET /qdws/v1/contact_groups/anna";
    groups.good = "<query_time>77</query_time>" + groupXml(member + "1</contact>" + member + "2</contact>");
    all.append(groups);
    return all;
}

} // namespace

bool Operation::hasBody() const
{
    return isChange() && !request.startsWith("DELETE");
}

Task* Operation::make(FaxServer& server, const QString& host) const
{
    Task* task = server.addTask(type);
    const auto book =
        request.contains("groups") ? ContactList::PersonalGroups : ContactList::PersonalContacts;
    if (auto* get = qobject_cast<TaskGetFaxUser*>(task))
        get->setUser(QStringLiteral("anna"));
    else if (auto* modify = qobject_cast<TaskModifyFaxUser*>(task))
        modify->setUser(anna(host));
    else if (auto* submit = qobject_cast<TaskSchedule*>(task))
        submit->setFaxDocument(fax());
    else if (auto* abort = qobject_cast<TaskAbort*>(task))
        abort->setFaxEntryUrl(QUrl(host + QStringLiteral("/qdws/v1/ofax/12")));
    else if (auto* move = qobject_cast<TaskReschedule*>(task))
        move->setFaxEntryUrl(QUrl(host + QStringLiteral("/qdws/v1/ofax/12")));
    else if (auto* queue = qobject_cast<TaskGetFaxEntry*>(task))
        queue->setTaskEntryType(TaskGetFaxEntry::EntryQueue);
    else if (auto* entries = qobject_cast<TaskGetContacts*>(task))
        entries->setContactsType(book);
    else if (auto* oids = qobject_cast<TaskGetContactsOids*>(task))
        oids->setContactsType(book);
    else if (auto* change = qobject_cast<TaskChangeContact*>(task))
        change->setContact(personAt(host + QStringLiteral("/qdws/v1/contacts/anna/7")), book);
    return task;
}

const QList<Operation>& operations()
{
    static const QList<Operation> all = makeOperations();
    return all;
}

const Operation& operation(Task::Type type)
{
    return operation(QByteArray(QMetaEnum::fromType<Task::Type>().valueToKey(type)));
}

const Operation& operation(const QByteArray& name)
{
    const auto isWanted = [&name](const Operation& operation) { return operation.name == name; };
    const auto found = std::find_if(operations().begin(), operations().end(), isWanted);
    if (found == operations().end())
        qFatal("The table lacks %s.", name.constData());
    return *found;
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
