#pragma once

#include "contactgroup.h"

/**
 * A distribution list of an Outlook folder. A value, read and written like its base.
 */
class QDCORE_EXPORT OutlookContactGroup : public ContactGroup
{
public:
    OutlookContactGroup() = default;
    OutlookContactGroup(const OutlookContactGroup&) = default;
    OutlookContactGroup& operator=(const OutlookContactGroup&) = default;
    ~OutlookContactGroup() override;

    bool operator==(const ContactUnit& other) const override;
    ContactUnit* copy() const override;

    /// Outlook's entry identifier.
    const QString& uid() const { return m_uid; }
    void setUid(const QString& uid) { m_uid = uid; }

private:
    QString m_uid;
};
