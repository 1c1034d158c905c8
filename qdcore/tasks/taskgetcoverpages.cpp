#include "tasks/taskgetcoverpages.h"

#include "tasks/itemreply_p.h"

TaskGetCoverPages::TaskGetCoverPages(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetCoverPages::type()
{
    return Task::GetCoverPages;
}

void TaskGetCoverPages::execute()
{
    d->readItems(QStringLiteral("file"), &TaskGetCoverPages::doneGetCoverPages,
                 [this](const QDomElement& element, QVector<CoverPage>& pages) {
                     CoverPage page;
                     if (page.readFax(element, protocolVersion()))
                         pages.append(page);
                 });
    d->send(d->url(), LOG_TEXT(tr("TaskGetCoverPages request:\r\n%1", "Logger")));
}

void TaskGetCoverPages::onFinished()
{
    // the error text bears another task's name; log readers look for it by that
    d->finishItems({LOG_TEXT(tr("TaskGetCoverPages reply:\r\n", "Logger")),
                    LOG_TEXT(tr("TaskGetContactsOids: reply error! http code %1.", "Logger")),
                    LOG_TEXT(tr("Reply:\r\n", "Logger"))});
}
