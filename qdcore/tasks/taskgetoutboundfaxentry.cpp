#include "tasks/taskgetoutboundfaxentry.h"

#include "outboundfaxentry.h"
#include "tasks/itemreply_p.h"
#include "tasks/servicerequest_p.h"

TaskGetOutboundFaxEntry::TaskGetOutboundFaxEntry(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetOutboundFaxEntry::type()
{
    return Task::GetOutboundFaxEntry;
}

void TaskGetOutboundFaxEntry::execute()
{
    d->readEntries<OutboundFaxEntry>(QStringLiteral("outbound_fax_entry"),
                                     &TaskGetOutboundFaxEntry::doneGetFaxEntry);
    d->send(limitedUrl(d->url(), QStringLiteral("limit=%1"), m_completeLimit),
            LOG_TEXT(tr("TaskGetOutboundFaxEntry request:\r\n%1", "Logger")));
}

void TaskGetOutboundFaxEntry::onFinished()
{
    d->finishItems({LOG_TEXT(tr("TaskGetOutboundFaxEntry reply:\r\n", "Logger")),
                    LOG_TEXT(tr("TaskGetOutboundFaxEntry: reply error! http code %1", "Logger")),
                    LOG_TEXT(tr("Reply:\r\n", "Logger")), true,
                    LOG_TEXT(tr("TaskGetOutboundFaxEntry: contains invalid reply!", "Logger"))});
}
