#pragma once

#include "discoverentry.h"
#include "qdcore_global.h"

#include <QObject>
#include <QPointer>

class QUdpSocket;

/**
 * Finds fax servers on the local network.
 *
 * A search broadcasts a query on every interface that has a broadcast address and reports each answer, until
 * it is stopped, its time is up or another search begins. Owned by its creator, lives on a thread with an
 * event loop. Failures (an interface that cannot send, an invalid answer) are ignored silently: a search that
 * can reach nothing just finds nothing.
 */
class QDCORE_EXPORT Discover : public QObject
{
    Q_OBJECT

public:
    /// Opens nothing: the socket is made by startDiscover().
    explicit Discover(QObject* parent = nullptr);

    /// Starts a search, ending the one before. @p timeout is in milliseconds; with 0 or less the search runs
    /// until stopDiscover().
    void startDiscover(int timeout);

    /// Ends the search without a signal; pending answers are not reported any more.
    void stopDiscover();

Q_SIGNALS:
    /// One answer. A server answers up to three times on each interface it is reached through, and each
    /// answer is reported: merge by DiscoverEntry::inetAddr.
    void discoveredEntry(const DiscoverEntry& entry);

    /// The time is up and the search has ended. Answers that arrived in time have been reported before; one
    /// that arrives while a slot of this signal runs an event loop is still reported.
    void timeOutDiscover();

protected:
    void timerEvent(QTimerEvent* event) override;

private Q_SLOTS:
    void processDiscover();

private:
    void readDatagram(QUdpSocket& socket);

    /// Of the search: null before the first and after stopDiscover(). A time-out leaves it until it is gone.
    QPointer<QUdpSocket> m_socket;

    /// Of the pending time-out, 0 when there is none; timeIsUp while the last answers are reported.
    int m_timerId{0};
};
