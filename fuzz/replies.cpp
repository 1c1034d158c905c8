// The replies to every operation: whatever a server sends, a task ends exactly once, with a matching outcome,
// and leaks nothing.

#include "fuzz.h"

#include "fakenetwork.h"
#include "faxserver.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "tasks/operationtable_p.h"
#include "xmlguard_p.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QEvent>
#include <QRegularExpression>

namespace {

using Code = QNetworkReply::NetworkError;

/// A server that does not log in, as one added to a manager would.
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

/// The outcome of a task.
struct Outcome
{
    int done{0};
    QList<Task::Status> errors;
    ContactList book; ///< The argument of the last done signal.
    bool isOver() const { return done + errors.size() > 0; }
};

// A receiver reads all data of a signal's arguments.

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
    // cppcheck-suppress duplicateExpression ; operator== is under test
    PROMISE(unit == unit);
}

template <typename Value>
void use(const Value& value)
{
    const Value copy = value;
    Q_UNUSED(copy)
}

/// The rows of the library's table.
const QVector<WebOperation>& operations()
{
    static const QVector<WebOperation> all = [] {
        QVector<WebOperation> rows;
        forEachOperation([&rows](const WebOperation& row, auto...) { rows.append(row); });
        return rows;
    }();
    return all;
}

/// The documented mappings, implemented a second time.
Task::Status expectedStatus(ErrorMapping mapping, Code code)
{
    if (mapping == ErrorMapping::AuthApart && code == QNetworkReply::AuthenticationRequiredError)
        return Task::AuthError;
    if (mapping == ErrorMapping::ContentApart || mapping == ErrorMapping::Contact) {
        if (code == QNetworkReply::UnknownContentError)
            return Task::InvalidReply;
    }
    if (mapping == ErrorMapping::Contact) {
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

/// The root of a reply; null if it is not well-formed.
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
        Task* made = nullptr;
        forEachOperation([&](const WebOperation& row, auto... done) {
            if (row.type == type)
                made = watched(type, done...);
        });
        return made;
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

    template <typename T, typename... Values, typename... Others>
    T* watched(Task::Type type, void (T::*done)(Values...), Others... others)
    {
        auto* task = qobject_cast<T*>(m_server.addTask(type));
        PROMISE(task && task->type() == type);
        watch(task, done);
        (watch(task, others), ...);
        QObject::connect(task, &Task::errorExecute,
                         [&outcome = m_outcome](Task::Status status) { outcome.errors.append(status); });
        prepare(task);
        return task;
    }

    // sets the parameters without which a task is not sent; most need none

    static void prepare(Task*) {}
    void prepare(TaskModifyFaxUser* task) { task->setUser(FaxUser()); }
    void prepare(TaskSchedule* task)
    {
        FaxDocument document;
        document.recipients().addContact(Contact());
        task->setFaxDocument(document);
    }
    void prepare(TaskGetContacts* task)
    {
        const auto keep = [&outcome = m_outcome](const ContactList& book) { outcome.book = book; };
        QObject::connect(task, &TaskGetContacts::doneGetContacts, keep);
        QObject::connect(task, &TaskGetContacts::doneGetContactsAfterLastTimeSync, keep);
        task->setContactsType(m_book);
        task->setContactsLastTimeSync(m_variant & 4 ? 7 : 0);
    }
    void prepare(TaskGetContactsOids* task) { task->setContactsType(m_book); }
    void prepare(TaskChangeContact* task)
    {
        QuendraContact contact;
        contact.setUrl(QUrl(QStringLiteral("http://elsewhere/qdws/v1/contacts/anna/3")));
        QuendraContactGroup group;
        group.setUrl(QUrl(QStringLiteral("http://elsewhere/qdws/v1/contact_groups/anna/3")));
        if (m_variant % 2)
            task->setContact(group, m_book);
        else
            task->setContact(contact, m_book);
    }
    void prepare(TaskGetFaxEntry* task)
    {
        task->setTaskEntryType(TaskGetFaxEntry::TaskEntryType(m_variant % 3));
    }
    void prepare(TaskAbort* task) { task->setFaxEntryUrl(m_entry); }
    void prepare(TaskReschedule* task) { task->setFaxEntryUrl(m_entry); }

    const QUrl m_entry{QStringLiteral("http://elsewhere:9/qdws/v1/ofax/12")};
    FaxServer& m_server;
    Outcome& m_outcome;
    ContactList::Type m_book;
    int m_variant;
};

} // namespace

/// The type, a variant of its parameters, the network errors and the number of pieces; then the reply, and
/// after lines of "--" the replies to the requests for members of groups.
FUZZ_TARGET(replies)
{
    static FakeManager manager;
    FuzzChoices choices(input);
    const WebOperation& operation = operations().at(choices.choose(operations().size()));
    const Task::Type type = operation.type;
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
        // after one failure the outcome is Error, whatever the other replies contain
        Task::Status ofMembers = Task::Ok;
        int read = 0;
        for (const QUrl& expected : qAsConst(members)) {
            FakeReply* member = manager.network().next();
            PROMISE(member && !outcome.isOver());
            PROMISE(member->operation() == QNetworkAccessManager::GetOperation);
            PROMISE(member->request().rawHeader("Authorization") == credentials);
            // an invalid URL ends with an error of the access manager
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

        const Task::Status status = outcome.errors.value(0, Task::Ok);
        if (code != QNetworkReply::NoError)
            PROMISE_THAT(status == expectedStatus(operation.errors, code), QString::number(status));
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
