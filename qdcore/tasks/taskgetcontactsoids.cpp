#include "tasks/taskgetcontactsoids.h"

#include "contactbook_p.h"
#include "faxserver.h"
#include "tasks/task_p.h"

#include <QDomDocument>

namespace {

/// What an identifier takes beside its text, in bytes.
constexpr qint64 listedSize = 64;

} // namespace

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
    // a book of 100,000 has a megabyte of them in one element
    const QByteArray name = QByteArrayLiteral("oids");
    d->readChildren(
        [this, name, had = false, isFirst = false](const QDomElement& child, bool continues) mutable {
            if (child.tagName() != QLatin1String(name))
                return qint64(0);
            if (!continues)
                isFirst = !std::exchange(had, true);
            if (!isFirst)
                return qint64(0);
            const QString text = child.text();
            const QVector<QStringRef> parts = text.splitRef(QLatin1Char(','));
            for (const QStringRef& part : parts)
                m_oids.append(part.trimmed().toString());
            return parts.size() * listedSize;
        });
    d->reader().setDivided(name, ',');
    d->send(serviceUrl(path), LOG_TEXT(tr("TaskGetContactsOids request:\r\n%1", "Logger")));
}

void TaskGetContactsOids::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskGetContactsOids: reply error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    d->logBody(LOG_TEXT(tr("TaskGetContactsOids reply:\r\n", "Logger")));
    if (!d->finishDocument())
        return;

    const ContactList::Type book = m_contactsType;
    const QList<QString> oids = ContactBook(book).isValid ? m_oids : QList<QString>();
    deleteLater();
    Q_EMIT doneGetContactsOids(oids, book);
}
