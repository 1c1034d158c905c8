#include "tasks/taskschedule.h"

#include "domtext_p.h"
#include "faxentry.h"
#include "faxserver.h"
#include "log_p.h"

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
    if (isStarted())
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
    post(serviceUrl(QStringLiteral("/qdws/v1/ofax")), body,
         LOG_TEXT(tr("TaskSchedule request:\r\n%1", "Logger")));
}

void TaskSchedule::onFinished()
{
    if (!succeeded()) {
        logReplyError(LOG_TEXT(tr("TaskSchedule: reschedule error! http code %1", "Logger")),
                      LOG_TEXT(tr("Reply:\r\n", "Logger")));
        return fail(errorStatus(ErrorMapping::ContentApart));
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
