#pragma once

// How a test that runs under Wine, where there is no simulator, uses one that runs on the host: its SimServer
// (remotesim.cpp) passes calls on over a connection of its own to the program simhost, which has the server.
//
// Both sides send blocks (a QByteArray each). The first has the options; the answer is an error, empty if
// there is none, and the address. Each further one has the name of a function and its arguments; the answer
// is the result.

#include "simserver.h"

#include <QtCore/QDataStream>
#include <QtNetwork/QTcpSocket>

#include <tuple>

inline auto fields(SimPerson& o)
{
    return std::tie(o.url, o.username, o.name, o.email, o.phone, o.fax, o.organization);
}
inline auto fields(SimSchedule& o)
{
    return std::tie(o.sendAt, o.priority, o.maxTries, o.tryInterval, o.receipt, o.receiptAttachment,
                    o.printReceipt, o.printer, o.printFirstPage, o.pageSize);
}
inline auto fields(SimCoverPage& o)
{
    return std::tie(o.enabled, o.name, o.type, o.url, o.subject, o.comments);
}
inline auto fields(SimUser& o)
{
    return std::tie(o.name, o.password, o.editGlobal, o.admin, o.noSend, o.readOnly, o.person,
                    o.coverPageEnabled, o.coverPageName, o.defaults);
}
inline auto fields(SimOptions& o)
{
    return std::tie(o.bind, o.tls, o.compress, o.users, o.version, o.speed, o.manualClock, o.failPattern,
                    o.contacts, o.groups, o.seed);
}
inline auto fields(SimFax& o)
{
    return std::tie(o.id, o.job, o.user, o.state, o.created, o.tryNumber, o.pages, o.message, o.schedule,
                    o.sender, o.recipient, o.cover);
}
inline auto fields(SimAttachment& o)
{
    return std::tie(o.name, o.contentType, o.size, o.content);
}
inline auto fields(SimBookId& o)
{
    return std::tie(o.owner, o.groups);
}
inline auto fields(SimEntry& o)
{
    return std::tie(o.uid, o.person, o.description, o.members, o.changed);
}
inline auto fields(SimRequest& o)
{
    return std::tie(o.method, o.target, o.path, o.query, o.headers, o.body, o.user, o.status, o.refusal);
}

template <typename T, typename = decltype(fields(std::declval<T&>()))>
QDataStream& operator<<(QDataStream& stream, const T& value)
{
    std::apply([&](const auto&... field) { (stream << ... << field); }, fields(const_cast<T&>(value)));
    return stream;
}
template <typename T, typename = decltype(fields(std::declval<T&>()))>
QDataStream& operator>>(QDataStream& stream, T& value)
{
    std::apply([&](auto&... field) { (stream >> ... >> field); }, fields(value));
    return stream;
}

template <typename... Value>
QByteArray packed(const Value&... values)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    (stream << ... << values);
    return bytes;
}

/// Reads a block as soon as all of it is there.
inline bool readBlock(QTcpSocket& socket, QByteArray* block)
{
    QDataStream stream(&socket);
    stream.startTransaction();
    stream >> *block;
    return stream.commitTransaction();
}
