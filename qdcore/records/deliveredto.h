#pragma once

#include "iquendraserialization.h"

#include <QPair>
#include <QString>
#include <QVector>

/**
 * Where a received fax went, as pairs of a type ("email") and a destination. A value.
 */
class QDCORE_EXPORT DeliveredTo : public IQuendraSerialization
{
public:
    /// Type and destination, each possibly empty.
    using Delivery = QPair<QString, QString>;

    DeliveredTo() = default;
    DeliveredTo(const DeliveredTo&) = default;
    DeliveredTo& operator=(const DeliveredTo&) = default;

    /// Reads the first "delivered_to" child of a log entry; further ones are ignored. Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~DeliveredTo();

    /// Adds the delivery of a "delivered_to" element; does nothing if it is null.
    void addDelivery(const QDomElement& element);

    /// In document order.
    const QVector<Delivery>& deliveries() const { return m_deliveries; }
    void setDeliveries(const QVector<Delivery>& deliveries) { m_deliveries = deliveries; }

private:
    QVector<Delivery> m_deliveries;
};
