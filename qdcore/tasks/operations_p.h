#pragma once

// The properties in which the operations of the web service differ. Internal: not installed.

#include "tasks/task.h"

/// How a network error becomes a status. Any error that a mapping does not name is Error.
enum class ErrorMapping {
    AlwaysError,  ///< No exception.
    AuthApart,    ///< 401 is AuthError.
    ContentApart, ///< An unknown content error is InvalidReply.
    Contact       ///< 403, 404, 405 and the unknown content error have statuses of their own; 401 has not.
};

/// The status for a QNetworkReply::NetworkError.
Task::Status statusOf(ErrorMapping mapping, int networkError);

/// One row of the table in operationtable_p.h.
struct WebOperation
{
    Task::Type type;
    const char* method;  ///< "GET", "POST", "PUT" or "DELETE".
    const char* path;    ///< Parameters go behind it, or lead to another resource.
    ErrorMapping errors; ///< The mapping of network errors.
    /// Status for well-formed XML without the required content; Ok: an empty list is reported.
    Task::Status unusable;
};

/// The row of a type. For an invalid type, a row with an empty path that maps every error to Error.
const WebOperation& operationOf(Task::Type type);
