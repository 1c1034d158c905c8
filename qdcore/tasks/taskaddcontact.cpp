#include "tasks/taskaddcontact.h"

#include "tasks/contactchange_p.h"

TaskAddContact::TaskAddContact(FaxServer& server)
    : TaskChangeContact(server)
{}

Task::Type TaskAddContact::type()
{
    return Task::AddContact;
}

void TaskAddContact::execute()
{
    if (d->isStarted() || !hasEntry())
        return;
    const QUrl url = serviceUrl(bookPath());
    d->logRequest(url, LOG_TEXT(tr("TaskAddContact request:\r\n%1", "Logger")));
    const QByteArray body = entryDocument();
    if (!body.isEmpty())
        d->send(url, body);
}

void TaskAddContact::onFinished()
{
    d->finishChange({QStringLiteral("Created"), LOG_TEXT(tr("TaskAddContact reply:\r\n", "Logger")),
                     LOG_TEXT(tr("TaskAddContact: invalid reply!", "Logger")),
                     LOG_TEXT(tr("TaskAddContact: reply error! http code %1", "Logger")),
                     LOG_TEXT(tr("Reply:\r\n", "Logger"))},
                    &TaskAddContact::doneAddContact);
}

bool TaskAddContact::readBack(const QDomElement& root)
{
    const QDomElement element = root.firstChildElement(elementName());
    return !element.isNull() && contact()->readFax(element, protocolVersion());
}
