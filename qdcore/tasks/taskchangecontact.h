#pragma once

#include "contactlist.h"
#include "tasks/task.h"

#include <QSharedPointer>

class QDomElement;

/**
 * The common part of adding, modifying and deleting an entry of a contact book on the server: the entry, its
 * document, and the handling of the reply. Here 403, 404 and 405 have statuses of their own, and a reply that
 * does not confirm is InvalidReply.
 */
class QDCORE_EXPORT TaskChangeContact : public Task
{
    Q_OBJECT
public:
    /// The entry, of which the task keeps a copy, and its book. Ignored for a book that is not one of a fax
    /// server. An entry that is not a QuendraContact or QuendraContactGroup ends execute() with Error.
    void setContact(const ContactUnit& contact, ContactList::Type bookType);

protected:
    /// Called by FaxServer::addTask().
    explicit TaskChangeContact(FaxServer& server);

    /// The name of the entry's element, "contact" or "contact_group"; empty for an entry of another class.
    QString elementName() const;

    /// The path of the entry's URL; empty without one.
    QString entryPath() const;

    /// The collection that a new entry goes to; empty when entry and book do not belong together.
    QString bookPath() const;

    /// Whether there is an entry that can be sent; otherwise the task has ended with Error.
    bool hasEntry();

    /// The entry's document in one line. An empty one when the entry cannot be written; the task has then
    /// ended.
    QByteArray entryDocument();

    /// Updates the entry from a good reply. By default there is nothing to update.
    virtual bool readBack(const QDomElement& root);

    /// The task's copy of the entry; null until setContact().
    ContactUnit* contact() const { return m_contact.data(); }

private:
    friend class TaskPrivate;
    ContactList::Type m_bookType{ContactList::Unknown};
    QSharedPointer<ContactUnit> m_contact;
};
