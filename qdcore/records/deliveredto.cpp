#include "deliveredto.h"

#include "domtext_p.h"

DeliveredTo::~DeliveredTo() = default;

bool DeliveredTo::readFax(const QDomElement& element, int)
{
    m_deliveries.clear();
    addDelivery(element.firstChildElement(QStringLiteral("delivered_to")));
    return true;
}

bool DeliveredTo::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}

void DeliveredTo::addDelivery(const QDomElement& element)
{
    if (element.isNull())
        return;
    const DomChildren children(element);
    m_deliveries.append(
        {children.text(QStringLiteral("type")), children.text(QStringLiteral("destination"))});
}
