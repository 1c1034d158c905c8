#include "simhttp.h"

#include "simtls.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <list>
#include <mutex>
#include <set>
#include <thread>

#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

const qint64 largestBody = qint64(1) << 30; // bytes; QByteArray ends at 2 GiB
const int largestChunk = 1 << 18;
const char tlsHandshake = 0x16; // the first byte of every TLS connection

/// A thread per connection: with a fixed pool, clients that keep their connections open would block others.
class ThreadPerJob : public httplib::TaskQueue
{
public:
    void enqueue(std::function<void()> job) override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_jobs.push_back(std::move(job));
        if (m_idle < m_jobs.size())
            m_threads.emplace_back([this] { work(); });
        lock.unlock();
        m_wakeUp.notify_one();
    }

    void shutdown() override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_ending = true;
        lock.unlock();
        m_wakeUp.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }

private:
    void work()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            ++m_idle;
            m_wakeUp.wait(lock, [this] { return m_ending || !m_jobs.empty(); });
            --m_idle;
            if (m_jobs.empty())
                return;
            const std::function<void()> job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    std::list<std::function<void()>> m_jobs;
    std::list<std::thread> m_threads;
    size_t m_idle = 0;
    bool m_ending = false;
};

void readHead(SimRequest* request)
{
    const QList<QByteArray> lines = request->rawHead.split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    request->method = QString::fromLatin1(first.value(0));
    request->target = first.value(1);
    const int mark = request->target.indexOf('?');
    request->path = QString::fromUtf8(
        QByteArray::fromPercentEncoding(mark < 0 ? request->target : request->target.left(mark)));
    if (mark >= 0)
        request->query = request->target.mid(mark + 1);
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines[i].indexOf(':');
        if (colon > 0)
            request->headers.append(qMakePair(lines[i].left(colon), lines[i].mid(colon + 1).trimmed()));
    }
}

} // namespace

/// One accepted connection, plain or TLS, as a stream of the HTTP library.
class SimHttp::Connection : public httplib::Stream
{
public:
    Connection(int socket, SSL* ssl)
        : m_socket(socket)
        , m_ssl(ssl)
    {}

    bool is_readable() const override { return !m_cut; }
    bool is_writable() const override { return !m_cut; }
    socket_t socket() const override { return m_socket; }
    void get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}
    void get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const override {}

    ssize_t read(char* data, size_t size) override
    {
        if (m_begin == m_end) {
            if (size >= m_buffer.size())
                return receive(data, size); // avoids copying bodies twice
            const ssize_t got = receive(m_buffer.data(), m_buffer.size());
            if (got <= 0)
                return got;
            m_begin = 0;
            m_end = static_cast<size_t>(got);
        }
        const size_t count = std::min(size, m_end - m_begin);
        std::copy_n(m_buffer.data() + m_begin, count, data);
        m_begin += count;
        if (m_recording) {
            m_head.append(data, static_cast<int>(count));
            m_recording = !m_head.endsWith("\r\n\r\n");
        }
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char* data, size_t size) override
    {
        size_t done = 0;
        while (done < size) {
            if (m_cut)
                return -1;
            const ssize_t sent =
                m_ssl ? SSL_write(m_ssl, data + done,
                                  static_cast<int>(std::min(size - done, size_t(largestChunk))))
                      : ::send(m_socket, data + done, size - done, MSG_NOSIGNAL);
            if (sent <= 0) {
                m_cut = true;
                return -1;
            }
            done += static_cast<size_t>(sent);
        }
        return static_cast<ssize_t>(size);
    }

    /// The library reads the head byte by byte, so everything read up to the empty line is the head.
    void beginRequest()
    {
        m_head.clear();
        m_recording = true;
    }
    const QByteArray& head() const { return m_head; }
    void cut() { m_cut = true; }
    bool isCut() const { return m_cut; }

private:
    ssize_t receive(char* data, size_t size)
    {
        if (m_cut)
            return -1;
        return m_ssl ? SSL_read(m_ssl, data, static_cast<int>(std::min(size, size_t(largestChunk))))
                     : ::recv(m_socket, data, size, 0);
    }

    const int m_socket;
    SSL* const m_ssl;
    std::array<char, 16384> m_buffer;
    size_t m_begin = 0;
    size_t m_end = 0;
    QByteArray m_head;
    bool m_recording = false;
    bool m_cut = false;
};

/// The HTTP library implements the protocol; this class replaces its socket handling, so that a connection
/// can be recorded, cut at any byte, served over TLS or not, and closed at once when the server stops.
class SimHttp::Listener : public httplib::Server
{
public:
    Listener(SimHttp::Handlers handlers, std::shared_ptr<SimTls> tls)
        : m_handlers(std::move(handlers))
        , m_tls(std::move(tls))
    {
        new_task_queue = [] { return new ThreadPerJob; };
        set_keep_alive_max_count(1000000);
        set_keep_alive_timeout(3600); // announced to clients; connections end when they or the server do
        set_socket_options([](socket_t socket) {
            const int on =
                1; // not the library's SO_REUSEPORT, with which two servers on one port would share requests
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        });
        set_pre_routing_handler([this](const httplib::Request&, httplib::Response& response) {
            answer(response);
            return HandlerResponse::Handled;
        });
    }
    ~Listener() override { end(); }

    bool begin(const QString& address, quint16 port, QString* error)
    {
        const std::string host = address.toStdString();
        m_port = port;
        const int bound = port != 0 ? (bind_to_port(host, port) ? port : -1) : bind_to_any_port(host);
        if (bound <= 0) {
            if (error)
                *error = QStringLiteral("cannot listen on %1, port %2").arg(address).arg(port);
            return false;
        }
        m_port = static_cast<quint16>(bound);
        ::listen(svr_sock_,
                 512); // with the library's backlog of 5, a burst of connections waits for seconds
        m_thread = std::thread([this] { listen_after_bind(); });
        while (!is_running()) // until then stop() has no effect
            std::this_thread::yield();
        return true;
    }

    void end()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ending = true;
            for (const int socket : m_sockets)
                ::shutdown(socket, SHUT_RDWR);
        }
        m_endingChanged.notify_all();
        if (m_thread.joinable()) {
            stop();
            m_thread.join();
        }
    }

    quint16 port() const { return m_port; }

private:
    struct Exchange
    {
        Connection* connection;
        SimRequest request;
        SimReply reply;
    };
    /// The library calls the handler on the connection's thread but does not pass the connection.
    static Exchange*& current()
    {
        static thread_local Exchange* exchange = nullptr;
        return exchange;
    }

    bool process_and_close_socket(socket_t socket) override
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_ending) {
                ::close(socket);
                return false;
            }
            m_sockets.insert(socket);
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        SSL* ssl = nullptr;
        if (m_tls) {
            ssl = SSL_new(m_tls->context());
            SSL_set_fd(ssl, socket);
        }
        char first = 0;
        const bool isTls = ::recv(socket, &first, 1, MSG_PEEK) == 1 && first == tlsHandshake;
        if (ssl ? SSL_accept(ssl) == 1 : !isTls)
            serve(socket, ssl);
        else if (!isTls)
            m_handlers.broken(QStringLiteral("no TLS on a TLS port"));
        else // parsed as HTTP it would deadlock: the server waits for a line end, the client for a reply
            m_handlers.broken(ssl ? QStringLiteral("TLS handshake failed")
                                  : QStringLiteral("TLS on a plain port"));
        SSL_free(ssl);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_sockets.erase(socket);
        }
        ::shutdown(socket, SHUT_RDWR);
        ::close(socket);
        return true;
    }

    void serve(int socket, SSL* ssl)
    {
        Connection connection(socket, ssl);
        bool closed = false;
        bool more = true;
        while (more && !closed && !connection.isCut()) {
            Exchange exchange{&connection, {}, {}};
            current() = &exchange;
            connection.beginRequest();
            more = process_request(connection, false, closed, [](httplib::Request& request) {
                request.headers.erase("Accept-Encoding"); // or the library compresses the reply itself
            });
            if (exchange.request.method.isEmpty() && !connection.head().isEmpty()) {
                const QString begin = QString::fromLatin1(connection.head().left(80)).simplified();
                m_handlers.broken(QStringLiteral("malformed or too long: ") + begin);
                more = false; // the beginning of the next request is unknown
            }
        }
        current() = nullptr;
        if (ssl && !connection.isCut())
            SSL_shutdown(ssl);
    }

    /// Reads the rest of the request after its head, calls the handler, and prepares the response.
    void answer(httplib::Response& response)
    {
        Exchange& exchange = *current();
        Connection& connection = *exchange.connection;
        SimRequest& request = exchange.request;
        request.rawHead = connection.head();
        request.secure = m_tls != nullptr;
        readHead(&request);
        if (!m_handlers.head(request) || !readBody(connection, &request)) {
            connection.cut();
            return;
        }
        SimReply& reply = exchange.reply;
        reply = m_handlers.request(request);
        if (reply.delayMs > 0)
            pause(reply.delayMs);
        if (reply.hangUp) {
            connection.cut();
            return;
        }
        response.status = reply.status;
        for (const auto& header : qAsConst(reply.headers))
            response.set_header(header.first.toStdString(), header.second.toStdString());
        if (reply.compressed && request.header("Accept-Encoding").contains("gzip")) {
            compress(&reply);
            response.set_header("Content-Encoding", "gzip");
        }
        if (reply.length() == 0) {
            // an empty content provider sends no Content-Length: the client would wait for the connection to
            // close
            response.set_content(std::string(), reply.contentType.toStdString());
            return;
        }
        response.set_content_provider(
            static_cast<size_t>(reply.length()), reply.contentType.toStdString(),
            [this, &exchange](size_t offset, size_t length, httplib::DataSink& sink) {
                return send(exchange, static_cast<qint64>(offset), static_cast<qint64>(length), sink);
            });
    }

    static bool readBody(Connection& connection, SimRequest* request)
    {
        bool isNumber = true;
        const qint64 size = request->hasHeader("Content-Length")
                                ? request->header("Content-Length").toLongLong(&isNumber)
                                : 0;
        if (!isNumber || size < 0 || size > largestBody)
            return false;
        request->body.resize(static_cast<int>(size));
        while (request->bodySize < size) {
            const ssize_t got = connection.read(request->body.data() + request->bodySize,
                                                static_cast<size_t>(size - request->bodySize));
            if (got <= 0)
                return false;
            request->bodySize += got;
        }
        return true;
    }

    /// Replaces the body by the compressed one, so that injected faults apply to the compressed bytes.
    static void compress(SimReply* reply)
    {
        QByteArray packed;
        httplib::detail::gzip_compressor compressor;
        const auto append = [&packed](const char* data, size_t size) {
            packed.append(data, static_cast<int>(size));
            return true;
        };
        const qint64 total = reply->length();
        for (qint64 at = 0; at < total || at == 0; at += largestChunk) {
            const qint64 size = std::min(total - at, qint64(largestChunk));
            const QByteArray part = reply->generator ? reply->generator(at, size) : QByteArray();
            const char* data = reply->generator ? part.constData() : reply->body.constData() + at;
            compressor.compress(data, static_cast<size_t>(size), at + size >= total, append);
        }
        // a cut within the plain body must also be within the shorter compressed one
        if (reply->cutAfter >= packed.size() && reply->cutAfter < total)
            reply->cutAfter = packed.size() / 2;
        reply->body = packed;
        reply->generator = nullptr;
    }

    bool send(const Exchange& exchange, qint64 offset, qint64 length, httplib::DataSink& sink)
    {
        const SimReply& reply = exchange.reply;
        if (reply.cutAfter >= 0) {
            length = std::min(length, reply.cutAfter - offset);
            if (length <= 0) {
                exchange.connection->cut();
                return false;
            }
        }
        if (reply.dripMs > 0) {
            length = 1;
            if (!pause(reply.dripMs))
                return false;
        }
        length = std::min(length, qint64(largestChunk));
        if (!reply.generator)
            return sink.write(reply.body.constData() + offset, static_cast<size_t>(length));
        const QByteArray part = reply.generator(offset, length);
        return !part.isEmpty() && sink.write(part.constData(), static_cast<size_t>(part.size()));
    }

    /// False if the server is stopped meanwhile.
    bool pause(int ms)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return !m_endingChanged.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_ending; });
    }

    const SimHttp::Handlers m_handlers;
    const std::shared_ptr<SimTls> m_tls;
    std::thread m_thread;
    quint16 m_port = 0;
    std::mutex m_mutex;
    std::condition_variable m_endingChanged;
    std::set<int> m_sockets;
    bool m_ending = false;
};

SimHttp::SimHttp(Handlers handlers, std::shared_ptr<SimTls> tls)
    : m_listener(new Listener(std::move(handlers), std::move(tls)))
{}

SimHttp::~SimHttp()
{
    stop();
}

bool SimHttp::start(const QString& address, quint16 port, QString* error)
{
    return m_listener->begin(address, port, error);
}

quint16 SimHttp::port() const
{
    return m_listener->port();
}

void SimHttp::stop()
{
    m_listener->end();
}
