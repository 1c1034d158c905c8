#include "tasks/taskschedule.h"

#include "documentparts_p.h"
#include "domtext_p.h"
#include "faxentry.h"
#include "faxserver.h"
#include "fileblocks_p.h"
#include "tasks/oneshotbody_p.h"
#include "tasks/requestdocument_p.h"
#include "tasks/task_p.h"

#include <QDomDocument>
#include <QUuid>

TaskSchedule::TaskSchedule(FaxServer& server)
    : Task(server)
{}

Task::Type TaskSchedule::type()
{
    return Task::Schedule;
}

void TaskSchedule::execute()
{
    if (d->isStarted())
        return;

    QDomDocument request;
    QDomElement root = startDocument(request, QStringLiteral("schedule_fax"));
    QDomElement sender = appendElement(request, root, QStringLiteral("sender"));
    m_document.renameDuplicateAttachments();
    const int version = protocolVersion();
    // A file of 100 MB would take twenty times as long in the document as encoding it takes. A placeholder
    // stands in for it; it cannot be mistaken, since no text of the document can hold a tag.
    const QString placeholder = QUuid::createUuid().toString(QUuid::WithoutBraces);
    QVector<QVector<QByteArray>> files;
    qint64 left = maxAttachmentSize;
    const auto read = [&](const DiskDataProvider& file) {
        QVector<QByteArray> blocks;
        qint64 size = 0;
        const auto take = [&](const QByteArray& block) {
            blocks.append(block);
            size += block.size();
        };
        if (!readBlocks(file.fileName(), left, take))
            return QString();
        left -= size;
        files.append(blocks);
        return placeholder;
    };
    if (!server().user().writeFax(request, sender, version) ||
        !writeRecord(m_document, request, root, version, read) ||
        !m_document.faxSchedule().writeFax(request, root, version)) {
        return fail(Task::InvalidReply);
    }

    auto body = std::make_unique<OneShotBody>();
    writeIndented(request, placeholder, files, *body);
    const QUrl url = d->url();
    d->logRequest(url, LOG_TEXT(tr("TaskSchedule request:\r\n%1", "Logger")));
    d->send(url, std::move(body));
}

void TaskSchedule::onFinished()
{
    if (!succeeded()) {
        return d->failReply(LOG_TEXT(tr("TaskSchedule: reschedule error! http code %1", "Logger")),
                            LOG_TEXT(tr("Reply:\r\n", "Logger")));
    }

    QDomDocument document;
    if (!parseBody(document))
        return;

    const auto entries = BaseFaxEntry::FaxEntriesPtrListPtr::create();
    QDomElement root = document.documentElement();
    bool allRead = true;
    takeElements(root, QStringLiteral("fax_entry"), [&](const QDomElement& element) {
        const auto entry = QSharedPointer<FaxEntry>::create();
        allRead = entry->readFax(element, protocolVersion()) && allRead;
        entries->append(entry);
    });
    if (entries->isEmpty() || !allRead) {
        QD_LOG(ERROR, tr("TaskSchedule: invalid reply.", "Logger"));
        return fail(Task::InvalidReply);
    }

    deleteLater();
    Q_EMIT doneFaxSchedule(entries);
}
