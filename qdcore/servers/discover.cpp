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

/// Datagrams read before the event loop has its turn again; a flood would keep it for ever.
const int datagramsAtOnce = 64;

/// Datagrams read when the time is up: more than a socket holds, but a flood shall not go on for ever.
const int datagramsAtEnd = 4096;

/// No timer has this id.
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

    // Not bound: it sends from a port of the system's choice, and the answers come back there.
    auto* socket = new QUdpSocket(this);
    m_socket = socket;
    // Queued: a receiver of an entry may destroy the socket, which looks at itself again after its signal.
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
        socket->disconnect(this); // nothing that has come is reported any more
        socket->deleteLater();
    }
}

void Discover::timerEvent(QTimerEvent* event)
{
    if (m_timerId == 0 || event->timerId() != m_timerId)
        return;
    killTimer(m_timerId);
    m_timerId = timeIsUp;

    // When the thread was busy, what came in time still waits in the socket. A receiver may stop, restart or
    // destroy the search.
    const QPointer<Discover> self(this);
    QUdpSocket* const socket = m_socket;
    for (int i = 0; i < datagramsAtEnd && socket->hasPendingDatagrams(); ++i) {
        readDatagram(*socket);
        if (!self || m_timerId != timeIsUp)
            return;
    }
    m_timerId = 0;
    // Not disconnected: as long as it exists it is listened to.
    socket->deleteLater();
    Q_EMIT timeOutDiscover();
}

void Discover::processDiscover()
{
    const QPointer<QUdpSocket> socket = qobject_cast<QUdpSocket*>(sender());
    // A receiver may destroy this object, and the socket with it, or stop or restart the search.
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
    // An empty datagram has size 0 and is read like any other, else it would stay in front of the rest.
    const qint64 size = qMax<qint64>(socket.pendingDatagramSize(), 0);
    QByteArray datagram(static_cast<int>(size), Qt::Uninitialized);
    if (socket.readDatagram(datagram.data(), size) != size)
        return;
    DiscoverEntry entry;
    if (readDiscoverReply(datagram, entry))
        Q_EMIT discoveredEntry(entry);
}
