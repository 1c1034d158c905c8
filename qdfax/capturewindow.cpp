#include "capturewindow.h"

#include "capturemodel.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QTableView>

#include <algorithm>

namespace {

QString counted(int number, const QString& one, const QString& several)
{
    return QStringLiteral("%1 %2").arg(number).arg(number == 1 ? one : several);
}

} // namespace

CaptureWindow::CaptureWindow(CaptureModel& model, const DateTimeConverter& converter, QSettings& settings)
    : PrintCaptureBase(&model, converter, settings, false)
    , m_model(model)
    , m_watch(CaptureModel::folder(), this)
    , m_summary(new QLabel(this))
{
    setWindowIcon(QIcon(QStringLiteral(":/icons/new-fax-action-icon")));
    hidePrinterStatus();
    // room for names rather than around the actions, and no header for rows that have no titles
    auto* table = findChild<QTableView*>(QStringLiteral("tableViewPrintCapture"));
    table->horizontalHeader()->setStretchLastSection(false);
    table->verticalHeader()->hide();
    findChild<QBoxLayout*>(QStringLiteral("horizontalLayout"))->addWidget(m_summary);

    connect(&m_watch, &FolderWatch::changed, this, &CaptureWindow::follow);
    connect(&model, &QAbstractItemModel::modelReset, this, &CaptureWindow::summarise);
    connect(&model, &CaptureModel::counted, this, &CaptureWindow::summarise);
    summarise();
}

void CaptureWindow::summarise()
{
    m_summary->setText(captureSummary(m_model));
    m_watch.setFiles(m_model.filesToWatch());
}

void CaptureWindow::follow()
{
    // while everything is being deleted, each look at the folder would be of the past; the end has its own
    if (findChild<QTableView*>(QStringLiteral("tableViewPrintCapture"))->isEnabled())
        slotUpdate();
}

QString captureSummary(const CaptureModel& model)
{
    const auto documents = model.documents();
    if (documents.isEmpty())
        return QStringLiteral("No documents");
    int pages = 0;
    for (const CaptureModel::Document& document : documents)
        pages += document.pages;
    const auto tiffs = std::count_if(documents.cbegin(), documents.cend(), [](const auto& document) {
        return document.companion != CaptureModel::NoTiff;
    });
    QString text = counted(documents.size(), QStringLiteral("document"), QStringLiteral("documents")) +
                   QStringLiteral(", ") + counted(pages, QStringLiteral("page"), QStringLiteral("pages"));
    if (tiffs > 0)
        text += QStringLiteral(", %1 with a TIFF file").arg(tiffs);
    return text;
}
