#pragma once

#include "simtypes.h"

#include <QtCore/QRandomGenerator>
#include <QtCore/QVector>

#include <mutex>

/// @brief One injected fault: its kind, the requests it affects, and how often it occurs.
///
/// Faults in the reply (all but HangUpEarly and Status) occur after the request was executed: the fax is
/// queued although the client never receives a reply.
struct SimFault
{
    enum Kind {
        Delay,       ///< wait @c number ms, then reply normally
        HangUpEarly, ///< close the connection after the request's head; the request is not executed
        HangUp,      ///< execute the request and close the connection without a reply
        Cut,         ///< close the connection within the body, after @c number bytes (-1: half of it)
        Drip,        ///< send the body byte by byte, @c number ms apart
        Status,      ///< reply with HTTP status @c number (and @c text as "message"), not executed
        Truncated,   ///< a complete HTTP reply with truncated XML
        NotXml,      ///< a body that is not XML
        Html,        ///< an HTML page with status 200
        Message,     ///< the "message" is @c text instead of the right one
        NoMessage,   ///< the "message" is missing
        Ampersand,   ///< a bare ampersand in every free text of the reply
        Empty,       ///< an empty body with status 200
        Huge,        ///< a well-formed body of @c number MB (-1: 50)
        Deep,        ///< elements nested @c number deep (-1: a million)
        Body         ///< the body is @c text
    };

    Kind kind = Delay;
    qint64 number = -1;
    QString text;
    QString method;      ///< only requests with this method; empty: any
    QString pathPrefix;  ///< only requests whose decoded path begins with it; empty: any
    int skip = 0;        ///< the number of matching requests that are not affected first
    int times = -1;      ///< the number of requests affected after that; -1: all
    double chance = 100; ///< the probability in percent

    /// Reads "KIND[=ARGUMENT][,method=M][,path=PREFIX][,skip=N][,times=N][,chance=PERCENT]", for instance
    /// "status=503,path=/qdws/v1/ofax,method=POST,times=2". False if the text is invalid; @p error says why.
    static bool parse(const QString& text, SimFault* fault, QString* error);
    /// One line per kind, for help texts.
    static QString help();
};

/// @brief The active faults. Thread-safe.
class SimFaults
{
public:
    /// @p seed: of the random numbers for SimFault::chance.
    explicit SimFaults(quint32 seed = 1)
        : m_random(seed)
    {}

    void add(const SimFault& fault);
    void clear();

    /// Whether to close the connection before the request's body is read; counts towards SimFault::times.
    bool hangUpEarly(const SimRequest& request);
    /// The fault for this request: the first matching one in order of addition. False if there is none.
    bool take(const SimRequest& request, SimFault* fault);

    /// The reply to a request that is not executed; only for Status.
    static SimReply instead(const SimFault& fault);
    /// Applies the fault to a good reply.
    static void apply(const SimFault& fault, SimReply* reply);

private:
    bool take(const SimRequest& request, bool early, SimFault* fault);

    std::mutex m_mutex;
    QVector<SimFault> m_faults;
    QRandomGenerator m_random;
};
