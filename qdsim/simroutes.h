#pragma once

#include "simhandlers.h"

/// @brief One operation of the service: what a request must look like and who answers it.
struct SimRoute
{
    enum Rule {
        Plain = 0,
        OneLine = 1,  ///< the body is one line, without a line feed
        Indented = 2, ///< the body's elements stand on lines of their own, indented by one blank a level
        AnyType = 4   ///< the content type is free
    };

    const char* method;
    const char* path;  ///< decoded; a "*" at the end stands for one or more characters
    const char* query; ///< regular expression for the query as received; null: there is no query
    const char* root;  ///< name of the request's document element; null: the request has no body
    int rules;
    SimReply (*handler)(SimCall& call);
};

/// @brief The service's routes, and the checks that all of them share.
namespace SimRoutes {

/// Authenticates, finds the route, checks the request against it and lets the handler answer. Never throws.
SimReply answer(SimState& state, SimRequest& request);

} // namespace SimRoutes
