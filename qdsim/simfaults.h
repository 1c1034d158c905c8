#pragma once

#include "simtypes.h"

#include <QtCore/QRandomGenerator>
#include <QtCore/QVector>

#include <mutex>

/// @brief One injected fault: its kind, for which requests and how often.
///
/// Faults of the answer (all but HangUpEarly and Status) happen after the request has been carried out: the
/// fax is queued although the client never learns of it.
struct SimFault
{
    enum Kind {
        Delay,       ///< wait @c number ms, then answer as usual
        HangUpEarly, ///< close the connection when the head has arrived; the request is not carried out
        HangUp,      ///< carry the request out and close the connection without a byte of answer
        Cut,         ///< close the connection inside the body, after @c number bytes (-1: the half)
        Drip,        ///< send the body byte by byte, @c number ms apart
        Status,      ///< answer with HTTP status @c number (and @c text as "message"), not carried out
        Truncated,   ///< a complete HTTP answer whose XML ends in the middle
        NotXml,      ///< a body that is no XML at all
        Html,        ///< an HTML page with status 200
        Message,     ///< the "message" is @c text instead of what it should be
        NoMessage,   ///< the "message" is missing
        Ampersand,   ///< a bare ampersand in every free text of the answer
        Empty,       ///< an empty body with status 200
        Huge,        ///< a well-formed body of @c number MB (-1: 50)
        Deep,        ///< elements nested @c number deep (-1: a million)
        Body         ///< the body is @c text, whatever that is
    };

    Kind kind = Delay;
    qint64 number = -1;
    QString text;
    QString method;      ///< only requests with this method; empty: any
    QString pathPrefix;  ///< only requests whose decoded path begins so; empty: any
    int skip = 0;        ///< let so many matching requests pass first
    int times = -1;      ///< happen so many times; -1: from then on always
    double chance = 100; ///< happen in so many percent of the cases, at random

    /// Reads "KIND[=ARGUMENT][,method=M][,path=PREFIX][,skip=N][,times=N][,chance=PERCENT]", for instance
    /// "status=503,path=/qdws/v1/ofax,method=POST,times=2". False if it is none; @p error says why.
    static bool parse(const QString& text, SimFault* fault, QString* error);
    /// One line a kind, for help texts.
    static QString help();
};

/// @brief The faults in force. Usable from every thread.
class SimFaults
{
public:
    /// @p seed: of the faults that happen by chance.
    explicit SimFaults(quint32 seed = 1)
        : m_random(seed)
    {}

    void add(const SimFault& fault);
    void clear();

    /// Whether the connection is to be closed before the request's body is read. Counts as one time.
    bool hangUpEarly(const SimRequest& request);
    /// The fault that is to happen to this request: the first in order of addition that matches, or none
    /// (false).
    bool take(const SimRequest& request, SimFault* fault);

    /// The reply that replaces carrying the request out; only for Status.
    static SimReply instead(const SimFault& fault);
    /// Does to a good reply what the fault says.
    static void apply(const SimFault& fault, SimReply* reply);

private:
    bool take(const SimRequest& request, bool early, SimFault* fault);

    std::mutex m_mutex;
    QVector<SimFault> m_faults;
    QRandomGenerator m_random;
};
