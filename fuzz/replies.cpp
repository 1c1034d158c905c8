// The replies to every operation: whatever a server sends, a task ends once, with an outcome that fits, and
// leaves nothing behind.

#include "fuzz.h"

#include "fakenetwork.h"
#include "faxserver.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "tasks/taskabort.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskcheckpermissions.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetfaxuser.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "tasks/taskgetprinternames.h"
#include "tasks/taskgetquendrainfo.h"
#include "tasks/taskmodifycontact.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskreschedule.h"
#include "tasks/taskschedule.h"
#include "tasks/taskverifylogin.h"
#include "xmlguard_p.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QEvent>
#include <QRegularExpression>

namespace {

using Code = QNetworkReply::NetworkError;

/// A server without the login that a manager would start.
class Server : public FaxServer
{
public:
    Server(FaxManager& manager, bool isNew)
        : FaxServer(manager)
    {
        setAddress(QStringLiteral("server"));
        setLogin(QStringLiteral("anna"));
        QuendraInfo info;
        info.setModel(QStringLiteral("ABC40"));
        info.setVersion(isNew ? QStringLiteral("3.6.1") : QStringLiteral("1.0"));
        info.computeProtocolVersion();
        setInfo(info);
    }
};

/// What came of a task.
struct Outcome
{
    int done{0};
    QList<Task::Status> errors;
    ContactList book; ///< That the last done signal gave.
    bool isOver() const { return done + errors.size() > 0; }
};

// A receiver looks at what it is given.

void use(const BaseFaxEntry& entry)
{
    PROMISE(entry.state() >= 0 && entry.state() <= 9);
    static_cast<void>(entry.sentAt().toString());
    static_cast<void>(entry.subject());
    static_cast<void>(entry.recipient());
    entry.entryUrl().toString();
    entry.pages();
}

void use(const BaseFaxEntry::FaxEntriesPtrListPtr& entries)
{
    for (const auto& entry : qAsConst(*entries))
        use(*entry);
}

void use(const InboundFaxEntriesPtrListPtr& entries)
{
    for (const auto& entry : qAsConst(*entries)) {
        use(*entry);
        static_cast<void>(entry->deliveredTo());
        static_cast<void>(entry->deliveredType());
    }
}

void use(const ContactList& contacts)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): copying is what is tried
    const ContactList copy = contacts;
    PROMISE(copy == contacts || contacts.contacts().isEmpty());
}

void use(const ContactUnit& unit)
{
    // cppcheck-suppress duplicateExpression ; comparing is what is tried
    PROMISE(unit == unit);
}

template <typename Value>
void use(const Value& value)
{
    const Value copy = value;
    Q_UNUSED(copy)
}

/// An operation: how it is prepared, and how it may end.
struct Operation
{
    enum Mapping { AlwaysError, AuthApart, ContentApart, Contact };

    Mapping mapping;       ///< Of network errors.
    Task::Status unusable; ///< The end of a good reply that is XML but not what it should be; Unknown: none.
};

/// By Task::Type.
const Operation operations[] = {
    {Operation::AuthApart, Task::Error},           // GetQuendraInfo
    {Operation::AuthApart, Task::AuthError},       // VerifyLogin
    {Operation::AlwaysError, Task::Error},         // GetFaxUser
    {Operation::AlwaysError, Task::Error},         // ModifyFaxUser
    {Operation::ContentApart, Task::InvalidReply}, // Schedule
    {Operation::AuthApart, Task::Unknown},         // GetContacts
    {Operation::Contact, Task::InvalidReply},      // AddContact
    {Operation::Contact, Task::InvalidReply},      // ModifyContact
    {Operation::AlwaysError, Task::Unknown},       // GetContactsOids
    {Operation::Contact, Task::InvalidReply},      // DeleteContact
    {Operation::AlwaysError, Task::Unknown},       // GetCoverPages
    {Operation::AuthApart, Task::Unknown},         // GetFaxEntry
    {Operation::AuthApart, Task::Unknown},         // GetInboundFaxEntry
    {Operation::AuthApart, Task::Unknown},         // GetOutboundFaxEntry
    {Operation::AuthApart, Task::Error},           // Abort
    {Operation::AuthApart, Task::Error},           // Reschedule
    {Operation::AuthApart, Task::Error},           // ChekPermissions
    {Operation::AlwaysError, Task::Unknown},       // GetPrinterNames
};

Task::Status statusOf(Operation::Mapping mapping, Code code)
{
    if (mapping == Operation::AuthApart && code == QNetworkReply::AuthenticationRequiredError)
        return Task::AuthError;
    if (mapping == Operation::ContentApart || mapping == Operation::Contact) {
        if (code == QNetworkReply::UnknownContentError)
            return Task::InvalidReply;
    }
    if (mapping == Operation::Contact) {
        if (code == QNetworkReply::ContentAccessDenied)
            return Task::AccessDenied;
        if (code == QNetworkReply::ContentNotFoundError)
            return Task::NotFound;
        if (code == QNetworkReply::ContentOperationNotPermittedError)
            return Task::NotPermitted;
    }
    return Task::Error;
}

const Code codes[] = {QNetworkReply::NoError,
                      QNetworkReply::AuthenticationRequiredError,
                      QNetworkReply::ContentAccessDenied,
                      QNetworkReply::ContentOperationNotPermittedError,
                      QNetworkReply::ContentNotFoundError,
                      QNetworkReply::UnknownContentError,
                      QNetworkReply::RemoteHostClosedError,
                      QNetworkReply::InternalServerError};

/// The root of a reply; null when it is no XML.
QDomElement rootOf(const QByteArray& body)
{
    static const QRegularExpression bare(QStringLiteral("&(?!(amp;|lt;|gt;|apos;|quot;))"));
    const QString text = QString::fromUtf8(body).replace(bare, QStringLiteral("&amp;"));
    QDomDocument document;
    return isFitForDom(text) && document.setContent(text) ? document.documentElement() : QDomElement();
}

/// The addresses of the members of a book of groups, in the order of the reply.
QVector<QUrl> membersOf(const QDomElement& root, int version)
{
    QVector<QUrl> members;
    const QString contact = QStringLiteral("contact");
    for (QDomElement group = root.firstChildElement(QStringLiteral("contact_group")); !group.isNull();
         group = group.nextSiblingElement(group.tagName())) {
        if (!QuendraContactGroup().readFax(group, version))
            continue;
        for (QDomElement member = group.firstChildElement(contact); !member.isNull();
             member = member.nextSiblingElement(contact))
            members.append(QUrl(member.text(), QUrl::TolerantMode));
    }
    return members;
}

int membersIn(const ContactList& book)
{
    int members = 0;
    for (const auto& unit : book.contacts()) {
        if (const auto* group = dynamic_cast<const QuendraContactGroup*>(unit.data()))
            members += group->contacts().contacts().size();
    }
    return members;
}

/// Makes the tasks of one server, with parameters that let them be sent.
class Tasks
{
public:
    Tasks(FaxServer& server, Outcome& outcome, int variant)
        : m_server(server)
        , m_outcome(outcome)
        , m_book(ContactList::Type(1 + variant % 4))
        , m_variant(variant)
    {}

    Task* make(Task::Type type)
    {
        const QUrl entry(QStringLiteral("http://elsewhere:9/qdws/v1/ofax/12"));
        switch (type) {
        case Task::GetQuendraInfo:
            return watched(type, &TaskGetQuendraInfo::doneGetFaxInfo);
        case Task::VerifyLogin:
            return watched(type, &TaskVerifyLogin::doneVerifyLogin);
        case Task::GetFaxUser:
            return watched(type, &TaskGetFaxUser::doneGetFaxUser);
        case Task::ModifyFaxUser: {
            auto* task = watched(type, &TaskModifyFaxUser::doneModifyFaxUser);
            task->setUser(FaxUser());
            return task;
        }
        case Task::Schedule: {
            auto* task = watched(type, &TaskSchedule::doneFaxSchedule);
            FaxDocument document;
            document.recipients().addContact(Contact());
            task->setFaxDocument(document);
            return task;
        }
        case Task::GetContacts: {
            auto* task = watched(type, &TaskGetContacts::doneGetContacts);
            watch(task, &TaskGetContacts::doneGetContactsAfterLastTimeSync);
            const auto keep = [&outcome = m_outcome](const ContactList& book) { outcome.book = book; };
            QObject::connect(task, &TaskGetContacts::doneGetContacts, keep);
            QObject::connect(task, &TaskGetContacts::doneGetContactsAfterLastTimeSync, keep);
            task->setContactsType(m_book);
            task->setContactsLastTimeSync(m_variant & 4 ? 7 : 0);
            return task;
        }
        case Task::AddContact:
            return withContact(watched(type, &TaskAddContact::doneAddContact));
        case Task::ModifyContact:
            return withContact(watched(type, &TaskModifyContact::doneModifyContact));
        case Task::DeleteContact:
            return withContact(watched(type, &TaskDeleteContact::doneDeleteContact));
        case Task::GetContactsOids: {
            auto* task = watched(type, &TaskGetContactsOids::doneGetContactsOids);
            task->setContactsType(m_book);
            return task;
        }
        case Task::GetCoverPages:
            return watched(type, &TaskGetCoverPages::doneGetCoverPages);
        case Task::GetFaxEntry: {
            auto* task = watched(type, &TaskGetFaxEntry::doneGetFaxEntry);
            task->setTaskEntryType(TaskGetFaxEntry::TaskEntryType(m_variant % 3));
            return task;
        }
        case Task::GetInboundFaxEntry:
            return watched(type, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry);
        case Task::GetOutboundFaxEntry:
            return watched(type, &TaskGetOutboundFaxEntry::doneGetFaxEntry);
        case Task::Abort: {
            auto* task = watched(type, &TaskAbort::doneAbort);
            task->setFaxEntryUrl(entry);
            return task;
        }
        case Task::Reschedule: {
            auto* task = watched(type, &TaskReschedule::doneReschedule);
            task->setFaxEntryUrl(entry);
            return task;
        }
        case Task::ChekPermissions:
            return watched(type, &TaskChekPermissions::doneCheckPermissions);
        case Task::GetPrinterNames:
            return watched(type, &TaskGetPrinterNames::doneGetPrinterNames);
        }
        return nullptr;
    }

private:
    template <typename T, typename... Values>
    void watch(T* task, void (T::*done)(Values...))
    {
        QObject::connect(task, done, [&outcome = m_outcome](Values... values) {
            ++outcome.done;
            (use(values), ...);
        });
    }

    template <typename T, typename... Values>
    T* watched(Task::Type type, void (T::*done)(Values...))
    {
        auto* task = qobject_cast<T*>(m_server.addTask(type));
        PROMISE(task && task->type() == type);
        watch(task, done);
        QObject::connect(task, &Task::errorExecute,
                         [&outcome = m_outcome](Task::Status status) { outcome.errors.append(status); });
        return task;
    }

    template <typename T>
    T* withContact(T* task)
    {
        QuendraContact contact;
        contact.setUrl(QUrl(QStringLiteral("http://elsewhere/qdws/v1/contacts/anna/3")));
        QuendraContactGroup group;
        group.setUrl(QUrl(QStringLiteral("http://elsewhere/qdws/v1/contact_groups/anna/3")));
        if (m_variant % 2)
            task->setContact(group, m_book);
        else
            task->setContact(contact, m_book);
        return task;
    }

    FaxServer& m_server;
    Outcome& m_outcome;
    ContactList::Type m_book;
    int m_variant;
};

} // namespace

/// The type, a variant of its parameters, the network error and the number of pieces; then the reply, and
/// after lines of "--" those to the requests for the members of groups.
FUZZ_TARGET(replies)
{
    static FakeManager manager;
    FuzzChoices choices(input);
    const auto type = Task::Type(choices.choose(int(std::size(operations))));
    const int variant = choices.choose(16);
    const Code code = codes[choices.choose(int(std::size(codes)))];
    const Code memberCode = codes[choices.choose(int(std::size(codes)))];
    const int pieces = 1 + choices.choose(4);
    const QString rest = QString::fromLatin1(choices.rest());
    QList<QByteArray> bodies;
    const QStringList parts = rest.split(QStringLiteral("\n--\n"));
    for (const QString& body : parts)
        bodies.append(body.toLatin1());

    Outcome outcome;
    {
        Server server(manager, variant & 8);
        const QPointer<Task> task = Tasks(server, outcome, variant).make(type);
        task->execute();
        task->execute();
        PROMISE(!outcome.isOver());

        const QByteArray first = bodies.takeFirst();
        FakeReply* reply = manager.network().next();
        PROMISE(reply && !manager.network().next());
        const QByteArray credentials = reply->request().rawHeader("Authorization");
        const QUrl::FormattingOptions ofServer = QUrl::RemovePath | QUrl::RemoveQuery;
        const QUrl address = reply->url().adjusted(ofServer);
        const auto end = [] { QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); };
        reply->deliver(first, pieces, code);
        end();

        const QDomElement root = rootOf(first);
        const int version = server.info().protocolVersion();
        QVector<QUrl> members;
        if (type == Task::GetContacts && variant % 2 && code == QNetworkReply::NoError)
            members = membersOf(root, version);
        // after one failure the others are errors, whatever they bring
        Task::Status ofMembers = Task::Ok;
        int read = 0;
        for (const QUrl& expected : qAsConst(members)) {
            FakeReply* member = manager.network().next();
            PROMISE(member && !outcome.isOver());
            PROMISE(member->operation() == QNetworkAccessManager::GetOperation);
            PROMISE(member->request().rawHeader("Authorization") == credentials);
            // an address of no use ends with an error of the access manager's
            const QUrl url = member->url();
            PROMISE_THAT(url.isEmpty() || (url.adjusted(ofServer | QUrl::RemoveFragment) == address &&
                                           url.path() == expected.path() && url.query() == expected.query()),
                         url.toString());
            const QByteArray body = bodies.isEmpty() ? QByteArray("<reply/>") : bodies.takeFirst();
            member->deliver(body, pieces, memberCode);
            end();
            const QDomElement person = rootOf(body).firstChildElement(QStringLiteral("contact"));
            if (ofMembers != Task::Ok || memberCode != QNetworkReply::NoError)
                ofMembers = Task::Error;
            else if (rootOf(body).isNull())
                ofMembers = Task::InvalidReply;
            else if (!person.isNull() && QuendraContact().readFax(person, version))
                ++read;
        }
        PROMISE(!manager.network().next());
        PROMISE(outcome.done + outcome.errors.size() == 1);

        const Operation& operation = operations[type];
        const Task::Status status = outcome.errors.value(0, Task::Ok);
        if (code != QNetworkReply::NoError)
            PROMISE_THAT(status == statusOf(operation.mapping, code), QString::number(status));
        else if (root.isNull())
            PROMISE_THAT(status == Task::InvalidReply, QString::number(status));
        else if (!members.isEmpty())
            PROMISE_THAT(status == ofMembers, QString::number(status));
        else
            PROMISE_THAT(status == Task::Ok || status == operation.unusable, QString::number(status));
        if (status == Task::Ok)
            PROMISE(membersIn(outcome.book) == read);
        PROMISE(server.lastStatus() == status);

        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        PROMISE(!task);
        PROMISE(outcome.done + outcome.errors.size() == 1);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    PROMISE(manager.network().left() == 0);
}
