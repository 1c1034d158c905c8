#pragma once

#include "contactgroup.h"

#include <QUrl>

/**
 * A group of a fax server's book. A value.
 */
class QDCORE_EXPORT QuendraContactGroup : public ContactGroup
{
public:
    QuendraContactGroup() = default;
    QuendraContactGroup(const QuendraContactGroup&) = default;
    QuendraContactGroup& operator=(const QuendraContactGroup&) = default;

    /// Reads name and description, both required, and the address from "contact_group_url" if present (an
    /// address with scheme https becomes http). Members are not read.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends "contact_group_url", "name" and "description", each unless empty, and one "contact" element
    /// with the address of each member that is a QuendraContact and has one; other members are omitted.
    /// Always true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~QuendraContactGroup() override;

    bool operator==(const ContactUnit& other) const override;
    ContactUnit* copy() const override;

    /// The group's resource on the server. Its last path segment is the group's object id.
    const QUrl& url() const { return m_url; }
    void setUrl(const QUrl& url) { m_url = url; }

private:
    QUrl m_url;
};
