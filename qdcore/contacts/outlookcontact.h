#pragma once

#include "contact.h"

/**
 * A contact of an Outlook folder. A value, read and written like its base.
 */
class QDCORE_EXPORT OutlookContact : public Contact
{
public:
    OutlookContact() = default;
    OutlookContact(const OutlookContact&) = default;
    OutlookContact& operator=(const OutlookContact&) = default;
    ~OutlookContact() override;

    bool operator==(const ContactUnit& other) const override;
    ContactUnit* copy() const override;

    /// Outlook's entry identifier.
    const QString& uid() const { return m_uid; }
    void setUid(const QString& uid) { m_uid = uid; }

private:
    QString m_uid;
};
