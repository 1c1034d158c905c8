#pragma once

#include "basefaxentry.h"
#include "coverpage.h"
#include "entrydate.h"
#include "entryurl.h"
#include "recepient.h"
#include "sender.h"

/**
 * An entry of the outbound log: a fax that was sent or failed. A value.
 */
class QDCORE_EXPORT OutboundFaxEntry : public BaseFaxEntry
{
public:
    OutboundFaxEntry() = default;
    OutboundFaxEntry(const OutboundFaxEntry&) = default;
    OutboundFaxEntry& operator=(const OutboundFaxEntry&) = default;

    /// Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~OutboundFaxEntry() override;

    /// Element "end_time".
    QDateTime sentAt() const override;
    /// Element "pages", plus one when "cover_page_used" is above 0.
    int pages() const override;
    /// Element "subject".
    QString subject() const override;
    /// Name, fax number and organization of the recipient, joined by ", ".
    QString recipient() const override;
    /// Element "fax_entry_url".
    QUrl entryUrl() const override;

    /// Element "preview".
    QUrl previewUrl() const { return m_previewUrl.url(); }
    /// Element "start_time".
    QDateTime startTime() const { return m_startTime.dateTime(); }
    /// The program that handled the submission, as the server names it. Element "agent".
    const QString& agent() const { return m_agent; }
    /// Enabled if one was sent; name and comments are from "cover_page_name" and "comments", the subject is
    /// subject().
    const CoverPage& coverPage() const { return m_coverPage; }
    /// The server user who sent the fax. Element "username".
    const QString& username() const { return m_username; }

    //@{
    /// A field of the recipient. Elements "recipient_name", "recipient_fax", "recipient_phone" and
    /// "recipient_organization".
    const QString& recepientName() const { return m_recipient.name(); }
    const QString& recepientFax() const { return m_recipient.fax(); }
    const QString& recepientPhone() const { return m_recipient.phone(); }
    const QString& recepientOrganization() const { return m_recipient.organization(); }
    //@}

    //@{
    /// A field of the sender. Elements "sender_name", "sender_email", "sender_phone", "sender_fax" and
    /// "sender_organization".
    const QString& senderName() const { return m_sender.name(); }
    const QString& senderEmail() const { return m_sender.email(); }
    const QString& senderPhone() const { return m_sender.phone(); }
    const QString& senderFax() const { return m_sender.fax(); }
    const QString& senderOrganization() const { return m_sender.organization(); }
    //@}

private:
    EntryUrl m_entryUrl;
    EntryUrl m_previewUrl;
    int m_pages{0};
    EntryDate m_startTime;
    EntryDate m_sentAt;
    QString m_subject;
    Recepient m_recipient;
    Sender m_sender;
    QString m_agent;
    CoverPage m_coverPage;
    QString m_username;
};
