#pragma once

// Outlook as COM sees it: class object, objects and members by IDispatch alone, over an Outlook in memory. It
// counts its references, notes who calls it on the wrong thread or asks for its events, and fails on request.

#include "outlookport.h"

#include <QHash>
#include <QVector>

#include <atomic>
#include <climits>
#include <functional>
#include <mutex>
#include <vector>

#include <objbase.h>
#include <ocidl.h>
#include <oleauto.h>

// what the headers of Windows define, and logger.h has as names
#undef ERROR
#undef DEBUG
#undef NONE
#undef interface

/// What a member does instead of its work.
struct ComFault
{
    const char* member; ///< "Item.FullName"; "Application" for its creation.
    /// Fills the result and returns it, or fails. None: the member does not exist.
    std::function<HRESULT(VARIANT&, EXCEPINFO&)> instead;
    int first{1}; ///< By the calls of the member.
    int last{INT_MAX};
};

inline BSTR toBstr(const QString& text)
{
    return SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.utf16()), UINT(text.size()));
}

inline HRESULT throwException(EXCEPINFO& exception)
{
    exception.bstrSource = toBstr(QStringLiteral("Outlook"));
    exception.bstrDescription = toBstr(QStringLiteral("An object could not be found."));
    exception.scode = HRESULT(0x8004010fU);
    return DISP_E_EXCEPTION;
}

class ComOutlookDouble
{
public:
    static constexpr CLSID clsid{0x0006f03a, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};

    /// @p outlook: what is read. It must outlive this.
    explicit ComOutlookDouble(OutlookPort& outlook)
        : m_outlook(outlook)
    {}

    /// While nobody reads. Counts calls anew.
    void setFaults(const QVector<ComFault>& faults)
    {
        m_faults = faults;
        m_calls.clear();
    }
    std::atomic<int> objects{0};
    std::atomic<int> violations{0}; ///< Calls on a thread that is not the object's.
    std::atomic<int> listeners{0};  ///< How often somebody asked for events.
    std::atomic<int> calls{0};
    std::atomic<int> names{0}; ///< Identifiers of members that were asked for.

    /// Makes the calling thread give it to those who ask for Outlook; the result is for
    /// CoRevokeClassObject().
    inline DWORD registerClass(DWORD context);

private:
    friend class ComDouble;
    friend class ComClassObject;

    /// The fault of a member, if it is to have one now.
    const ComFault* fault(const QByteArray& member, bool isCall)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const int number = isCall ? ++m_calls[member] : 0;
        for (const ComFault& each : qAsConst(m_faults)) {
            if (member == each.member &&
                (isCall ? number >= each.first && number <= each.last : !each.instead))
                return &each;
        }
        return nullptr;
    }

    OutlookPort& m_outlook;
    QVector<ComFault> m_faults;
    std::mutex m_mutex;
    QHash<QByteArray, int> m_calls;
};

/// What every object of COM has: one interface, and its references.
template <typename Interface>
class ComCounted : public Interface
{
public:
    explicit ComCounted(ComOutlookDouble& outlook)
        : m_outlook(outlook)
    {
        ++m_outlook.objects;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override
    {
        check();
        m_outlook.listeners += id == IID_IConnectionPointContainer;
        const bool isKnown = id == IID_IUnknown || id == __uuidof(Interface);
        *object = isKnown ? this : nullptr;
        m_references += isKnown;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return check(), ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        check();
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    virtual ~ComCounted() { --m_outlook.objects; }
    void check() { m_outlook.violations += GetCurrentThreadId() != m_thread; }

    ComOutlookDouble& m_outlook;

private:
    std::atomic<ULONG> m_references{1};
    const DWORD m_thread{GetCurrentThreadId()};
};

/// One object: a name for its kind, and its members.
class ComDouble final : public ComCounted<IDispatch>
{
public:
    ComDouble(ComOutlookDouble& outlook, const char* kind, DISPID base)
        : ComCounted(outlook)
        , m_kind(kind)
        , m_base(base)
    {}

    template <typename T, typename Value>
    void property(const char* name, const QSharedPointer<T>& object, Value (T::*read)() const)
    {
        add(name, DISPATCH_PROPERTYGET, {}, [this, object, read](const VARIANT*, VARIANT& result) {
            return give(((*object).*read)(), result);
        });
    }
    /// A method without arguments and result.
    template <typename Run>
    void command(const char* name, const Run& run)
    {
        add(name, DISPATCH_METHOD, {}, [run](const VARIANT*, VARIANT&) { return run(), S_OK; });
    }
    /// @p read is called with the arguments, the last one first.
    template <typename Read>
    void method(const char* name, const std::vector<VARTYPE>& arguments, const Read& read)
    {
        add(name, DISPATCH_METHOD, arguments,
            [this, read](const VARIANT* values, VARIANT& result) { return give(read(values), result); });
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override
    {
        check();
        ++m_outlook.names;
        const QByteArray name = QString::fromWCharArray(*names).toLatin1();
        for (std::size_t i = 0; count == 1 && i < m_members.size(); ++i) {
            *ids = m_base + DISPID(i);
            if (m_members[i].name == name)
                return m_outlook.fault(m_kind + '.' + name, false) ? DISP_E_UNKNOWNNAME : S_OK;
        }
        *ids = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* arguments,
                                     VARIANT* result, EXCEPINFO* exception, UINT*) override
    {
        check();
        ++m_outlook.calls;
        if (id < m_base || id >= m_base + DISPID(m_members.size()))
            return DISP_E_MEMBERNOTFOUND;
        const Member& member = m_members[std::size_t(id - m_base)];
        if (!(kind & member.kind))
            return DISP_E_MEMBERNOTFOUND;
        if (arguments->cArgs != member.arguments.size())
            return DISP_E_BADPARAMCOUNT;
        for (UINT i = 0; i < arguments->cArgs; ++i) {
            if (arguments->rgvarg[i].vt != member.arguments[i])
                return DISP_E_TYPEMISMATCH;
        }
        VARIANT value;
        VariantInit(&value);
        const ComFault* fault = m_outlook.fault(m_kind + '.' + member.name, true);
        HRESULT status = fault ? fault->instead(value, *exception) : member.call(arguments->rgvarg, value);
        if (!fault && status == DISP_E_EXCEPTION)
            status = throwException(*exception);
        if (SUCCEEDED(status) && result)
            *result = value;
        else
            VariantClear(&value);
        return status;
    }

private:
    struct Member
    {
        QByteArray name;
        int kind;
        std::vector<VARTYPE> arguments;
        std::function<HRESULT(const VARIANT*, VARIANT&)> call;
    };

    template <typename Call>
    void add(const char* name, int kind, const std::vector<VARTYPE>& arguments, const Call& call)
    {
        m_members.push_back({name, kind, arguments, call});
    }

    // What the Outlook in memory gives, as Outlook gives it: what there is not throws.
    HRESULT give(int number, VARIANT& result)
    {
        result.vt = VT_I4;
        result.lVal = number;
        return number < 0 ? DISP_E_EXCEPTION : S_OK;
    }
    HRESULT give(const QString& text, VARIANT& result)
    {
        result.vt = VT_BSTR;
        result.bstrVal = text.isEmpty() ? nullptr : toBstr(text);
        return S_OK;
    }
    HRESULT give(const QDateTime& time, VARIANT& result)
    {
        const qint64 days = QDate(1899, 12, 30).daysTo(time.date());
        result.vt = VT_DATE;
        result.date =
            time.isValid() ? double(days) + time.time().msecsSinceStartOfDay() / 86400000.0 : 949998;
        return S_OK;
    }
    template <typename T>
    HRESULT give(const QSharedPointer<T>& object, VARIANT& result)
    {
        result.vt = VT_DISPATCH;
        result.pdispVal = object ? made(m_outlook, object) : nullptr;
        return object ? S_OK : DISP_E_EXCEPTION;
    }

public:
    using Outlook = ComOutlookDouble&;
    static IDispatch* made(Outlook outlook, const QSharedPointer<OutlookItem>& item)
    {
        const bool isContact = item->itemClass() == OutlookItem::contactClass;
        auto* made = new ComDouble(outlook, "Item", isContact ? 100 : 200);
        made->property("Class", item, &OutlookItem::itemClass);
        made->property("EntryID", item, &OutlookItem::entryID);
        made->property("LastModificationTime", item, &OutlookItem::lastModificationTime);
        if (isContact) {
            made->property("FullName", item, &OutlookItem::fullName);
            made->property("BusinessTelephoneNumber", item, &OutlookItem::businessTelephoneNumber);
            made->property("BusinessFaxNumber", item, &OutlookItem::businessFaxNumber);
            made->property("CompanyName", item, &OutlookItem::companyName);
        }
        return made;
    }
    static IDispatch* made(Outlook outlook, const QSharedPointer<OutlookItems>& items)
    {
        auto* made = new ComDouble(outlook, "Items", 300);
        made->property("Count", items, &OutlookItems::count);
        made->method("Item", {VT_I4}, [items](const VARIANT* number) { return items->item(number->lVal); });
        return made;
    }
    static IDispatch* made(Outlook outlook, const QSharedPointer<OutlookFolders>& folders)
    {
        auto* made = new ComDouble(outlook, "Folders", 400);
        made->method("Item", {VT_I4},
                     [folders](const VARIANT* number) { return folders->item(number->lVal); });
        made->property("Count", folders, &OutlookFolders::count);
        return made;
    }
    static IDispatch* made(Outlook outlook, const QSharedPointer<OutlookFolder>& folder)
    {
        auto* made = new ComDouble(outlook, "Folder", 500);
        made->property("Name", folder, &OutlookFolder::name);
        made->property("EntryID", folder, &OutlookFolder::entryID);
        made->property("StoreID", folder, &OutlookFolder::storeID);
        made->property("DefaultItemType", folder, &OutlookFolder::defaultItemType);
        made->property("Folders", folder, &OutlookFolder::folders);
        made->property("Items", folder, &OutlookFolder::items);
        return made;
    }
    static IDispatch* made(Outlook outlook, const QSharedPointer<OutlookSession>& session)
    {
        const auto text = [](const VARIANT& value) { return QString::fromWCharArray(value.bstrVal); };
        auto* made = new ComDouble(outlook, "Session", 600);
        made->command("Logon", [session] { session->logon(); });
        made->command("Logoff", [session] { session->logoff(); });
        made->property("Folders", session, &OutlookSession::folders);
        made->method("GetDefaultFolder", {VT_I4},
                     [session](const VARIANT* type) { return session->defaultFolder(type->lVal); });
        made->method("GetFolderFromID", {VT_BSTR, VT_BSTR}, [session, text](const VARIANT* ids) {
            return session->folderFromID(text(ids[1]), text(ids[0]));
        });
        return made;
    }
    static IDispatch* made(Outlook outlook, const QSharedPointer<OutlookApplication>& application)
    {
        auto* made = new ComDouble(outlook, "Application", 700);
        made->property("Session", application, &OutlookApplication::session);
        return made;
    }

private:
    const QByteArray m_kind;
    const DISPID m_base; ///< Each kind has identifiers of its own.
    std::vector<Member> m_members;
};

class ComClassObject final : public ComCounted<IClassFactory>
{
public:
    using ComCounted::ComCounted;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override
    {
        *object = nullptr;
        if (const ComFault* fault = m_outlook.fault("Application", true)) {
            VARIANT none;
            EXCEPINFO exception;
            return fault->instead(none, exception);
        }
        const auto application = m_outlook.m_outlook.createApplication();
        if (!application)
            return REGDB_E_CLASSNOTREG;
        IDispatch* made = ComDouble::made(m_outlook, application);
        const HRESULT status = made->QueryInterface(id, object);
        made->Release();
        return status;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

inline DWORD ComOutlookDouble::registerClass(DWORD context)
{
    DWORD cookie = 0;
    auto* object = new ComClassObject(*this);
    CoRegisterClassObject(clsid, object, context, REGCLS_MULTIPLEUSE, &cookie);
    object->Release();
    return cookie;
}

/// The system's own port, for which this double of Outlook is in its process: each thread has the class
/// object of its own, since COM gives none across threads without a proxy.
class OutlookOverCom : public OutlookPort
{
public:
    /// @p outlook: what the double reads.
    explicit OutlookOverCom(const QSharedPointer<OutlookPort>& outlook)
        : m_outlook(outlook)
        , m_system((setCurrent(QSharedPointer<OutlookPort>()), current()))
    {}

    ComOutlookDouble& com() { return m_com; }

    bool enterThread() override
    {
        const bool isEntered = m_system->enterThread();
        if (isEntered) {
            m_outlook->enterThread();
            cookies().push_back(m_com.registerClass(CLSCTX_INPROC_SERVER));
        }
        return isEntered;
    }
    void leaveThread() override
    {
        CoRevokeClassObject(cookies().back());
        cookies().pop_back();
        m_outlook->leaveThread();
        m_system->leaveThread();
    }
    QSharedPointer<OutlookApplication> createApplication() override { return m_system->createApplication(); }

private:
    static std::vector<DWORD>& cookies()
    {
        thread_local std::vector<DWORD> ofThread;
        return ofThread;
    }

    QSharedPointer<OutlookPort> m_outlook;
    QSharedPointer<OutlookPort> m_system;
    ComOutlookDouble m_com{*m_outlook};
};
