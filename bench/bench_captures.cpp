// A refresh of the captured print jobs, compared with listing their folder and asking for the time of each
// file.

#include "bench.h"
#include "datetimeconverter.h"
#include "printcapturemodelbase.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    Bench bench(argc, argv);
    if (!bench.wants("captures"))
        return bench.exitCode();

    const int count = bench.size(5000);
    const QTemporaryDir dir;
    qputenv("APPDATA", dir.path().toLocal8Bit());
    const QString folder = PrintCaptureModelBase::folder();
    QDir().mkpath(folder);
    int files = 0;
    const auto addFile = [&] {
        QFile file(folder + QStringLiteral("/Document %1.pdf").arg(++files));
        if (!file.open(QIODevice::WriteOnly) || file.write("%PDF-1.4\n") != 9)
            fail("captured file");
    };
    while (files < count)
        addFile();

    const DateTimeConverter converter;
    bench.ratio(
        "captures", 1.15,
        [&](int) {
            addFile();
            PrintCaptureModelBase model(converter, true);
            const double time = milliseconds([&] { model.slotUpdate(); });
            if (model.rowCount() != files)
                fail("captures");
            return time;
        },
        [&](int) {
            addFile();
            QFileInfoList list;
            qint64 total = 0;
            const double time = milliseconds([&] {
                list = QDir(folder, QStringLiteral("*.pdf")).entryInfoList();
                for (const QFileInfo& info : qAsConst(list))
                    total += info.size();
            });
            if (list.size() != files || total == 0)
                fail("plain captures");
            return time;
        });
    return bench.exitCode();
}
