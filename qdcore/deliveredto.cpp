#include "deliveredto.h"

#include "domtext_p.h"

DeliveredTo::~DeliveredTo() = default;

bool DeliveredTo::readFax(const QDomElement& element, int)
{
    m_deliveries.clear();
    const QDomElement delivery = element.firstChildElement(QStringLiteral("delivered_to"));
    if (!delivery.isNull()) {
        const DomChildren children(delivery);
        m_deliveries.append(
            {children.text(QStringLiteral("type")), children.text(QStringLiteral("destination"))});
    }
    return true;
}

bool DeliveredTo::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}
