#include "tasks/taskschedule.h"

#include "domtext_p.h"
#include "faxentry.h"
#include "faxserver.h"
#include "tasks/requestdocument_p.h"
#include "tasks/task_p.h"

#include <QDomDocument>

TaskSchedule::TaskSchedule(FaxServer& server)
    : Task(server)
{}

Task::Type TaskSchedule::type()
{
    return Task::Schedule;
}

void TaskSchedule::execute()
{
    if (d->isStarted())
        return;

    QDomDocument request;
    QDomElement root = startDocument(request, QStringLiteral("schedule_fax"));
    QDomElement sender = appendElement(request, root, QStringLiteral("sender"));
    m_document.renameDuplicateAttachments();
    const int version = protocolVersion();
    if (!server().user().writeFax(request, sender, version) || !m_document.writeFax(request, root, version) ||
        !m_document.faxSchedule().writeFax(request, root, version)) {
        return fail(Task::InvalidReply);
    }

    const QByteArray body = indented(request);
    if (body.isEmpty())
        return fail(Task::InvalidReply);
    d->send(d->url(), LOG_TEXT(tr("TaskSchedule request:\r\n%1", "Logger")), body);
}

void TaskSchedule::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskSchedule: reschedule error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    QDomDocument document;
    if (!parseBody(document))
        return;

    const auto entries = BaseFaxEntry::FaxEntriesPtrListPtr::create();
    QDomElement root = document.documentElement();
    bool allRead = true;
    takeElements(root, QStringLiteral("fax_entry"), [&](const QDomElement& element) {
        const auto entry = QSharedPointer<FaxEntry>::create();
        allRead = entry->readFax(element, protocolVersion()) && allRead;
        entries->append(entry);
    });
    if (entries->isEmpty() || !allRead) {
        QD_LOG(ERROR, tr("TaskSchedule: invalid reply.", "Logger"));
        return fail(Task::InvalidReply);
    }

    deleteLater();
    Q_EMIT doneFaxSchedule(entries);
}
