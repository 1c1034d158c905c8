#include "tasks/taskabort.h"

#include "tasks/task_p.h"

#include <QDomDocument>

TaskAbort::TaskAbort(FaxServer& server)
    : Task(server)
{}

Task::Type TaskAbort::type()
{
    return Task::Abort;
}

void TaskAbort::execute()
{
    if (m_faxEntryUrl.isEmpty())
        return;
    d->send(resourceUrl(m_faxEntryUrl), LOG_TEXT(tr("TaskAbort request:\r\n%1", "Logger")));
}

void TaskAbort::onFinished()
{
    if (!succeeded()) {
        // the signal comes before the log line, which therefore uses nothing of the task
        const int error = networkError();
        fail(d->errorStatus());
        QD_LOG(ERROR, tr("TaskAbort: reply error! http code %1", "Logger").arg(error));
        return;
    }

    d->logBody(LOG_TEXT(tr("TaskAbort reply:\r\n", "Logger")));
    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement message = document.documentElement().firstChildElement(QStringLiteral("message"));
    if (message.text() != QLatin1String("Attempting Abort")) {
        QD_LOG(ERROR, tr("TaskAbort: invalid reply!", "Logger"));
        return fail(Task::Error);
    }

    deleteLater();
    Q_EMIT doneAbort();
}
