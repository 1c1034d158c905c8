#pragma once

#include "contact.h"

class DomChildren;

/**
 * The recipient of a fax in the outbound log. A value.
 *
 * Read from elements of the entry itself, each prefixed "recipient_"; written like any contact.
 */
class QDCORE_EXPORT Recepient : public Contact
{
public:
    Recepient() = default;
    Recepient(const Recepient&) = default;
    Recepient& operator=(const Recepient&) = default;

    /// Sets name, phone, fax and organization from the entry's elements, a missing one empties its field.
    /// Always true.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// The same from the children of the element, for callers that have them already.
    bool readFields(const DomChildren& children);

    ~Recepient() override;

    ContactUnit* copy() const override;
};
