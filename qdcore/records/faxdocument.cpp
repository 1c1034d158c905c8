#include "faxdocument.h"

#include "contact.h"
#include "documentparts_p.h"
#include "domtext_p.h"

#include <QDomDocument>
#include <QHash>

FaxDocument::~FaxDocument() = default;

bool FaxDocument::readFax(const QDomElement&, int)
{
    return false;
}

bool FaxDocument::writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    return writeRecord(*this, document, parent, protocolVersion, &DiskDataProvider::toBase64);
}

bool writeRecord(const FaxDocument& fax, QDomDocument& document, QDomElement& parent, int protocolVersion,
                 const ContentText& text)
{
    const QVector<ContactUnitPtr>& recipients = fax.recipients().contacts();
    bool result = !recipients.isEmpty();

    QDomElement cover = appendElement(document, parent, QStringLiteral("cover_page"));
    const bool coverWritten = fax.coverPage().writeFax(document, cover, 1);

    for (const ContactUnitPtr& unit : recipients) {
        if (const auto* contact = dynamic_cast<const Contact*>(unit.data())) {
            QDomElement recipient = appendElement(document, parent, QStringLiteral("recipient"));
            result = contact->writeFax(document, recipient, protocolVersion) && result;
        }
    }

    bool attachmentWritten = false;
    for (const Attach& attach : fax.attachs()) {
        QDomElement element = document.createElement(QStringLiteral("attachment"));
        if (writeRecord(attach, document, element, text)) {
            parent.appendChild(element);
            attachmentWritten = true;
        }
    }
    return (coverWritten || attachmentWritten) && result;
}

void FaxDocument::renameDuplicateAttachments()
{
    QHash<QString, int> repeats;
    for (Attach& attach : m_attachs) {
        const QString name = attach.name();
        const auto known = repeats.find(name);
        if (known == repeats.end())
            repeats.insert(name, 0);
        else
            attach.setName(name + QString::number(++*known));
    }
}
