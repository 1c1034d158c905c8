#include "inboundfaxentry.h"

#include "domtext_p.h"
#include "entrytext_p.h"

InboundFaxEntry::~InboundFaxEntry() = default;

bool InboundFaxEntry::readFax(const QDomElement& element, int)
{
    const DomChildren children(element);
    m_deliveredTo = DeliveredTo();
    m_deliveredTo.addDelivery(children.element(QStringLiteral("delivered_to")));
    m_status = children.text(QStringLiteral("status"));
    setFaxEntryStatusFromString(m_status);
    m_filename = children.text(QStringLiteral("filename"));
    m_location = EntryUrl::fromText(children.text(QStringLiteral("location")));
    m_completeTime = EntryDate::fromText(children.text(QStringLiteral("complete_time")));
    m_pages = children.number(QStringLiteral("pages"));
    m_toName = children.text(QStringLiteral("recipient_name"));
    const QDomElement error = children.element(QStringLiteral("delivery_error"));
    m_error = error.isNull() ? QString() : error.firstChildElement(QStringLiteral("error")).text();
    m_remoteId = children.text(QStringLiteral("remote_id"));
    m_channel = children.text(QStringLiteral("channel"));
    m_modem = children.text(QStringLiteral("modem"));
    m_extension = children.text(QStringLiteral("extension"));
    return true;
}

bool InboundFaxEntry::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}

int InboundFaxEntry::pages() const
{
    return m_pages;
}

QString InboundFaxEntry::deliveredTo() const
{
    QString line;
    for (const DeliveredTo::Delivery& delivery : m_deliveredTo.deliveries()) {
        const QString& type = delivery.first;
        const QString& destination = delivery.second;
        line += type;
        if (!type.isEmpty() && !destination.isEmpty())
            line += QLatin1String(": ");
        if (!destination.isEmpty())
            line += destination + QLatin1String("; ");
    }
    line.chop(2);
    return line;
}

QString InboundFaxEntry::deliveredType() const
{
    const QVector<DeliveredTo::Delivery>& deliveries = m_deliveredTo.deliveries();
    return deliveries.isEmpty() ? QString() : deliveries.first().first;
}

QString InboundFaxEntry::deliveredDestination() const
{
    const QVector<DeliveredTo::Delivery>& deliveries = m_deliveredTo.deliveries();
    return deliveries.isEmpty() ? QString() : deliveries.first().second;
}
