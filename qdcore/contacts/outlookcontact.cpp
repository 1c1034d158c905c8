#include "outlookcontact.h"

OutlookContact::~OutlookContact() = default;

bool OutlookContact::operator==(const ContactUnit& other) const
{
    const auto* contact = dynamic_cast<const OutlookContact*>(&other);
    return contact && Contact::operator==(other) && m_uid == contact->m_uid;
}

ContactUnit* OutlookContact::copy() const
{
    return new OutlookContact(*this);
}
