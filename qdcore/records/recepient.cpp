#include "recepient.h"

#include "domtext_p.h"

Recepient::~Recepient() = default;

bool Recepient::readFax(const QDomElement& element, int)
{
    return readFields(DomChildren(element));
}

bool Recepient::readFields(const DomChildren& children)
{
    setName(children.text(QStringLiteral("recipient_name")));
    setPhone(children.text(QStringLiteral("recipient_phone")));
    setFax(children.text(QStringLiteral("recipient_fax")));
    setOrganization(children.text(QStringLiteral("recipient_organization")));
    return true;
}

ContactUnit* Recepient::copy() const
{
    return new Recepient(*this);
}
