#pragma once

// An HTTP server that accepts any request and records its times. POSIX; for benchmarks only.

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <string>
#include <strings.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

/// Milliseconds of a clock shared by all processes.
inline double clockMilliseconds()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/**
 * Listens on 127.0.0.1, serves one connection at a time in its own thread, and answers every request with the
 * same reply after the last byte of its body. The times may be read after the reply.
 */
class Sink
{
public:
    explicit Sink(const std::string& reply)
        : m_reply("HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\nContent-Length: " +
                  std::to_string(reply.size()) + "\r\n\r\n" + reply)
        , m_listener(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        if (bind(m_listener, any, length) != 0 || listen(m_listener, 8) != 0 ||
            getsockname(m_listener, any, &length) != 0)
            std::abort();
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~Sink()
    {
        m_isOver = true;
        shutdown(m_listener, SHUT_RDWR);
        const int connection = m_connection;
        if (connection >= 0)
            shutdown(connection, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    int port() const { return m_port; }

    /// The times of the first and the last byte of the last request.
    double firstByte() const { return m_firstByte; }
    double lastByte() const { return m_lastByte; }
    /// The size of its body in bytes.
    long long bodySize() const { return m_bodySize; }

private:
    void serve()
    {
        while (!m_isOver) {
            const int connection = accept(m_listener, nullptr, nullptr);
            if (connection < 0)
                continue;
            m_connection = connection;
            while (takeRequest(connection)) {
            }
            m_connection = -1;
            close(connection);
        }
    }

    bool takeRequest(int connection)
    {
        static char buffer[256 * 1024];
        std::string head;
        std::size_t end = std::string::npos;
        while (end == std::string::npos) {
            const ssize_t got = read(connection, buffer, sizeof(buffer));
            if (got <= 0)
                return false;
            if (head.empty())
                m_firstByte = clockMilliseconds();
            head.append(buffer, std::size_t(got));
            end = head.find("\r\n\r\n");
        }
        const char* const length = strcasestr(head.c_str(), "\ncontent-length:");
        const long long size = length ? std::atoll(length + std::strlen("\ncontent-length:")) : 0;
        long long left = size - (static_cast<long long>(head.size()) - static_cast<long long>(end) - 4);
        while (left > 0) {
            const ssize_t got = read(connection, buffer, sizeof(buffer));
            if (got <= 0)
                return false;
            left -= got;
        }
        m_lastByte = clockMilliseconds();
        m_bodySize = size;
        const bool isKept = !strcasestr(head.c_str(), "\nconnection: close");
        return write(connection, m_reply.data(), m_reply.size()) == static_cast<ssize_t>(m_reply.size()) &&
               isKept;
    }

    const std::string m_reply;
    const int m_listener;
    int m_port{0};
    std::atomic_bool m_isOver{false};
    std::atomic_int m_connection{-1};
    std::atomic<double> m_firstByte{0};
    std::atomic<double> m_lastByte{0};
    std::atomic<long long> m_bodySize{0};
    std::thread m_thread;
};
