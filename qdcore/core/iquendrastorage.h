#pragma once

#include "qdcore_global.h"

class QDomDocument;
class QDomElement;

/**
 * An object that is stored in the client's settings file.
 *
 * Arguments and results are as in IQuendraSerialization; the top-level object of a settings file always gets
 * protocol version 1. Objects are not owned or destroyed through this interface.
 */
class QDCORE_EXPORT IQuendraStorage
{
public:
    /// Reads the object from the children of @p element, which is null if the file could not be parsed.
    /// Returns false if a required element is missing.
    virtual bool readStorage(const QDomElement& element, int protocolVersion) = 0;

    /// Appends the object's elements to @p parent. Returns false when the object cannot be stored.
    virtual bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const = 0;

protected:
    IQuendraStorage() = default;
    IQuendraStorage(const IQuendraStorage&) = default;
    IQuendraStorage& operator=(const IQuendraStorage&) = default;
    ~IQuendraStorage() = default;
};
