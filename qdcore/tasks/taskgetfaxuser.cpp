#include "tasks/taskgetfaxuser.h"

#include "tasks/task_p.h"

#include <QDomDocument>

TaskGetFaxUser::TaskGetFaxUser(FaxServer& server)
    : Task(server)
{}

Task::Type TaskGetFaxUser::type()
{
    return Task::GetFaxUser;
}

void TaskGetFaxUser::execute()
{
    d->send(d->url(m_userName), LOG_TEXT(tr("TaskGetFaxUser request:\r\n%1", "Logger")));
}

void TaskGetFaxUser::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskGetFaxUser: reply error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    d->logBody(LOG_TEXT(tr("TaskGetFaxUser reply:\r\n", "Logger")));
    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement element = document.documentElement().firstChildElement(QStringLiteral("user"));
    if (element.isNull() || !m_user.readFax(element, protocolVersion())) {
        QD_LOG(ERROR, tr("TaskGetFaxUser: invalid reply!", "Logger"));
        return fail(Task::Error);
    }

    const FaxUser user = m_user;
    deleteLater();
    Q_EMIT doneGetFaxUser(user);
}
