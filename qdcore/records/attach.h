#pragma once

#include "content.h"

#include <QString>
#include <QUrl>

/**
 * One attachment of a fax: a file that is sent within the document, or an address that the server fetches. A
 * value.
 */
class QDCORE_EXPORT Attach : public IQuendraSerialization
{
public:
    /// Element "location".
    enum Loc {
        NotSet = 0,  ///< The attachment is not written.
        Inline = 1,  ///< "inline": name and content are used.
        External = 2 ///< "external": the address is used.
    };

    Attach() = default;
    Attach(const Attach&) = default;
    Attach& operator=(const Attach&) = default;

    /// Not supported: false.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends the location and its fields. False without a location, with nothing written, and if the
    /// content cannot be written.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~Attach();

    /// Element "location". Until it is set the attachment cannot be sent.
    Loc location() const { return m_location; }
    void setLocation(Loc location) { m_location = location; }

    /// The file name that the server shows and stores. Element "name".
    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    /// The address of an external attachment. Element "url".
    const QUrl& contentUrl() const { return m_contentUrl; }
    void setContentUrl(const QUrl& url) { m_contentUrl = url; }

    /// The bytes of an inline attachment.
    const Content& content() const { return m_content; }
    void setContent(const Content& content) { m_content = content; }

private:
    Loc m_location{NotSet};
    QString m_name;
    QUrl m_contentUrl;
    Content m_content;
};
