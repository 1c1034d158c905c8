#include "outlookcontactgroup.h"

OutlookContactGroup::~OutlookContactGroup() = default;

bool OutlookContactGroup::operator==(const ContactUnit& other) const
{
    const auto* group = dynamic_cast<const OutlookContactGroup*>(&other);
    return group && ContactGroup::operator==(other) && m_uid == group->m_uid;
}

ContactUnit* OutlookContactGroup::copy() const
{
    return new OutlookContactGroup(*this);
}
