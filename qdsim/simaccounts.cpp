#include "simhandlers.h"

#include <QtCore/QUrl>

SimReply SimHandlers::about(SimCall& call)
{
    const SimOptions& options = call.state.options();
    const qint64 uptime = call.state.clock().uptime() / 1000;
    SimXmlWriter xml;
    xml.open("reply").open("about").text("model", options.model).text("version", options.version);
    xml.text("serial", options.serial)
        .text("hostname", options.hostname)
        .text("description", options.description);
    xml.number("channels", options.channels);
    xml.text("uptime", QStringLiteral("%1 days %2:%3:%4")
                           .arg(uptime / 86400)
                           .arg(uptime / 3600 % 24, 2, 10, QLatin1Char('0'))
                           .arg(uptime / 60 % 60, 2, 10, QLatin1Char('0'))
                           .arg(uptime % 60, 2, 10, QLatin1Char('0')));
    SimReply reply;
    reply.body = xml.close("about").close("reply").bytes();
    return reply;
}

SimReply SimHandlers::verify(SimCall& /*call*/)
{
    return SimReply::message(QStringLiteral("VERIFIED"));
}

// cppcheck-suppress constParameter ; all handlers have one signature
SimReply SimHandlers::userOptions(SimCall& call)
{
    SimXmlWriter xml;
    xml.open("reply").text("message", "Success").open("user_options");
    xml.boolean("add_global", call.user.editGlobal || call.user.admin).close("user_options").close("reply");
    SimReply reply;
    reply.body = xml.bytes();
    return reply;
}

SimReply SimHandlers::getUser(SimCall& call)
{
    const SimState::Lock lock(call.state);
    const SimUser* user = call.state.user(call.rest);
    if (call.rest != call.user.name && !call.user.admin)
        return SimReply::refuse(403, QStringLiteral("the profile of somebody else"));
    if (!user)
        return SimReply::refuse(404, QStringLiteral("no user \"%1\"").arg(call.rest));
    SimXmlWriter xml;
    xml.open("reply").text("message", "Success");
    SimDocuments::writeUser(xml, call.state.features(), *user, call.server);
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

SimReply SimHandlers::putUser(SimCall& call)
{
    SimUser changed;
    QString why;
    SimCursor cursor(call.root, &why);
    SimDocuments::readProfile(cursor, call.state.features(), &changed);
    cursor.end();
    if (cursor.ok() && !changed.person.url.isEmpty() && QUrl(changed.person.url).path() != call.request.path)
        cursor.complain(QStringLiteral("\"contact_url\" is not the address of this profile"));
    if (cursor.ok() && !changed.person.username.isEmpty() && changed.person.username != call.rest)
        cursor.complain(QStringLiteral("\"username\" is not the name of this user"));
    if (!cursor.ok())
        return SimReply::refuse(400, why);
    const SimState::Lock lock(call.state);
    if (call.rest != call.user.name && !call.user.admin)
        return SimReply::refuse(403, QStringLiteral("the profile of somebody else"));
    SimUser* user = call.state.user(call.rest);
    if (!user)
        return SimReply::refuse(404, QStringLiteral("no user \"%1\"").arg(call.rest));
    user->person = changed.person;
    user->coverPageEnabled = changed.coverPageEnabled;
    user->coverPageName = changed.coverPageName;
    user->defaults = changed.defaults;
    call.state.markChanged();
    return SimReply::message(QStringLiteral("Modified"));
}
