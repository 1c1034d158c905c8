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

    /// Loads the saved state if there is a state folder, and listens. False and the reason if it cannot.
    bool start(QString* error = nullptr);
    /// Ends all connections at once, saves the state, joins all threads. A stopped server is not started
    /// again.
    void stop();

    const SimOptions& options() const;
    quint16 port() const;    ///< 0 before start()
    QString address() const; ///< "127.0.0.1:41234": what a client is configured with
    /// Address of a path on this server, for instance url("/qdws/v1/about"); without credentials.
    QUrl url(const QString& path = QString()) const;
    QByteArray certificate() const; ///< PEM; empty without TLS

    /// @name What has been received
    /// Requests in the order in which they were answered. A method or a prefix of the decoded path narrows
    /// the choice; empty: any.
    /// @{
    QVector<SimRequest> requests(const QString& method = QString(),
                                 const QString& pathPrefix = QString()) const;
    int requestCount(const QString& method = QString(), const QString& pathPrefix = QString()) const;
    /// Waits until so many such requests have been answered, at most @p ms milliseconds.
    bool waitForRequests(int count, int ms, const QString& method = QString(),
                         const QString& pathPrefix = QString()) const;
    /// "METHOD TARGET: STATUS REASON" for every refused request.
    QStringList refusals() const;
    void clearRequests();
    /// Called with one line for every request, from the connection's thread; set before start().
    void setLog(std::function<void(const QString&)> log);
    /// @}

    /// @name Address books
    /// An owner is a user's name or SimBooks::global(). These change the server as another client would;
    /// unlike requests they may put any nonsense into a book.
    /// @{
    QVector<SimEntry> book(const QString& owner, bool groups = false) const; ///< in order of addition
    /// Adds a contact (or, to a book of groups, a group) and returns its uid; empty if there is no such book.
    QString addEntry(const SimBookId& book, SimEntry entry);
    bool modifyEntry(const SimBookId& book,
                     const SimEntry& entry);                     ///< false if there is no entry with its uid
    bool deleteEntry(const SimBookId& book, const QString& uid); ///< false if there is none
    /// Makes so many random changes in all books at once, the same ones in every run with the same seed and
    /// the same contents. Returns a line for each.
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
    void step(qint64 ms);          ///< lets so much time pass at once
    qint64 now() const;            ///< the server's time in ms since 1970 UTC
    QVector<SimFax> faxes() const; ///< all, oldest first, as they are now
    /// Attachments of the submission to which this fax belongs.
    QVector<SimAttachment> attachments(quint64 fax) const;
    QVector<SimInbound> inbound() const; ///< oldest first
    /// Adds a received fax as the newest; its id and, if empty, its file name are chosen. Returns the id.
    quint64 addInbound(const SimInbound& entry);
    /// The user's record as it is now; an empty name if there is none.
    SimUser user(const QString& name) const;
    /// @}

private:
    class Private;
    const std::unique_ptr<Private> d;
};
