#pragma once

#include "contact.h"

#include <QUrl>

/**
 * A contact of a fax server's book. A value.
 */
class QDCORE_EXPORT QuendraContact : public Contact
{
public:
    QuendraContact() = default;
    QuendraContact(const QuendraContact&) = default;
    QuendraContact& operator=(const QuendraContact&) = default;

    /// Reads the address from "contact_url", else from "user_url" (an address with scheme https becomes http;
    /// without either element it becomes empty), the user from "username" if present, and the contact's
    /// fields. Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends "contact_url" and "username", each unless empty, then the contact's elements. Always true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    ~QuendraContact() override;

    bool operator==(const ContactUnit& other) const override;
    ContactUnit* copy() const override;

    /// The server user that the contact belongs to or represents. Element "username".
    const QString& user() const { return m_user; }
    void setUser(const QString& user) { m_user = user; }

    /// The contact's resource on the server. Its last path segment is the contact's object id.
    const QUrl& url() const { return m_url; }
    void setUrl(const QUrl& url) { m_url = url; }

private:
    QString m_user;
    QUrl m_url;
};
