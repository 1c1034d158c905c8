#pragma once

#include "printcapturemodelbase.h"

#include <QHash>
#include <QPair>
#include <QSet>
#include <QThreadPool>
#include <QVector>

#include <mutex>

/**
 * The captured print jobs with their pages counted, and with the TIFF files that lie beside them: the image
 * of a name tells whether there is one, the tool tip of the pages in which state it is.
 *
 * Pages are counted by a thread of its own, so that a folder of large documents is shown at once; until then,
 * and for what is no PDF, a row shows 0. What was counted is not counted again until the file changes.
 */
class CaptureModel : public PrintCaptureModelBase
{
    Q_OBJECT

public:
    /// What lies beside a document under its name with the ending ".TIF".
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
    /// The rows as they stand.
    QVector<Document> documents() const;
    /// "TIFF, 48 KB"; empty without one.
    static QString companionText(const Document& document);

    /// Documents and companions, those first that are most likely to change where they are: documents on
    /// which no page was found, which may still be written, then the newest. As they were when the folder was
    /// read.
    QFileInfoList filesToWatch() const;

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// Every row's pages are known.
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
    /// The first of m_done; posted once for each.
    Q_INVOKABLE void takeDone();
    void takeCount(const QString& path, const Count& count);

    QVector<Document> m_documents;  ///< The rows; the pages are those of the base class.
    QHash<QString, int> m_rows;     ///< By path.
    QHash<QString, Count> m_counts; ///< By path; what is known of the rows.
    QSet<QString> m_waiting;        ///< Paths of the rows that are not counted yet.
    QIcon m_image;
    QIcon m_imageWithTiff;
    std::mutex m_doneMutex;
    QVector<QPair<QString, Count>> m_done; ///< What was counted and not taken, with paths. Guarded.
    QThreadPool m_pool;
};
