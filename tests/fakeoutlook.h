#pragma once

// A whole Outlook in memory: stores, nested folders and items, faults on request, and an eye on every thread
// that uses it.

#include "outlookport.h"

#include <QHash>
#include <QThread>
#include <QVector>

#include <atomic>
#include <functional>
#include <mutex>

struct FakeItem
{
    int itemClass{OutlookItem::contactClass};
    QString entryID;
    QString fullName;
    QString phone;
    QString fax;
    QString company;
    QDateTime modified;
    bool fails{false}; ///< Outlook does not give it.
};

struct FakeFolder
{
    QString name;
    QString entryID;
    QString storeID;
    int itemType{0}; ///< 0: mail.
    QVector<FakeItem> items;
    QVector<QSharedPointer<FakeFolder>> folders;
    bool isGone{false}; ///< Still counted by its parent, and not given any more.

    QString key() const { return entryID + QLatin1Char(':') + storeID; }
};

using FakeFolderPtr = QSharedPointer<FakeFolder>;

/// Set up and changed while nobody reads, or by beforeItem(), which runs in the reading thread.
class FakeOutlook : public OutlookPort
{
public:
    bool isInstalled{true};
    bool hasSession{true};
    bool logsOn{true};
    QVector<FakeFolderPtr> stores;
    FakeFolderPtr defaultContacts;
    /// Called before an item is given, with its number.
    std::function<void(int)> beforeItem;

    std::atomic<int> applications{0}; ///< How often one was asked for.
    std::atomic<int> openSessions{0}; ///< Logged on and not off.
    std::atomic<int> itemsRead{0};

    FakeFolderPtr add(const FakeFolderPtr& parent, const QString& name, int itemType)
    {
        auto folder = FakeFolderPtr::create();
        folder->name = name;
        folder->entryID = QStringLiteral("E-") + name;
        folder->storeID =
            parent ? parent->storeID : QStringLiteral("S:") + name; // the store's part may hold colons
        folder->itemType = itemType;
        (parent ? parent->folders : stores).append(folder);
        return folder;
    }

    /// Whether every thread has left as often as it entered, and took no object with it.
    bool isBalanced() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const Thread& thread : m_threads) {
            if (thread.entered != thread.left || thread.objects != 0)
                return false;
        }
        return m_violations == 0 && !m_threads.isEmpty();
    }
    /// Threads that have used it.
    int threadCount() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_threads.size();
    }
    /// Uses on a thread that has not entered, or that is not the object's own.
    int violations() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_violations;
    }

    bool enterThread() override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_threads[QThread::currentThreadId()].entered;
        return true;
    }
    void leaveThread() override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Thread& thread = m_threads[QThread::currentThreadId()];
        if (++thread.left == thread.entered && thread.objects != 0)
            ++m_violations;
    }
    QSharedPointer<OutlookApplication> createApplication() override;

    /// Everything that is handed out: belongs to the thread that asked for it.
    class Object
    {
    public:
        explicit Object(FakeOutlook& outlook)
            : m_outlook(outlook)
            , m_thread(QThread::currentThreadId())
        {
            m_outlook.count(1, m_thread);
        }
        ~Object() { m_outlook.count(-1, m_thread); }
        Q_DISABLE_COPY(Object)

    protected:
        FakeOutlook& outlook() const
        {
            m_outlook.count(0, m_thread);
            return m_outlook;
        }

    private:
        FakeOutlook& m_outlook;
        Qt::HANDLE m_thread;
    };

private:
    struct Thread
    {
        int entered{0};
        int left{0};
        int objects{0};
    };

    void count(int objects, Qt::HANDLE owner)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Thread& thread = m_threads[owner];
        thread.objects += objects;
        if (owner != QThread::currentThreadId() || thread.entered == thread.left)
            ++m_violations;
    }

    mutable std::mutex m_mutex;
    QHash<Qt::HANDLE, Thread> m_threads;
    int m_violations{0};
};

class FakeOutlookItem : public OutlookItem, private FakeOutlook::Object
{
public:
    FakeOutlookItem(FakeOutlook& outlook, const FakeItem& item)
        : Object(outlook)
        , m_item(item)
    {}
    int itemClass() const override { return outlook(), m_item.itemClass; }
    QString entryID() const override { return outlook(), m_item.entryID; }
    QString fullName() const override { return outlook(), m_item.fullName; }
    QString businessTelephoneNumber() const override { return outlook(), m_item.phone; }
    QString businessFaxNumber() const override { return outlook(), m_item.fax; }
    QString companyName() const override { return outlook(), m_item.company; }
    QDateTime lastModificationTime() const override { return outlook(), m_item.modified; }

private:
    const FakeItem m_item;
};

class FakeOutlookItems : public OutlookItems, private FakeOutlook::Object
{
public:
    FakeOutlookItems(FakeOutlook& outlook, const FakeFolderPtr& folder)
        : Object(outlook)
        , m_folder(folder)
    {}
    int count() const override { return outlook(), m_folder->items.size(); }
    QSharedPointer<OutlookItem> item(int number) const override
    {
        ++outlook().itemsRead;
        if (outlook().beforeItem)
            outlook().beforeItem(number);
        if (number < 1 || number > m_folder->items.size() || m_folder->items.at(number - 1).fails)
            return QSharedPointer<OutlookItem>();
        return QSharedPointer<FakeOutlookItem>::create(outlook(), m_folder->items.at(number - 1));
    }

private:
    const FakeFolderPtr m_folder;
};

class FakeOutlookFolders : public OutlookFolders, private FakeOutlook::Object
{
public:
    FakeOutlookFolders(FakeOutlook& outlook, const QVector<FakeFolderPtr>& folders)
        : Object(outlook)
        , m_folders(folders)
    {}
    int count() const override { return outlook(), m_folders.size(); }
    QSharedPointer<OutlookFolder> item(int number) const override;

private:
    const QVector<FakeFolderPtr> m_folders;
};

class FakeOutlookFolder : public OutlookFolder, private FakeOutlook::Object
{
public:
    FakeOutlookFolder(FakeOutlook& outlook, const FakeFolderPtr& folder)
        : Object(outlook)
        , m_folder(folder)
    {}
    QString name() const override { return outlook(), m_folder->name; }
    QString entryID() const override { return outlook(), m_folder->entryID; }
    QString storeID() const override { return outlook(), m_folder->storeID; }
    int defaultItemType() const override { return outlook(), m_folder->itemType; }
    QSharedPointer<OutlookFolders> folders() const override
    {
        return QSharedPointer<FakeOutlookFolders>::create(outlook(), m_folder->folders);
    }
    QSharedPointer<OutlookItems> items() const override
    {
        return QSharedPointer<FakeOutlookItems>::create(outlook(), m_folder);
    }

private:
    const FakeFolderPtr m_folder;
};

inline QSharedPointer<OutlookFolder> FakeOutlookFolders::item(int number) const
{
    if (number < 1 || number > m_folders.size() || m_folders.at(number - 1)->isGone)
        return QSharedPointer<OutlookFolder>();
    return QSharedPointer<FakeOutlookFolder>::create(outlook(), m_folders.at(number - 1));
}

class FakeOutlookSession : public OutlookSession, private FakeOutlook::Object
{
public:
    explicit FakeOutlookSession(FakeOutlook& outlook)
        : Object(outlook)
    {}
    void logon() override
    {
        ++outlook().openSessions;
        m_loggedOn = outlook().logsOn;
    }
    void logoff() override
    {
        --outlook().openSessions;
        m_loggedOn = false;
    }
    QSharedPointer<OutlookFolder> defaultFolder(int type) const override
    {
        return given(type == contactsFolder ? outlook().defaultContacts : FakeFolderPtr());
    }
    QSharedPointer<OutlookFolder> folderFromID(const QString& entryID, const QString& storeID) const override
    {
        return given(find(outlook().stores, entryID, storeID));
    }
    QSharedPointer<OutlookFolders> folders() const override
    {
        return m_loggedOn ? QSharedPointer<FakeOutlookFolders>::create(outlook(), outlook().stores)
                          : QSharedPointer<FakeOutlookFolders>();
    }

private:
    QSharedPointer<OutlookFolder> given(const FakeFolderPtr& folder) const
    {
        return m_loggedOn && folder && !folder->isGone
                   ? QSharedPointer<FakeOutlookFolder>::create(outlook(), folder)
                   : QSharedPointer<FakeOutlookFolder>();
    }
    static FakeFolderPtr find(const QVector<FakeFolderPtr>& among, const QString& entryID,
                              const QString& storeID)
    {
        for (const FakeFolderPtr& folder : among) {
            if (folder->entryID == entryID && folder->storeID == storeID)
                return folder;
            if (const FakeFolderPtr found = find(folder->folders, entryID, storeID))
                return found;
        }
        return FakeFolderPtr();
    }

    bool m_loggedOn{false};
};

class FakeOutlookApplication : public OutlookApplication, private FakeOutlook::Object
{
public:
    explicit FakeOutlookApplication(FakeOutlook& outlook)
        : Object(outlook)
    {}
    QSharedPointer<OutlookSession> session() const override
    {
        return outlook().hasSession ? QSharedPointer<FakeOutlookSession>::create(outlook())
                                    : QSharedPointer<FakeOutlookSession>();
    }
};

inline QSharedPointer<OutlookApplication> FakeOutlook::createApplication()
{
    ++applications;
    return isInstalled ? QSharedPointer<FakeOutlookApplication>::create(*this)
                       : QSharedPointer<FakeOutlookApplication>();
}
