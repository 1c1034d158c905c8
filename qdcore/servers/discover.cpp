#include "discover.h"

#include "discoverreply_p.h"

#include <QNetworkInterface>
#include <QPointer>
#include <QTimerEvent>
#include <QUdpSocket>

namespace {

const quint16 discoveryPort = 7070;

/// Datagrams get lost, so each query goes out more than once.
const int repetitions = 3;

/// Datagrams read before returning to the event loop, which a flood would block for ever.
const int datagramsAtOnce = 64;

/// Datagrams read when the time is up: more than a socket buffers, but bounded in case of a flood.
const int datagramsAtEnd = 4096;

/// An id that no timer has.
const int timeIsUp = -1;

} // namespace

Discover::Discover(QObject* parent)
    : QObject(parent)
{
    // For receivers that take entries through a queued connection.
    qRegisterMetaType<DiscoverEntry>();
}

void Discover::startDiscover(int timeout)
{
    stopDiscover();

    // Not bound: the system chooses the port, to which the answers are sent.
    auto* socket = new QUdpSocket(this);
    m_socket = socket;
    // Queued: a slot may destroy the socket, which accesses its members after emitting (use after free).
    connect(socket, &QUdpSocket::readyRead, this, &Discover::processDiscover, Qt::QueuedConnection);

    const QByteArray query = QByteArrayLiteral("DISCOVER\n");
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& networkInterface : interfaces) {
        const QList<QNetworkAddressEntry> addresses = networkInterface.addressEntries();
        for (const QNetworkAddressEntry& address : addresses) {
            if (address.broadcast().isNull())
                continue;
            for (int i = 0; i < repetitions; ++i)
                socket->writeDatagram(query, address.broadcast(), discoveryPort);
        }
    }

    if (timeout > 0)
        m_timerId = startTimer(timeout, Qt::CoarseTimer);
}

void Discover::stopDiscover()
{
    if (m_timerId > 0)
        killTimer(m_timerId);
    m_timerId = 0;
    m_socket.clear();
    const QList<QUdpSocket*> sockets = findChildren<QUdpSocket*>(QString(), Qt::FindDirectChildrenOnly);
    for (QUdpSocket* socket : sockets) {
        socket->disconnect(this); // pending datagrams are not reported any more
        socket->deleteLater();
    }
}

void Discover::timerEvent(QTimerEvent* event)
{
    if (m_timerId == 0 || event->timerId() != m_timerId)
        return;
    killTimer(m_timerId);
    m_timerId = timeIsUp;

    // If the thread was busy, datagrams that arrived in time are still in the socket's buffer. A slot may
    // stop, restart or destroy the search.
    const QPointer<Discover> self(this);
    QUdpSocket* const socket = m_socket;
    for (int i = 0; i < datagramsAtEnd && socket->hasPendingDatagrams(); ++i) {
        readDatagram(*socket);
        if (!self || m_timerId != timeIsUp)
            return;
    }
    m_timerId = 0;
    // Not disconnected: answers are reported for as long as the socket exists.
    socket->deleteLater();
    Q_EMIT timeOutDiscover();
}

void Discover::processDiscover()
{
    const QPointer<QUdpSocket> socket = qobject_cast<QUdpSocket*>(sender());
    // A slot may destroy this object, and the socket with it, or stop or restart the search.
    const QPointer<Discover> self(this);
    for (int i = 0; self && socket && socket == m_socket && i < datagramsAtOnce; ++i) {
        if (!socket->hasPendingDatagrams())
            return;
        readDatagram(*socket);
    }
}

/// Reads the next datagram and reports it if it is an answer; then this object may be gone.
void Discover::readDatagram(QUdpSocket& socket)
{
    // An empty datagram has size 0 and must be read too, or it would stay at the head of the queue.
    const qint64 size = qMax<qint64>(socket.pendingDatagramSize(), 0);
    QByteArray datagram(static_cast<int>(size), Qt::Uninitialized);
    if (socket.readDatagram(datagram.data(), size) != size)
        return;
    DiscoverEntry entry;
    if (readDiscoverReply(datagram, entry))
        Q_EMIT discoveredEntry(entry);
}
