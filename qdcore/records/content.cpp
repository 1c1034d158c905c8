#include "content.h"

#include "documentparts_p.h"
#include "domtext_p.h"

Content::~Content() = default;

bool Content::readFax(const QDomElement&, int)
{
    return false;
}

bool Content::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    return writeRecord(*this, document, parent, &DiskDataProvider::toBase64);
}

bool writeRecord(const Content& content, QDomDocument& document, QDomElement& parent, const ContentText& text)
{
    // indexed by Type
    static const QString typeTexts[] = {
        QString(),
        QStringLiteral("application/pdf"),
        QStringLiteral("application/postscript"),
        QStringLiteral("text/plain"),
        QStringLiteral("image/tiff"),
    };
    const Content::Type type = content.type();
    if (type < Content::Pdf || type > Content::Tiff)
        return false;
    const QString data = text(content.data());
    if (data.isEmpty())
        return false;
    appendText(document, parent, QStringLiteral("content_type"), typeTexts[type]);
    appendText(document, parent, QStringLiteral("content_transfer_encoding"), QStringLiteral("base64"));
    appendText(document, parent, QStringLiteral("content"), data);
    return true;
}
