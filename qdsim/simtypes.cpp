#include "simtypes.h"

#include "simxml.h"

QByteArray SimRequest::header(const char* name) const
{
    for (const auto& header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0)
            return header.second;
    }
    return QByteArray();
}

bool SimRequest::hasHeader(const char* name) const
{
    return !header(name).isNull();
}

SimReply SimReply::message(const QString& text)
{
    SimReply reply;
    reply.body = SimXmlWriter().open("reply").text("message", text).close("reply").bytes();
    return reply;
}

SimReply SimReply::refuse(int status, const QString& reason)
{
    SimReply reply = message(reason);
    reply.status = status;
    reply.refusal = reason;
    return reply;
}

bool SimUser::parse(const QString& text, SimUser* user, QString* error)
{
    *user = SimUser();
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() < 2 || parts.size() > 3 || parts[0].isEmpty()) {
        *error = QStringLiteral("a user is NAME:PASSWORD[:RIGHTS]");
        return false;
    }
    if (parts[0] == QLatin1String("global_contact_list")) {
        *error = QStringLiteral("\"%1\" is the name of the global book").arg(parts[0]);
        return false;
    }
    user->name = parts[0];
    user->password = parts[1];
    const QStringList rights = parts.value(2).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& right : rights) {
        if (right == QLatin1String("global")) {
            user->editGlobal = true;
        } else if (right == QLatin1String("admin")) {
            user->admin = true;
        } else if (right == QLatin1String("nosend")) {
            user->noSend = true;
        } else if (right == QLatin1String("readonly")) {
            user->readOnly = true;
        } else {
            *error = QStringLiteral("unknown right \"%1\"; there are global, admin, nosend and readonly")
                         .arg(right);
            return false;
        }
    }
    return true;
}
