#include "tasks/taskchangecontact.h"

#include "contactbook_p.h"
#include "faxserver.h"
#include "quendracontact.h"
#include "quendracontactgroup.h"
#include "tasks/requestdocument_p.h"

#include <QDomDocument>

TaskChangeContact::TaskChangeContact(FaxServer& server)
    : Task(server)
{}

void TaskChangeContact::setContact(const ContactUnit& contact, ContactList::Type bookType)
{
    if (!ContactBook(bookType).isValid)
        return;
    m_contact.reset(contact.copy());
    m_bookType = bookType;
}

QString TaskChangeContact::elementName() const
{
    if (dynamic_cast<const QuendraContact*>(contact()))
        return QStringLiteral("contact");
    if (dynamic_cast<const QuendraContactGroup*>(contact()))
        return QStringLiteral("contact_group");
    return QString();
}

QString TaskChangeContact::entryPath() const
{
    if (const auto* single = dynamic_cast<const QuendraContact*>(contact()))
        return single->url().path(QUrl::FullyDecoded);
    if (const auto* group = dynamic_cast<const QuendraContactGroup*>(contact()))
        return group->url().path(QUrl::FullyDecoded);
    return QString();
}

QString TaskChangeContact::bookPath() const
{
    const ContactBook book(m_bookType);
    const bool isGroup = dynamic_cast<const QuendraContactGroup*>(contact()) != nullptr;
    if (book.isGroup != isGroup)
        return QString();
    return book.path(QStringLiteral("/qdws/v1/contacts"), QStringLiteral("/qdws/v1/contact_groups"),
                     server().login());
}

bool TaskChangeContact::hasEntry()
{
    if (!elementName().isEmpty())
        return true;
    fail(Task::Error);
    return false;
}

QByteArray TaskChangeContact::entryDocument()
{
    QDomDocument document;
    QDomElement element = startDocument(document, elementName());
    if (contact()->writeFax(document, element, protocolVersion()))
        return oneLine(document);
    fail(Task::Error);
    return QByteArray();
}

bool TaskChangeContact::readBack(const QDomElement&)
{
    return true;
}
