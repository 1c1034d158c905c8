#include "contactsoptionsoutlook.h"

#include "outlookfolderkey_p.h"

#include <QPointer>

#include <algorithm>

namespace {

int countOf(const QSharedPointer<OutlookFolders>& folders)
{
    return folders ? qMax(folders->count(), 0) : 0;
}

/// Whether a folder contains a contact folder at any depth. A folder's own subfolders come first: every
/// question is a call to Outlook, and contact folders rarely lie below folders of mail, which may have
/// hundreds.
bool containsContacts(const OutlookFolder& folder)
{
    const QSharedPointer<OutlookFolders> folders = folder.folders();
    const int count = countOf(folders);
    QVector<QSharedPointer<OutlookFolder>> others;
    for (int i = 1; i <= count; ++i) {
        const QSharedPointer<OutlookFolder> child = folders->item(i);
        if (child && isContactFolder(*child))
            return true;
        if (child)
            others.append(child);
    }
    return std::any_of(others.cbegin(), others.cend(),
                       [](const QSharedPointer<OutlookFolder>& child) { return containsContacts(*child); });
}

} // namespace

ContactsOptionsOutlook::ContactsOptionsOutlook(QObject* parent)
    : QAbstractItemModel(parent)
    , m_application(m_access.createApplication())
{
    if (!m_application)
        return;
    m_nameSpace = m_application->session();
    if (m_nameSpace)
        m_nameSpace->logon();
}

ContactsOptionsOutlook::~ContactsOptionsOutlook() = default;

// --- The folders

QSharedPointer<OutlookFolder> ContactsOptionsOutlook::folder(const QString& key) const
{
    return m_nameSpace ? outlookFolder(*m_nameSpace, key) : QSharedPointer<OutlookFolder>();
}

QSharedPointer<OutlookFolders> ContactsOptionsOutlook::foldersOf(const QModelIndex& parent) const
{
    if (!m_nameSpace)
        return QSharedPointer<OutlookFolders>();
    if (!parent.isValid())
        return m_nameSpace->folders();
    const QSharedPointer<OutlookFolder> parentFolder = folder(entryIDByIndex(parent));
    return parentFolder ? parentFolder->folders() : QSharedPointer<OutlookFolders>();
}

int ContactsOptionsOutlook::rowCount(const QModelIndex& parent) const
{
    return countOf(foldersOf(parent));
}

int ContactsOptionsOutlook::columnCount(const QModelIndex& parent) const
{
    return rowCount(parent) > 0 ? 1 : 0;
}

bool ContactsOptionsOutlook::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0; // the base class would ask for the columns as well
}

QModelIndex ContactsOptionsOutlook::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0)
        return QModelIndex();
    const QSharedPointer<OutlookFolders> folders = foldersOf(parent);
    const QSharedPointer<OutlookFolder> child =
        row < countOf(folders) ? folders->item(row + 1) : QSharedPointer<OutlookFolder>();
    if (!child || !(isContactFolder(*child) || containsContacts(*child)))
        return QModelIndex();

    const QString key = outlookFolderKey(*child);
    const QModelIndex known = indexByEntryID(key);
    if (known.isValid())
        return known;
    const QModelIndex index = createIndex(row, column, quintptr(m_keys.size()));
    m_keys.append(key);
    m_indexes.append(index);
    if (parent.isValid())
        m_parentKeys.insert(key, entryIDByIndex(parent));
    return index;
}

QModelIndex ContactsOptionsOutlook::parent(const QModelIndex& index) const
{
    // the first index created is always that of a top-level folder
    if (!m_nameSpace || !index.isValid() || index.internalId() == 0)
        return QModelIndex();
    const QString key = m_parentKeys.value(entryIDByIndex(index));
    return folder(key) ? indexByEntryID(key) : QModelIndex();
}

// --- What is shown

QVariant ContactsOptionsOutlook::data(const QModelIndex& index, int role) const
{
    const QString key = entryIDByIndex(index);
    if (index.column() != 0 || key.isEmpty())
        return QVariant();
    if (!isOutlookFolderKey(key))
        return 0;
    // a view asks for many roles for each row that it draws
    if (role != Qt::DisplayRole && role != Qt::DecorationRole && role != Qt::CheckStateRole)
        return QVariant();
    const QSharedPointer<OutlookFolder> shown = folder(key);
    if (!shown)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return shown->name();
    case Qt::DecorationRole:
        if (m_icon.isNull())
            m_icon = QIcon(QStringLiteral(":/icons/folder"));
        return m_icon;
    case Qt::CheckStateRole:
        if (isContactFolder(*shown))
            return key == m_selectedEntryID ? Qt::Checked : Qt::Unchecked;
        break;
    default:
        break;
    }
    return QVariant();
}

Qt::ItemFlags ContactsOptionsOutlook::flags(const QModelIndex& index) const
{
    const QString key = entryIDByIndex(index);
    if (index.isValid() && !isOutlookFolderKey(key))
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (entryIDIsContact(key))
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool ContactsOptionsOutlook::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || value.toInt() != Qt::Checked)
        return false;
    setSelectedEntryID(entryIDByIndex(index));
    return true;
}

// --- The chosen folder

void ContactsOptionsOutlook::setSelectedEntryID(const QString& key)
{
    const QModelIndex before = indexByEntryID(m_selectedEntryID);
    m_selectedEntryID = key;
    const QModelIndex now = indexByEntryID(key);
    const QPointer<ContactsOptionsOutlook> self(this);
    for (const QModelIndex& index : {before, now}) {
        if (self && index.isValid())
            Q_EMIT dataChanged(index, index);
    }
}

QString ContactsOptionsOutlook::defaultEntryID() const
{
    const QSharedPointer<OutlookFolder> contacts =
        m_nameSpace ? m_nameSpace->defaultFolder(OutlookSession::contactsFolder)
                    : QSharedPointer<OutlookFolder>();
    return contacts ? outlookFolderKey(*contacts) : QString();
}

bool ContactsOptionsOutlook::entryIDIsContact(const QString& key) const
{
    const QSharedPointer<OutlookFolder> named = folder(key);
    return named && isContactFolder(*named);
}

QString ContactsOptionsOutlook::entryIDByIndex(const QModelIndex& index) const
{
    return index.isValid() && index.internalId() < quintptr(m_keys.size())
               ? m_keys.at(int(index.internalId()))
               : QString();
}

QModelIndex ContactsOptionsOutlook::indexByEntryID(const QString& key) const
{
    const int position = key.isEmpty() ? -1 : m_keys.indexOf(key);
    return position < 0 ? QModelIndex() : m_indexes.at(position);
}
