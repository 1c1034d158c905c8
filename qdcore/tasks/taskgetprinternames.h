#pragma once

#include "qstringlistptr.h"
#include "tasks/task.h"

/// Reads the names of the server's printers: GET "/qdws/v1/data/printer_names". Every network error is Error.
class QDCORE_EXPORT TaskGetPrinterNames : public Task
{
    Q_OBJECT
public:
    /// Called by FaxServer::addTask().
    explicit TaskGetPrinterNames(FaxServer& server);

    void execute() override;

protected:
    void onFinished() override;

public:
    Task::Type type() override;

Q_SIGNALS:
    /// The names in the server's order, blanks included.
    void doneGetPrinterNames(QStringListPtr printerNameList);
};
