#include "tasks/operations_p.h"

#include "tasks/operationtable_p.h"

#include <QVector>

Task::Status statusOf(ErrorMapping mapping, int networkError)
{
    struct Row
    {
        ErrorMapping mapping;
        QNetworkReply::NetworkError error;
        Task::Status status;
    };
    static constexpr Row exceptions[] = {
        {ErrorMapping::AuthApart, QNetworkReply::AuthenticationRequiredError, Task::AuthError},
        {ErrorMapping::ContentApart, QNetworkReply::UnknownContentError, Task::InvalidReply},
        {ErrorMapping::Contact, QNetworkReply::UnknownContentError, Task::InvalidReply},
        {ErrorMapping::Contact, QNetworkReply::ContentAccessDenied, Task::AccessDenied},
        {ErrorMapping::Contact, QNetworkReply::ContentNotFoundError, Task::NotFound},
        {ErrorMapping::Contact, QNetworkReply::ContentOperationNotPermittedError, Task::NotPermitted},
    };
    for (const Row& row : exceptions) {
        if (row.mapping == mapping && row.error == networkError)
            return row.status;
    }
    return Task::Error;
}

const WebOperation& operationOf(Task::Type type)
{
    static const QVector<WebOperation> operations = [] {
        QVector<WebOperation> rows;
        forEachOperation([&rows](const WebOperation& row, auto...) { rows.append(row); });
        return rows;
    }();
    static const WebOperation none{Task::Type(-1), "", "", ErrorMapping::AlwaysError, Task::Error};
    for (const WebOperation& row : operations) {
        if (row.type == type)
            return row;
    }
    return none;
}
