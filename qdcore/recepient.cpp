#include "recepient.h"

#include "domtext_p.h"

Recepient::~Recepient() = default;

bool Recepient::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
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
