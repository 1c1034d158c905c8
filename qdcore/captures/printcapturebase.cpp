#include "printcapturebase.h"

#include "actionbarheaderview.h"
#include "actionbaritemdelegate.h"
#include "cursoroverridehelper.h"
#include "log_p.h"
#include "printcapturemodelbase.h"
#include "sortfiltertimeproxymodel.h"
#include "ui_printcapturebase.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QPointer>
#include <QSettings>
#include <QUrl>

namespace {

const int pagesColumn = 1;
const int timeColumn = 2;

/// The settings' group of this window, for as long as this lives.
class WindowGroup
{
public:
    explicit WindowGroup(QSettings& settings)
        : m_settings(settings)
    {
        m_settings.beginGroup(QStringLiteral("/Settings"));
        m_settings.beginGroup(QStringLiteral("/PrintCapturesWindow"));
    }
    ~WindowGroup()
    {
        m_settings.endGroup();
        m_settings.endGroup();
    }
    Q_DISABLE_COPY(WindowGroup)

private:
    QSettings& m_settings;
};

} // namespace

PrintCaptureBase::PrintCaptureBase(PrintCaptureModelBase* model, const DateTimeConverter& converter,
                                   QSettings& settings, bool, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::PrintCaptureBase>())
    , m_model(model)
    , m_settings(settings)
{
    const CursorOverrideHelper waiting;
    qRegisterMetaType<PrintCaptureBase::PrinterStatus>("PrintCaptureBase::PrinterStatus");

    m_ui->setupUi(this);
    m_status = m_ui->status;
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);
    loadSettings();
    setUpTable(converter);
    connect(m_ui->pushButtonDeleteAll, &QPushButton::clicked, this, &PrintCaptureBase::slotDeleteAll);
    connect(m_ui->pushButtonClose, &QPushButton::clicked, this, &PrintCaptureBase::close);
    slotUpdateDeleteAllButton();
}

PrintCaptureBase::~PrintCaptureBase()
{
    saveSettings();
}

void PrintCaptureBase::setUpTable(const DateTimeConverter& converter)
{
    QTableView* table = m_ui->tableViewPrintCapture;
    table->setItemDelegate(new ActionBarItemDelegate(table));

    m_proxy = new SortFilterTimeProxyModel(converter, timeColumn, this);
    m_proxy->setFilterKeyColumn(timeColumn);
    m_proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_proxy->setSortCaseSensitivity(Qt::CaseInsensitive);

    auto* header = new ActionBarHeaderView(Qt::Horizontal, table);
    header->setSectionsClickable(true);
    header->setActionColumn(m_model->columnCount() - 1);
    // the properties of the form's own header, which is replaced
    const QHeaderView* formHeader = table->horizontalHeader();
    header->setHighlightSections(formHeader->highlightSections());
    header->setSortIndicatorShown(formHeader->isSortIndicatorShown());
    header->setStretchLastSection(formHeader->stretchLastSection());
    header->setProperty("showSortIndicator", formHeader->property("showSortIndicator"));
    table->setHorizontalHeader(header);

    connect(m_model, &QAbstractItemModel::modelReset, this, &PrintCaptureBase::slotUpdateDeleteAllButton);
    connect(m_model, &PrintCaptureModelBase::signalNewFax, this, &PrintCaptureBase::slotNewFax);
    connect(m_model, &PrintCaptureModelBase::signalView, this, &PrintCaptureBase::slotViewFile);
    connect(m_model, &PrintCaptureModelBase::removeEntry, this, &PrintCaptureBase::slotRemoveEntry);
    connect(m_model, &PrintCaptureModelBase::signalDeleteAllComlete, this,
            &PrintCaptureBase::slotDeleteAllComplete);
    connect(table, &QTableView::clicked, this, &PrintCaptureBase::slotUpdateDeleteAllButton);

    m_proxy->setSourceModel(m_model);
    table->setModel(m_proxy);
    table->setFocusPolicy(Qt::NoFocus);

    header->resizeSection(pagesColumn, 50);
    header->resizeSection(timeColumn, 150);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column = 1; column < header->count(); ++column)
        header->setSectionResizeMode(column, QHeaderView::Fixed);
    table->sortByColumn(timeColumn, Qt::DescendingOrder);
}

void PrintCaptureBase::hidePagesColumn()
{
    m_ui->tableViewPrintCapture->setColumnHidden(pagesColumn, true);
    m_ui->tableViewPrintCapture->setColumnWidth(timeColumn, 200);
}

void PrintCaptureBase::hidePrinterStatus()
{
    m_ui->label->hide();
    m_status->hide();
}

void PrintCaptureBase::loadSettings()
{
    const WindowGroup group(m_settings);
    restoreGeometry(m_settings.value(QStringLiteral("geometry")).toByteArray());
}

void PrintCaptureBase::saveSettings()
{
    const WindowGroup group(m_settings);
    m_settings.setValue(QStringLiteral("geometry"), saveGeometry());
}

void PrintCaptureBase::closeEvent(QCloseEvent* event)
{
    deleteLater();
    QDialog::closeEvent(event);
    event->accept();
}

void PrintCaptureBase::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        event->ignore();
    else
        QDialog::keyPressEvent(event);
}

void PrintCaptureBase::slotUpdate()
{
    m_model->slotUpdate();
    slotUpdateDeleteAllButton();
}

void PrintCaptureBase::slotUpdateDeleteAllButton()
{
    m_ui->pushButtonDeleteAll->setEnabled(m_model->rowCount() > 0 && !m_printerBusy && !m_deletingAll);
}

void PrintCaptureBase::slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus printerStatus)
{
    switch (printerStatus) {
    case PrinterPrinting:
        m_printerBusy = true;
        break;
    case PrinterIdle:
    case PrinterFinished:
    case PrinterFailed:
        m_printerBusy = false;
        break;
    default:
        break;
    }
    slotUpdateDeleteAllButton();
}

std::optional<int> PrintCaptureBase::showBox(QMessageBox::Icon icon, const QString& title,
                                             const QString& text, QMessageBox::StandardButtons buttons)
{
    const QPointer<PrintCaptureBase> self(this);
    QPointer<QMessageBox> box = new QMessageBox(icon, title, text, buttons, this);
    box->setTextFormat(Qt::PlainText); // names of files may look like markup
    if (buttons.testFlag(QMessageBox::No))
        box->setDefaultButton(QMessageBox::No);
    const int answer = box->exec();
    delete box;
    if (!self) // the window may be destroyed while the box is open
        return std::nullopt;
    return answer;
}

bool PrintCaptureBase::isConfirmed(const QString& title, const QString& question)
{
    const auto answer = showBox(QMessageBox::Warning, title, question, QMessageBox::Yes | QMessageBox::No);
    return answer && *answer != QMessageBox::No;
}

void PrintCaptureBase::complain(const QString& text)
{
    showBox(QMessageBox::Critical, tr("Quendra Client"), text, QMessageBox::Ok);
}

void PrintCaptureBase::slotRemoveEntry(QFileInfo file)
{
    if (isConfirmed(tr("Quindra Client"), tr("Are you sure you want to delete the document?")))
        m_model->removePrintCapture(file);
}

void PrintCaptureBase::slotDeleteAll()
{
    if (!isConfirmed(tr("Quendra Client"), tr("Are you sure you want to delete all the print captures?")))
        return;
    auto* waiting = new CursorOverrideHelper(this);
    connect(m_model, &PrintCaptureModelBase::signalDeleteAllComlete, waiting, &QObject::deleteLater);
    m_deletingAll = true;
    m_ui->tableViewPrintCapture->setEnabled(false);
    m_ui->pushButtonDeleteAll->setEnabled(false);
    m_model->deleteAll();
}

void PrintCaptureBase::slotDeleteAllComplete(bool)
{
    m_deletingAll = false;
    m_ui->tableViewPrintCapture->setEnabled(true);
    slotUpdateDeleteAllButton();
}

void PrintCaptureBase::slotNewFax(const QString& fileName, const QString& documentName)
{
    if (QFileInfo::exists(fileName)) {
        const QPointer<PrintCaptureBase> self(this);
        Q_EMIT signalSendNewFax(fileName, documentName);
        if (self)
            close();
        return;
    }
    complain(tr("Failed to create new fax.\r\nThe file %1 cannot be found.").arg(fileName));
}

void PrintCaptureBase::slotViewFile(QFileInfo file)
{
    if (!QFileInfo::exists(file.filePath())) {
        complain(tr("Failed to open file.\r\nThe file %1 cannot be found.").arg(file.filePath()));
        return;
    }
    const QString path = file.absoluteFilePath();
    if (QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return;
    QD_LOG(ERROR, tr("Failed to open file: ", "Logger") + path);
    complain(
        tr("This file does not have a program associated with it and cannot be opened. Install a program "
           "to open TIFF files, or create a file association for TIFF files."));
}
