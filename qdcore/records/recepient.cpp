#include "recepient.h"

#include "domtext_p.h"
#include "recordfields_p.h"

Recepient::~Recepient() = default;

bool Recepient::readFax(const QDomElement& element, int)
{
    return readFields(*this, DomChildren(element));
}

bool readFields(Recepient& recipient, const DomChildren& children)
{
    recipient.setName(children.text(QStringLiteral("recipient_name")));
    recipient.setPhone(children.text(QStringLiteral("recipient_phone")));
    recipient.setFax(children.text(QStringLiteral("recipient_fax")));
    recipient.setOrganization(children.text(QStringLiteral("recipient_organization")));
    return true;
}

ContactUnit* Recepient::copy() const
{
    return new Recepient(*this);
}
