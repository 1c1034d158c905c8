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
 * The contacts of one server as they are kept on this machine, readable without asking the server.
 *
 * A provider of the library would log in to its server as soon as it exists, so what is only read is read
 * from the store itself.
 */
class ContactCache
{
public:
    /// The cache of the server that --server names. Null, with the sentence said, when there is no such
    /// server or the cache is of no use.
    static std::unique_ptr<ContactCache> open(const Invocation& call, int* status);
    /// A store that is open already. The store outlives this.
    ContactCache(ContactLocalStorage& store, quint32 source);
    ~ContactCache();

    /// What to say of a store in which nothing can be kept. @p refill: the command that fills a new one.
    static QString unusableStore(const char* refill = "contacts sync");

    /// A page of a book, or of what both books have of a type. @p limit 0: all.
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

    /// The one unit that an id or a whole name means, without regard to the name's case. Nothing, with the
    /// sentence and its exit status, when there is none or there are several.
    std::optional<StoredContact> resolve(const QString& text, int* status, QString* error) const;

    /// The contacts that faxes go to, each once, in order.
    struct Recipients
    {
        QVector<StoredContact> contacts;
        QStringList withoutFax; ///< Names of those whom no fax can reach.
        QSet<quint32> seen;     ///< Contacts and groups that were met already.
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
/// What --book says, @p missing when it is not given. Nothing, with the sentence said, for no book.
std::optional<ContactList::Type> readBook(const Invocation& call, ContactList::Type missing);

QJsonObject toJson(const StoredContact& unit);
/// A table for people with a line each.
Table contactTable(const QVector<StoredContact>& units);
