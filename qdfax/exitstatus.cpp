#include "exitstatus.h"

QVector<ExitStatus::Row> ExitStatus::table()
{
    return {
        {Ok, QStringLiteral("done")},
        {Usage, QStringLiteral("the command line is wrong; nothing was sent")},
        {Error, QStringLiteral("the server cannot be reached, or refused the request")},
        {AuthError, QStringLiteral("the server does not accept login and password")},
        {NotSupported, QStringLiteral("this server, or this computer, cannot do that")},
        {NotPermitted, QStringLiteral("the server does not permit it")},
        {InvalidReply, QStringLiteral("the answer is not one of a fax server")},
        {AccessDenied, QStringLiteral("the server denies access")},
        {NotFound, QStringLiteral("the server, or Outlook, does not have it")},
        {TimeOut, QStringLiteral("no answer within --timeout seconds")},
        {File, QStringLiteral("a file cannot be read or written, or is of a type that cannot be faxed")},
        {Settings, QStringLiteral("the settings file is of no use, or holds no such server")},
        {NotSent, QStringLiteral("waited for the end of the fax, and not every recipient got it")},
        {NothingFound, QStringLiteral("the search found nothing")},
        {Interrupted, QStringLiteral("interrupted with Ctrl-C")},
    };
}
