#pragma once

#include "printcapturemodelbase.h"

#include <QHash>
#include <QPair>
#include <QSet>
#include <QThreadPool>
#include <QVector>

#include <mutex>

/**
 * The captured print jobs with their numbers of pages, and the TIFF files in the same folder: the icon of a
 * name shows whether there is one, the tool tip of the pages its state.
 *
 * Pages are counted by a separate thread, so that a folder of large documents is shown at once; until then,
 * and for a file that is not a PDF, a row shows 0. Counts are cached until the file changes.
 */
class CaptureModel : public PrintCaptureModelBase
{
    Q_OBJECT

public:
    /// The TIFF file in a document's folder: its name with the extension ".TIF".
    enum Companion { NoTiff, Tiff, OlderTiff, UnreadableTiff };

    struct Document
    {
        QFileInfo file;
        QDateTime created;
        int pages{0};
        Companion companion{NoTiff};
        QFileInfo tiff; ///< The companion, or where it would be.
    };

    CaptureModel(const DateTimeConverter& converter, bool newFaxAction, QObject* parent = nullptr);
    ~CaptureModel() override;

    /// Where the companion of a document is, or would be.
    static QFileInfo companionOf(const QFileInfo& file);

    /// The rows. Waits until the pages are counted.
    QVector<Document> countedDocuments();
    /// The rows, with the pages counted so far.
    QVector<Document> documents() const;
    /// "TIFF, 48 KB"; empty without one.
    static QString companionText(const Document& document);

    /// Documents and companions, those first whose content is most likely to change: documents without a
    /// page, which may still be being written, then the newest. As they were when the folder was read.
    QFileInfoList filesToWatch() const;

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// The pages of every row have been counted.
    void counted();

protected:
    bool addEntry(QFileInfo& file) override;
    bool removeExtraFiles(QFileInfo& file) override;

private:
    struct Count
    {
        qint64 size{-1};
        QDateTime modified;
        int pages{0};
    };

    class Counter;

    void count(const QFileInfo& file);
    /// Handles the first of m_done; posted once for each.
    Q_INVOKABLE void takeDone();
    void takeCount(const QString& path, const Count& count);

    QVector<Document> m_documents;  ///< The rows; the pages are those of the base class.
    QHash<QString, int> m_rows;     ///< By path.
    QHash<QString, Count> m_counts; ///< By path; the cached counts.
    QSet<QString> m_waiting;        ///< Paths of the rows that are not counted yet.
    QIcon m_image;
    QIcon m_imageWithTiff;
    std::mutex m_doneMutex;
    QVector<QPair<QString, Count>> m_done; ///< Counts not yet handled, with paths. Guarded by the mutex.
    QThreadPool m_pool;
};
