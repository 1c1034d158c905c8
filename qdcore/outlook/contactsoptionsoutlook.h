#pragma once

#include "outlookport.h"
#include "qdcore_global.h"

#include <QAbstractItemModel>
#include <QIcon>
#include <QList>
#include <QMap>
#include <QVector>

/**
 * Outlook's folder tree, from which the user chooses the folder whose contacts are copied.
 *
 * Contact folders have a check box, and at most one of them is checked: checking another unchecks it. A
 * folder is identified by a key, which the application stores and passes to
 * ContactManager::setOutlookEntryID().
 *
 * Owned by the application; for the GUI thread. Every query is a blocking call to Outlook. Without Outlook
 * the model is empty.
 */
class QDCORE_EXPORT ContactsOptionsOutlook : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// Logs on to Outlook, starting it if necessary.
    explicit ContactsOptionsOutlook(QObject* parent = nullptr);
    ~ContactsOptionsOutlook() override;

    /// Invalid for a folder that neither is a contact folder nor contains one at any depth, although
    /// rowCount() counts it. A folder's index stays the same for the lifetime of the model.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    using QObject::parent;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    /// The name, the icon and, for contact folders, the check state.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Can only check a folder; returns false for unchecking and for any other role.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// The key of the checked folder; empty for none.
    QString selectedEntryID() const { return m_selectedEntryID; }
    /// Checks the folder with this key; the model need not have an index for it yet.
    void setSelectedEntryID(const QString& key);

    /// The key of Outlook's default contact folder; empty when there is none.
    QString defaultEntryID() const;
    /// Whether a key identifies an existing contact folder.
    bool entryIDIsContact(const QString& key) const;
    /// The key of an index; empty for an invalid one.
    QString entryIDByIndex(const QModelIndex& index) const;
    /// The index that index() has returned for a key; invalid if it has returned none.
    QModelIndex indexByEntryID(const QString& key) const;

private:
    QSharedPointer<OutlookFolder> folder(const QString& key) const;
    QSharedPointer<OutlookFolders> foldersOf(const QModelIndex& parent) const;

    OutlookAccess m_access;
    QSharedPointer<OutlookApplication> m_application;
    QSharedPointer<OutlookSession> m_nameSpace;
    mutable QList<QString> m_keys; ///< Of all indexes created; their internal ids are positions here.
    mutable QVector<QModelIndex> m_indexes; ///< The index of each key.
    mutable QMap<QString, QString> m_parentKeys;
    QString m_selectedEntryID;
    mutable QIcon m_icon; ///< Loaded on first use, since loading needs a GUI.
};
