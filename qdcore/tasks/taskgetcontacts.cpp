#include "tasks/taskgetcontacts.h"

#include "contactbook_p.h"
#include "domtext_p.h"
#include "faxserver.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "tasks/replydocument_p.h"
#include "tasks/servicerequest_p.h"
#include "tasks/task_p.h"

#include <QDomDocument>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QVector>

namespace {

/// Many more than the access manager has connections. A reply can name a million members, and a request takes
/// some kilobytes.
constexpr int maxPendingMembers = 100;

} // namespace

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
    QDomDocument document;
    if (!parseBody(document))
        return;

    QDomElement root = document.documentElement();
    const QDomElement time = root.firstChildElement(QStringLiteral("query_time"));
    if (!time.isNull())
        m_serverTime = time.text().toUInt();
    m_contacts.setContactsType(m_contactsType);
    const ContactBook book(m_contactsType);
    if (book.isGroup)
        readGroups(root);
    else if (book.isValid)
        readContacts(root);
    if (m_pendingGroups.isEmpty())
        succeed();
}

void TaskGetContacts::readContacts(QDomElement& root)
{
    takeElements(root, QStringLiteral("contact"), [this](const QDomElement& element) {
        QuendraContact contact;
        if (contact.readFax(element, protocolVersion()))
            m_contacts.addContact(contact);
    });
}

void TaskGetContacts::readGroups(QDomElement& root)
{
    const QString memberName = QStringLiteral("contact");
    takeElements(root, QStringLiteral("contact_group"), [&](const QDomElement& element) {
        QuendraContactGroup read;
        if (!read.readFax(element, protocolVersion()))
            return;
        auto& group = static_cast<QuendraContactGroup&>(m_contacts.addContact(read));
        for (QDomElement member = element.firstChildElement(memberName); !member.isNull();
             member = member.nextSiblingElement(memberName)) {
            m_waitingMembers.enqueue({member.text(), &group});
        }
    });
    requestMembers();
}

void TaskGetContacts::requestMembers()
{
    while (m_pendingGroups.size() < maxPendingMembers && !m_waitingMembers.isEmpty()) {
        const auto [member, group] = m_waitingMembers.dequeue();
        QNetworkReply* reply =
            nam().get(serviceRequest(server(), resourceUrl(QUrl(member, QUrl::TolerantMode))));
        m_pendingGroups.insert(reply, group);
        d->bodies.collect(reply, this, [this](QNetworkReply* ended, int error, const QByteArray& body) {
            m_endedMembers.enqueue({m_pendingGroups.take(ended), error, body});
            QMetaObject::invokeMethod(this, &TaskGetContacts::slotFinishedGroup, Qt::QueuedConnection);
        });
        connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    }
}

void TaskGetContacts::slotFinishedGroup()
{
    auto [group, error, body] = m_endedMembers.dequeue();
    if (d->bodies.isOverLimit())
        m_waitingMembers.clear();
    requestMembers();

    // after one failure the rest is only waited for
    if (m_groupFailed || error != QNetworkReply::NoError) {
        QD_LOG(ERROR, tr("TaskGetContacts: reply error! http code %1", "Logger").arg(error));
        d->logBody(LOG_TEXT(tr("Reply:\r\n", "Logger")), body);
        m_groupFailed = true;
        if (areMembersComplete())
            fail(Task::Error);
        return;
    }

    d->logBody(LOG_TEXT(tr("TaskGetContacts reply:\r\n", "Logger")), body);
    QDomDocument document;
    if (!parseReply(std::move(body), document)) {
        m_groupFailed = true;
        if (areMembersComplete())
            fail(Task::InvalidReply);
        return;
    }

    const QDomElement element = document.documentElement().firstChildElement(QStringLiteral("contact"));
    QuendraContact contact;
    if (!element.isNull() && contact.readFax(element, protocolVersion()))
        group->addContact(contact);
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
