#include "content.h"

#include "domtext_p.h"

Content::~Content() = default;

bool Content::readFax(const QDomElement&, int)
{
    return false;
}

bool Content::writeFax(QDomDocument& document, QDomElement& parent, int) const
{
    // indexed by Type
    static const QString typeTexts[] = {
        QString(),
        QStringLiteral("application/pdf"),
        QStringLiteral("application/postscript"),
        QStringLiteral("text/plain"),
        QStringLiteral("image/tiff"),
    };
    if (m_type < Pdf || m_type > Tiff)
        return false;
    const QString data = m_data.toBase64();
    if (data.isEmpty())
        return false;
    appendText(document, parent, QStringLiteral("content_type"), typeTexts[m_type]);
    appendText(document, parent, QStringLiteral("content_transfer_encoding"), QStringLiteral("base64"));
    appendText(document, parent, QStringLiteral("content"), data);
    return true;
}
