#include "attach.h"

#include "domtext_p.h"

Attach::~Attach() = default;

bool Attach::readFax(const QDomElement&, int)
{
    return false;
}

bool Attach::writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    if (m_location == NotSet)
        return false;
    const bool isInline = m_location == Inline;
    appendText(document, parent, QStringLiteral("location"),
               isInline ? QStringLiteral("inline") : QStringLiteral("external"));
    if (!isInline) {
        appendText(document, parent, QStringLiteral("url"), m_contentUrl.toString());
        return true;
    }
    appendText(document, parent, QStringLiteral("name"), m_name);
    return m_content.writeFax(document, parent, protocolVersion);
}
