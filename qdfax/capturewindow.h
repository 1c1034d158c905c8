#pragma once

#include "folderwatch.h"
#include "printcapturebase.h"

#include <QString>

class CaptureModel;
class QLabel;
class QTableView;

/**
 * The window of captured print jobs as qdfax opens it: refreshes when the folder changes, though not while a
 * mouse button is down, and shows totals below the table in place of a printer's state, which qdfax does not
 * know.
 */
class CaptureWindow : public PrintCaptureBase
{
    Q_OBJECT

public:
    CaptureWindow(CaptureModel& model, const DateTimeConverter& converter, QSettings& settings);

private:
    void summarise();
    void follow();
    /// Reads the folder; selection, current row and scroll position stay with their documents.
    void refresh();

    CaptureModel& m_model;
    FolderWatch m_watch;
    QLabel* m_summary;
    QTableView* m_table;
};

/// "3 documents, 12 pages, 1 with a TIFF file".
QString captureSummary(const CaptureModel& model);
