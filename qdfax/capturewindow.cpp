#include "capturewindow.h"

#include "capturemodel.h"
#include "text.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPointer>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>

CaptureWindow::CaptureWindow(CaptureModel& model, const DateTimeConverter& converter, QSettings& settings)
    : PrintCaptureBase(&model, converter, settings, false)
    , m_model(model)
    , m_watch(CaptureModel::folder(), this)
    , m_summary(new QLabel(this))
    , m_table(findChild<QTableView*>(QStringLiteral("tableViewPrintCapture")))
{
    setWindowIcon(QIcon(QStringLiteral(":/icons/new-fax-action-icon")));
    hidePrinterStatus();
    // space for names rather than around the actions; no header, since rows have no titles
    m_table->horizontalHeader()->setStretchLastSection(false);
    m_table->verticalHeader()->hide();
    // a row is one line high; the start and end of a long name are more informative than the start alone
    m_table->setWordWrap(false);
    m_table->setTextElideMode(Qt::ElideMiddle);
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
    // while everything is being deleted, a refresh would be outdated at once; one follows at the end
    if (!m_table->isEnabled())
        return;
    // press, release and the queued signal of a click have to find the same row: no refresh in between
    if (QApplication::mouseButtons() != Qt::NoButton)
        return m_watch.note();
    const QPointer<CaptureWindow> self(this);
    QCoreApplication::sendPostedEvents(m_table->itemDelegate(), QEvent::MetaCall);
    if (self) // a click may run a dialog, during which the application may end
        refresh();
}

void CaptureWindow::refresh()
{
    // the tool tip is the unchanged name, which is unique
    const auto nameOf = [](const QModelIndex& index) {
        return index.sibling(index.row(), 0).data(Qt::ToolTipRole).toString();
    };
    const QItemSelectionModel* before = m_table->selectionModel();
    const QString current = nameOf(before->currentIndex());
    const int column = before->currentIndex().column();
    const QString selected = nameOf(before->selectedRows().value(0));
    const int scrolled = m_table->verticalScrollBar()->value();

    slotUpdate();

    m_table->doItemsLayout();
    const bool autoScroll = m_table->hasAutoScroll();
    m_table->setAutoScroll(false);
    for (int row = 0; row < m_table->model()->rowCount(); ++row) {
        const QModelIndex index = m_table->model()->index(row, 0);
        const QString name = nameOf(index);
        if (name == current)
            m_table->selectionModel()->setCurrentIndex(index.siblingAtColumn(column),
                                                       QItemSelectionModel::NoUpdate);
        if (name == selected)
            m_table->selectionModel()->select(index, QItemSelectionModel::ClearAndSelect |
                                                         QItemSelectionModel::Rows);
    }
    m_table->setAutoScroll(autoScroll);
    m_table->verticalScrollBar()->setValue(scrolled);
}

QString captureSummary(const CaptureModel& model)
{
    const auto documents = model.documents();
    if (documents.isEmpty())
        return Text::tr("No documents");
    int pages = 0;
    for (const CaptureModel::Document& document : documents)
        pages += document.pages;
    const auto tiffs = std::count_if(documents.cbegin(), documents.cend(), [](const auto& document) {
        return document.companion != CaptureModel::NoTiff;
    });
    QString text = Text::tr("%n documents", "", documents.size()) + QStringLiteral(", ") +
                   Text::tr("%n pages", "", pages);
    if (tiffs > 0)
        text += Text::tr(", %1 with a TIFF file").arg(tiffs);
    return text;
}
