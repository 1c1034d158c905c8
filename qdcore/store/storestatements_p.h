#pragma once

// Every statement that the contact store runs. Internal: not installed, not exported.

#include <QString>

/// What a list, a deletion or a look at timestamps is restricted to beyond the source.
enum class StoreFilter { None, Type, Location, LocationAndType };

/// A statement of the store; storeStatement() has its text.
enum class StoreStatement {
    CreateContacts,
    CreateSources,
    CreateProperties,
    CreateGroups,
    CreateDeleteSource,
    CreateDeleteContact,
    SchemaEnd, ///< The schema is created by all before this, in this order.

    FindSource = SchemaEnd,
    InsertSource,
    DeleteSource,
    ListSources,
    ListSourcesOfType,
    SourceInfo,

    FindContact,
    InsertContact,
    UpdateContact,
    UpdateContactKeepTimestamp,
    DeleteContact,
    ContactInfo,
    LastContactId,

    DeleteContacts,                           ///< The first of four, by StoreFilter.
    DeleteContactsNotIn = DeleteContacts + 4, ///< The first of four, each to be completed by ids and ");".
    LastTimestamp = DeleteContactsNotIn + 4,  ///< The first of four.
    ListContacts = LastTimestamp + 4,         ///< The first of four.
    ListContactsOfGroup = ListContacts + 4,   ///< The first of three: none has all restrictions.

    FindLink = ListContactsOfGroup + 3,
    InsertLink,
    DeleteLink,
    DeleteLinksOfContact,
    DeleteLinksOfGroup,

    FindProperty,
    UpdateProperty,
    InsertProperty,
    DeleteProperty,
    PropertyInfo,

    Search,
    SearchLimited,
    SearchSource,
    SearchSourceLimited,
    SearchSecondSourceLimited, ///< Does not parse, on purpose: see ContactLocalStorage::quickSearch().
    SearchSources,
    SearchSourcesLimited,

    // Brackets. A deferred transaction that has read and then writes beside another writer fails at once;
    // this one waits for its turn at its beginning.
    Begin,
    Commit,
    Rollback,
    SpillOff, ///< Keeps readers from being locked out once 2 MB of pages are dirty. Leaves no trace in the
              ///< file.
    SpillOn,

    // Within a bracket: what the plain statements would do, for many rows at once.
    InsertContacts,
    InsertContactWithId,
    InsertLinks,
    ListUids,
    ListLinks,

    // Deleting many contacts; "%1" in the first three stands for the condition.
    CountContacts,
    DeletePropertiesOfContacts,
    DeleteLinksOfContacts,
    DeleteTriggerText,
    DropDeleteTrigger,

    End
};

inline StoreStatement operator+(StoreStatement statement, int offset)
{
    return static_cast<StoreStatement>(static_cast<int>(statement) + offset);
}

inline StoreStatement operator+(StoreStatement statement, StoreFilter filter)
{
    return statement + static_cast<int>(filter);
}

/// Rows of one InsertContacts or InsertLinks: a statement takes 999 values in any SQLite.
const int storeRowsAtOnce = 64;

QString storeStatement(StoreStatement statement);

/// The form of a list statement that gives whole contacts instead of ids, and that takes a limit and an
/// offset.
QString storeListStatement(StoreStatement list, bool whole, bool paged);
