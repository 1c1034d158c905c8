#pragma once

#include "folderwatch.h"
#include "printcapturebase.h"

#include <QString>

class CaptureModel;
class QLabel;

/**
 * The window of captured print jobs as qdfax opens it: follows the folder, and says below the table how much
 * there is, in place of the state of a printer, which qdfax does not know.
 */
class CaptureWindow : public PrintCaptureBase
{
    Q_OBJECT

public:
    CaptureWindow(CaptureModel& model, const DateTimeConverter& converter, QSettings& settings);

private:
    void summarise();
    void follow();

    CaptureModel& m_model;
    FolderWatch m_watch;
    QLabel* m_summary;
};

/// "3 documents, 12 pages, 1 with a TIFF file".
QString captureSummary(const CaptureModel& model);
