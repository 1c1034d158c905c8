#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <atomic>
#include <functional>
#include <thread>

/// @brief Answers discovery queries over UDP, in its own thread. It sends nothing but answers.
class SimDiscovery
{
public:
    SimDiscovery() = default;
    ~SimDiscovery(); ///< stop()
    SimDiscovery(const SimDiscovery&) = delete;
    SimDiscovery& operator=(const SimDiscovery&) = delete;

    /// Called on the responder's thread with every query and its answer; set before start().
    void setAnswered(std::function<void(const QByteArray& query, const QByteArray& answer)> answered)
    {
        m_answered = std::move(answered);
    }
    /// Listens on an IPv4 address, which for broadcast queries is the broadcast address itself or 0.0.0.0. A
    /// @p port of 0 selects a free one. Every query is answered with @p reply.
    bool start(const QString& address, quint16 port, const QByteArray& reply, QString* error);
    void stop();
    quint16 port() const { return m_port; }
    int queries() const { return m_queries; } ///< answered so far

private:
    void run();

    int m_socket = -1;
    int m_wakeUp[2] = {-1, -1};
    quint16 m_port = 0;
    QByteArray m_reply;
    std::function<void(const QByteArray&, const QByteArray&)> m_answered;
    std::atomic<int> m_queries{0};
    std::thread m_thread;
};
