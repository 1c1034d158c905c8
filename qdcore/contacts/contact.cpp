#include "contact.h"

#include "contactfields_p.h"
#include "domtext_p.h"

namespace {

const QString nameTag = QStringLiteral("name");
const QString emailTag = QStringLiteral("email_address");
const QString phoneTag = QStringLiteral("phone_number");
const QString faxTag = QStringLiteral("fax_number");
const QString organizationTag = QStringLiteral("organization");

} // namespace

Contact::~Contact() = default;

bool Contact::readFax(const QDomElement& element, int)
{
    readFields(*this, DomChildren(element));
    return true;
}

void readFields(Contact& contact, const DomChildren& children)
{
    contact.setName(children.text(nameTag));
    contact.setEmail(children.text(emailTag));
    contact.setPhone(children.text(phoneTag));
    contact.setFax(children.text(faxTag));
    contact.setOrganization(children.text(organizationTag));
}

bool Contact::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    appendTextIfSet(document, parent, nameTag, m_name);
    appendTextIfSet(document, parent, emailTag, m_email);
    appendTextIfSet(document, parent, phoneTag, m_phone);
    appendTextIfSet(document, parent, faxTag, m_fax);
    appendTextIfSet(document, parent, organizationTag, m_organization);
    return true;
}

bool Contact::operator==(const ContactUnit& other) const
{
    const auto* contact = dynamic_cast<const Contact*>(&other);
    return contact && m_name == contact->m_name && m_email == contact->m_email &&
           m_phone == contact->m_phone && m_fax == contact->m_fax &&
           m_organization == contact->m_organization;
}

ContactUnit* Contact::copy() const
{
    return new Contact(*this);
}

bool Contact::readStorage(const QDomElement& element, int)
{
    const DomChildren children(element);
    if (!children.read(nameTag, m_name))
        return false;
    children.read(emailTag, m_email);
    children.read(phoneTag, m_phone);
    children.read(faxTag, m_fax);
    children.read(organizationTag, m_organization);
    return true;
}

bool Contact::writeStorage(QDomDocument& document, QDomElement& parent, int) const
{
    // Name and fax number are always written: readStorage() requires the name.
    appendText(document, parent, nameTag, m_name);
    appendTextIfSet(document, parent, emailTag, m_email);
    appendTextIfSet(document, parent, phoneTag, m_phone);
    appendText(document, parent, faxTag, m_fax);
    appendTextIfSet(document, parent, organizationTag, m_organization);
    return true;
}
