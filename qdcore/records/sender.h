#pragma once

#include "contact.h"

class DomChildren;

/**
 * The sender of a fax in the outbound log. A value.
 *
 * Read from elements of the entry itself, each prefixed "sender_"; written like any contact.
 */
class QDCORE_EXPORT Sender : public Contact
{
public:
    Sender() = default;
    Sender(const Sender&) = default;
    Sender& operator=(const Sender&) = default;

    /// Sets name, email, phone, fax and organization from the entry's elements, a missing one empties its
    /// field. False without "sender_name".
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// The same from the children of the element, for callers that have them already.
    bool readFields(const DomChildren& children);

    ~Sender() override;

    ContactUnit* copy() const override;
};
