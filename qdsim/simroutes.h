#pragma once

#include "simhandlers.h"

/// @brief One operation of the service: the form of its requests and its handler.
struct SimRoute
{
    enum Rule {
        Plain = 0,
        OneLine = 1,  ///< the body is one line, without a line feed
        Indented = 2, ///< one element per line, indented by one blank per level
        AnyType = 4   ///< any content type
    };

    const char* method;
    const char* path;  ///< decoded; a "*" at the end matches one or more characters
    const char* query; ///< regular expression for the query as received; null: no query allowed
    const char* root;  ///< name of the request's document element; null: the request has no body
    int rules;
    SimReply (*handler)(SimCall& call);
};

/// @brief The service's routes, and their common checks.
namespace SimRoutes {

/// Authenticates, finds the route, validates the request and calls the handler. Never throws.
SimReply answer(SimState& state, SimRequest& request);

} // namespace SimRoutes
