// Opens the window of captured print jobs over a folder of its own and takes its picture off the screen.
//
// Usage: pictures light|dark|empty FILE.png

#include "actionbaritemdelegate.h"
#include "capturemodel.h"
#include "capturewindow.h"
#include "datetimeconverter.h"

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QPainter>
#include <QPdfWriter>
#include <QScreen>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <cstdio>

namespace {

struct Sample
{
    const char* name;
    int pages;
    int minutes; ///< Before the newest.
    bool hasTiff;
};

const Sample samples[] = {
    {"Offer 2024-117, Poe & Sons.pdf", 3, 0, true},
    {"Annual report of the working group with all appendices.pdf", 48, 42, false},
    {"scan0007.pdf", 1, 131, true},
    {"Lieferschein Nr. 4711 – Größe XL.pdf", 2, 1500, false},
    {"<b>not bold.pdf", 1, 1622, false},
    {"name with\na line break.pdf", 2, 2950, false},
    {"unterschriebener-vertrag-ohne-ein-einziges-leerzeichen-im-namen.pdf", 12, 4400, true},
    {"no PDF at all.pdf", 0, 5871, false},
};

/// Documents have the times of the samples, and not that of the picture.
class SampleModel : public CaptureModel
{
public:
    using CaptureModel::CaptureModel;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override
    {
        if (index.isValid() && index.column() == 2 && role == Qt::DisplayRole)
            return documents().at(index.row()).file.lastModified();
        return CaptureModel::data(index, role);
    }
};

void makeSamples()
{
    const QDir folder(CaptureModel::folder());
    const QDateTime newest(QDate(2024, 11, 22), QTime(16, 5));
    for (const Sample& sample : samples) {
        const QString path = folder.filePath(QString::fromUtf8(sample.name));
        if (sample.pages > 0) {
            QPdfWriter writer(path);
            QPainter painter(&writer);
            for (int page = 1; page < sample.pages; ++page)
                writer.newPage();
        }
        QStringList files{path};
        if (sample.hasTiff)
            files.append(folder.filePath(QFileInfo(path).completeBaseName() + QStringLiteral(".TIF")));
        for (const QString& name : qAsConst(files)) {
            QFile file(name);
            if (file.open(QIODevice::ReadWrite))
                file.setFileTime(newest.addSecs(-60 * sample.minutes), QFileDevice::FileModificationTime);
        }
    }
}

QPalette darkPalette()
{
    QPalette palette(QColor(0x35, 0x35, 0x35), QColor(0x35, 0x35, 0x35));
    palette.setColor(QPalette::Base, QColor(0x23, 0x23, 0x23));
    palette.setColor(QPalette::AlternateBase, QColor(0x2d, 0x2d, 0x2d));
    palette.setColor(QPalette::Highlight, QColor(0x2a, 0x6f, 0xb8));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(role, QColor(0xe6, 0xe6, 0xe6));
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x80, 0x80));
    }
    return palette;
}

/// Puts the mouse on the first document's first action, and selects another one.
void pose(QWidget& window)
{
    auto* table = window.findChild<QTableView*>(QStringLiteral("tableViewPrintCapture"));
    if (table->model()->rowCount() < 3)
        return;
    table->selectRow(2);
    const auto* delegate = qobject_cast<ActionBarItemDelegate*>(table->itemDelegate());
    const QPoint at = delegate->actionRect(table->model()->index(0, 3), 0).center();
    QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(table->viewport(), &move);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("Usage: pictures light|dark|empty FILE.png\n", stderr);
        return 1;
    }
    QApplication::setStyle(QStringLiteral("Fusion"));
    if (arguments.at(1) == QLatin1String("dark"))
        QApplication::setPalette(darkPalette());

    const QTemporaryDir appData;
    qputenv("APPDATA", appData.path().toUtf8());
    QDir().mkpath(CaptureModel::folder());
    if (arguments.at(1) != QLatin1String("empty"))
        makeSamples();

    DateTimeConverter converter;
    converter.setFormat(QStringLiteral("yyyy-MM-dd HH:mm"));
    QSettings settings(appData.filePath(QStringLiteral("window.ini")), QSettings::IniFormat);
    SampleModel model(converter, true);
    model.slotUpdate();
    model.countedDocuments();
    auto* window = new CaptureWindow(model, converter, settings); // deletes itself
    window->resize(760, 280);
    window->show();
    pose(*window);

    bool isSaved = false;
    QTimer::singleShot(500, window, [&] {
        const QPoint corner = window->mapToGlobal(QPoint(0, 0));
        isSaved = window->screen()
                      ->grabWindow(0, corner.x(), corner.y(), window->width(), window->height())
                      .save(arguments.at(2));
        window->close();
    });
    QObject::connect(window, &QObject::destroyed, &application, &QCoreApplication::quit);
    QApplication::exec();
    return isSaved ? 0 : 1;
}
