#pragma once

#include "tasks/task.h"

#include <QString>
#include <QVector>

/// The exit statuses of qdfax. Outcomes of requests have the numbers of Task::Status; the program's own are
/// above them.
namespace ExitStatus {

enum : int {
    Ok = 0,
    Usage = 1, ///< The command line is wrong; nothing was sent.
    Error = Task::Error,
    AuthError = Task::AuthError,
    NotSupported = Task::NotSupported,
    NotPermitted = Task::NotPermitted,
    InvalidReply = Task::InvalidReply,
    AccessDenied = Task::AccessDenied,
    NotFound = Task::NotFound,
    TimeOut = 10,      ///< No answer within --timeout.
    File = 11,         ///< A file of the user cannot be read, is refused, or cannot be written.
    Settings = 12,     ///< The settings file is unusable, or lacks the server.
    NotSent = 13,      ///< Waited for the end of a fax, and not every recipient got it.
    NothingFound = 14, ///< A search found nothing.
    Interrupted = 130  ///< Ctrl-C.
};

struct Row
{
    int status;
    QString meaning;
};

/// The table that help shows.
QVector<Row> table();

} // namespace ExitStatus
