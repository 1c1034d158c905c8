#include "tasks/taskgetcontacts.h"

#include "contactbook_p.h"
#include "faxserver.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "tasks/servicerequest_p.h"
#include "tasks/task_p.h"

#include <QDomElement>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QVector>

namespace {

/// Many more than the access manager has connections. A reply can name a million members, and a request takes
/// some kilobytes.
constexpr int maxPendingMembers = 100;

/// What a member takes beside its address until it is requested, in bytes.
constexpr qint64 memberSize = 96;

} // namespace

/// The contact of a member's reply.
struct TaskGetContacts::MemberContact
{
    QuendraContact unit;
    bool isThere{false};
    bool isRead{false};
};

TaskGetContacts::TaskGetContacts(FaxServer& server)
    : Task(server)
{}

TaskGetContacts::~TaskGetContacts()
{
    QVector<QPointer<QNetworkReply>> replies;
    for (auto pending = m_pendingGroups.keyBegin(); pending != m_pendingGroups.keyEnd(); ++pending)
        replies.append(*pending);
    for (const auto& reply : qAsConst(replies))
        d->letGo(reply);
}

Task::Type TaskGetContacts::type()
{
    return Task::GetContacts;
}

void TaskGetContacts::execute()
{
    QUrl url = serviceUrl(ContactBook(m_contactsType)
                              .path(QStringLiteral("/qdws/v1/contacts"),
                                    QStringLiteral("/qdws/v1/contact_groups"), server().login()));
    if (m_lastTimeSync != 0 && url.isValid())
        url.setQuery(QStringLiteral("query_time=") + QString::number(m_lastTimeSync));
    d->readChildren([this, hadTime = false](const QDomElement& child, bool) mutable {
        const QString name = child.tagName();
        const ContactBook book(m_contactsType);
        if (name == QLatin1String("query_time") && !std::exchange(hadTime, true))
            m_serverTime = child.text().toUInt();
        if (book.isValid && !book.isGroup && name == QLatin1String("contact"))
            return readContact(child);
        return book.isGroup && name == QLatin1String("contact_group") ? readGroup(child) : 0;
    });
    d->send(url, LOG_TEXT(tr("TaskGetContacts request:\r\n%1", "Logger")));
}

void TaskGetContacts::onFinished()
{
    if (!succeeded()) {
        const LogText error = LOG_TEXT(tr("TaskGetContacts: reply error! http code %1", "Logger"));
        const LogText errorBody = LOG_TEXT(tr("Reply:\r\n", "Logger"));
        // refused credentials are told before they are logged, other errors afterwards
        if (d->errorStatus() == Task::AuthError)
            return d->failThenLog(error, errorBody);
        return d->failReply(error, errorBody);
    }

    d->logBody(LOG_TEXT(tr("TaskGetContacts reply:\r\n", "Logger")));
    if (!d->finishDocument())
        return;

    m_contacts.setContactsType(m_contactsType);
    requestMembers();
    if (m_pendingGroups.isEmpty())
        succeed();
}

qint64 TaskGetContacts::readContact(const QDomElement& element)
{
    QuendraContact contact;
    const bool isRead = contact.readFax(element, protocolVersion());
    if (isRead)
        m_contacts.addContact(contact);
    return isRead ? ReplyReader::recordSize : 0;
}

qint64 TaskGetContacts::readGroup(const QDomElement& element)
{
    QuendraContactGroup read;
    if (!read.readFax(element, protocolVersion()))
        return 0;
    auto& group = static_cast<QuendraContactGroup&>(m_contacts.addContact(read));
    qint64 members = 0;
    const QString memberName = QStringLiteral("contact");
    for (QDomElement member = element.firstChildElement(memberName); !member.isNull();
         member = member.nextSiblingElement(memberName)) {
        m_waitingMembers.enqueue({member.text(), &group});
        ++members;
    }
    return ReplyReader::recordSize + members * memberSize;
}

void TaskGetContacts::requestMembers()
{
    while (m_pendingGroups.size() < maxPendingMembers && !m_waitingMembers.isEmpty()) {
        const auto [member, group] = m_waitingMembers.dequeue();
        QNetworkReply* reply =
            nam().get(serviceRequest(server(), resourceUrl(QUrl(member, QUrl::TolerantMode))));
        m_pendingGroups.insert(reply, group);
        const auto contact = std::make_shared<MemberContact>();
        const auto reader = std::make_shared<ReplyReader>([this, contact](const QDomElement& child, bool) {
            if (child.tagName() == QLatin1String("contact") && !std::exchange(contact->isThere, true))
                contact->isRead = contact->unit.readFax(child, protocolVersion());
            return contact->isRead ? ReplyReader::recordSize : 0;
        });
        const auto ended = [this, contact, reader](QNetworkReply* which, int error, const QByteArray& body) {
            m_endedMembers.enqueue({m_pendingGroups.take(which), error, body, reader, contact});
            QMetaObject::invokeMethod(this, &TaskGetContacts::slotFinishedGroup, Qt::QueuedConnection);
        };
        d->bodies.collect(reply, this, ended, reader);
        connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    }
}

void TaskGetContacts::slotFinishedGroup()
{
    const auto [group, error, body, reader, contact] = m_endedMembers.dequeue();
    if (d->bodies.isOverLimit())
        m_waitingMembers.clear();
    requestMembers();

    // after a failure the remaining members are awaited and ignored
    if (m_groupFailed || error != QNetworkReply::NoError) {
        QD_LOG(ERROR, tr("TaskGetContacts: reply error! http code %1", "Logger").arg(error));
        d->logBody(LOG_TEXT(tr("Reply:\r\n", "Logger")), body);
        m_groupFailed = true;
        if (areMembersComplete())
            fail(Task::Error);
        return;
    }

    d->logBody(LOG_TEXT(tr("TaskGetContacts reply:\r\n", "Logger")), body);
    if (!reader->finish()) {
        m_groupFailed = true;
        if (areMembersComplete())
            fail(Task::InvalidReply);
        return;
    }

    if (contact->isRead)
        group->addContact(contact->unit);
    if (areMembersComplete())
        succeed();
}

void TaskGetContacts::succeed()
{
    const ContactList contacts = std::move(m_contacts);
    const unsigned int serverTime = m_serverTime;
    deleteLater();
    if (m_lastTimeSync != 0)
        Q_EMIT doneGetContactsAfterLastTimeSync(contacts, serverTime);
    else
        Q_EMIT doneGetContacts(contacts, serverTime);
}
