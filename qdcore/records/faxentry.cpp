#include "faxentry.h"

#include "domtext_p.h"
#include "entrytext_p.h"
#include "recordfields_p.h"

FaxEntry::~FaxEntry() = default;

bool FaxEntry::readFax(const QDomElement& element, int protocolVersion)
{
    const DomChildren children(element);
    setFaxEntryStatusFromString(children.text(QStringLiteral("state")));
    m_createTime = EntryDate::fromText(children.text(QStringLiteral("created")));
    m_changeStateTime = EntryDate::fromText(children.text(QStringLiteral("stime")));
    m_url = EntryUrl::fromText(children.text(QStringLiteral("fax_entry_url")));
    m_agent = children.text(QStringLiteral("agent"));
    readFields(m_schedule, children);
    m_from.readFax(children.element(QStringLiteral("sender")), protocolVersion);
    m_coverPage.readFax(children.element(QStringLiteral("cover_page")), 1);
    m_pages = withCoverPage(children.number(QStringLiteral("pages")), m_coverPage.enabled());
    m_previewUrl = EntryUrl::fromText(children.text(QStringLiteral("preview")));
    m_to.readFax(children.element(QStringLiteral("recipient")), 1);
    return true;
}

bool FaxEntry::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}

int FaxEntry::pages() const
{
    return m_pages;
}

QString FaxEntry::subject() const
{
    return m_coverPage.subject();
}

QString FaxEntry::recipient() const
{
    return recipientLine(m_to);
}

QUrl FaxEntry::entryUrl() const
{
    return m_url.url();
}
