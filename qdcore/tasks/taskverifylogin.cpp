#include "tasks/taskverifylogin.h"

#include "tasks/task_p.h"

#include <QDomDocument>

TaskVerifyLogin::TaskVerifyLogin(FaxServer& server)
    : Task(server)
{}

Task::Type TaskVerifyLogin::type()
{
    return Task::VerifyLogin;
}

void TaskVerifyLogin::execute()
{
    d->send(d->url(), LOG_TEXT(tr("TaskVerifyLogin request:\r\n%1", "Logger")));
}

void TaskVerifyLogin::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskVerifyLogin: reschedule error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement message = document.documentElement().firstChildElement(QStringLiteral("message"));
    const QString text = message.text();
    const QLatin1String good("VERIFIED");
    // upper case is never shorter, and a hostile text may be of hundreds of megabytes
    m_result = text.size() <= good.size() && text.toUpper() == good;
    if (!m_result)
        return fail(Task::AuthError);

    deleteLater();
    Q_EMIT doneVerifyLogin();
}
