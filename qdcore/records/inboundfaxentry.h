#pragma once

#include "basefaxentry.h"
#include "deliveredto.h"
#include "entrydate.h"
#include "entryurl.h"

/**
 * An entry of the inbound log: a fax that was received. A value.
 */
class QDCORE_EXPORT InboundFaxEntry : public BaseFaxEntry
{
public:
    InboundFaxEntry() = default;
    InboundFaxEntry(const InboundFaxEntry&) = default;
    InboundFaxEntry& operator=(const InboundFaxEntry&) = default;

    /// Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~InboundFaxEntry() override;

    /// Element "pages".
    int pages() const override;
    void setPages(int pages) { m_pages = pages; }

    /// Element "filename".
    const QString& filename() const { return m_filename; }
    void setFilename(const QString& filename) { m_filename = filename; }

    /// The address for downloading the received document. Element "location".
    QUrl location() const { return m_location.url(); }
    void setLocation(const QUrl& location) { m_location = location; }

    /// Element "complete_time".
    QDateTime completeTime() const { return m_completeTime.dateTime(); }
    void setCompleteTime(const QDateTime& dateTime) { m_completeTime = dateTime; }

    /// Element "recipient_name".
    const QString& toName() const { return m_toName; }
    void setToName(const QString& name) { m_toName = name; }

    /// Why the fax could not be delivered. Element "error" of "delivery_error".
    const QString& error() const { return m_error; }
    void setError(const QString& error) { m_error = error; }

    /// The identification sent by the remote machine. Element "remote_id".
    const QString& remoteId() const { return m_remoteId; }
    void setRemoteId(const QString& remoteId) { m_remoteId = remoteId; }

    /// The text from which state() was parsed. Element "status".
    const QString& status() const { return m_status; }
    /// Sets the text only.
    void setStatus(const QString& status) { m_status = status; }

    /// All deliveries in one line, "type: destination; type: destination". The last two characters of the
    /// line are always removed, so a last type without a destination is truncated.
    QString deliveredTo() const;
    /// The type of the first delivery, such as "email"; empty when there is none.
    QString deliveredType() const;
    /// The destination of the first delivery; empty when there is none.
    QString deliveredDestination() const;

    /// Replaces all deliveries. Elements "delivered_to", of which the first is read.
    void setDeliveredTo(const DeliveredTo& deliveredTo) { m_deliveredTo = deliveredTo; }

    /// Element "channel".
    const QString& channel() const { return m_channel; }
    /// Element "modem".
    const QString& modem() const { return m_modem; }
    /// Element "extension".
    const QString& extension() const { return m_extension; }

private:
    QString m_filename;
    EntryUrl m_location;
    EntryDate m_completeTime;
    int m_pages{0};
    QString m_toName;
    QString m_error;
    QString m_remoteId;
    QString m_status;
    DeliveredTo m_deliveredTo;
    QString m_channel;
    QString m_modem;
    QString m_extension;
};

/// The inbound log in the server's order; neither the list nor an entry is null. @relates InboundFaxEntry
using InboundFaxEntriesPtrListPtr = QSharedPointer<QVector<QSharedPointer<InboundFaxEntry>>>;

Q_DECLARE_METATYPE(InboundFaxEntriesPtrListPtr)
