#pragma once

#include "inboundfaxentry.h"
#include "tasks/task.h"

/// Reads the log of received faxes: GET "/qdws/v1/inbound_log". The list is reported whatever the reply's
/// message says; entries that cannot be read are left out.
class QDCORE_EXPORT TaskGetInboundFaxEntry : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetInboundFaxEntry(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

    //@{
    /// At most so many entries. 0 and less: all.
    void setCompleteLimit(int limit) { m_completeLimit = limit; }
    int completeLimit() const { return m_completeLimit; }
    //@}

Q_SIGNALS:
    /// The entries in the server's order.
    void doneGetInboundFaxEntry(const InboundFaxEntriesPtrListPtr& entriesPtr);

private:
    int m_completeLimit{-1};
};
