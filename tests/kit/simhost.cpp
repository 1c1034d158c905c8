// Has simulated servers for tests that run under Wine, one for each connection: see remotesim.h. Prints where
// it listens, and runs until it is killed.

#include "remotesim.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QMap>
#include <QtNetwork/QTcpServer>

#include <cstdio>

namespace {

/// Carries out a call whose arguments are in the stream, and returns its packed result.
using Call = std::function<QByteArray(SimServer&, QDataStream&)>;

template <typename... Argument, typename Function>
Call call(Function function)
{
    return [function](SimServer& server, QDataStream& stream) {
        std::tuple<std::decay_t<Argument>...> arguments;
        std::apply([&](auto&... argument) { static_cast<void>((stream >> ... >> argument)); }, arguments);
        const auto invoke = [&](const auto&... argument) { return (server.*function)(argument...); };
        if constexpr (std::is_void_v<decltype(std::apply(invoke, arguments))>) {
            std::apply(invoke, arguments);
            return QByteArray();
        } else {
            return packed(std::apply(invoke, arguments));
        }
    };
}
template <typename Result, typename... Argument>
Call of(Result (SimServer::*function)(Argument...))
{
    return call<Argument...>(function);
}
template <typename Result, typename... Argument>
Call of(Result (SimServer::*function)(Argument...) const)
{
    return call<Argument...>(function);
}

const QMap<QByteArray, Call> calls{
    {"requests", of(&SimServer::requests)},           {"refusals", of(&SimServer::refusals)},
    {"clearRequests", of(&SimServer::clearRequests)}, {"book", of(&SimServer::book)},
    {"modifyEntry", of(&SimServer::modifyEntry)},     {"deleteEntry", of(&SimServer::deleteEntry)},
    {"stepChanges", of(&SimServer::stepChanges)},     {"faxes", of(&SimServer::faxes)},
    {"attachments", of(&SimServer::attachments)},     {"user", of(&SimServer::user)},
};

/// Answers the blocks of a test; the server lives as long as the connection.
class Served : public QObject
{
public:
    explicit Served(QTcpSocket* socket)
        : QObject(socket)
    {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            for (QByteArray block; readBlock(*socket, &block);)
                socket->write(packed(answer(block)));
        });
    }

private:
    QByteArray answer(const QByteArray& block)
    {
        QDataStream stream(block);
        if (!m_server) {
            SimOptions options;
            stream >> options;
            m_server = std::make_unique<SimServer>(options);
            QString error;
            m_server->start(&error);
            return packed(error, m_server->address());
        }
        QByteArray name;
        stream >> name;
        return calls[name](*m_server, stream);
    }

    std::unique_ptr<SimServer> m_server;
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QTcpServer listener;
    QObject::connect(&listener, &QTcpServer::newConnection, [&listener] {
        while (QTcpSocket* socket = listener.nextPendingConnection())
            new Served(socket);
    });
    if (!listener.listen(QHostAddress::LocalHost))
        return 1;
    std::printf("127.0.0.1:%d\n", listener.serverPort());
    static_cast<void>(std::fflush(stdout));
    return QCoreApplication::exec();
}
