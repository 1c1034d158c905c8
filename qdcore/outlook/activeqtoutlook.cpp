#include "activeqtoutlook_p.h"

#include <QAxObject>
#include <QVariant>

#include <limits>

#include <objbase.h>

// Members are read only by dynamicCall() and querySubObject(): property() finds nothing on an object without
// type information. Results are checked for null and for their type.

namespace {

using AxPointer = QSharedPointer<QAxObject>;

/// Takes ownership of an object from its QObject parent, so that the two can be released in any order.
AxPointer owned(QAxObject* object)
{
    AxPointer pointer(object);
    if (!object || object->isNull())
        return AxPointer();
    object->setParent(nullptr);
    return pointer;
}

/// A port object that wraps an object of Outlook; null for null.
template <typename T, typename Interface>
QSharedPointer<Interface> wrapped(QAxObject* object)
{
    const AxPointer pointer = owned(object);
    return pointer ? QSharedPointer<Interface>(new T(pointer)) : QSharedPointer<Interface>();
}

QString text(QAxObject& object, const char* name)
{
    const QVariant value = object.dynamicCall(name);
    return value.type() == QVariant::String ? value.toString() : QString();
}

int number(QAxObject& object, const char* name)
{
    const QVariant value = object.dynamicCall(name);
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        break;
    default:
        return -1; // also for types that QVariant would convert to a number
    }
    const qlonglong wide = value.toLongLong();
    return wide >= 0 && wide <= std::numeric_limits<int>::max() ? int(wide) : -1;
}

class AxItem : public OutlookItem
{
public:
    explicit AxItem(const AxPointer& object)
        : m_object(object)
    {}
    int itemClass() const override { return number(*m_object, "Class"); }
    QString entryID() const override { return text(*m_object, "EntryID"); }
    QString fullName() const override { return text(*m_object, "FullName"); }
    QString businessTelephoneNumber() const override { return text(*m_object, "BusinessTelephoneNumber"); }
    QString businessFaxNumber() const override { return text(*m_object, "BusinessFaxNumber"); }
    QString companyName() const override { return text(*m_object, "CompanyName"); }
    QDateTime lastModificationTime() const override
    {
        // Outlook's dates have no time zone; they are local time, and so is the QDateTime. So its
        // toSecsSinceEpoch() returns Unix seconds.
        const QVariant value = m_object->dynamicCall("LastModificationTime");
        return value.type() == QVariant::DateTime ? value.toDateTime() : QDateTime();
    }

private:
    AxPointer m_object;
};

class AxItems : public OutlookItems
{
public:
    explicit AxItems(const AxPointer& object)
        : m_object(object)
    {}
    int count() const override { return number(*m_object, "Count"); }
    QSharedPointer<OutlookItem> item(int number) const override
    {
        return wrapped<AxItem, OutlookItem>(m_object->querySubObject("Item(int)", number));
    }

private:
    AxPointer m_object;
};

class AxFolder : public OutlookFolder
{
public:
    explicit AxFolder(const AxPointer& object)
        : m_object(object)
    {}
    QString name() const override { return text(*m_object, "Name"); }
    QString entryID() const override { return text(*m_object, "EntryID"); }
    QString storeID() const override { return text(*m_object, "StoreID"); }
    int defaultItemType() const override { return number(*m_object, "DefaultItemType"); }
    QSharedPointer<OutlookFolders> folders() const override;
    QSharedPointer<OutlookItems> items() const override
    {
        return wrapped<AxItems, OutlookItems>(m_object->querySubObject("Items"));
    }

private:
    AxPointer m_object;
};

class AxFolders : public OutlookFolders
{
public:
    explicit AxFolders(const AxPointer& object)
        : m_object(object)
    {}
    int count() const override { return number(*m_object, "Count"); }
    QSharedPointer<OutlookFolder> item(int number) const override
    {
        return wrapped<AxFolder, OutlookFolder>(m_object->querySubObject("Item(int)", number));
    }

private:
    AxPointer m_object;
};

QSharedPointer<OutlookFolders> AxFolder::folders() const
{
    return wrapped<AxFolders, OutlookFolders>(m_object->querySubObject("Folders"));
}

class AxSession : public OutlookSession
{
public:
    explicit AxSession(const AxPointer& object)
        : m_object(object)
    {}
    void logon() override { m_object->dynamicCall("Logon()"); }
    void logoff() override { m_object->dynamicCall("Logoff()"); }
    QSharedPointer<OutlookFolder> defaultFolder(int type) const override
    {
        return wrapped<AxFolder, OutlookFolder>(m_object->querySubObject("GetDefaultFolder(int)", type));
    }
    QSharedPointer<OutlookFolder> folderFromID(const QString& entryID, const QString& storeID) const override
    {
        return wrapped<AxFolder, OutlookFolder>(
            m_object->querySubObject("GetFolderFromID(QString,QVariant)", entryID, storeID));
    }
    QSharedPointer<OutlookFolders> folders() const override
    {
        return wrapped<AxFolders, OutlookFolders>(m_object->querySubObject("Folders"));
    }

private:
    AxPointer m_object;
};

class AxApplication : public OutlookApplication
{
public:
    explicit AxApplication(const AxPointer& object)
        : m_object(object)
    {}
    QSharedPointer<OutlookSession> session() const override
    {
        return wrapped<AxSession, OutlookSession>(m_object->querySubObject("Session"));
    }

private:
    AxPointer m_object;
};

} // namespace

bool ActiveQtOutlook::enterThread()
{
    // Fails if the thread uses another COM threading model; then CoUninitialize() must not be called.
    return SUCCEEDED(CoInitialize(nullptr));
}

void ActiveQtOutlook::leaveThread()
{
    CoUninitialize();
}

QSharedPointer<OutlookApplication> ActiveQtOutlook::createApplication()
{
    const AxPointer object(new QAxObject);
    if (!object->setControl(QStringLiteral("{0006f03a-0000-0000-c000-000000000046}")) || object->isNull())
        return QSharedPointer<OutlookApplication>();
    return QSharedPointer<OutlookApplication>(new AxApplication(object));
}
