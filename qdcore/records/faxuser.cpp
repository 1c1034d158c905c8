#include "faxuser.h"

#include "domtext_p.h"

FaxUser::~FaxUser() = default;

bool FaxUser::readFax(const QDomElement& element, int protocolVersion)
{
    const QDomElement enabled = element.firstChildElement(QStringLiteral("default_cover_page_enabled"));
    const QDomElement name = element.firstChildElement(QStringLiteral("default_cover_page_name"));
    if (!m_contact.readFax(element, protocolVersion) || enabled.isNull() || name.isNull())
        return false;

    m_usedCoverPage = isTrue(enabled.text());
    m_defaultCoverpage = name.text();
    // Not an error without schedule defaults: the options are then unchanged.
    m_faxScheduleOptions.readFax(element, protocolVersion);
    return true;
}

bool FaxUser::writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    makeXML(document, parent, protocolVersion);
    if (protocolVersion == 2)
        m_faxScheduleOptions.writeFax(document, parent, protocolVersion);
    return true;
}

bool FaxUser::readStorage(const QDomElement& element, int protocolVersion)
{
    return readFax(element, protocolVersion);
}

bool FaxUser::writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    makeXML(document, parent, protocolVersion);
    if (protocolVersion == 1 || protocolVersion == 2)
        m_faxScheduleOptions.writeFax(document, parent, protocolVersion);
    return true;
}

void FaxUser::makeXML(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    m_contact.writeFax(document, parent, protocolVersion);
    appendText(document, parent, QStringLiteral("default_cover_page_enabled"), boolText(m_usedCoverPage));
    appendText(document, parent, QStringLiteral("default_cover_page_name"), m_defaultCoverpage);
}
