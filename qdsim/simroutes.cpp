#include "simroutes.h"

#include <QtCore/QRegularExpression>

namespace {

const char atQuery[] = "at=(now|\\d{4}-\\d\\d-\\d\\dT\\d\\d%3A\\d\\d%3A\\d\\d)";

const char sinceQuery[] = "(query_time=[1-9]\\d*)?";

using R = SimRoute;
namespace H = SimHandlers;

/// All operations that the simulator implements.
const SimRoute routes[] = {
    // method, path, query, document element, rules, handler
    {"GET", "/qdws/v1/about", nullptr, nullptr, R::Plain, H::about},
    {"GET", "/qdws/v1/verify", nullptr, nullptr, R::Plain, H::verify},
    {"GET", "/qdws/v1/user_options", nullptr, nullptr, R::Plain, H::userOptions},
    {"GET", "/qdws/v1/users/*", nullptr, nullptr, R::Plain, H::getUser},
    {"PUT", "/qdws/v1/users/*", nullptr, "user", R::OneLine, H::putUser},

    {"GET", "/qdws/v1/ofax", "(complete_limit=[1-9]\\d*)?", nullptr, R::Plain, H::getQueue},
    {"POST", "/qdws/v1/ofax", nullptr, "schedule_fax", R::Indented, H::submit},
    {"GET", "/qdws/v1/ofax/*", nullptr, nullptr, R::Plain, H::getFax},
    {"DELETE", "/qdws/v1/ofax/*", nullptr, nullptr, R::Plain, H::abortFax},
    {"GET", "/qdws/v1/outbound_status", "(pending_limit=([1-9]\\d*)&sending_limit=\\2)?", nullptr, R::Plain,
     H::getOutboundStatus},
    {"GET", "/qdws/v1/outbound_log", "(limit=[1-9]\\d*)?", nullptr, R::Plain, H::getOutboundLog},
    {"PUT", "/qdws/v1/outbound_log/*", atQuery, nullptr, R::Plain, H::rescheduleFax},
    {"GET", "/qdws/v1/inbound_log", "(index=0&limit=[1-9]\\d*)?", nullptr, R::Plain, H::getInboundLog},

    {"GET", "/qdws/v1/data/cover_pages", nullptr, nullptr, R::Plain, H::getCoverPages},
    {"GET", "/qdws/v1/data/printer_names", nullptr, nullptr, R::Plain, H::getPrinters},
    {"GET", "/qdws/v1/documents/*", nullptr, nullptr, R::AnyType, H::getDocument},

    // In place of "*": a user's name or "global_contact_list", for an entry followed by "/" and its
    // identifier.
    {"GET", "/qdws/v1/contacts/*", sinceQuery, nullptr, R::Plain, H::getContacts},
    {"POST", "/qdws/v1/contacts/*", nullptr, "contact", R::OneLine, H::addContact},
    {"PUT", "/qdws/v1/contacts/*", nullptr, "contact", R::OneLine, H::modifyContact},
    {"DELETE", "/qdws/v1/contacts/*", nullptr, nullptr, R::Plain, H::deleteContact},
    {"GET", "/qdws/v1/contact_groups/*", sinceQuery, nullptr, R::Plain, H::getGroups},
    {"POST", "/qdws/v1/contact_groups/*", nullptr, "contact_group", R::OneLine, H::addGroup},
    {"PUT", "/qdws/v1/contact_groups/*", nullptr, "contact_group", R::OneLine, H::modifyGroup},
    {"DELETE", "/qdws/v1/contact_groups/*", nullptr, nullptr, R::Plain, H::deleteGroup},
    {"GET", "/qdws/v1/contact_oids/*", nullptr, nullptr, R::Plain, H::getContactOids},
    {"GET", "/qdws/v1/contact_group_oids/*", nullptr, nullptr, R::Plain, H::getGroupOids},
};

/// True if the path matches the route; @p rest is the part that matches its "*".
bool fits(const SimRoute& route, const QString& path, QString* rest)
{
    const QLatin1String pattern(route.path);
    if (!pattern.endsWith(QLatin1Char('*')))
        return path == pattern;
    const int fixed = pattern.size() - 1;
    if (path.size() <= fixed || !path.startsWith(pattern.left(fixed)))
        return false;
    *rest = path.mid(fixed);
    return true;
}

SimReply askForCredentials(const QString& reason)
{
    SimReply reply = SimReply::refuse(401, reason);
    reply.headers.append(
        qMakePair(QByteArrayLiteral("WWW-Authenticate"), QByteArrayLiteral("Basic realm=\"qdws\"")));
    return reply;
}

/// True if the request carries the name and the password of a user.
bool authenticate(SimState& state, const SimRequest& request, SimUser* user, SimReply* refusal)
{
    const QByteArray header = request.header("Authorization");
    if (header.isNull()) {
        *refusal = askForCredentials(QStringLiteral("no Authorization header"));
        return false;
    }
    const QByteArray credentials =
        header.startsWith("Basic ") ? SimDocuments::fromBase64(header.mid(6)) : QByteArray();
    const int colon = credentials.indexOf(':');
    if (colon < 0) {
        *refusal =
            askForCredentials(QStringLiteral("the Authorization header is not Basic with NAME:PASSWORD"));
        return false;
    }
    const QString name = QString::fromLatin1(credentials.left(colon));
    const SimState::Lock lock(state);
    const SimUser* known = state.user(name);
    if (!known || known->password != QString::fromLatin1(credentials.mid(colon + 1))) {
        *refusal = askForCredentials(known ? QStringLiteral("wrong password for \"%1\"").arg(name)
                                           : QStringLiteral("no user \"%1\"").arg(name));
        return false;
    }
    *user = *known;
    return true;
}

/// The error in the form of the request; empty if there is none.
QString formComplaint(const SimRoute& route, const SimRequest& request)
{
    if (route.query) {
        const QRegularExpression query(QRegularExpression::anchoredPattern(QLatin1String(route.query)));
        if (!query.match(QString::fromLatin1(request.query)).hasMatch())
            return QStringLiteral("query \"%1\" is not %2")
                .arg(QString::fromLatin1(request.query), QLatin1String(route.query));
        if (request.query.isEmpty() && !request.query.isNull())
            return QStringLiteral("an empty query");
    } else if (!request.query.isNull()) {
        return QStringLiteral("a query where there is none");
    }
    if (!route.root)
        return request.bodySize == 0 ? QString() : QStringLiteral("a body where there is none");
    if ((route.rules & R::OneLine) && request.body.contains('\n'))
        return QStringLiteral("the body is not one line");
    if ((route.rules & R::Indented) && !request.body.contains(QByteArray(">\n<") + route.root + ">\n <"))
        return QStringLiteral("the body is not indented by one blank a level");
    return QString();
}

} // namespace

SimReply SimRoutes::answer(SimState& state, SimRequest& request)
{
    SimCall call{state, request, {}, {}, {}, {}};
    SimReply refusal;
    if (!authenticate(state, request, &call.user, &refusal))
        return refusal;
    request.user = call.user.name;
    call.server = (request.secure ? "https://" : "http://") + request.header("Host");

    const SimRoute* route = nullptr;
    QByteArrayList allowed;
    for (const SimRoute& candidate : routes) {
        if (!fits(candidate, request.path, &call.rest))
            continue;
        allowed.append(candidate.method);
        if (request.method == QLatin1String(candidate.method)) {
            route = &candidate;
            break;
        }
    }
    if (!route && allowed.isEmpty())
        return SimReply::refuse(404, QStringLiteral("no such path: %1").arg(request.path));
    if (!route) {
        SimReply reply = SimReply::refuse(405, QStringLiteral("%1 is not for this path").arg(request.method));
        reply.headers.append(qMakePair(QByteArrayLiteral("Allow"), allowed.join(", ")));
        return reply;
    }
    if (!(route->rules & R::AnyType) && request.header("Content-Type") != "application/xml")
        return SimReply::refuse(415, QStringLiteral("content type \"%1\" is not application/xml")
                                         .arg(QString::fromLatin1(request.header("Content-Type"))));
    QString why = formComplaint(*route, request);
    if (why.isEmpty() && route->root && SimXml::parse(request.body, &call.root, &why) &&
        call.root.name != QLatin1String(route->root))
        why = QStringLiteral("the document is \"%1\" and not \"%2\"")
                  .arg(call.root.name, QLatin1String(route->root));
    if (!why.isEmpty())
        return SimReply::refuse(400, why);
    return route->handler(call);
}
