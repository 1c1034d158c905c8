#include "sender.h"

#include "domtext_p.h"

Sender::~Sender() = default;

bool Sender::readFax(const QDomElement& element, int)
{
    return readFields(DomChildren(element));
}

bool Sender::readFields(const DomChildren& children)
{
    setName(children.text(QStringLiteral("sender_name")));
    setEmail(children.text(QStringLiteral("sender_email")));
    setPhone(children.text(QStringLiteral("sender_phone")));
    setFax(children.text(QStringLiteral("sender_fax")));
    setOrganization(children.text(QStringLiteral("sender_organization")));
    return children.has(QStringLiteral("sender_name"));
}

ContactUnit* Sender::copy() const
{
    return new Sender(*this);
}
