#include "tasks/taskdeletecontact.h"

#include "tasks/contactchange_p.h"

TaskDeleteContact::TaskDeleteContact(FaxServer& server)
    : TaskChangeContact(server)
{}

Task::Type TaskDeleteContact::type()
{
    return Task::DeleteContact;
}

void TaskDeleteContact::execute()
{
    if (d->isStarted() || !hasEntry())
        return;
    d->send(serviceUrl(entryPath()), LOG_TEXT(tr("TaskDeleteContact request:\r\n%1", "Logger")));
}

void TaskDeleteContact::onFinished()
{
    d->finishChange({QStringLiteral("Deleted"), LOG_TEXT(tr("TaskDeleteContact reply:\r\n", "Logger")),
                     LOG_TEXT(tr("TaskDeleteContact: invalid reply!", "Logger")),
                     LOG_TEXT(tr("TaskDeleteContact: reply error! http code %1", "Logger")),
                     LOG_TEXT(tr("Reply:\r\n", "Logger"))},
                    &TaskDeleteContact::doneDeleteContact);
}
