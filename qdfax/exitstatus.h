#pragma once

#include "tasks/task.h"

#include <QString>
#include <QVector>

/// How qdfax ends. The outcomes of requests keep the numbers of Task::Status; the program's own lie above
/// them.
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
    TimeOut = 10,      ///< No answer for as long as --timeout says.
    File = 11,         ///< A file of the user cannot be read, is refused, or cannot be written.
    Settings = 12,     ///< The settings file is of no use, or holds no such server.
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
