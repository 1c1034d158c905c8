#include "simhandlers.h"

#include <QtCore/QUrl>

namespace {

/// The book or the entry that a path addresses.
struct Place
{
    SimBookId book;
    QString uid; ///< null: the book itself
};

/// Parses the path. A user's name may contain a slash, so the whole path is tried as a book first.
Place placeOf(const SimCall& call, bool groups)
{
    Place place{{call.rest, groups}, QString()};
    if (call.state.books().book(place.book))
        return place;
    const int slash = call.rest.lastIndexOf(QLatin1Char('/'));
    if (slash >= 0)
        place = {{call.rest.left(slash), groups}, call.rest.mid(slash + 1)};
    return place;
}

/// True if the place exists and the user has the right; otherwise sets the refusal. Needs the state's lock.
bool isAllowed(const SimCall& call, const Place& place, bool isChange, SimReply* refusal)
{
    const SimUser& user = call.user;
    const SimBook* book = call.state.books().book(place.book);
    const bool isGlobal = place.book.owner == SimBooks::global();
    if (!book)
        *refusal = SimReply::refuse(404, QStringLiteral("no book of \"%1\"").arg(place.book.owner));
    else if (!isGlobal && place.book.owner != user.name && !user.admin)
        *refusal = SimReply::refuse(403, QStringLiteral("the book of somebody else"));
    else if (isChange && user.readOnly)
        *refusal = SimReply::refuse(405, QStringLiteral("the books of %1 cannot be changed").arg(user.name));
    else if (isChange && isGlobal && !user.editGlobal && !user.admin)
        *refusal = SimReply::refuse(403, QStringLiteral("%1 may not change the global book").arg(user.name));
    else if (!place.uid.isNull() && !book->find(place.uid))
        *refusal = SimReply::refuse(404, QStringLiteral("no entry \"%1\"").arg(place.book.path(place.uid)));
    else
        return true;
    return false;
}

SimReply wrongMethod(const char* allowed)
{
    SimReply reply = SimReply::refuse(
        405, QStringLiteral("the path is that of %1")
                 .arg(QLatin1String(qstrcmp(allowed, "GET, POST") == 0 ? "a book" : "an entry")));
    reply.headers.append(qMakePair(QByteArrayLiteral("Allow"), QByteArray(allowed)));
    return reply;
}

QString addressOf(const SimCall& call, const QString& path)
{
    return QString::fromUtf8(call.server + QUrl::toPercentEncoding(path, "/@:!$&'()*+,;="));
}

/// @p bookAddress is addressOf() the book, computed once for all entries, since it costs more than the rest.
void writeEntry(SimXmlWriter& xml, const SimCall& call, const QString& bookAddress, const SimBookId& book,
                const SimEntry& entry)
{
    const QString address = bookAddress + QLatin1Char('/') +
                            QString::fromLatin1(QUrl::toPercentEncoding(entry.uid, "@:!$&'()*+,;="));
    if (!book.groups) {
        SimPerson person = entry.person;
        person.url = address;
        person.username = book.owner == SimBooks::global() ? QString() : book.owner;
        xml.open("contact");
        SimDocuments::writePerson(xml, "contact_url", person);
        xml.close("contact");
        return;
    }
    xml.open("contact_group").text("contact_group_url", address).text("name", entry.person.name);
    xml.text("description", entry.description);
    for (const QString& member : entry.members)
        xml.text("contact", addressOf(call, member));
    xml.close("contact_group");
}

SimReply entryReply(const SimCall& call, const char* message, const SimBookId& book, const SimEntry& entry)
{
    SimXmlWriter xml;
    xml.open("reply").text("message", message);
    writeEntry(xml, call, addressOf(call, book.path()), book, entry);
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

/// Reads an entry from the request's document. @p uid null: a new entry.
SimEntry readEntry(const SimCall& call, const SimBookId& book, const QString& uid, QString* why)
{
    SimEntry entry;
    entry.uid = uid;
    SimCursor cursor(call.root, why);
    if (book.groups) {
        if (cursor.takeFilled("contact_group_url", &entry.person.url) &&
            QUrl(entry.person.url).scheme() == QLatin1String("https"))
            cursor.complain(QStringLiteral("\"contact_group_url\" is https; addresses are kept as http"));
        cursor.takeFilled("name", &entry.person.name);
        cursor.takeFilled("description", &entry.description);
        QString member;
        while (cursor.takeFilled("contact", &member)) {
            if (QUrl(member).scheme() != QLatin1String("http"))
                cursor.complain(QStringLiteral("member \"%1\" is no http address").arg(member));
            entry.members.append(QUrl(member).path());
        }
    } else {
        SimDocuments::readPerson(cursor, &entry.person);
    }
    cursor.end();
    if (!uid.isNull() && cursor.ok() && QUrl(entry.person.url).path() != call.request.path)
        cursor.complain(QStringLiteral("the address in the document is not that of the request"));
    return entry;
}

SimReply getBook(SimCall& call, bool groups)
{
    const SimState::Lock lock(call.state);
    const Place place = placeOf(call, groups);
    SimReply refusal;
    if (!isAllowed(call, place, false, &refusal))
        return refusal;
    SimBooks& books = call.state.books();
    const SimBook& book = *books.book(place.book);
    if (!place.uid.isNull()) {
        if (!call.request.query.isNull())
            return SimReply::refuse(400, QStringLiteral("a query where there is none"));
        return entryReply(call, "Success", place.book, *book.find(place.uid));
    }
    bool isNumber = true;
    const quint32 since = call.request.query.isNull()
                              ? 0
                              : call.request.query.mid(int(qstrlen("query_time="))).toUInt(&isNumber);
    if (!isNumber)
        return SimReply::refuse(400, QStringLiteral("the query time has more than 32 bits"));
    SimXmlWriter xml(since == 0 ? 400 * (book.size() + 1) : 4096);
    xml.open("reply")
        .text("message", "Success")
        .number("query_time", books.readingTime(call.state.clock().now()));
    const QString address = addressOf(call, place.book.path());
    for (const auto& entry : book.entries()) {
        if (entry.second.changed > since)
            writeEntry(xml, call, address, place.book, entry.second);
    }
    SimReply reply;
    reply.body = xml.close("reply").bytes();
    return reply;
}

SimReply getOids(SimCall& call, bool groups)
{
    const SimState::Lock lock(call.state);
    const Place place{{call.rest, groups}, QString()};
    SimReply refusal;
    if (!isAllowed(call, place, false, &refusal))
        return refusal;
    QString oids;
    for (const auto& entry : call.state.books().book(place.book)->entries())
        oids += (oids.isEmpty() ? QString() : QStringLiteral(",")) + entry.second.uid;
    SimReply reply;
    reply.body =
        SimXmlWriter().open("reply").text("message", "Success").text("oids", oids).close("reply").bytes();
    return reply;
}

/// False, with the refusal, if a member does not exist. Needs the state's lock.
bool hasKnownMembers(const SimCall& call, const SimEntry& entry, SimReply* refusal)
{
    for (const QString& member : entry.members) {
        if (!call.state.books().entryAt(member)) {
            *refusal = SimReply::refuse(404, QStringLiteral("no member \"%1\"").arg(member));
            return false;
        }
    }
    return true;
}

SimReply addEntry(SimCall& call, bool groups)
{
    const SimState::Lock lock(call.state);
    const Place place = placeOf(call, groups);
    if (!place.uid.isNull())
        return wrongMethod("GET, PUT, DELETE");
    SimReply refusal;
    QString why;
    SimEntry entry = readEntry(call, place.book, QString(), &why);
    if (!why.isEmpty())
        return SimReply::refuse(400, why);
    if (!isAllowed(call, place, true, &refusal) || !hasKnownMembers(call, entry, &refusal))
        return refusal;
    call.state.books().add(place.book, &entry, call.state.clock().now());
    return entryReply(call, "Created", place.book, entry);
}

SimReply modifyEntry(SimCall& call, bool groups)
{
    const SimState::Lock lock(call.state);
    const Place place = placeOf(call, groups);
    if (place.uid.isNull())
        return wrongMethod("GET, POST");
    SimReply refusal;
    QString why;
    const SimEntry entry = readEntry(call, place.book, place.uid, &why);
    if (!why.isEmpty())
        return SimReply::refuse(400, why);
    if (!isAllowed(call, place, true, &refusal) || !hasKnownMembers(call, entry, &refusal))
        return refusal;
    call.state.books().modify(place.book, entry, call.state.clock().now());
    return SimReply::message(QStringLiteral("Modified"));
}

SimReply deleteEntry(SimCall& call, bool groups)
{
    const SimState::Lock lock(call.state);
    const Place place = placeOf(call, groups);
    if (place.uid.isNull())
        return wrongMethod("GET, POST");
    SimReply refusal;
    if (!isAllowed(call, place, true, &refusal))
        return refusal;
    call.state.books().remove(place.book, place.uid, call.state.clock().now());
    return SimReply::message(QStringLiteral("Deleted"));
}

} // namespace

SimReply SimHandlers::getContacts(SimCall& call)
{
    return getBook(call, false);
}
SimReply SimHandlers::getGroups(SimCall& call)
{
    return getBook(call, true);
}
SimReply SimHandlers::getContactOids(SimCall& call)
{
    return getOids(call, false);
}
SimReply SimHandlers::getGroupOids(SimCall& call)
{
    return getOids(call, true);
}
SimReply SimHandlers::addContact(SimCall& call)
{
    return addEntry(call, false);
}
SimReply SimHandlers::addGroup(SimCall& call)
{
    return addEntry(call, true);
}
SimReply SimHandlers::modifyContact(SimCall& call)
{
    return modifyEntry(call, false);
}
SimReply SimHandlers::modifyGroup(SimCall& call)
{
    return modifyEntry(call, true);
}
SimReply SimHandlers::deleteContact(SimCall& call)
{
    return deleteEntry(call, false);
}
SimReply SimHandlers::deleteGroup(SimCall& call)
{
    return deleteEntry(call, true);
}
