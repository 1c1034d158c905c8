#include "faxdocument.h"

#include "contact.h"
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
    bool result = !m_recipients.contacts().isEmpty();

    QDomElement cover = appendElement(document, parent, QStringLiteral("cover_page"));
    const bool coverWritten = m_coverPage.writeFax(document, cover, 1);

    for (const ContactUnitPtr& unit : m_recipients.contacts()) {
        if (const auto* contact = dynamic_cast<const Contact*>(unit.data())) {
            QDomElement recipient = appendElement(document, parent, QStringLiteral("recipient"));
            result = contact->writeFax(document, recipient, protocolVersion) && result;
        }
    }

    bool attachmentWritten = false;
    for (const Attach& attach : m_attachs) {
        QDomElement element = document.createElement(QStringLiteral("attachment"));
        if (attach.writeFax(document, element, protocolVersion)) {
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
