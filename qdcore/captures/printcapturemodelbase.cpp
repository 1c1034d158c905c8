#include "printcapturemodelbase.h"

#include "actionbaritem.h"
#include "appfolder_p.h"
#include "filesremoverunnable.h"
#include "log_p.h"
#include "tsan_p.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QThreadPool>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace {

QDateTime creationTime(const QFileInfo& file)
{
    const QDateTime birth = file.birthTime();
    return birth.isValid() ? birth : file.lastModified(); // not every file system keeps it
}

/// What QDir::entryInfoList() gives, which runs an expression on each name and copies much while it sorts. A
/// filter like "*.pdf" asks for no more than the end of the names.
QFileInfoList filesOf(QDir dir)
{
    const QStringList filters = dir.nameFilters();
    const QString ending = filters.join(QLatin1Char('*')).mid(1);
    const auto isSpecial = [](QChar c) { return QStringLiteral("*?[]\\").contains(c); };
    if (!filters.value(0).startsWith(QLatin1Char('*')) ||
        std::any_of(ending.cbegin(), ending.cend(), isSpecial))
        return dir.entryInfoList();

    std::vector<std::pair<QString, QFileInfo>> found; // and what they are sorted by
    dir.setNameFilters({});
    for (QDirIterator files(dir); files.hasNext();) {
        files.next();
        const QString name = files.fileName();
        if (name.endsWith(ending, Qt::CaseInsensitive))
            found.emplace_back(name.toLower(), files.fileInfo());
    }
    std::vector<const std::pair<QString, QFileInfo>*> sorted;
    sorted.reserve(found.size());
    for (const auto& file : found)
        sorted.push_back(&file);
    std::sort(sorted.begin(), sorted.end(),
              [](const auto* left, const auto* right) { return left->first < right->first; });
    QFileInfoList result;
    result.reserve(int(sorted.size()));
    for (const auto* file : sorted)
        result.append(file->second);
    return result;
}

} // namespace

PrintCaptureModelBase::PrintCaptureModelBase(const DateTimeConverter& converter, bool newFaxAction,
                                             QObject* parent)
    : QAbstractTableModel(parent)
    , m_converter(converter)
    , m_newFaxAction(newFaxAction)
    , m_titles{tr("Document Name"), tr("Pages"), tr("Created At"), tr("Actions")}
    , m_newFaxImage(QStringLiteral(":/icons/new-fax-action-icon"))
    , m_viewImage(QStringLiteral(":/icons/view-icon"))
    , m_deleteImage(QStringLiteral(":/icons/abort"))
{
    qRegisterMetaType<ActionBarItem>("ActionBarItem");
}

PrintCaptureModelBase::~PrintCaptureModelBase() = default;

QString PrintCaptureModelBase::folder()
{
    return appFolder(QStringLiteral("/Print Captures"));
}

QDir PrintCaptureModelBase::listedFiles()
{
    return QDir(folder(), actionFilesFilter());
}

int PrintCaptureModelBase::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_entries.size();
}

int PrintCaptureModelBase::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_titles.size();
}

QVariant PrintCaptureModelBase::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= m_titles.size())
        return QVariant();
    return m_titles.at(section);
}

QVariant PrintCaptureModelBase::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size())
        return QVariant();
    const Entry& entry = m_entries.at(index.row());
    const bool isAlignment = role == Qt::TextAlignmentRole;
    if (role != Qt::DisplayRole && !isAlignment && !(role == Qt::ToolTipRole && index.column() == Name))
        return QVariant();
    switch (index.column()) {
    case Name:
        if (isAlignment)
            return QVariant();
        return role == Qt::ToolTipRole ? entry.toolTip : entry.name;
    case Pages:
        return isAlignment ? int(Qt::AlignCenter) : entry.pages;
    case CreatedAt:
        return isAlignment ? QVariant(int(Qt::AlignCenter)) : dated(index.row()).created;
    case Actions:
        return isAlignment ? QVariant(int(Qt::AlignCenter)) : QVariant::fromValue(actionBar());
    default:
        return QVariant();
    }
}

ActionBarItem PrintCaptureModelBase::actionBar() const
{
    ActionBarItem item;
    item.setSpacing(10);
    item.setMargin(10);
    if (m_newFaxAction)
        item.addAction(m_newFaxImage, tr("New Fax"));
    item.addAction(m_viewImage, tr("View"));
    item.addAction(m_deleteImage, tr("Delete"));
    return item;
}

bool PrintCaptureModelBase::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.row() >= m_entries.size() || role != Qt::EditRole ||
        value.userType() != qMetaTypeId<ActionBarItem>())
        return false;
    const int clicked = value.value<ActionBarItem>().clickedAction();
    // a copy: a receiver of the signal may refresh the table
    Entry entry = m_entries.at(index.row());
    switch (m_newFaxAction ? clicked : clicked + 1) {
    case NewFax:
        Q_EMIT signalNewFax(actionFileName(entry.file), entry.name);
        return true;
    case View:
        Q_EMIT signalView(QFileInfo(actionFileName(entry.file)));
        return true;
    case Delete:
        Q_EMIT removeEntry(entry.file);
        return false;
    default:
        return false;
    }
}

void PrintCaptureModelBase::slotUpdate()
{
    beginResetModel();
    m_entries.clear();
    m_isDated.clear();
    QFileInfoList files = filesOf(listedFiles());
    m_entries.reserve(files.size());
    m_isDated.reserve(std::size_t(files.size()));
    for (QFileInfo& file : files)
        addEntry(file);
    endResetModel();
}

bool PrintCaptureModelBase::removePrintCapture(int row)
{
    if (row < 0 || row >= m_entries.size())
        throw std::out_of_range("invalid vector<T> subscript");
    QFileInfo file = m_entries.at(row).file;
    if (!QFile::remove(file.filePath()))
        QD_LOG(WARNING, tr("Can't delete file ", "Logger") + file.filePath());
    return removeExtraFiles(file);
}

bool PrintCaptureModelBase::removeRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid()) // a document has no rows below it
        return false;
    bool result = true;
    for (int i = row; i < row + count; ++i)
        result = removePrintCapture(i) && result;
    return result;
}

bool PrintCaptureModelBase::removePrintCapture(const QFileInfo& file)
{
    for (int row = 0; row < m_entries.size(); ++row) {
        if (m_entries.at(row).file.filePath() != file.filePath())
            continue;
        // The refresh shows the real state also when the file could not be deleted. Proxies have to cope with
        // this reset within a removal: SortFilterTimeProxyModel does.
        beginRemoveRows(QModelIndex(), row, row);
        const bool result = removeRows(row, 1);
        slotUpdate();
        endRemoveRows();
        return result;
    }
    return false;
}

void PrintCaptureModelBase::deleteAll()
{
    auto* remover = new FilesRemoveRunnable(listedFiles());
    connect(remover, &FilesRemoveRunnable::signalRemovingComplete, this, &PrintCaptureModelBase::slotUpdate,
            Qt::QueuedConnection);
    connect(remover, &FilesRemoveRunnable::signalRemovingComplete, this,
            &PrintCaptureModelBase::signalDeleteAllComlete, Qt::QueuedConnection);
    tsanHandOver(remover);
    QThreadPool::globalInstance()->start(remover);
}

QString PrintCaptureModelBase::actionFileName(QFileInfo& file)
{
    return file.path() + QLatin1Char('/') + file.fileName();
}

bool PrintCaptureModelBase::removeExtraFiles(QFileInfo&)
{
    return true;
}

QString PrintCaptureModelBase::actionFilesFilter()
{
    return QStringLiteral("*.pdf");
}

bool PrintCaptureModelBase::addEntry(QFileInfo& file)
{
    // The row is what the file is now, also when it is gone or another later on. With its size the time is
    // read, and kept with it.
    file.size();
    appendEntry(undated(file));
    m_isDated.back() = false;
    return true;
}

PrintCaptureModelBase::Entry PrintCaptureModelBase::undated(const QFileInfo& file)
{
    Entry entry;
    entry.file = file;
    entry.name = file.fileName();
    entry.toolTip = entry.name;
    return entry;
}

PrintCaptureModelBase::Entry PrintCaptureModelBase::entryOf(const QFileInfo& file) const
{
    Entry entry = undated(file);
    entry.created = creationTime(file);
    return entry;
}

const PrintCaptureModelBase::Entry& PrintCaptureModelBase::dated(int row) const
{
    const auto at = std::size_t(row);
    if (!m_isDated.at(at)) {
        m_isDated.at(at) = true;
        m_entries[row].created = creationTime(m_entries.at(row).file);
    }
    return m_entries.at(row);
}

const QVector<PrintCaptureModelBase::Entry>& PrintCaptureModelBase::entries() const
{
    for (int row = 0; row < m_entries.size(); ++row)
        dated(row);
    return m_entries;
}

void PrintCaptureModelBase::appendEntry(const Entry& entry)
{
    m_entries.append(entry);
    m_isDated.push_back(true);
}

void PrintCaptureModelBase::setPages(int row, int pages)
{
    if (row < 0 || row >= m_entries.size() || m_entries.at(row).pages == pages)
        return;
    m_entries[row].pages = pages;
    Q_EMIT dataChanged(index(row, Pages), index(row, Pages), {Qt::DisplayRole});
}
