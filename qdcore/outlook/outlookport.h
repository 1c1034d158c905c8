#pragma once

#include "qdcore_global.h"

#include <QDateTime>
#include <QSharedPointer>
#include <QString>

// What the library uses of Microsoft Outlook, in plain types: see OutlookPort. The classes bear the names of
// Outlook's own objects and have of their members those that are used.

/// Something in a folder: a contact, a mail, a distribution list. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookItem
{
public:
    static constexpr int contactClass = 40; ///< The item class of a contact.

    virtual ~OutlookItem();
    /// Which fields an item has depends on its class; all others are those of a contact.
    virtual int itemClass() const = 0;
    /// What names the item within its message store, for as long as it is not moved to another.
    virtual QString entryID() const = 0;
    //@{
    /// Outlook's field of that name.
    virtual QString fullName() const = 0;
    virtual QString businessTelephoneNumber() const = 0;
    virtual QString businessFaxNumber() const = 0;
    virtual QString companyName() const = 0;
    //@}
    /// Local time; invalid when it cannot be read.
    virtual QDateTime lastModificationTime() const = 0;
};

/// What is in a folder. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookItems
{
public:
    virtual ~OutlookItems();
    /// -1 when Outlook does not tell.
    virtual int count() const = 0;
    /// @p number counts from 1.
    virtual QSharedPointer<OutlookItem> item(int number) const = 0;
};

class OutlookFolders;

/// A folder of a message store. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookFolder
{
public:
    static constexpr int contactItems = 2; ///< The item type of a contact folder.

    virtual ~OutlookFolder();
    /// As Outlook shows it.
    virtual QString name() const = 0;
    /// What names the folder within its message store.
    virtual QString entryID() const = 0;
    /// The identifier of the message store that holds the folder.
    virtual QString storeID() const = 0;
    /// What new items in it are: contactItems for a contact folder.
    virtual int defaultItemType() const = 0;
    /// The folders in it.
    virtual QSharedPointer<OutlookFolders> folders() const = 0;
    /// What is in it apart from folders.
    virtual QSharedPointer<OutlookItems> items() const = 0;
};

/// The folders in a folder, or the top-level ones. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookFolders
{
public:
    virtual ~OutlookFolders();
    /// -1 when Outlook does not tell.
    virtual int count() const = 0;
    /// @p number counts from 1.
    virtual QSharedPointer<OutlookFolder> item(int number) const = 0;
};

/// Outlook's NameSpace. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookSession
{
public:
    static constexpr int contactsFolder = 10; ///< The default folder of contacts.

    virtual ~OutlookSession();
    /// With Outlook's default arguments. A session that did not log on gives no folders.
    virtual void logon() = 0;
    /// Ends what logon() began.
    virtual void logoff() = 0;
    /// The user's own folder of a kind, such as contactsFolder.
    virtual QSharedPointer<OutlookFolder> defaultFolder(int type) const = 0;
    /// The folder of an identifier in a message store; null when there is none.
    virtual QSharedPointer<OutlookFolder> folderFromID(const QString& entryID,
                                                       const QString& storeID) const = 0;
    /// The top-level folders, one a message store.
    virtual QSharedPointer<OutlookFolders> folders() const = 0;
};

/// Outlook itself. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookApplication
{
public:
    virtual ~OutlookApplication();
    /// The one session, which is logged on only after OutlookSession::logon().
    virtual QSharedPointer<OutlookSession> session() const = 0;
};

/**
 * The way to Outlook: COM on Windows, nothing elsewhere.
 *
 * The library uses it through OutlookAccess alone. Its functions are called on every thread that uses
 * Outlook.
 *
 * Objects that it leads to belong to the thread that asked for them, are shared by whoever holds them, and
 * have to be gone before that thread's OutlookAccess. A null pointer is an object that Outlook does not give:
 * it has vanished, or Outlook cannot be reached any more. A text that cannot be read is null, a number -1.
 */
class QDCORE_EXPORT OutlookPort
{
public:
    virtual ~OutlookPort();

    /// Readies the calling thread for Outlook. What returned true is undone by leaveThread().
    virtual bool enterThread() = 0;
    /// Once for each enterThread() that returned true, on the same thread.
    virtual void leaveThread() = 0;
    /// Null when Outlook is not installed or cannot be started.
    virtual QSharedPointer<OutlookApplication> createApplication() = 0;

    /// The port in use.
    static QSharedPointer<OutlookPort> current();
    /// Puts another in its place, such as one to test with; null brings back the system's own. Accesses that
    /// exist keep theirs.
    static void setCurrent(const QSharedPointer<OutlookPort>& port);
};

/// Lets the thread that makes it use Outlook for as long as it lives. Any number may exist on a thread. Made
/// and destroyed on the same one.
class QDCORE_EXPORT OutlookAccess
{
public:
    OutlookAccess();
    ~OutlookAccess();
    Q_DISABLE_COPY(OutlookAccess)

    /// Null when there is no Outlook.
    QSharedPointer<OutlookApplication> createApplication() const;

private:
    QSharedPointer<OutlookPort> m_port;
    bool m_entered;
};
