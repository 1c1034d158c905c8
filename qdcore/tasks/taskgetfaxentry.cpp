#include "tasks/taskgetfaxentry.h"

#include "faxentry.h"
#include "tasks/itemreply_p.h"
#include "tasks/servicerequest_p.h"

TaskGetFaxEntry::TaskGetFaxEntry(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetFaxEntry::type()
{
    return Task::GetFaxEntry;
}

void TaskGetFaxEntry::execute()
{
    QString path;
    QString query;
    switch (m_taskEntryType) {
    case EntryNone:
        break;
    case EntryQueue:
        path = QStringLiteral("/qdws/v1/ofax");
        query = QStringLiteral("complete_limit=%1");
        break;
    case EntryOutboundStatus:
        path = QStringLiteral("/qdws/v1/outbound_status");
        query = QStringLiteral("pending_limit=%1&sending_limit=%1");
        break;
    }
    d->readEntries<FaxEntry>(QStringLiteral("fax_entry"), &TaskGetFaxEntry::doneGetFaxEntry);
    d->send(limitedUrl(serviceUrl(path), query, m_completeLimit),
            LOG_TEXT(tr("TaskGetFaxEntry request:\r\n%1", "Logger")));
}

void TaskGetFaxEntry::onFinished()
{
    d->finishItems({LOG_TEXT(tr("TaskGetFaxEntry reply:\r\n", "Logger")),
                    LOG_TEXT(tr("TaskGetFaxEntry: reply error! http code %1", "Logger")),
                    LOG_TEXT(tr("Reply:\r\n", "Logger")), true,
                    LOG_TEXT(tr("TaskGetFaxEntry: contains invalid reply!", "Logger"))});
}
