#pragma once

#include "simtypes.h"

#include <QtCore/QString>

#include <functional>
#include <memory>

class SimTls;

/// @brief The HTTP layer of the simulator: one listening address, a thread per connection.
///
/// It is independent of faxes. It records every request byte for byte, reads the body into memory once, and
/// can inject faults into a connection: close it, truncate the reply, send it slowly. start() and stop() must
/// be called on one thread; the handlers are called on connection threads, concurrently.
class SimHttp
{
public:
    struct Handlers
    {
        /// Called after the head has been read and before the body; false closes the connection at once.
        std::function<bool(const SimRequest&)> head;
        /// Called with the whole request, returns the reply.
        std::function<SimReply(SimRequest&)> request;
        /// Called with a reason when the input is not an HTTP request.
        std::function<void(const QString&)> broken;
    };

    /// @p tls null: plain HTTP.
    explicit SimHttp(Handlers handlers, std::shared_ptr<SimTls> tls = nullptr);
    ~SimHttp(); ///< stop()
    SimHttp(const SimHttp&) = delete;
    SimHttp& operator=(const SimHttp&) = delete;

    /// Listens on @p address (an IPv4 or IPv6 literal or a host name); a @p port of 0 selects a free one.
    bool start(const QString& address, quint16 port, QString* error);
    /// The port listened on; 0 before start().
    quint16 port() const;
    /// Closes every connection, even during a request or a delay, and joins all threads.
    void stop();

private:
    class Listener;
    class Connection;
    std::unique_ptr<Listener> m_listener;
};
