#pragma once

#include "qdcore_global.h"

class QDomDocument;
class QDomElement;

/**
 * A record of the web service, serialised as XML.
 *
 * A record reads the children of a given element and appends children to a given element; it never creates an
 * element around itself. If a record does not support a direction, the function returns false and does
 * nothing. Records are not owned or destroyed through this interface.
 */
class QDCORE_EXPORT IQuendraSerialization
{
public:
    /// Reads the record from the children of @p element. @p protocolVersion is 1 or 2, the protocol version
    /// of the server. Returns false if a required element is missing; a missing optional element leaves its
    /// field unchanged.
    virtual bool readFax(const QDomElement& element, int protocolVersion) = 0;

    /// Appends the record's elements to @p parent. Returns false when the record cannot be written.
    virtual bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const = 0;

protected:
    IQuendraSerialization() = default;
    IQuendraSerialization(const IQuendraSerialization&) = default;
    IQuendraSerialization& operator=(const IQuendraSerialization&) = default;
    ~IQuendraSerialization() = default;
};
