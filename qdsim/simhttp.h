#pragma once

#include "simtypes.h"

#include <QtCore/QString>

#include <functional>
#include <memory>

class SimTls;

/// @brief The HTTP side of the simulator: one listening address, a thread for each connection.
///
/// It knows nothing of faxes. It records every request byte for byte, reads the body into memory once, and
/// can do to a connection what a server in trouble does: hang up, stop in the middle, drip. start() and
/// stop() belong to one thread; the handlers are called from connection threads, several at once.
class SimHttp
{
public:
    struct Handlers
    {
        /// Called when the head has arrived and the body has not been read; false hangs up at once.
        std::function<bool(const SimRequest&)> head;
        /// Called with the whole request, returns the answer.
        std::function<SimReply(SimRequest&)> request;
        /// Called with a reason when what arrived is no HTTP request at all.
        std::function<void(const QString&)> broken;
    };

    /// @p tls null: plain HTTP.
    explicit SimHttp(Handlers handlers, std::shared_ptr<SimTls> tls = nullptr);
    ~SimHttp(); ///< stop()
    SimHttp(const SimHttp&) = delete;
    SimHttp& operator=(const SimHttp&) = delete;

    /// Listens on @p address (an IPv4 or IPv6 literal or a host name), @p port 0 picks a free one.
    bool start(const QString& address, quint16 port, QString* error);
    /// The port listened on; 0 before start().
    quint16 port() const;
    /// Ends every connection, also those in the middle of a request or a delay, and joins all threads.
    void stop();

private:
    class Listener;
    class Connection;
    std::unique_ptr<Listener> m_listener;
};
