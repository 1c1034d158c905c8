#include "outboundfaxentry.h"

#include "domtext_p.h"
#include "entrytext_p.h"
#include "recordfields_p.h"

OutboundFaxEntry::~OutboundFaxEntry() = default;

bool OutboundFaxEntry::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
    readFields(m_recipient, children);
    readFields(m_sender, children);
    setFaxEntryStatusFromString(children.text(QStringLiteral("status")));
    m_entryUrl = EntryUrl::fromText(children.text(QStringLiteral("fax_entry_url")));
    m_previewUrl = EntryUrl::fromText(children.text(QStringLiteral("preview")));
    const bool coverPageUsed = children.number(QStringLiteral("cover_page_used")) > 0;
    m_pages = withCoverPage(children.number(QStringLiteral("pages")), coverPageUsed);
    m_startTime = EntryDate::fromText(children.text(QStringLiteral("start_time")));
    m_sentAt = EntryDate::fromText(children.text(QStringLiteral("end_time")));
    m_subject = children.text(QStringLiteral("subject"));
    m_agent = children.text(QStringLiteral("agent"));
    m_username = children.text(QStringLiteral("username"));
    m_coverPage.setEnabled(coverPageUsed);
    m_coverPage.setName(children.text(QStringLiteral("cover_page_name")));
    m_coverPage.setSubject(m_subject);
    m_coverPage.setComments(children.text(QStringLiteral("comments")));
    return true;
}

bool OutboundFaxEntry::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}

QDateTime OutboundFaxEntry::sentAt() const
{
    return m_sentAt.dateTime();
}

int OutboundFaxEntry::pages() const
{
    return m_pages;
}

QString OutboundFaxEntry::subject() const
{
    return m_subject;
}

QString OutboundFaxEntry::recipient() const
{
    return recipientLine(m_recipient);
}

QUrl OutboundFaxEntry::entryUrl() const
{
    return m_entryUrl.url();
}
