#include "coverpage.h"

#include "domtext_p.h"

CoverPage::~CoverPage() = default;

bool CoverPage::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
    QString text;
    if (!children.read(QStringLiteral("enabled"), text))
        return false;
    m_enabled = isTrue(text);
    if (!m_enabled)
        return true;

    children.read(QStringLiteral("subject"), m_subject);
    children.read(QStringLiteral("comments"), m_comments);
    children.read(QStringLiteral("name"), m_name);
    children.read(QStringLiteral("type"), m_type);
    if (children.read(QStringLiteral("url"), text))
        m_url = QUrl(text, QUrl::TolerantMode);
    return true;
}

bool CoverPage::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    appendText(document, parent, QStringLiteral("enabled"), boolText(m_enabled));
    appendTextIfSet(document, parent, QStringLiteral("name"), m_name);
    appendTextIfSet(document, parent, QStringLiteral("type"), m_type);
    appendTextIfSet(document, parent, QStringLiteral("url"), m_url.toString());
    appendTextIfSet(document, parent, QStringLiteral("subject"), m_subject);
    appendTextIfSet(document, parent, QStringLiteral("comments"), m_comments);
    return true;
}

bool CoverPage::readStorage(const QDomElement&, int)
{
    return true;
}

bool CoverPage::writeStorage(QDomDocument&, QDomElement&, int) const
{
    return false;
}
