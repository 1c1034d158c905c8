#pragma once

#include "contactunit.h"

#include <QString>

/**
 * A sender or recipient of faxes. A value; all texts are empty by default.
 */
class QDCORE_EXPORT Contact : public ContactUnit
{
public:
    Contact() = default;
    Contact(const Contact&) = default;
    Contact& operator=(const Contact&) = default;

    /// Sets every field from its element; a missing element empties the field. Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends one element for each field that is not empty. Always true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~Contact() override;

    bool operator==(const ContactUnit& other) const override;
    ContactUnit* copy() const override;

    /// Unlike readFax(), does not change fields whose element is missing, and returns false without "name".
    bool readStorage(const QDomElement& element, int protocolVersion) override;
    /// Unlike writeFax(), writes "name" and "fax_number" even if they are empty. Always true.
    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    /// Element "name".
    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    /// Element "organization".
    const QString& organization() const { return m_organization; }
    void setOrganization(const QString& organization) { m_organization = organization; }

    /// Element "phone_number".
    const QString& phone() const { return m_phone; }
    void setPhone(const QString& phone) { m_phone = phone; }

    /// Element "fax_number".
    const QString& fax() const { return m_fax; }
    void setFax(const QString& fax) { m_fax = fax; }

    /// Element "email_address".
    const QString& email() const { return m_email; }
    void setEmail(const QString& email) { m_email = email; }

private:
    QString m_name;
    QString m_organization;
    QString m_phone;
    QString m_fax;
    QString m_email;
};
