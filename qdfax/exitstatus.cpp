#include "exitstatus.h"

#include "text.h"

QVector<ExitStatus::Row> ExitStatus::table()
{
    return {
        {Ok, Text::tr("done")},
        {Usage, Text::tr("the command line is wrong; nothing was sent")},
        {Error, Text::tr("the server cannot be reached, or refused the request")},
        {AuthError, Text::tr("the server does not accept login and password")},
        {NotSupported, Text::tr("this server, or this computer, cannot do that")},
        {NotPermitted, Text::tr("the server does not permit it")},
        {InvalidReply, Text::tr("the answer is not one of a fax server")},
        {AccessDenied, Text::tr("the server denies access")},
        {NotFound, Text::tr("the server, or Outlook, does not have it")},
        {TimeOut, Text::tr("no answer within --timeout seconds")},
        {File, Text::tr("a file cannot be read or written, or is of a type that cannot be faxed")},
        {Settings, Text::tr("the settings file is of no use, or holds no such server")},
        {NotSent, Text::tr("waited for the end of the fax, and not every recipient got it")},
        {NothingFound, Text::tr("the search found nothing")},
        {Interrupted, Text::tr("interrupted with Ctrl-C")},
    };
}
