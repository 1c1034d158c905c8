#include "tasks/taskmodifyfaxuser.h"

#include "tasks/requestdocument_p.h"
#include "tasks/task_p.h"

#include <QDomDocument>

TaskModifyFaxUser::TaskModifyFaxUser(FaxServer& server)
    : Task(server)
{}

Task::Type TaskModifyFaxUser::type()
{
    return Task::ModifyFaxUser;
}

void TaskModifyFaxUser::setUser(const FaxUser& user)
{
    m_user = user;
    m_userSet = true;
}

void TaskModifyFaxUser::execute()
{
    if (d->isStarted() || !m_userSet)
        return;

    const QUrl url = resourceUrl(m_user.contact().url());
    d->logRequest(url, LOG_TEXT(tr("TaskModifyFaxUser request:\r\n%1", "Logger")));
    QDomDocument document;
    QDomElement element = startDocument(document, QStringLiteral("user"));
    if (!m_user.writeFax(document, element, protocolVersion()))
        return fail(Task::Error);
    d->send(url, oneLine(document));
}

void TaskModifyFaxUser::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskModifyFaxUser: reply error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    d->logBody(LOG_TEXT(tr("TaskModifyFaxUser reply:\r\n", "Logger")));
    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement message = document.documentElement().firstChildElement(QStringLiteral("message"));
    if (message.text() != QLatin1String("Modified")) {
        QD_LOG(ERROR, tr("TaskModifyFaxUser: invalid reply", "Logger"));
        return fail(Task::Error);
    }

    const FaxUser user = m_user;
    deleteLater();
    Q_EMIT doneModifyFaxUser(user);
}
