#pragma once

#include "coverpage.h"
#include "tasks/task.h"

/// Reads the cover pages that the server offers: GET "/qdws/v1/data/cover_pages". Every network error is
/// Error.
class QDCORE_EXPORT TaskGetCoverPages : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetCoverPages(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// The pages in the server's order; one that cannot be read is left out.
    void doneGetCoverPages(CoverPageListPtr coverPageList);
};
