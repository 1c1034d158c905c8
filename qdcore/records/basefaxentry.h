#pragma once

#include "iquendraserialization.h"

#include <QDateTime>
#include <QMetaType>
#include <QSharedPointer>
#include <QString>
#include <QUrl>
#include <QVector>

/**
 * One entry of a server's fax logs: the fields that lists of mixed entries show.
 *
 * Entries are created by the log tasks and then shared; they are read from XML but never written.
 * Dates are local time as the server writes it. Reading an entry always succeeds: a missing element gives an
 * empty text, 0 or a null date.
 */
class QDCORE_EXPORT BaseFaxEntry : public IQuendraSerialization
{
public:
    /// Which log an entry came from.
    enum FaxEntryType {
        TypeUnknown = 0,  ///< Not set.
        TypeStatus = 1,   ///< FaxEntry: a fax being processed.
        TypeOutbound = 2, ///< OutboundFaxEntry: a fax that was sent.
        TypeInbound = 3   ///< InboundFaxEntry: a fax that was received.
    };

    /// The state of the fax; the server's text is compared without case.
    enum FaxEntryState {
        StateUnknown = 0,         ///< No text, or any other text.
        StatePreprocessing = 1,   ///< "preprocessing"
        StatePending = 2,         ///< "pending"
        StateSending = 3,         ///< "sending"
        StateSent = 4,            ///< "sent"
        StateComplete = 5,        ///< "complete"
        StateAborted = 6,         ///< "aborted"
        StateFailed = 7,          ///< "failed"
        StateApprovalPending = 8, ///< "approval_pending"
        StateRejected = 9         ///< "rejected"
    };

    /// The entries of a log in the server's order, shared by all receivers of the signal. Neither the list
    /// nor an entry is null.
    using FaxEntriesPtrListPtr = QSharedPointer<QVector<QSharedPointer<BaseFaxEntry>>>;

    BaseFaxEntry() = default;
    BaseFaxEntry(const BaseFaxEntry&) = default;
    BaseFaxEntry& operator=(const BaseFaxEntry&) = default;

    virtual ~BaseFaxEntry();

    /// When sending ended; null here.
    virtual QDateTime sentAt() const;
    /// The number of pages, the cover page included; 0 here.
    virtual int pages() const;
    /// Empty here.
    virtual QString subject() const;
    /// The recipient in one line; empty here.
    virtual QString recipient() const;
    /// The entry's resource on the server, by which a fax is aborted or rescheduled; empty here.
    virtual QUrl entryUrl() const;

    /// Element "state" of a FaxEntry, "status" of the other two.
    FaxEntryState state() const { return m_state; }

    /// Set by the task that reads the log; it is not in the entry's XML.
    FaxEntryType type() const { return m_type; }
    void setType(FaxEntryType type) { m_type = type; }

protected:
    /// Sets state() from the server's text; StateUnknown for any other text.
    void setFaxEntryStatusFromString(const QString& text);

private:
    FaxEntryType m_type{TypeUnknown};
    FaxEntryState m_state{StateUnknown};
};

Q_DECLARE_METATYPE(BaseFaxEntry::FaxEntriesPtrListPtr)
