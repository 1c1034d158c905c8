#pragma once

#include "attach.h"
#include "contactlist.h"
#include "coverpage.h"
#include "faxscheduleoptions.h"

#include <QList>

/**
 * A fax to be sent: recipients, attachments, cover page and schedule. A value.
 */
class QDCORE_EXPORT FaxDocument : public IQuendraSerialization
{
public:
    FaxDocument() = default;
    FaxDocument(const FaxDocument&) = default;
    FaxDocument& operator=(const FaxDocument&) = default;

    /// Not supported: false.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends "cover_page" always, one "recipient" for each contact among the recipients (groups are
    /// skipped) and one "attachment" for each attachment that can be written (the others are omitted), but
    /// not the schedule options. False if there are no recipients or one cannot be written; the document then
    /// contains the rest.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~FaxDocument();

    /// One "recipient" element each. Groups are skipped: to send to a group, add its members.
    const ContactList& recipients() const { return m_recipients; }
    ContactList& recipients() { return m_recipients; }
    void setRecipients(const ContactList& recipients) { m_recipients = recipients; }

    /// In the order in which they are sent.
    const QList<Attach>& attachs() const { return m_attachs; }
    QList<Attach>& attachs() { return m_attachs; }
    void setAttachs(const QList<Attach>& attachs) { m_attachs = attachs; }

    /// Element "cover_page". Disabled until another is set.
    const CoverPage& coverPage() const { return m_coverPage; }
    void setCoverPage(const CoverPage& coverPage) { m_coverPage = coverPage; }

    /// When and how it is sent; TaskSchedule writes them beside the document.
    const FaxScheduleOptions& faxSchedule() const { return m_faxSchedule; }
    void setFaxSchedule(const FaxScheduleOptions& options) { m_faxSchedule = options; }

    /// Appends 1, 2 and so on, after the extension, to the name of each attachment with the same name as an
    /// earlier one. A new name may equal that of a later attachment.
    void renameDuplicateAttachments();

private:
    ContactList m_recipients;
    QList<Attach> m_attachs;
    CoverPage m_coverPage;
    FaxScheduleOptions m_faxSchedule;
};
