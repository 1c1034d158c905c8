#include "simmedia.h"

#include <algorithm>

namespace {

const int linesPerPage = 60;

quint32 number(const QByteArray& bytes, qint64 at, int size, bool bigEndian)
{
    if (at < 0 || at + size > bytes.size())
        return 0;
    quint32 value = 0;
    for (int i = 0; i < size; ++i) {
        const auto byte =
            static_cast<unsigned char>(bytes[static_cast<int>(at) + (bigEndian ? i : size - 1 - i)]);
        value = value << 8 | byte;
    }
    return value;
}

int countTiffPages(const QByteArray& bytes)
{
    const bool bigEndian = bytes.startsWith("MM");
    int pages = 0;
    qint64 directory = number(bytes, 4, 4, bigEndian);
    while (directory != 0 && directory < bytes.size() && pages < 10000) {
        ++pages;
        directory =
            number(bytes, directory + 2 + 12 * qint64(number(bytes, directory, 2, bigEndian)), 4, bigEndian);
    }
    return pages;
}

int countPdfPages(const QByteArray& bytes)
{
    int pages = 0;
    for (int at = bytes.indexOf("/Type"); at >= 0; at = bytes.indexOf("/Type", at + 5)) {
        int name = at + 5;
        while (name < bytes.size() && bytes[name] == ' ')
            ++name;
        const bool isPage =
            bytes.mid(name, 5) == "/Page" && !(bytes.size() > name + 5 && bytes[name + 5] == 's');
        pages += isPage ? 1 : 0;
    }
    return pages;
}

} // namespace

int SimMedia::countPages(const QString& contentType, const QByteArray& bytes)
{
    int pages = 1;
    if (contentType == QLatin1String("application/pdf"))
        pages = countPdfPages(bytes);
    else if (contentType == QLatin1String("image/tiff"))
        pages = countTiffPages(bytes);
    else if (contentType == QLatin1String("application/postscript"))
        pages = bytes.count("%%Page:");
    else if (contentType == QLatin1String("text/plain"))
        pages = static_cast<int>((std::count(bytes.begin(), bytes.end(), '\n') + linesPerPage - 1) /
                                 linesPerPage);
    return std::max(1, pages);
}

bool SimMedia::isKnownType(const QString& contentType)
{
    return contentType == QLatin1String("application/pdf") ||
           contentType == QLatin1String("application/postscript") ||
           contentType == QLatin1String("text/plain") || contentType == QLatin1String("image/tiff");
}
