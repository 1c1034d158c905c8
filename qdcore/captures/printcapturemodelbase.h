#pragma once

#include "qdcore_global.h"

#include <QAbstractTableModel>
#include <QDateTime>
#include <QFileInfo>
#include <QIcon>
#include <QStringList>
#include <QVector>

#include <vector>

class ActionBarItem;
class DateTimeConverter;
class QDir;

/**
 * The documents that the print-capture driver has left in its folder, as a table: name, pages, time of
 * creation, and the actions "New Fax", "View" and "Delete".
 *
 * The folder is "Quendra Client Software/Print Captures" in the user's application-data folder. It is read by
 * slotUpdate() alone: the table starts empty, and shows what was there at the last refresh. A missing folder
 * is an empty one. Applications derive from this class to count pages or to handle other types of files.
 *
 * A view needs a SortFilterTimeProxyModel on top of this model. Removing a document announces the removal of
 * its row, and refreshes, which is a reset, before that removal is complete. A view set directly on the model
 * has recounted its rows by then and subtracts the removed one a second time; the proxy expects such
 * sources and passes on a consistent state.
 *
 * Owned by the application; lives on the thread of its view.
 */
class QDCORE_EXPORT PrintCaptureModelBase : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// The converter is that of the view, and must outlive the model. With @p newFaxAction false, "New Fax"
    /// is not offered.
    PrintCaptureModelBase(const DateTimeConverter& converter, bool newFaxAction, QObject* parent = nullptr);
    ~PrintCaptureModelBase() override;

    /// The path of the folder as of now. It need not exist.
    static QString folder();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// Takes a click: @p value is an ActionBarItem, @p role the edit role. True for "New Fax" and "View";
    /// false for "Delete", which is only asked for, and for anything else.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// Deletes the document of a row; the table keeps the row until it is refreshed. The result is that of
    /// removeExtraFiles(): a document that could not be deleted is only logged.
    /// Throws std::out_of_range for a row that does not exist.
    bool removePrintCapture(int row);

    /// Deletes a document that the table shows, and refreshes it. False when none has this very path,
    /// otherwise as above.
    bool removePrintCapture(const QFileInfo& file);

    /// Deletes the documents of these rows, each as removePrintCapture(int) does, and takes no row out of the
    /// table.
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

    /// Deletes everything that the folder holds by then, on the global thread pool. signalDeleteAllComlete()
    /// ends it.
    void deleteAll();

    /// The converter given to the constructor.
    const DateTimeConverter& converter() const { return m_converter; }

Q_SIGNALS:
    /// "New Fax" was clicked. @p fileName is the path to send.
    void signalNewFax(const QString& fileName, const QString& documentName);
    /// "View" was clicked.
    void signalView(QFileInfo file);
    /// "Delete" was clicked; nothing is deleted yet.
    void removeEntry(QFileInfo file);
    /// deleteAll() has ended and the table is refreshed. For @p result see
    /// FilesRemoveRunnable::signalRemovingComplete().
    void signalDeleteAllComlete(bool result);

public Q_SLOTS:
    /// Reads the folder again.
    void slotUpdate();

protected:
    /// A row.
    struct Entry
    {
        QFileInfo file;    ///< As it was when the folder was read.
        QString name;      ///< What the first column shows.
        QDateTime created; ///< The last change, where the file system does not keep the creation.
        QString toolTip;   ///< Of the name.
        int pages{0};      ///< 0: not counted.
    };

    /// The path that is handed to the application for a file: its own. @p file may be changed.
    virtual QString actionFileName(QFileInfo& file);

    /// Deletes what belongs to a document that is being deleted. Whether that worked; there is nothing to do
    /// here, which does.
    virtual bool removeExtraFiles(QFileInfo& file);

    /// What of the folder is listed: "*.pdf".
    virtual QString actionFilesFilter();

    /// Appends the row of a file by appendEntry(), or leaves it out. Called for each file, in order, during a
    /// refresh. The result is not used here.
    virtual bool addEntry(QFileInfo& file);

    /// The row of a file as this class shows it.
    Entry entryOf(const QFileInfo& file) const;
    /// For addEntry().
    void appendEntry(const Entry& entry);
    /// The rows, in the order of the folder's listing.
    const QVector<Entry>& entries() const;
    /// Sets the number of pages of a row at any time.
    void setPages(int row, int pages);

private:
    enum Column { Name, Pages, CreatedAt, Actions };
    enum Action { NewFax, View, Delete };

    QDir listedFiles();
    ActionBarItem actionBar() const;
    static Entry undated(const QFileInfo& file);
    const Entry& dated(int row) const;

    const DateTimeConverter& m_converter;
    bool m_newFaxAction;
    QStringList m_titles;
    /// What a refresh reads of a file is all that is shown of it. Only the conversion to local time, which
    /// takes longer than the refresh, is left to the first who asks for the time.
    mutable QVector<Entry> m_entries;
    mutable std::vector<bool> m_isDated; ///< Whether the time of an entry is made.
    QIcon m_newFaxImage;
    QIcon m_viewImage;
    QIcon m_deleteImage;
};
