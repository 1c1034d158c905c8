#pragma once

#include "outlookport.h"
#include "qdcore_global.h"

#include <QAbstractItemModel>
#include <QIcon>
#include <QList>
#include <QMap>
#include <QVector>

/**
 * Outlook's tree of folders, from which the user chooses the one whose contacts are copied.
 *
 * Contact folders have a check box, and at most one of them is checked: checking another takes its place. The
 * folder is named by a key, which the application stores and hands to ContactManager::setOutlookEntryID().
 *
 * Owned by the application; for the GUI thread. Every query asks Outlook, and waits for it. Without Outlook
 * the model is empty.
 */
class QDCORE_EXPORT ContactsOptionsOutlook : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// Logs on to Outlook, which starts it if need be.
    explicit ContactsOptionsOutlook(QObject* parent = nullptr);
    ~ContactsOptionsOutlook() override;

    /// Invalid for a folder that neither is a contact folder nor holds one at any depth, although rowCount()
    /// counts it. A folder's index stays the same for as long as the model lives.
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    using QObject::parent;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    /// The name, the image and, of contact folders, the check state.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Only checks: unchecking, like everything else, is refused with false.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// The key of the checked folder; empty for none.
    QString selectedEntryID() const { return m_selectedEntryID; }
    /// Checks the folder of a key, which need not have been shown yet.
    void setSelectedEntryID(const QString& key);

    /// The key of Outlook's default contact folder; empty when there is none.
    QString defaultEntryID() const;
    /// Whether a key names a contact folder that is there.
    bool entryIDIsContact(const QString& key) const;
    /// The key of an index; empty for an invalid one.
    QString entryIDByIndex(const QModelIndex& index) const;
    /// The index that was given for a key; invalid when none was.
    QModelIndex indexByEntryID(const QString& key) const;

private:
    QSharedPointer<OutlookFolder> folder(const QString& key) const;
    QSharedPointer<OutlookFolders> foldersOf(const QModelIndex& parent) const;

    OutlookAccess m_access;
    QSharedPointer<OutlookApplication> m_application;
    QSharedPointer<OutlookSession> m_nameSpace;
    mutable QList<QString> m_keys;          ///< Of all indexes given, whose internal ids are positions in it.
    mutable QVector<QModelIndex> m_indexes; ///< The index of each key.
    mutable QMap<QString, QString> m_parentKeys;
    QString m_selectedEntryID;
    mutable QIcon m_icon; ///< Loaded when first asked for: that needs a GUI.
};
