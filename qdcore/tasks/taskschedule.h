#pragma once

#include "basefaxentry.h"
#include "faxdocument.h"
#include "tasks/task.h"

/// Submits a fax: POST of a "schedule_fax" document to "/qdws/v1/ofax". It is sent at most once, whatever the
/// connection does. A document that cannot be written and a reply without readable entries are InvalidReply.
class QDCORE_EXPORT TaskSchedule : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskSchedule(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// The most that the files of a fax may have together, in bytes: they are kept in memory until they are
    /// sent. What does not fit is left out.
    static constexpr qint64 maxAttachmentSize = qint64(2) * 1024 * 1024 * 1024;

    /// The fax, copied: recipients, attachments, cover page and schedule options. Set before execute(), which
    /// reads the attached files; they may be deleted when it has returned.
    void setFaxDocument(const FaxDocument& document) { m_document = document; }

Q_SIGNALS:
    /// One entry a recipient, in the server's order.
    void doneFaxSchedule(BaseFaxEntry::FaxEntriesPtrListPtr entries);

private:
    FaxDocument m_document;
};
