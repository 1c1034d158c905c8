#pragma once

// What tells one operation of the web service from another. Internal: not installed.

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
    ErrorMapping errors; ///< What becomes of network errors.
    /// The end of a reply that is XML and lacks what it should hold; Ok: an empty list.
    Task::Status unusable;
};

/// The row of a type. For a number that is no type one that has no path and maps every error to Error.
const WebOperation& operationOf(Task::Type type);
