#pragma once

#include "simbooks.h"
#include "simfaults.h"
#include "simfaxes.h"
#include "siminbound.h"
#include "simtypes.h"

#include <QtCore/QUrl>

#include <functional>
#include <memory>

/// @brief A simulated fax server: it implements the complete web service, keeps its state in memory, and
/// injects faults on request.
///
/// Create it with options, start() it, use address() and url(), destroy it. It validates strictly: a request
/// that violates the protocol is rejected with a 4xx status, and refusals() tells the reason.
///
/// It runs in its own threads, so it does not need the event loop of a test. All functions are thread-safe,
/// but start(), stop() and the destructor have to be called from one thread. It sends nothing but replies.
class SimServer
{
public:
    explicit SimServer(const SimOptions& options = SimOptions());
    ~SimServer(); ///< stop()
    SimServer(const SimServer&) = delete;
    SimServer& operator=(const SimServer&) = delete;

    /// Loads the saved state if there is a state folder, and listens. False and the reason if that fails.
    bool start(QString* error = nullptr);
    /// Closes all connections at once, saves the state, joins all threads. A stopped server cannot be started
    /// again.
    void stop();

    const SimOptions& options() const;
    quint16 port() const;    ///< 0 before start()
    QString address() const; ///< the address to configure a client with, such as "127.0.0.1:41234"
    /// Address of a path on this server, for instance url("/qdws/v1/about"); without credentials.
    QUrl url(const QString& path = QString()) const;
    QByteArray certificate() const; ///< PEM; empty without TLS

    /// @name Received requests
    /// In the order of the replies. A method and a prefix of the decoded path filter them; empty: any.
    /// @{
    QVector<SimRequest> requests(const QString& method = QString(),
                                 const QString& pathPrefix = QString()) const;
    int requestCount(const QString& method = QString(), const QString& pathPrefix = QString()) const;
    /// Waits until @p count matching requests have been answered, at most @p ms milliseconds.
    bool waitForRequests(int count, int ms, const QString& method = QString(),
                         const QString& pathPrefix = QString()) const;
    /// "METHOD TARGET: STATUS REASON" for every rejected request.
    QStringList refusals() const;
    void clearRequests();
    /// Called with one line for every request, on the connection's thread; set before start().
    void setLog(std::function<void(const QString&)> log);
    /// @}

    /// @name Address books
    /// An owner is a user's name or SimBooks::global(). These functions change the server like another
    /// client, but unlike requests they are not validated.
    /// @{
    QVector<SimEntry> book(const QString& owner, bool groups = false) const; ///< in order of addition
    /// Adds a contact or, to a book of groups, a group, and returns its uid; empty if there is no such book.
    QString addEntry(const SimBookId& book, SimEntry entry);
    bool modifyEntry(const SimBookId& book,
                     const SimEntry& entry);                     ///< false if there is no entry with its uid
    bool deleteEntry(const SimBookId& book, const QString& uid); ///< false if there is none
    /// Makes @p count random changes in all books at once, the same in every run with the same seed and the
    /// same contents. Returns a log line for each.
    QStringList stepChanges(int count);
    /// @}

    /// @name Discovery
    /// @{
    quint16 discoveryPort() const; ///< 0 if it is off
    int discoveryQueries() const;  ///< queries answered so far
    /// @}

    /// @name Fault injection
    /// @{
    void addFault(const SimFault& fault);
    /// As text, see SimFault::parse().
    bool addFault(const QString& fault, QString* error = nullptr);
    void clearFaults();
    /// @}

    /// @name Time and faxes
    /// @{
    void step(qint64 ms);          ///< advances the clock
    qint64 now() const;            ///< the server's time in ms since 1970 UTC
    QVector<SimFax> faxes() const; ///< all, oldest first, in their current state
    /// The attachments of the submission that this fax belongs to.
    QVector<SimAttachment> attachments(quint64 fax) const;
    QVector<SimInbound> inbound() const; ///< oldest first
    /// Adds the newest received fax and generates its id and, if empty, its file name. Returns the id.
    quint64 addInbound(const SimInbound& entry);
    /// The user's current record; with an empty name if there is none.
    SimUser user(const QString& name) const;
    /// @}

private:
    class Private;
    const std::unique_ptr<Private> d;
};
