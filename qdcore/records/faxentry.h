#pragma once

#include "basefaxentry.h"
#include "contact.h"
#include "coverpage.h"
#include "entrydate.h"
#include "entryurl.h"
#include "faxscheduleoptions.h"
#include "modementry.h"
#include "quendracontact.h"

/**
 * An entry of the status log: a fax that is being processed. A value.
 */
class QDCORE_EXPORT FaxEntry : public BaseFaxEntry
{
public:
    FaxEntry() = default;
    FaxEntry(const FaxEntry&) = default;
    FaxEntry& operator=(const FaxEntry&) = default;

    /// Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~FaxEntry() override;

    /// Element "pages", plus one when the cover page is enabled.
    int pages() const override;
    /// The subject of the cover page.
    QString subject() const override;
    /// Name, fax number and organization of the recipient, joined by ", ".
    QString recipient() const override;
    /// As url().
    QUrl entryUrl() const override;

    /// Element "sender".
    const QuendraContact& from() const { return m_from; }
    void setFrom(const QuendraContact& from) { m_from = from; }

    /// Element "recipient".
    const Contact& to() const { return m_to; }
    void setTo(const Contact& to) { m_to = to; }

    /// Not set from any element.
    const ModemEntry& modemEntry() const { return m_modemEntry; }
    void setModemEntry(const ModemEntry& modemEntry) { m_modemEntry = modemEntry; }

    /// Element "fax_entry_url".
    QUrl url() const { return m_url.url(); }
    void setUrl(const QUrl& url) { m_url = url; }

    /// Element "preview".
    QUrl previewUrl() const { return m_previewUrl.url(); }
    void setPreviewUrl(const QUrl& url) { m_previewUrl = url; }

    /// Element "created".
    QDateTime createTime() const { return m_createTime.dateTime(); }
    void setCreateTime(const QDateTime& dateTime) { m_createTime = dateTime; }

    /// When the state last changed. Element "stime".
    QDateTime changeStateTime() const { return m_changeStateTime.dateTime(); }
    void setChangeStateTime(const QDateTime& dateTime) { m_changeStateTime = dateTime; }

    /// The program that handled the submission, as the server names it. Element "agent".
    const QString& agent() const { return m_agent; }
    void setAgent(const QString& agent) { m_agent = agent; }

    /// Element "cover_page".
    const CoverPage& coverPage() const { return m_coverPage; }
    void setCoverPage(const CoverPage& coverPage) { m_coverPage = coverPage; }

    /// Elements of the entry itself.
    const FaxScheduleOptions& schedule() const { return m_schedule; }
    void setSchedule(const FaxScheduleOptions& schedule) { m_schedule = schedule; }

    /// The user who decides on a fax that needs approval; not set from any element.
    const QString& approver() const { return m_approver; }
    void setApprover(const QString& approver) { m_approver = approver; }
    /// The time of that decision, local time; not set from any element.
    QDateTime approverTime() const { return m_approverTime.dateTime(); }
    void setApproverTime(const QDateTime& dateTime) { m_approverTime = dateTime; }

private:
    QuendraContact m_from;
    Contact m_to;
    ModemEntry m_modemEntry;
    EntryUrl m_url;
    EntryUrl m_previewUrl;
    EntryDate m_createTime;
    EntryDate m_changeStateTime;
    QString m_agent;
    CoverPage m_coverPage;
    int m_pages{0};
    FaxScheduleOptions m_schedule;
    QString m_approver;
    EntryDate m_approverTime;
};
