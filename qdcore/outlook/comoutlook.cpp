#include "comoutlook_p.h"

#include <QCoreApplication>

#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include <objbase.h>
#include <oleauto.h>

#include "log_p.h" // after Windows' headers, see logger.h

namespace {

// --- What COM hands out, released at the end of its scope

struct Releaser
{
    void operator()(IUnknown* object) const { object->Release(); }
};
using DispatchPointer = std::unique_ptr<IDispatch, Releaser>;

/// A VARIANT, which owns the text or object in it. An array of them is one of VARIANTs.
struct Variant : VARIANT
{
    Variant() { VariantInit(this); }
    explicit Variant(int number)
        : Variant()
    {
        vt = VT_I4;
        lVal = number;
    }
    explicit Variant(const QString& text)
        : Variant()
    {
        vt = VT_BSTR;
        bstrVal = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.utf16()), UINT(text.size()));
    }
    ~Variant() { VariantClear(this); }
    Q_DISABLE_COPY(Variant)
};
static_assert(sizeof(Variant) == sizeof(VARIANT));

/// Without a BSTR the empty text, for which COM has both.
QString textOf(BSTR text)
{
    return QString::fromWCharArray(text ? text : L"", int(SysStringLen(text)));
}

/// What a call that throws says of it.
struct Exception : EXCEPINFO
{
    Exception()
        : EXCEPINFO{}
    {}
    ~Exception()
    {
        SysFreeString(bstrSource);
        SysFreeString(bstrDescription);
        SysFreeString(bstrHelpFile);
    }
    Q_DISABLE_COPY(Exception)

    QString text()
    {
        if (pfnDeferredFillIn)
            pfnDeferredFillIn(this);
        return QStringLiteral("%1: %2 (%3)")
            .arg(textOf(bstrSource), textOf(bstrDescription), QString::number(ulong(scode), 16));
    }
};

// --- Values. What is not of the expected type is as if it could not be read.

QString textIn(const VARIANT& value)
{
    return value.vt == VT_BSTR ? textOf(value.bstrVal) : QString();
}

int numberIn(const VARIANT& value)
{
    quint64 number = 0; // one below 0 becomes too large
    switch (value.vt) {
    case VT_I1:
        number = quint64(value.cVal);
        break;
    case VT_I2:
        number = quint64(value.iVal);
        break;
    case VT_I4:
        number = quint64(value.lVal);
        break;
    case VT_I8:
        number = quint64(value.llVal);
        break;
    case VT_INT:
        number = quint64(value.intVal);
        break;
    case VT_UI1:
        number = value.bVal;
        break;
    case VT_UI2:
        number = value.uiVal;
        break;
    case VT_UI4:
        number = value.ulVal;
        break;
    case VT_UI8:
        number = value.ullVal;
        break;
    case VT_UINT:
        number = value.uintVal;
        break;
    default:
        return -1; // also for types that could be converted to a number
    }
    return number <= quint64(std::numeric_limits<int>::max()) ? int(number) : -1;
}

/// Outlook's dates have no time zone; they are local time, and so is the QDateTime. So its
/// toSecsSinceEpoch() returns Unix seconds.
QDateTime dateIn(const VARIANT& value)
{
    // days since the end of 1899, of which the fraction counts forward also before it
    if (value.vt != VT_DATE || !(value.date > -657435 && value.date < 2958466)) // the years 100 to 9999
        return QDateTime();
    constexpr qint64 msecsOfDay = 86400000;
    const double days = std::trunc(value.date);
    const qint64 msecs = std::llround(std::abs(value.date - days) * double(msecsOfDay));
    const qint64 day = qint64(days) + msecs / msecsOfDay;
    if (day == 0 || day == 949998) // no day at all; 4501-01-01, Outlook's "none"
        return QDateTime();
    return QDateTime(QDate(1899, 12, 30).addDays(day),
                     QTime::fromMSecsSinceStartOfDay(int(msecs % msecsOfDay)));
}

DispatchPointer objectIn(const VARIANT& value)
{
    void* object = nullptr;
    if ((value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) && value.punkVal)
        value.punkVal->QueryInterface(IID_IDispatch, &object);
    return DispatchPointer(static_cast<IDispatch*>(object));
}

// --- Calls

/// Whether the call did not reach the object: Outlook is busy, has ended or is ending.
bool isConnectionFault(HRESULT result)
{
    const int code = HRESULT_CODE(result);
    const bool isRpc = HRESULT_FACILITY(result) == FACILITY_RPC;
    return (isRpc && result != RPC_E_SERVERFAULT) || result == CO_E_OBJNOTCONNECTED ||
           (HRESULT_FACILITY(result) == FACILITY_WIN32 && code >= RPC_S_INVALID_STRING_BINDING &&
            code <= RPC_S_INVALID_OBJECT);
}

void logRefusal(const wchar_t* what, const QString& why)
{
    QD_LOG(DEBUG, QCoreApplication::translate("ComOutlook", "Outlook refused %1: %2", "Logger")
                      .arg(QString::fromWCharArray(what), why));
}

/// An object of Outlook's. All of it that is asked for is asked for by name.
class ComObject
{
public:
    explicit ComObject(DispatchPointer object, std::shared_ptr<bool> isLost = std::make_shared<bool>(false))
        : m_object(std::move(object))
        , m_isLost(std::move(isLost))
    {}
    ~ComObject()
    {
        if (m_thread != GetCurrentThreadId())
            static_cast<void>(m_object.release()); // lost, since a call would do more harm
    }
    Q_DISABLE_COPY(ComObject)

    QString text(const wchar_t* property) const { return value(property, textIn); }
    int number(const wchar_t* property) const { return value(property, numberIn); }
    QDateTime date(const wchar_t* property) const { return value(property, dateIn); }
    DispatchPointer object(const wchar_t* property) const { return value(property, objectIn); }
    /// Arguments in the order of COM: the last one first.
    template <typename... Argument>
    DispatchPointer objectFrom(const wchar_t* method, const Argument&... argument) const
    {
        Variant arguments[]{Variant(argument)...};
        Variant result;
        call(method, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &result, arguments, sizeof...(argument));
        return objectIn(result);
    }
    void command(const wchar_t* method) const { call(method, DISPATCH_METHOD, nullptr); }

    /// Whether a call has not reached its object: this one, or one that shares the flag.
    const std::shared_ptr<bool>& isLost() const { return m_isLost; }

private:
    template <typename Value>
    Value value(const wchar_t* property, Value (*valueIn)(const VARIANT&)) const
    {
        Variant result;
        call(property, DISPATCH_PROPERTYGET, &result);
        return valueIn(result);
    }

    void call(const wchar_t* member, int kind, VARIANT* result, VARIANT* arguments = nullptr,
              UINT count = 0) const
    {
        Exception exception;
        DISPPARAMS parameters{arguments, nullptr, count, 0};
        DISPID id = DISPID_UNKNOWN;
        HRESULT status = m_thread == GetCurrentThreadId() ? find(member, id) : RPC_E_WRONG_THREAD;
        if (SUCCEEDED(status))
            status = m_object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, WORD(kind), &parameters, result,
                                      &exception, nullptr);
        if (SUCCEEDED(status))
            return;
        if (result)
            VariantInit(result); // whatever was left in it
        if (isConnectionFault(status))
            *m_isLost = true;
        logRefusal(member,
                   status == DISP_E_EXCEPTION ? exception.text() : QString::number(ulong(status), 16));
    }

    HRESULT find(const wchar_t* member, DISPID& id) const
    {
        const auto known = m_ids.find(member);
        if (known != m_ids.end()) {
            id = known->second;
            return S_OK;
        }
        auto* name = const_cast<wchar_t*>(member); // which nobody changes
        const HRESULT status = m_object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
        if (SUCCEEDED(status))
            m_ids.emplace(member, id);
        return status;
    }

    DispatchPointer m_object;
    std::shared_ptr<bool> m_isLost;
    mutable std::map<std::wstring, DISPID> m_ids; ///< Of the members that have been called.
    const DWORD m_thread{GetCurrentThreadId()};
};

/// The port object for an object of Outlook's; null for null.
template <typename T, typename... More>
QSharedPointer<T> wrapped(DispatchPointer object, const More&... more)
{
    return object ? QSharedPointer<T>::create(std::move(object), more...) : QSharedPointer<T>();
}

// --- The port's objects

template <typename Interface>
class Com : public Interface
{
public:
    template <typename... Argument>
    explicit Com(Argument&&... argument)
        : m_object(std::forward<Argument>(argument)...)
    {}

protected:
    const ComObject m_object;
};

class ComItem : public Com<OutlookItem>
{
public:
    using Com::Com;
    int itemClass() const override { return m_object.number(L"Class"); }
    QString entryID() const override { return m_object.text(L"EntryID"); }
    QString fullName() const override { return m_object.text(L"FullName"); }
    QString businessTelephoneNumber() const override { return m_object.text(L"BusinessTelephoneNumber"); }
    QString businessFaxNumber() const override { return m_object.text(L"BusinessFaxNumber"); }
    QString companyName() const override { return m_object.text(L"CompanyName"); }
    QDateTime lastModificationTime() const override { return m_object.date(L"LastModificationTime"); }
    bool isIntact() const override { return !*m_object.isLost(); }
};

class ComItems : public Com<OutlookItems>
{
public:
    using Com::Com;
    int count() const override
    {
        const int count = m_object.number(L"Count");
        return *m_object.isLost() ? -1 : count;
    }
    QSharedPointer<OutlookItem> item(int number) const override
    {
        return wrapped<ComItem>(m_object.objectFrom(L"Item", number), m_object.isLost());
    }
};

class ComFolder : public Com<OutlookFolder>
{
public:
    using Com::Com;
    QString name() const override { return m_object.text(L"Name"); }
    QString entryID() const override { return m_object.text(L"EntryID"); }
    QString storeID() const override { return m_object.text(L"StoreID"); }
    int defaultItemType() const override { return m_object.number(L"DefaultItemType"); }
    QSharedPointer<OutlookFolders> folders() const override;
    QSharedPointer<OutlookItems> items() const override
    {
        return wrapped<ComItems>(m_object.object(L"Items"));
    }
};

class ComFolders : public Com<OutlookFolders>
{
public:
    using Com::Com;
    int count() const override { return m_object.number(L"Count"); }
    QSharedPointer<OutlookFolder> item(int number) const override
    {
        return wrapped<ComFolder>(m_object.objectFrom(L"Item", number));
    }
};

QSharedPointer<OutlookFolders> ComFolder::folders() const
{
    return wrapped<ComFolders>(m_object.object(L"Folders"));
}

class ComSession : public Com<OutlookSession>
{
public:
    using Com::Com;
    void logon() override { m_object.command(L"Logon"); }
    void logoff() override { m_object.command(L"Logoff"); }
    QSharedPointer<OutlookFolder> defaultFolder(int type) const override
    {
        return wrapped<ComFolder>(m_object.objectFrom(L"GetDefaultFolder", type));
    }
    QSharedPointer<OutlookFolder> folderFromID(const QString& entryID, const QString& storeID) const override
    {
        return wrapped<ComFolder>(m_object.objectFrom(L"GetFolderFromID", storeID, entryID));
    }
    QSharedPointer<OutlookFolders> folders() const override
    {
        return wrapped<ComFolders>(m_object.object(L"Folders"));
    }
};

class ComApplication : public Com<OutlookApplication>
{
public:
    using Com::Com;
    QSharedPointer<OutlookSession> session() const override
    {
        return wrapped<ComSession>(m_object.object(L"Session"));
    }
};

} // namespace

bool ComOutlook::enterThread()
{
    // A single-threaded apartment. If the thread is in the multithreaded one, this fails, Outlook can be used
    // all the same, and CoUninitialize() must not be called.
    return SUCCEEDED(CoInitialize(nullptr));
}

void ComOutlook::leaveThread()
{
    CoUninitialize();
}

QSharedPointer<OutlookApplication> ComOutlook::createApplication()
{
    constexpr CLSID application{0x0006f03a, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
    void* object = nullptr;
    const HRESULT status = CoCreateInstance(application, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                            IID_IDispatch, &object);
    if (FAILED(status))
        logRefusal(L"Application", QString::number(ulong(status), 16));
    return wrapped<ComApplication>(DispatchPointer(static_cast<IDispatch*>(object)));
}
