#pragma once

#include "simstate.h"
#include "simtypes.h"
#include "simxml.h"

/// @brief The input of a handler: an authenticated request that has passed all checks of its route.
struct SimCall
{
    SimState& state;
    const SimRequest& request;
    SimUser user;      ///< the authenticated user, a copy made when the request arrived
    QString rest;      ///< the part of the path that matches the route's "*"
    SimElement root;   ///< the request's document, if the route has one
    QByteArray server; ///< "http://HOST:PORT" from the client's request; every address in the reply begins so
};

/// @brief One function per operation; each locks the state itself.
namespace SimHandlers {

// Server, login, profiles
SimReply about(SimCall& call);
SimReply verify(SimCall& call);
SimReply userOptions(SimCall& call);
SimReply getUser(SimCall& call);
SimReply putUser(SimCall& call);

// Faxes
SimReply submit(SimCall& call);
SimReply getFax(SimCall& call);
SimReply abortFax(SimCall& call);
SimReply rescheduleFax(SimCall& call);

// Logs, what the server offers, documents
SimReply getQueue(SimCall& call);
SimReply getOutboundStatus(SimCall& call);
SimReply getOutboundLog(SimCall& call);
SimReply getInboundLog(SimCall& call);
SimReply getCoverPages(SimCall& call);
SimReply getPrinters(SimCall& call);
SimReply getDocument(SimCall& call);

// Address books
SimReply getContacts(SimCall& call);
SimReply getGroups(SimCall& call);
SimReply getContactOids(SimCall& call);
SimReply getGroupOids(SimCall& call);
SimReply addContact(SimCall& call);
SimReply addGroup(SimCall& call);
SimReply modifyContact(SimCall& call);
SimReply modifyGroup(SimCall& call);
SimReply deleteContact(SimCall& call);
SimReply deleteGroup(SimCall& call);

} // namespace SimHandlers
