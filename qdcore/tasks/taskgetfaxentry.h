#pragma once

#include "basefaxentry.h"
#include "tasks/task.h"

/// Reads the faxes that are on their way: the queue, or the outbound status. The list is reported whatever
/// the reply's message says; entries that cannot be read are left out.
class QDCORE_EXPORT TaskGetFaxEntry : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetFaxEntry(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    /// What is fetched.
    enum TaskEntryType {
        EntryNone = 0,          ///< Nothing valid: the request goes to the server's root.
        EntryQueue = 1,         ///< The outbound queue, "/qdws/v1/ofax".
        EntryOutboundStatus = 2 ///< The outbound status, "/qdws/v1/outbound_status".
    };
    Q_ENUM(TaskEntryType)

    /// Which of the two lists; EntryNone until it is set.
    void setTaskEntryType(TaskEntryType type) { m_taskEntryType = type; }

    //@{
    /// At most so many entries; for the outbound status so many pending and so many being sent. 0 and less:
    /// all.
    void setCompleteLimit(int limit) { m_completeLimit = limit; }
    int completeLimit() { return m_completeLimit; }
    //@}

Q_SIGNALS:
    /// The entries are FaxEntry objects, in the server's order.
    void doneGetFaxEntry(BaseFaxEntry::FaxEntriesPtrListPtr entrysPtr);

private:
    int m_completeLimit{-1};
    TaskEntryType m_taskEntryType{EntryNone};
};
