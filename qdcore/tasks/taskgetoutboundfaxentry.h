#pragma once

#include "basefaxentry.h"
#include "tasks/task.h"

/// Reads the log of sent faxes: GET "/qdws/v1/outbound_log". The list is reported whatever the reply's
/// message says; entries that cannot be read are left out.
class QDCORE_EXPORT TaskGetOutboundFaxEntry : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetOutboundFaxEntry(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    //@{
    /// At most so many entries. 0 and less: all.
    void setCompleteLimit(int limit) { m_completeLimit = limit; }
    int completeLimit() { return m_completeLimit; }
    //@}

Q_SIGNALS:
    /// The entries are OutboundFaxEntry objects, in the server's order.
    void doneGetFaxEntry(BaseFaxEntry::FaxEntriesPtrListPtr entrysPtr);

private:
    int m_completeLimit{-1};
};
