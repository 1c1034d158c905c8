#pragma once

#include "qdcore_global.h"

#include <QDateTime>
#include <QSharedPointer>
#include <QString>

// Abstract interfaces to Microsoft Outlook, in Qt types: see OutlookPort. The classes are named after
// Outlook's own objects and have only those of their members that the library uses.

/// An item in a folder: a contact, a mail, a distribution list. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookItem
{
public:
    static constexpr int contactClass = 40; ///< The item class of a contact.

    virtual ~OutlookItem();
    /// contactClass for a contact; other items may lack the fields of a contact below.
    virtual int itemClass() const = 0;
    /// Identifies the item within its message store, until it is moved to another.
    virtual QString entryID() const = 0;
    //@{
    /// Outlook's field of the same name.
    virtual QString fullName() const = 0;
    virtual QString businessTelephoneNumber() const = 0;
    virtual QString businessFaxNumber() const = 0;
    virtual QString companyName() const = 0;
    //@}
    /// Local time; invalid when it cannot be read.
    virtual QDateTime lastModificationTime() const = 0;
    /// Whether each of these values is Outlook's word. False once a call has not reached Outlook, since it is
    /// busy or has ended: then a value that could not be read may exist all the same.
    virtual bool isIntact() const { return true; }
};

/// The items of a folder. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookItems
{
public:
    virtual ~OutlookItems();
    /// -1 if Outlook does not return it, and for good once an item or a value of one has been missed since a
    /// call has not reached Outlook.
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
    /// The name that Outlook displays.
    virtual QString name() const = 0;
    /// Identifies the folder within its message store.
    virtual QString entryID() const = 0;
    /// The identifier of the message store that contains the folder.
    virtual QString storeID() const = 0;
    /// The type of new items in it: contactItems for a contact folder.
    virtual int defaultItemType() const = 0;
    /// Its subfolders.
    virtual QSharedPointer<OutlookFolders> folders() const = 0;
    /// Its contents except subfolders.
    virtual QSharedPointer<OutlookItems> items() const = 0;
};

/// The subfolders of a folder, or the top-level folders. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookFolders
{
public:
    virtual ~OutlookFolders();
    /// -1 if Outlook does not return it.
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
    /// Logs on with Outlook's default arguments. Without it the session returns no folders.
    virtual void logon() = 0;
    /// Reverses logon().
    virtual void logoff() = 0;
    /// The user's default folder of a type, such as contactsFolder.
    virtual QSharedPointer<OutlookFolder> defaultFolder(int type) const = 0;
    /// The folder with an identifier in a message store; null if there is none.
    virtual QSharedPointer<OutlookFolder> folderFromID(const QString& entryID,
                                                       const QString& storeID) const = 0;
    /// The top-level folders, one per message store.
    virtual QSharedPointer<OutlookFolders> folders() const = 0;
};

/// Outlook itself. For its lifetime see OutlookPort.
class QDCORE_EXPORT OutlookApplication
{
public:
    virtual ~OutlookApplication();
    /// The only session; OutlookSession::logon() logs it on.
    virtual QSharedPointer<OutlookSession> session() const = 0;
};

/**
 * The interface to Outlook: COM on Windows, not available elsewhere.
 *
 * The library uses it only through OutlookAccess. Its functions are called on every thread that uses
 * Outlook.
 *
 * Objects obtained through it belong to the thread that requested them, have shared ownership, and must be
 * released before that thread's OutlookAccess is destroyed. A null pointer means that the object no longer
 * exists or that Outlook is not reachable any more. A text that cannot be read is null, a number -1.
 */
class QDCORE_EXPORT OutlookPort
{
public:
    virtual ~OutlookPort();

    /// Prepares the calling thread for Outlook. If it returns true, leaveThread() must be called.
    virtual bool enterThread() = 0;
    /// Once for each enterThread() that returned true, on the same thread.
    virtual void leaveThread() = 0;
    /// Null when Outlook is not installed or cannot be started.
    virtual QSharedPointer<OutlookApplication> createApplication() = 0;

    /// The port in use.
    static QSharedPointer<OutlookPort> current();
    /// Replaces the port, for instance by a test double; null restores the system's own. Existing
    /// OutlookAccess objects keep their port.
    static void setCurrent(const QSharedPointer<OutlookPort>& port);
};

/// RAII: the thread that creates it can use Outlook during its lifetime. A thread may have several. Created
/// and destroyed on the same thread.
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
