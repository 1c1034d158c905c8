#pragma once

#include "iquendraserialization.h"
#include "iquendrastorage.h"
#include "qdcore_global.h"

#include <QSharedPointer>

/**
 * One entry of a contact book: a contact or a group of contacts.
 *
 * A polymorphic value without a thread of its own. It is passed by reference and kept as a clone made with
 * copy(); signals that carry a unit by reference can therefore neither be queued nor recorded.
 */
class QDCORE_EXPORT ContactUnit : public IQuendraSerialization, public IQuendraStorage
{
public:
    ContactUnit() = default;
    ContactUnit(const ContactUnit&) = default;
    ContactUnit& operator=(const ContactUnit&) = default;

    virtual ~ContactUnit();

    /// Whether @p other is of this unit's class, or of one derived from it, and holds the same values. Not
    /// symmetric: a Contact may equal a QuendraContact that does not equal it.
    virtual bool operator==(const ContactUnit& other) const = 0;

    /// A new object of this unit's most derived class with the same values. The caller owns it.
    virtual ContactUnit* copy() const = 0;
};

/// A unit as lists hold it. @relates ContactUnit
using ContactUnitPtr = QSharedPointer<ContactUnit>;
