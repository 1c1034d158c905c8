#include "attach.h"

#include "documentparts_p.h"
#include "domtext_p.h"

Attach::~Attach() = default;

bool Attach::readFax(const QDomElement&, int)
{
    return false;
}

bool Attach::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    return writeRecord(*this, document, parent, &DiskDataProvider::toBase64);
}

bool writeRecord(const Attach& attach, QDomDocument& document, QDomElement& parent, const ContentText& text)
{
    if (attach.location() == Attach::NotSet)
        return false;
    const bool isInline = attach.location() == Attach::Inline;
    appendText(document, parent, QStringLiteral("location"),
               isInline ? QStringLiteral("inline") : QStringLiteral("external"));
    if (!isInline) {
        appendText(document, parent, QStringLiteral("url"), attach.contentUrl().toString());
        return true;
    }
    appendText(document, parent, QStringLiteral("name"), attach.name());
    return writeRecord(attach.content(), document, parent, text);
}
