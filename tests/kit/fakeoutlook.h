#pragma once

// A fake Outlook in memory: stores, nested folders and items, injected faults, and checks of the threads that
// use it.

#ifdef Q_OS_WIN
#include "comoutlookdouble.h"
#endif
#include "outlookport.h"
#include "storefile.h"

#include <QHash>
#include <QThread>
#include <QVector>

#include <algorithm>
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
    bool fails{false}; ///< Requests for it fail.
};

struct FakeFolder
{
    QString name;
    QString entryID;
    QString storeID;
    int itemType{0}; ///< 0: mail.
    QVector<FakeItem> items;
    QVector<QSharedPointer<FakeFolder>> folders;
    bool isGone{false}; ///< Still counted by its parent, but not returned any more.

    QString key() const { return entryID + QLatin1Char(':') + storeID; }
};

using FakeFolderPtr = QSharedPointer<FakeFolder>;

/// To be changed only while no thread reads, or by beforeItem(), which runs in the reading thread.
class FakeOutlook : public OutlookPort
{
public:
    bool isInstalled{true};
    bool hasSession{true};
    bool logsOn{true};
    QVector<FakeFolderPtr> stores;
    QHash<QString, FakeFolderPtr> known; ///< Every folder, by its key.
    FakeFolderPtr defaultContacts;
    /// Called before an item is returned, with its number.
    std::function<void(int)> beforeItem;

    std::atomic<int> applications{0}; ///< How often an application was requested.
    std::atomic<int> running{0};      ///< Applications in use.
    std::atomic<int> starts{0};       ///< How often Outlook started: it exits when no application is in use.
    std::atomic<int> openSessions{0}; ///< Logged on and not off.
    std::atomic<int> itemsRead{0};
    std::atomic<int> questions{
        0}; ///< Calls that read something of an object: each is one to another program.

    FakeFolderPtr add(const FakeFolderPtr& parent, const QString& name, int itemType)
    {
        auto folder = FakeFolderPtr::create();
        folder->name = name;
        folder->entryID = QStringLiteral("E-") + name;
        folder->storeID = parent ? parent->storeID : QStringLiteral("S:") + name; // may hold colons
        folder->itemType = itemType;
        (parent ? parent->folders : stores).append(folder);
        known.insert(folder->key(), folder);
        return folder;
    }

    /// Whether every thread has left as often as it entered, has released its objects, and has used only its
    /// own.
    bool isBalanced() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_violations == 0 && !m_threads.isEmpty() &&
               std::all_of(m_threads.cbegin(), m_threads.cend(),
                           [](const Thread& thread) { return thread.entries == 0 && thread.objects == 0; });
    }

    bool enterThread() override { return use(QThread::currentThreadId(), 0, 1); }
    void leaveThread() override { use(QThread::currentThreadId(), 0, -1); }
    QSharedPointer<OutlookApplication> createApplication() override;

    /// Records the use of an object that belongs to a thread, its creation (1) or destruction (-1); or that
    /// this thread enters (1) or leaves (-1). Always true.
    bool use(Qt::HANDLE owner, int objects, int entries = 0)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Thread& thread = m_threads[owner];
        thread.objects += objects;
        thread.entries += entries;
        const bool isOutside = thread.entries == 0 && (entries == 0 || thread.objects != 0);
        m_violations += owner != QThread::currentThreadId() || isOutside;
        return true;
    }

private:
    struct Thread
    {
        int entries{0}; ///< Minus leaves.
        int objects{0};
    };

    mutable std::mutex m_mutex;
    QHash<Qt::HANDLE, Thread> m_threads;
    int m_violations{0}; ///< Uses on a thread that has not entered, or that does not own the object.
};

/// A handle to something in memory; belongs to the thread that requested it.
template <typename Interface, typename Thing>
class FakeObject : public Interface
{
public:
    FakeObject(FakeOutlook& outlook, const Thing& thing)
        : m_outlook(outlook)
        , m_thing(thing)
    {
        m_outlook.use(m_thread, 1);
    }
    ~FakeObject() override { m_outlook.use(m_thread, -1); }
    Q_DISABLE_COPY(FakeObject)

protected:
    FakeOutlook& outlook() const { return m_outlook.use(m_thread, 0), m_outlook; }
    /// Once in each function that reads.
    const Thing& thing() const { return ++outlook().questions, m_thing; }
    void setThing(const Thing& thing) { m_thing = thing; }

    /// A handle to something, null if requests for it fail.
    template <typename Object, typename Of>
    QSharedPointer<Object> given(bool isThere, const Of& of) const
    {
        return isThere ? QSharedPointer<Object>::create(outlook(), of) : QSharedPointer<Object>();
    }
    QSharedPointer<OutlookFolder> folder(const FakeFolderPtr& folder) const;

private:
    FakeOutlook& m_outlook;
    Thing m_thing;
    const Qt::HANDLE m_thread{QThread::currentThreadId()};
};

class FakeOutlookItem : public FakeObject<OutlookItem, FakeItem>
{
public:
    using FakeObject::FakeObject;
    int itemClass() const override { return thing().itemClass; }
    QString entryID() const override { return thing().entryID; }
    QString fullName() const override { return thing().fullName; }
    QString businessTelephoneNumber() const override { return thing().phone; }
    QString businessFaxNumber() const override { return thing().fax; }
    QString companyName() const override { return thing().company; }
    QDateTime lastModificationTime() const override { return thing().modified; }
};

class FakeOutlookItems : public FakeObject<OutlookItems, FakeFolderPtr>
{
public:
    using FakeObject::FakeObject;
    int count() const override
    {
        const FakeFolderPtr& folder = thing();
        return folder->isGone ? -1 : folder->items.size();
    }
    QSharedPointer<OutlookItem> item(int number) const override
    {
        ++outlook().itemsRead;
        if (outlook().beforeItem)
            outlook().beforeItem(number);
        const QVector<FakeItem>& items = thing()->items;
        const FakeItem item = items.value(number - 1);
        return given<FakeOutlookItem>(number >= 1 && number <= items.size() && !item.fails, item);
    }
};

class FakeOutlookFolders : public FakeObject<OutlookFolders, QVector<FakeFolderPtr>>
{
public:
    using FakeObject::FakeObject;
    int count() const override { return thing().size(); }
    QSharedPointer<OutlookFolder> item(int number) const override
    {
        return folder(thing().value(number - 1));
    }
};

class FakeOutlookFolder : public FakeObject<OutlookFolder, FakeFolderPtr>
{
public:
    using FakeObject::FakeObject;
    QString name() const override { return thing()->name; }
    QString entryID() const override { return thing()->entryID; }
    QString storeID() const override { return thing()->storeID; }
    int defaultItemType() const override { return thing()->itemType; }
    QSharedPointer<OutlookFolders> folders() const override
    {
        return given<FakeOutlookFolders>(true, thing()->folders);
    }
    QSharedPointer<OutlookItems> items() const override { return given<FakeOutlookItems>(true, thing()); }
};

template <typename Interface, typename Thing>
QSharedPointer<OutlookFolder> FakeObject<Interface, Thing>::folder(const FakeFolderPtr& folder) const
{
    return given<FakeOutlookFolder>(folder && !folder->isGone, folder);
}

/// Its state: whether it is logged on.
class FakeOutlookSession : public FakeObject<OutlookSession, bool>
{
public:
    using FakeObject::FakeObject;
    void logon() override
    {
        ++outlook().openSessions;
        setThing(outlook().logsOn);
    }
    void logoff() override
    {
        --outlook().openSessions;
        setThing(false);
    }
    QSharedPointer<OutlookFolder> defaultFolder(int type) const override
    {
        return folder(thing() && type == contactsFolder ? outlook().defaultContacts : FakeFolderPtr());
    }
    QSharedPointer<OutlookFolder> folderFromID(const QString& entryID, const QString& storeID) const override
    {
        return folder(thing() ? outlook().known.value(entryID + QLatin1Char(':') + storeID)
                              : FakeFolderPtr());
    }
    QSharedPointer<OutlookFolders> folders() const override
    {
        return given<FakeOutlookFolders>(thing(), outlook().stores);
    }
};

/// Its state: how many there were before it.
class FakeOutlookApplication : public FakeObject<OutlookApplication, int>
{
public:
    using FakeObject::FakeObject;
    ~FakeOutlookApplication() override { --outlook().running; }
    QSharedPointer<OutlookSession> session() const override
    {
        return given<FakeOutlookSession>(outlook().hasSession, false);
    }
};

inline QSharedPointer<OutlookApplication> FakeOutlook::createApplication()
{
    ++applications;
    if (!isInstalled)
        return QSharedPointer<OutlookApplication>();
    const int before = running++;
    starts += before == 0;
    return QSharedPointer<FakeOutlookApplication>::create(*this, before);
}

/// An Outlook that stands for the system's own while this lives: a mailbox with mail and with contacts, among
/// them those of the team. On Windows, with OUTLOOK_OVER_COM in the environment, it is reached over COM.
struct FakeMailbox
{
    FakeMailbox()
    {
#ifdef Q_OS_WIN
        if (qEnvironmentVariableIsSet("OUTLOOK_OVER_COM"))
            overCom.reset(new OutlookOverCom(outlook));
        OutlookPort::setCurrent(overCom ? QSharedPointer<OutlookPort>(overCom) : outlook);
#else
        OutlookPort::setCurrent(outlook);
#endif
        team->items.resize(1);
        outlook->defaultContacts = contacts;
    }
    ~FakeMailbox()
    {
        OutlookPort::setCurrent(QSharedPointer<OutlookPort>());
    }
    Q_DISABLE_COPY(FakeMailbox)

    const QSharedPointer<FakeOutlook> outlook{new FakeOutlook};
#ifdef Q_OS_WIN
    QSharedPointer<OutlookOverCom> overCom;
#endif
    const FakeFolderPtr mailbox{outlook->add(FakeFolderPtr(), QStringLiteral("Mailbox"), 0)};
    const FakeFolderPtr mail{outlook->add(mailbox, QStringLiteral("Inbox"), 0)};
    const FakeFolderPtr contacts{
        outlook->add(mailbox, QStringLiteral("Contacts"), OutlookFolder::contactItems)};
    const FakeFolderPtr team{outlook->add(contacts, QStringLiteral("Team"), OutlookFolder::contactItems)};
};

/// Runs a statement on the contacts' database file, bypassing the library; returns the rows.
inline QStringList onStore(const QString& statement)
{
    return OtherProgram(statement).rows();
}
