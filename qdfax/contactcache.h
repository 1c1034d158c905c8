#pragma once

#include "contactlist.h"
#include "contactlocalstorage.h"

#include <QCommandLineOption>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QVector>

#include <memory>
#include <optional>

class Contact;
class Invocation;
class Table;

/// One contact or group as the cache holds it.
struct StoredContact
{
    quint32 id{0}; ///< In the cache.
    ContactLocalStorage::ContactType type{ContactLocalStorage::TypeContact};
    ContactLocalStorage::ContactLocation location{ContactLocalStorage::LocationPersonal};
    QString uid; ///< The server's object id.
    QString name;
    QString description; ///< Of a group.
    QString phone;
    QString fax;
    QString email;
    QString organization;

    bool isGroup() const { return type == ContactLocalStorage::TypeGroup; }
    ContactList::Type book() const;
    /// A contact's fields.
    Contact contact() const;
    /// "12 Mary Poe (personal, 555 1234)", for choosing among several.
    QString line() const;
};

/**
 * The contacts of one server as stored on this machine, readable without contacting the server.
 *
 * A provider of the library would log in to its server when created, so read-only commands use the store
 * directly.
 */
class ContactCache
{
public:
    /// The cache of the server that --server names. Null, with the error printed, if there is no such server
    /// or the cache cannot be used.
    static std::unique_ptr<ContactCache> open(const Invocation& call, int* status);
    /// Uses a store that is already open and outlives this.
    ContactCache(ContactLocalStorage& store, quint32 source);
    ~ContactCache();

    /// The error text for a store that cannot be written. @p refill: the command that fills a new one.
    static QString unusableStore(const char* refill = "contacts sync");

    /// A page of a book, or of both books' entries of a type. @p limit 0: all.
    QVector<StoredContact> list(ContactList::Type book, uint offset = 0, uint limit = 0) const;
    QVector<StoredContact> list(ContactLocalStorage::ContactType type, uint offset = 0, uint limit = 0) const;
    int count(ContactList::Type book) const;
    /// Names that contain a text.
    QVector<StoredContact> search(const QString& text, uint limit = 0) const;
    /// Nothing when no unit of this server has the id.
    std::optional<StoredContact> find(quint32 id) const;
    quint32 idOf(ContactList::Type book, const QString& uid) const;
    /// The direct members of a group.
    QVector<StoredContact> members(quint32 group) const;
    int memberCount(quint32 group) const;

    /// The only unit with an id or a full name, ignoring the name's case. Nothing, with the error text and
    /// its exit status, if there is none or there are several.
    std::optional<StoredContact> resolve(const QString& text, int* status, QString* error) const;

    /// The contacts that faxes go to, each once, in order.
    struct Recipients
    {
        QVector<StoredContact> contacts;
        QStringList withoutFax; ///< Names of those without a fax number.
        QSet<quint32> seen;     ///< Ids already visited, against duplicates and cycles.
    };
    /// Adds a contact, or everybody in a group and in the groups within it.
    void expand(const StoredContact& unit, Recipients& recipients) const;

private:
    QVector<StoredContact> rows(const QList<quint32>& ids) const;

    std::unique_ptr<ContactLocalStorage> m_owned;
    ContactLocalStorage& m_store;
    quint32 m_source;
};

/// The words for the books that --book takes, in the order of ContactList::Type from PersonalContacts on.
QStringList bookWords();
/// "personal contacts" and so on.
QString bookText(ContactList::Type book);
/// Its help names @p words, those of the books that the command takes.
QCommandLineOption bookOption(const QString& description, const QStringList& words = bookWords());
/// The value of --book, or @p missing without it. Nothing, with the error printed, if it is not a book.
std::optional<ContactList::Type> readBook(const Invocation& call, ContactList::Type missing);

QJsonObject toJson(const StoredContact& unit);
/// A table for people with a line each.
Table contactTable(const QVector<StoredContact>& units);
