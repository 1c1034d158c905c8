// Runs inputs through the fuzz targets without a fuzzer, with any compiler: the corpora in every test run, or
// what a fuzzer has found.
//
// Usage: fuzzcases FOLDER           every file of every target's folder in it
//        fuzzcases TARGET FILE...   these files

#include "fuzz.h"

#include <QDir>

#include <cstdio>

namespace {

void run(const QByteArray& target, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    // if it ends the program, this line is the last
    std::printf("%s %s\n", target.constData(), qPrintable(QDir::toNativeSeparators(path)));
    std::fflush(stdout);
    fuzzTargets().value(target)(file.readAll());
}

} // namespace

int main(int argc, char* argv[])
{
    startFuzzing(true);
    const bool isFolder = argc == 2;
    if (argc < 2 || (!isFolder && !fuzzTargets().contains(argv[1]))) {
        std::fprintf(stderr, "Usage: fuzzcases FOLDER | fuzzcases TARGET FILE...\n");
        return 2;
    }
    for (int i = 2; i < argc; ++i)
        run(argv[1], QString::fromLocal8Bit(argv[i]));
    if (!isFolder)
        return 0;

    for (auto target = fuzzTargets().cbegin(); target != fuzzTargets().cend(); ++target) {
        const QDir folder(QString::fromLocal8Bit(argv[1]) + QLatin1Char('/') +
                          QString::fromLatin1(target.key()));
        const QStringList names = folder.entryList(QDir::Files, QDir::Name);
        if (names.isEmpty()) {
            std::fprintf(stderr, "no corpus for %s in %s\n", target.key().constData(), argv[1]);
            return 1;
        }
        for (const QString& name : names)
            run(target.key(), folder.filePath(name));
    }
    return 0;
}
