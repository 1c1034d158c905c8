#include "sender.h"

#include "domtext_p.h"
#include "recordfields_p.h"

Sender::~Sender() = default;

bool Sender::readFax(const QDomElement& element, int)
{
    return readFields(*this, DomChildren(element));
}

bool readFields(Sender& sender, const DomChildren& children)
{
    sender.setName(children.text(QStringLiteral("sender_name")));
    sender.setEmail(children.text(QStringLiteral("sender_email")));
    sender.setPhone(children.text(QStringLiteral("sender_phone")));
    sender.setFax(children.text(QStringLiteral("sender_fax")));
    sender.setOrganization(children.text(QStringLiteral("sender_organization")));
    return children.has(QStringLiteral("sender_name"));
}

ContactUnit* Sender::copy() const
{
    return new Sender(*this);
}
