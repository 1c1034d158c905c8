#include "quendracontactgroup.h"

#include "contacturl_p.h"
#include "domtext_p.h"
#include "quendracontact.h"

QuendraContactGroup::~QuendraContactGroup() = default;

bool QuendraContactGroup::readFax(const QDomElement& element, int protocolVersion)
{
    if (!ContactGroup::readFax(element, protocolVersion))
        return false;
    const QDomElement address = element.firstChildElement(QStringLiteral("contact_group_url"));
    if (!address.isNull())
        m_url = contactUrl(address.text());
    return true;
}

bool QuendraContactGroup::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    appendTextIfSet(document, parent, QStringLiteral("contact_group_url"), m_url.toString());
    appendTextIfSet(document, parent, QStringLiteral("name"), name());
    appendTextIfSet(document, parent, QStringLiteral("description"), description());
    for (const ContactUnitPtr& unit : contacts().contacts()) {
        if (const auto* contact = dynamic_cast<const QuendraContact*>(unit.data()))
            appendTextIfSet(document, parent, QStringLiteral("contact"), contact->url().toString());
    }
    return true;
}

bool QuendraContactGroup::operator==(const ContactUnit& other) const
{
    const auto* group = dynamic_cast<const QuendraContactGroup*>(&other);
    return group && ContactGroup::operator==(other) && m_url == group->m_url;
}

ContactUnit* QuendraContactGroup::copy() const
{
    return new QuendraContactGroup(*this);
}
