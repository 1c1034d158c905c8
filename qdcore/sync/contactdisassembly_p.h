#pragma once

// Storing the units of a fax server. Internal: not installed. Defined in quendracontactprovider.cpp, whose
// name its log lines carry.

#include "contactlocalstorage.h"

#include <QString>

#include <limits>

class ContactUnit;
class QUrl;

/// The key of a fax server's unit in the store.
struct ContactPlace
{
    ContactLocalStorage::ContactType type;
    ContactLocalStorage::ContactLocation location;
    QString uid; ///< The last segment of the path of the unit's URL.
};

/// Derives the key of a unit from its class and URL. False for a unit of another class, which is logged, and
/// for one whose URL has no path.
bool placeOf(const ContactUnit& unit, ContactPlace& place);

/// A list that shares its units with another one; both must only read them. Copying a list would clone its
/// units: 100 ms for 100,000.
ContactList withSameUnits(const ContactList& list);

/// Stores a unit, and with a group its members, on the calling thread's connection. @p timestamp is that of
/// the server, 0 to keep what is stored; @p group is the group that the unit is a member of, 0 for none.
/// Members whose rows have a timestamp later than @p latest are linked and otherwise left as they are.
void disassemble(ContactLocalStorage& storage, unsigned int source, const ContactUnit& unit,
                 unsigned int timestamp, unsigned int group,
                 unsigned int latest = std::numeric_limits<unsigned int>::max());
