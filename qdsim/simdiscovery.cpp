#include "simdiscovery.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

SimDiscovery::~SimDiscovery()
{
    stop();
}

bool SimDiscovery::start(const QString& address, quint16 port, const QByteArray& reply, QString* error)
{
    sockaddr_in local = {};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    m_reply = reply;
    m_socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    socklen_t size = sizeof local;
    if (inet_pton(AF_INET, address.toLatin1().constData(), &local.sin_addr) != 1 ||
        ::bind(m_socket, reinterpret_cast<const sockaddr*>(&local), size) != 0 ||
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&local), &size) != 0 || ::pipe(m_wakeUp) != 0) {
        if (error)
            *error = QStringLiteral("cannot listen for discovery on %1, port %2: %3")
                         .arg(address)
                         .arg(port)
                         .arg(QString::fromLocal8Bit(std::strerror(errno)));
        stop();
        return false;
    }
    m_port = ntohs(local.sin_port);
    m_thread = std::thread([this] { run(); });
    return true;
}

void SimDiscovery::stop()
{
    if (m_thread.joinable()) {
        const char end = 0;
        if (::write(m_wakeUp[1], &end, 1) == 1)
            m_thread.join();
    }
    for (int* descriptor : {&m_socket, &m_wakeUp[0], &m_wakeUp[1]}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
}

void SimDiscovery::run()
{
    const QByteArray query = QByteArrayLiteral("DISCOVER\n");
    std::array<char, 64> datagram;
    for (;;) {
        pollfd waiting[] = {{m_socket, POLLIN, 0}, {m_wakeUp[0], POLLIN, 0}};
        ::poll(waiting, 2, -1);
        if (waiting[1].revents != 0)
            return;
        sockaddr_in sender = {};
        socklen_t senderSize = sizeof sender;
        const ssize_t size = ::recvfrom(m_socket, datagram.data(), datagram.size(), MSG_DONTWAIT,
                                        reinterpret_cast<sockaddr*>(&sender), &senderSize);
        if (size != query.size() ||
            std::memcmp(datagram.data(), query.constData(), static_cast<size_t>(size)) != 0)
            continue;
        ::sendto(m_socket, m_reply.constData(), static_cast<size_t>(m_reply.size()), MSG_NOSIGNAL,
                 reinterpret_cast<const sockaddr*>(&sender), senderSize);
        ++m_queries;
        if (m_answered)
            m_answered(query, m_reply);
    }
}
