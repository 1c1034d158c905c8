#include "tasks/taskgetprinternames.h"

#include "tasks/itemreply_p.h"

TaskGetPrinterNames::TaskGetPrinterNames(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetPrinterNames::type()
{
    return Task::GetPrinterNames;
}

void TaskGetPrinterNames::execute()
{
    d->readItems(QStringLiteral("printer"), &TaskGetPrinterNames::doneGetPrinterNames,
                 [](const QDomElement& element, QStringList& names) { names.append(element.text()); });
    d->send(d->url(), LOG_TEXT(tr("TaskGetPrinterNames request:\r\n%1", "Logger")));
}

void TaskGetPrinterNames::onFinished()
{
    d->finishItems({LOG_TEXT(tr("TaskGetPrinterNames reply:\r\n", "Logger")),
                    LOG_TEXT(tr("TaskGetPrinterNames: reply error! http code %1.", "Logger")),
                    LOG_TEXT(tr("Reply:\r\n", "Logger"))});
}
