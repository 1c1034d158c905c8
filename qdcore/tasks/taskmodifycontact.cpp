#include "tasks/taskmodifycontact.h"

#include "tasks/contactchange_p.h"

TaskModifyContact::TaskModifyContact(FaxServer& server)
    : TaskChangeContact(server)
{}

Task::Type TaskModifyContact::type()
{
    return Task::ModifyContact;
}

void TaskModifyContact::execute()
{
    if (d->isStarted() || !hasEntry())
        return;
    const QUrl url = serviceUrl(entryPath());
    d->logRequest(url, LOG_TEXT(tr("TaskModifyContact request:\r\n%1", "Logger")));
    const QByteArray body = entryDocument();
    if (!body.isEmpty())
        d->send(url, body);
}

void TaskModifyContact::onFinished()
{
    d->finishChange({QStringLiteral("Modified"), LOG_TEXT(tr("TaskModifyContact reply:\r\n", "Logger")),
                     LOG_TEXT(tr("TaskModifyContact: invalid reply", "Logger")),
                     LOG_TEXT(tr("TaskModifyContact: reply error! http code %1", "Logger")),
                     LOG_TEXT(tr("Reply:\r\n", "Logger"))},
                    &TaskModifyContact::doneModifyContact);
}
