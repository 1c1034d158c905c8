#pragma once

// All SQL statements of the contact store. Internal: not installed, not exported.

#include <QString>

/// The columns besides the source that restrict a list, a deletion or a query of timestamps.
enum class StoreFilter { None, Type, Location, LocationAndType };

/// A statement of the store; storeStatement() returns its text.
enum class StoreStatement {
    CreateContacts,
    CreateSources,
    CreateProperties,
    CreateGroups,
    CreateDeleteSource,
    CreateDeleteContact,
    SchemaEnd, ///< The statements before this create the schema, in this order.

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
    DeleteContactsNotIn = DeleteContacts + 4, ///< The first of four; the caller appends ids and ");".
    LastTimestamp = DeleteContactsNotIn + 4,  ///< The first of four.
    ListContacts = LastTimestamp + 4,         ///< The first of four.
    ListContactsOfGroup = ListContacts + 4,   ///< The first of three: there is none for LocationAndType.

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
    SearchSecondSourceLimited, ///< Deliberately invalid SQL: see ContactLocalStorage::quickSearch().
    SearchSources,
    SearchSourcesLimited,

    // Brackets. A deferred transaction that reads and then writes fails at once if another connection is
    // writing; an immediate one waits when it begins.
    Begin,
    Commit,
    Rollback,
    SpillOff, ///< Otherwise readers are locked out once 2 MB of pages are dirty. Does not change the file.
    SpillOn,

    // Within a bracket: like the statements above, but for many rows at once.
    InsertContacts,
    InsertContactWithId,
    InsertLinks,
    ListUids,
    ListLinks,

    // Deleting many contacts; "%1" in the first four stands for the condition.
    CountContacts,
    UidsOfContacts,
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

/// Rows of one InsertContacts or InsertLinks: every SQLite accepts up to 999 values per statement.
const int storeRowsAtOnce = 64;

QString storeStatement(StoreStatement statement);

/// A form of a list statement: @p whole returns all columns of the contacts instead of ids, @p paged accepts
/// a limit and an offset.
QString storeListStatement(StoreStatement list, bool whole, bool paged);
