#include "operations.h"

#include "attach.h"
#include "contact.h"
#include "quendracontact.h"
#include "taskkit.h"
#include "tasks/operationtable_p.h"

#include <QDomDocument>
#include <QMetaEnum>
#include <QMetaMethod>
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

/// What an operation takes and is answered beyond what the table says of it.
struct Sample
{
    QByteArray rest; ///< Behind the path of the operation.
    QByteArray good;
    std::function<void(Task&, const QString&)> prepare;
};

QHash<int, Sample> samples()
{
    const QByteArray done = "<message>Success</message>";
    const auto nothing = [](Task&, const QString&) {};
    return {
        {Task::GetQuendraInfo, {"", "<about><model>ABC40</model><version>3.6.1</version></about>", nothing}},
        {Task::VerifyLogin, {"", "<message>Verified</message>", nothing}},
        {Task::GetFaxUser,
         {"anna", userXml(QStringLiteral("https://elsewhere")),
          with<TaskGetFaxUser>(
              [](TaskGetFaxUser& task, const QString&) { task.setUser(QStringLiteral("anna")); })}},
        {Task::ModifyFaxUser,
         {"7", "<message>Modified</message>",
          with<TaskModifyFaxUser>(
              [](TaskModifyFaxUser& task, const QString& host) { task.setUser(anna(host)); })}},
        {Task::ChekPermissions,
         {"", done + "<user_options><add_global>true</add_global></user_options>", nothing}},
        {Task::Schedule,
         {"", "<fax_entry><state>pending</state></fax_entry>",
          with<TaskSchedule>([](TaskSchedule& task, const QString&) { task.setFaxDocument(fax()); })}},
        {Task::Abort, {"12", "<message>Attempting Abort</message>", withEntry<TaskAbort>()}},
        {Task::Reschedule,
         {"12?at=now", "<message>Attempting reschedule</message>", withEntry<TaskReschedule>()}},
        {Task::GetFaxEntry, {"", done, with<TaskGetFaxEntry>([](TaskGetFaxEntry& task, const QString&) {
                                 task.setTaskEntryType(TaskGetFaxEntry::EntryQueue);
                             })}},
        {Task::GetContacts,
         {"anna", "<query_time>77</query_time>" + memberXml(1) + memberXml(2),
          withBook<TaskGetContacts>(ContactList::PersonalContacts)}},
        {Task::GetContactsOids,
         {"anna", "<oids>1,2</oids>", withBook<TaskGetContactsOids>(ContactList::PersonalContacts)}},
        {Task::AddContact,
         {"anna", "<message>Created</message>" + memberXml(9), withPerson<TaskAddContact>()}},
        {Task::ModifyContact, {"anna/7", "<message>Modified</message>", withPerson<TaskModifyContact>()}},
        {Task::DeleteContact, {"anna/7", "<message>Deleted</message>", withPerson<TaskDeleteContact>()}},
    };
}

QList<Operation> makeOperations()
{
    const QHash<int, Sample> known = samples();
    const Sample plain{"", "<message>Success</message>", [](Task&, const QString&) {}};
    QList<Operation> all;
    forEachOperation([&](const WebOperation& row, auto done, auto...) {
        const Sample sample = known.value(row.type, plain);
        all.append({QMetaEnum::fromType<Task::Type>().valueToKey(row.type), row.type,
                    QByteArray(row.method) + ' ' + row.path + sample.rest,
                    QByteArray::number(QSIGNAL_CODE) + QMetaMethod::fromSignal(done).methodSignature(),
                    sample.good, sample.prepare, row});
    });

    Operation groups = *std::find_if(all.begin(), all.end(), [](const Operation& operation) {
        return operation.type == Task::GetContacts;
    });
    const QByteArray member = "<contact>http://elsewhere:9/qdws/v1/contacts/anna/";
    groups.name = "GetContacts of groups";
    groups.request = "GET /qdws/v1/contact_groups/anna";
    groups.good = "<query_time>77</query_time>" + groupXml(member + "1</contact>" + member + "2</contact>");
    groups.prepare = withBook<TaskGetContacts>(ContactList::PersonalGroups);
    all.append(groups);
    return all;
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

namespace {

const Operation& find(const std::function<bool(const Operation&)>& isWanted)
{
    const auto found = std::find_if(operations().begin(), operations().end(), isWanted);
    if (found == operations().end())
        qFatal("The table lacks an operation.");
    return *found;
}

} // namespace

const Operation& operation(Task::Type type)
{
    return find([type](const Operation& operation) { return operation.type == type; });
}

const Operation& operation(const QByteArray& name)
{
    return find([&name](const Operation& operation) { return operation.name == name; });
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
