#pragma once

#include "qdcore_global.h"

#include <QDialog>
#include <QFileInfo>
#include <QMessageBox>

#include <memory>
#include <optional>

class DateTimeConverter;
class PrintCaptureModelBase;
class QSettings;
class SortFilterTimeProxyModel;

QT_BEGIN_NAMESPACE
class QLabel;
namespace Ui {
class PrintCaptureBase;
}
QT_END_NAMESPACE

/**
 * The window that lists captured print jobs, with actions for each.
 *
 * It opens modal, sorted by time, the newest first; Escape does not close it. Enter presses "Close", or
 * "Delete All" while that has the focus. Widgets can be found by their object names: "tableViewPrintCapture",
 * "label", "status", "pushButtonDeleteAll", "pushButtonClose".
 *
 * Make it with new: it deletes itself when it is closed. Model, converter and settings belong to the
 * application and must outlive it. It does not read the folder by itself: call the model's slotUpdate(), or
 * slotUpdate() here. For the thread of the user interface.
 */
class QDCORE_EXPORT PrintCaptureBase : public QDialog
{
    Q_OBJECT

public:
    /// What the capture printer does. Other values may come; they change nothing.
    enum PrinterStatus : int {
        PrinterUnknown = 0,  ///< Changes nothing.
        PrinterPrinting = 1, ///< Busy: "Delete All" is not offered.
        PrinterIdle = 2,     ///< No longer busy.
        PrinterWaiting = 3,  ///< Changes nothing.
        PrinterPaused = 4,   ///< Changes nothing.
        PrinterFinished = 5, ///< No longer busy.
        PrinterFailed = 6    ///< No longer busy.
    };
    Q_ENUM(PrinterStatus)

    /// The flag is accepted for subclasses, and not used here.
    PrintCaptureBase(PrintCaptureModelBase* model, const DateTimeConverter& converter, QSettings& settings,
                     bool, QWidget* parent = nullptr);
    /// Saves the geometry.
    ~PrintCaptureBase() override;

Q_SIGNALS:
    /// A new fax shall be made of this file, which exists. The window closes.
    void signalSendNewFax(const QString& fileName, const QString& documentName);

public Q_SLOTS:
    /// The application reports what the capture printer does.
    void slotPrinterStatusChanged(PrintCaptureBase::PrinterStatus printerStatus);
    /// Asks, and deletes all documents. Table and button are disabled until that has ended.
    void slotDeleteAll();
    /// "Delete All" is enabled while there are rows, the printer is not busy, and nothing is being deleted.
    void slotUpdateDeleteAllButton();
    /// Emits signalSendNewFax() and closes; shows an error when the file is missing.
    void slotNewFax(const QString& fileName, const QString& documentName);
    /// Opens the file with the desktop's program for it; shows an error when that fails.
    void slotViewFile(QFileInfo file);
    /// Asks, and deletes the document.
    void slotRemoveEntry(QFileInfo file);
    /// Reads the folder again.
    void slotUpdate();
    /// Enables table and button again. The argument is not used.
    void slotDeleteAllComplete(bool result);

protected:
    /// For applications that do not count pages.
    void hidePagesColumn();
    /// For applications that do not follow a printer.
    void hidePrinterStatus();
    //@{
    /// The window's geometry, from and to the settings given to the constructor. Done by the constructor and
    /// the destructor.
    void loadSettings();
    void saveSettings();
    //@}

    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Shows a box and returns the answer; nothing when this window was destroyed meanwhile.
    std::optional<int> showBox(QMessageBox::Icon icon, const QString& title, const QString& text,
                               QMessageBox::StandardButtons buttons);
    bool isConfirmed(const QString& title, const QString& question);
    void complain(const QString& text);
    void setUpTable(const DateTimeConverter& converter);

    std::unique_ptr<Ui::PrintCaptureBase> m_ui;
    PrintCaptureModelBase* m_model;
    SortFilterTimeProxyModel* m_proxy{nullptr};
    QLabel* m_status{nullptr};
    QSettings& m_settings;
    bool m_printerBusy{false};
    bool m_deletingAll{false};
};
