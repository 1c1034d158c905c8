#include "tasks/taskgetinboundfaxentry.h"

#include "inboundfaxentry.h"
#include "tasks/itemreply_p.h"
#include "tasks/servicerequest_p.h"

TaskGetInboundFaxEntry::TaskGetInboundFaxEntry(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetInboundFaxEntry::type()
{
    return Task::GetInboundFaxEntry;
}

void TaskGetInboundFaxEntry::execute()
{
    d->readEntries<InboundFaxEntry>(QStringLiteral("inbound_fax_entry"),
                                    &TaskGetInboundFaxEntry::doneGetInboundFaxEntry);
    d->send(limitedUrl(d->url(), QStringLiteral("index=0&limit=%1"), m_completeLimit),
            LOG_TEXT(tr("TaskGetInboundFaxEntry request:\r\n%1", "Logger")));
}

void TaskGetInboundFaxEntry::onFinished()
{
    d->finishItems({LOG_TEXT(tr("TaskGetInboundFaxEntry reply:\r\n", "Logger")),
                    LOG_TEXT(tr("TaskGetInboundFaxEntry: reply error! http code %1", "Logger")),
                    LOG_TEXT(tr("TaskGetInboundFaxEntry reply:\r\n", "Logger")), true,
                    LOG_TEXT(tr("TaskGetInboundFaxEntry: contains invalid reply!", "Logger"))});
}
