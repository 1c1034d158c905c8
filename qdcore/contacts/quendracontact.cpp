#include "quendracontact.h"

#include "contactfields_p.h"
#include "contacturl_p.h"
#include "domtext_p.h"

QuendraContact::~QuendraContact() = default;

bool QuendraContact::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
    readFields(*this, children);
    QString address;
    if (!children.read(QStringLiteral("contact_url"), address))
        children.read(QStringLiteral("user_url"), address);
    m_url = contactUrl(address);
    children.read(QStringLiteral("username"), m_user);
    return true;
}

bool QuendraContact::writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    appendTextIfSet(document, parent, QStringLiteral("contact_url"), m_url.toString());
    appendTextIfSet(document, parent, QStringLiteral("username"), m_user);
    return Contact::writeFax(document, parent, protocolVersion);
}

bool QuendraContact::operator==(const ContactUnit& other) const
{
    const auto* contact = dynamic_cast<const QuendraContact*>(&other);
    return contact && Contact::operator==(other) && m_url == contact->m_url && m_user == contact->m_user;
}

ContactUnit* QuendraContact::copy() const
{
    return new QuendraContact(*this);
}
