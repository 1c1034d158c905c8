#include "tasks/taskgetcontactsoids.h"

#include "contactbook_p.h"
#include "faxserver.h"
#include "tasks/task_p.h"

#include <QDomDocument>

TaskGetContactsOids::TaskGetContactsOids(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetContactsOids::type()
{
    return Task::GetContactsOids;
}

void TaskGetContactsOids::execute()
{
    const QString path = ContactBook(m_contactsType)
                             .path(QStringLiteral("/qdws/v1/contact_oids"),
                                   QStringLiteral("/qdws/v1/contact_group_oids"), server().login());
    d->send(serviceUrl(path), LOG_TEXT(tr("TaskGetContactsOids request:\r\n%1", "Logger")));
}

void TaskGetContactsOids::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskGetContactsOids: reply error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    d->logBody(LOG_TEXT(tr("TaskGetContactsOids reply:\r\n", "Logger")));
    QDomDocument document;
    if (!parseBody(document))
        return;

    QList<QString> oids;
    const QDomElement element = document.documentElement().firstChildElement(QStringLiteral("oids"));
    if (ContactBook(m_contactsType).isValid && !element.isNull()) {
        const QString text = element.text();
        const QVector<QStringRef> parts = text.splitRef(QLatin1Char(','));
        oids.reserve(parts.size());
        for (const QStringRef& part : parts)
            oids.append(part.trimmed().toString());
    }
    const ContactList::Type book = m_contactsType;
    deleteLater();
    Q_EMIT doneGetContactsOids(oids, book);
}
