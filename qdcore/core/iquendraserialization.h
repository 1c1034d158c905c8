#pragma once

#include "qdcore_global.h"

class QDomDocument;
class QDomElement;

/**
 * A record as the web service sends and receives it.
 *
 * A record reads the children of the element it is given and writes children into the element it is given; it
 * never makes an element around itself. A direction that a record does not support returns false and does
 * nothing. Records are not owned or destroyed through this interface.
 */
class QDCORE_EXPORT IQuendraSerialization
{
public:
    /// Reads the record from the children of @p element. @p protocolVersion is 1 or 2, the protocol version
    /// of the server. Returns false when an element that the record requires is missing; optional elements
    /// that are missing leave their field as it is.
    virtual bool readFax(const QDomElement& element, int protocolVersion) = 0;

    /// Appends the record's elements to @p parent. Returns false when the record cannot be written.
    virtual bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const = 0;

protected:
    IQuendraSerialization() = default;
    IQuendraSerialization(const IQuendraSerialization&) = default;
    IQuendraSerialization& operator=(const IQuendraSerialization&) = default;
    ~IQuendraSerialization() = default;
};
