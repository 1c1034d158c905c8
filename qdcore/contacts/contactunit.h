#pragma once

#include "iquendraserialization.h"
#include "iquendrastorage.h"
#include "qdcore_global.h"

#include <QSharedPointer>

/**
 * One entry of a contact book: a contact or a group of contacts.
 *
 * A polymorphic value without thread affinity. It is passed by reference and stored as a clone made with
 * copy(); signals with a reference to a unit can therefore be neither queued nor recorded by QSignalSpy.
 */
class QDCORE_EXPORT ContactUnit : public IQuendraSerialization, public IQuendraStorage
{
public:
    ContactUnit() = default;
    ContactUnit(const ContactUnit&) = default;
    ContactUnit& operator=(const ContactUnit&) = default;

    virtual ~ContactUnit();

    /// Whether @p other is of this unit's class, or of one derived from it, and has the same values. Not
    /// symmetric: a Contact may equal a QuendraContact that does not equal the Contact.
    virtual bool operator==(const ContactUnit& other) const = 0;

    /// A new object of this unit's most derived class with the same values. The caller owns it.
    virtual ContactUnit* copy() const = 0;
};

/// A unit in a list. @relates ContactUnit
using ContactUnitPtr = QSharedPointer<ContactUnit>;
