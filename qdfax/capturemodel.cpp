#include "capturemodel.h"

#include "displaytext.h"
#include "pdfpages.h"
#include "text.h"
#include "tsan_p.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QRunnable>

#include <algorithm>
#include <tuple>

namespace {

CaptureModel::Companion stateOf(const QFileInfo& companion, const QFileInfo& file)
{
    if (!companion.exists())
        return CaptureModel::NoTiff;
    if (!companion.isFile() || !companion.isReadable())
        return CaptureModel::UnreadableTiff;
    return companion.lastModified() < file.lastModified() ? CaptureModel::OlderTiff : CaptureModel::Tiff;
}

QIcon imageOf(const QString& name)
{
    QIcon image(name);
    image.addFile(name + QStringLiteral("-selected"), QSize(), QIcon::Selected);
    return image;
}

} // namespace

/// Counts the pages of one file on the model's pool.
class CaptureModel::Counter : public QRunnable
{
public:
    Counter(CaptureModel& model, QString path, Count count)
        : m_model(model)
        , m_path(std::move(path))
        , m_count(std::move(count))
    {}

    void run() override
    {
        tsanTakeOver(this);
        m_count.pages = pdfPages(m_path);
        {
            const std::lock_guard<std::mutex> lock(m_model.m_doneMutex);
            m_model.m_done.append({m_path, m_count});
        }
        QMetaObject::invokeMethod(&m_model, "takeDone", Qt::QueuedConnection);
        tsanHandOver(&m_model);
    }

private:
    CaptureModel& m_model;
    QString m_path;
    Count m_count;
};

/// A static library's resources are linked by name.
static void addResources()
{
    Q_INIT_RESOURCE(qdfax);
}

CaptureModel::CaptureModel(const DateTimeConverter& converter, bool newFaxAction, QObject* parent)
    : PrintCaptureModelBase(converter, newFaxAction, parent)
{
    addResources();
    m_image = imageOf(QStringLiteral(":/qdfax/document"));
    m_imageWithTiff = imageOf(QStringLiteral(":/qdfax/document-tiff"));
    m_pool.setMaxThreadCount(1);
    connect(this, &QAbstractItemModel::modelAboutToBeReset, this, [this] {
        m_pool.clear();
        m_documents.clear();
        m_rows.clear();
        m_waiting.clear();
    });
    connect(this, &QAbstractItemModel::modelReset, this, [this] {
        for (auto known = m_counts.begin(); known != m_counts.end();) {
            if (m_rows.contains(known.key()))
                ++known;
            else
                known = m_counts.erase(known);
        }
        if (m_waiting.isEmpty())
            Q_EMIT counted();
    });
}

QFileInfo CaptureModel::companionOf(const QFileInfo& file)
{
    return QFileInfo(file.dir().filePath(file.completeBaseName() + QStringLiteral(".TIF")));
}

CaptureModel::~CaptureModel()
{
    m_pool.clear();
    m_pool.waitForDone();
    tsanTakeOver(this);
}

bool CaptureModel::addEntry(QFileInfo& file)
{
    Entry entry = entryOf(file);
    Document document;
    document.file = file;
    document.created = entry.created;
    document.tiff = companionOf(file);
    document.companion = stateOf(document.tiff, file);

    const Count known = m_counts.value(file.filePath());
    if (known.size == file.size() && known.modified == file.lastModified())
        entry.pages = known.pages;
    else
        count(file);
    m_rows.insert(file.filePath(), m_documents.size());
    m_documents.append(document);
    appendEntry(entry);
    return true;
}

void CaptureModel::count(const QFileInfo& file)
{
    const QString path = file.filePath();
    m_waiting.insert(path);
    Count count;
    count.size = file.size();
    count.modified = file.lastModified();
    auto* counter = new Counter(*this, path, count);
    tsanHandOver(counter);
    m_pool.start(counter);
}

void CaptureModel::takeDone()
{
    QPair<QString, Count> done;
    {
        const std::lock_guard<std::mutex> lock(m_doneMutex);
        done = m_done.takeFirst();
    }
    takeCount(done.first, done.second);
}

void CaptureModel::takeCount(const QString& path, const Count& count)
{
    m_counts.insert(path, count);
    // the table may have been refreshed meanwhile, and the file replaced
    const int row = m_rows.value(path, -1);
    if (row < 0 || m_documents.at(row).file.size() != count.size ||
        m_documents.at(row).file.lastModified() != count.modified)
        return;
    setPages(row, count.pages);
    if (m_waiting.remove(path) && m_waiting.isEmpty())
        Q_EMIT counted();
}

QVector<CaptureModel::Document> CaptureModel::documents() const
{
    QVector<Document> documents = m_documents;
    const QVector<Entry>& rows = entries();
    for (int row = 0; row < documents.size(); ++row)
        documents[row].pages = rows.at(row).pages;
    return documents;
}

QVector<CaptureModel::Document> CaptureModel::countedDocuments()
{
    if (!m_waiting.isEmpty()) {
        QEventLoop loop;
        connect(this, &CaptureModel::counted, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return documents();
}

QFileInfoList CaptureModel::filesToWatch() const
{
    QVector<Document> likely = documents();
    std::stable_sort(likely.begin(), likely.end(), [](const Document& a, const Document& b) {
        return std::make_tuple(a.pages > 0, b.created) < std::make_tuple(b.pages > 0, a.created);
    });
    QFileInfoList files;
    for (const Document& document : qAsConst(likely)) {
        files.append(document.file);
        if (document.companion != NoTiff)
            files.append(document.tiff);
    }
    return files;
}

QString CaptureModel::companionText(const Document& document)
{
    const QString size = sizeText(document.tiff.size());
    switch (document.companion) {
    case Tiff:
        return QStringLiteral("TIFF, %1").arg(size);
    case OlderTiff:
        return Text::tr("TIFF, %1, older than the document").arg(size);
    case UnreadableTiff:
        return Text::tr("TIFF that cannot be read");
    case NoTiff:
        break;
    }
    return QString();
}

QVariant CaptureModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_documents.size())
        return QVariant();
    const Document& document = m_documents.at(index.row());
    if (role == Qt::DecorationRole && index.column() == 0)
        return document.companion == NoTiff ? m_image : m_imageWithTiff;
    if (role == Qt::DisplayRole && index.column() == 0)
        return printable(document.file.fileName().replace(QLatin1Char('\n'), QLatin1Char(' '))); // one line
    if (role == Qt::ToolTipRole && index.column() == 1 && document.companion != NoTiff)
        return companionText(document);
    return PrintCaptureModelBase::data(index, role);
}

bool CaptureModel::removeExtraFiles(QFileInfo& file)
{
    const QFileInfo companion = companionOf(file);
    return !companion.exists() || QFile::remove(companion.filePath());
}
