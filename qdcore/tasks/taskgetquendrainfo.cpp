#include "tasks/taskgetquendrainfo.h"

#include "tasks/task_p.h"

#include <QDomDocument>

TaskGetQuendraInfo::TaskGetQuendraInfo(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetQuendraInfo::type()
{
    return Task::GetQuendraInfo;
}

void TaskGetQuendraInfo::execute()
{
    d->send(d->url(), LOG_TEXT(tr("TaskGetQuendraInfo request:\r\n%1", "Logger")));
}

void TaskGetQuendraInfo::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskGetQuendraInfo: reply error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    d->logBody(LOG_TEXT(tr("TaskGetQuendraInfo reply:\r\n", "Logger")));
    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement about = document.documentElement().firstChildElement(QStringLiteral("about"));
    if (about.isNull() || !m_info.readFax(about, protocolVersion()))
        return fail(Task::Error);

    const QuendraInfo info = m_info;
    deleteLater();
    Q_EMIT doneGetFaxInfo(info);
}
