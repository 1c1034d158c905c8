#pragma once

#include "contactlist.h"
#include "tasks/task.h"

#include <QMap>
#include <QPair>
#include <QQueue>

class QDomElement;
class QuendraContactGroup;
class ReplyReader;

/**
 * Reads a contact book, whole or what changed since a time of the server's.
 *
 * The entries of a group book name their members by URL only; the task fetches each of them, many at once
 * through the access manager, and ends when the last is there. One member that cannot be fetched fails the
 * whole book.
 */
class QDCORE_EXPORT TaskGetContacts : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetContacts(FaxServer& server);
    ~TaskGetContacts() override;

    /// The book, one of the four of a fax server. Set before execute().
    void setContactsType(ContactList::Type type) { m_contactsType = type; }

    /// The time stamp of an earlier reply, to get only what changed after it; 0, the value at first, gets
    /// everything.
    void setContactsLastTimeSync(unsigned int lastTimeSync) { m_lastTimeSync = lastTimeSync; }

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// The whole book. @p timeStamp is the server's "query_time" of this reply, 0 when it has none.
    void doneGetContacts(const ContactList& contacts, unsigned int timeStamp);
    /// What changed, emitted instead when a last time was set.
    void doneGetContactsAfterLastTimeSync(const ContactList& contacts, unsigned int timeStamp);

private Q_SLOTS:
    void slotFinishedGroup();

private:
    struct MemberContact;
    struct EndedMember
    {
        QuendraContactGroup* group;
        int error;
        QByteArray body;
        std::shared_ptr<ReplyReader> reader;
        std::shared_ptr<MemberContact> contact;
    };

    qint64 readContact(const QDomElement& element);
    qint64 readGroup(const QDomElement& element);
    void requestMembers();
    bool areMembersComplete() const { return m_pendingGroups.isEmpty() && m_endedMembers.isEmpty(); }
    void succeed();

    ContactList::Type m_contactsType{ContactList::Unknown};
    ContactList m_contacts;
    unsigned int m_lastTimeSync{0};
    unsigned int m_serverTime{0};
    QMap<QNetworkReply*, QuendraContactGroup*> m_pendingGroups; ///< Requests for members, and their groups.
    QQueue<EndedMember> m_endedMembers;                         ///< What slotFinishedGroup() will handle.
    QQueue<QPair<QString, QuendraContactGroup*>>
        m_waitingMembers; ///< URLs to be requested, and their groups.
    bool m_groupFailed{false};
};
