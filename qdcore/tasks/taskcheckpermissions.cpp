#include "tasks/taskcheckpermissions.h"

#include "faxuserpermissions.h"
#include "tasks/task_p.h"

#include <QDomDocument>

TaskChekPermissions::TaskChekPermissions(FaxServer& server)
    : Task(server)
{}

Task::Type TaskChekPermissions::type()
{
    return Task::ChekPermissions;
}

void TaskChekPermissions::execute()
{
    d->send(d->url(), LOG_TEXT(tr("Request:\r\n%1", "Logger")));
}

void TaskChekPermissions::onFinished()
{
    if (!succeeded()) {
        return d->failReply(
            LOG_TEXT(tr("TaskChekPermissions: response permission error! http code %1", "Logger")),
            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    const QByteArray reply = body();
    QDomDocument document;
    if (!parseBody(document))
        return;
    d->logBody(LOG_TEXT(tr("TaskChekPermissions reply:\r\n", "Logger")), reply);

    const QDomElement root = document.documentElement();
    const QDomElement options = root.firstChildElement(QStringLiteral("user_options"));
    const QDomElement message = root.firstChildElement(QStringLiteral("message"));
    if (message.text() != QLatin1String("Success")) {
        QD_LOG(ERROR, tr("TaskChekPermissions: response permission error! response: %1", "Logger")
                          .arg(QString::fromUtf8(reply)));
        return fail(Task::Error);
    }

    FaxUserPermissions permissions;
    if (!permissions.readFax(options, protocolVersion())) {
        QD_LOG(ERROR, tr("TaskChekPermissions: can not parse user options", "Logger"));
        return fail(Task::Error);
    }

    deleteLater();
    Q_EMIT doneCheckPermissions(permissions.flags());
}
