#include "tasks/taskreschedule.h"

#include "tasks/task_p.h"

#include <QDomDocument>

TaskReschedule::TaskReschedule(FaxServer& server)
    : Task(server)
{}

Task::Type TaskReschedule::type()
{
    return Task::Reschedule;
}

void TaskReschedule::execute()
{
    if (d->isStarted() || m_faxEntryUrl.isEmpty())
        return;

    // a queued fax is moved through its outbound log resource
    m_faxEntryUrl = QUrl(m_faxEntryUrl.toString(QUrl::FullyEncoded)
                             .replace(QLatin1String("ofax"), QLatin1String("outbound_log")));
    QString at = QStringLiteral("now");
    if (!m_dateTime.isNull()) {
        at = m_dateTime.toUTC().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
        at.replace(QLatin1Char(':'), QLatin1String("%3A"));
    }
    QUrl url = resourceUrl(m_faxEntryUrl);
    if (url.isValid())
        url.setQuery(QStringLiteral("at=") + at, QUrl::TolerantMode);

    d->send(url, LOG_TEXT(tr("TaskReschedule request:\r\n%1", "Logger")));
}

void TaskReschedule::onFinished()
{
    if (!succeeded()) {
        return d->failThenLog(LOG_TEXT(tr("TaskReschedule: reschedule error! http code %1", "Logger")),
                              LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    const QByteArray reply = body();
    QDomDocument document;
    if (!parseBody(document))
        return;

    const QDomElement message = document.documentElement().firstChildElement(QStringLiteral("message"));
    if (message.text() != QLatin1String("Attempting reschedule")) {
        QD_LOG(ERROR,
               tr("TaskReschedule: reschedule error! response: ", "Logger") + QString::fromUtf8(reply));
        return fail(Task::Error);
    }

    deleteLater();
    Q_EMIT doneReschedule();
}
