#include "contactgroup.h"

#include "domtext_p.h"

ContactGroup::~ContactGroup() = default;

bool ContactGroup::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
    const QDomElement name = children.element(QStringLiteral("name"));
    const QDomElement description = children.element(QStringLiteral("description"));
    if (name.isNull() || description.isNull())
        return false;
    m_name = name.text();
    m_description = description.text();
    return true;
}

bool ContactGroup::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}

bool ContactGroup::operator==(const ContactUnit& other) const
{
    const auto* group = dynamic_cast<const ContactGroup*>(&other);
    return group && m_name == group->m_name && m_description == group->m_description &&
           m_contacts == group->m_contacts;
}

ContactUnit* ContactGroup::copy() const
{
    return new ContactGroup(*this);
}

bool ContactGroup::readStorage(const QDomElement&, int)
{
    return false;
}

bool ContactGroup::writeStorage(QDomDocument&, QDomElement&, int) const
{
    return false;
}
