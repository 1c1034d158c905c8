#include "simmedia.h"

#include <QtCore/QVector>

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

const int tiffWidth = 1728; // pixels of a fax line
const int tiffHeight = 1100;
const int rowBytes = tiffWidth / 8;

/// A 5 by 7 bitmap per digit, one byte per row, the leftmost pixel in bit 4.
const unsigned char digits[10][7] = {
    {14, 17, 19, 21, 25, 17, 14}, {4, 12, 4, 4, 4, 4, 14},  {14, 17, 1, 2, 4, 8, 31},
    {31, 2, 4, 2, 1, 17, 14},     {2, 6, 10, 18, 31, 2, 2}, {31, 16, 30, 1, 1, 17, 14},
    {6, 8, 16, 30, 17, 17, 14},   {31, 1, 2, 4, 8, 8, 8},   {14, 17, 17, 14, 17, 17, 14},
    {14, 17, 17, 15, 1, 2, 12},
};
const int dot = 8; // each pixel of a digit is scaled to 8 by 8, so that it is a byte wide

void drawNumber(QByteArray* bitmap, quint64 number, int top)
{
    const QByteArray text = QByteArray::number(number);
    for (int i = 0; i < text.size(); ++i) {
        const unsigned char* rows = digits[text[i] - '0'];
        for (int y = 0; y < 7 * dot; ++y) {
            for (int x = 0; x < 5; ++x) {
                if (rows[y / dot] & (16 >> x))
                    (*bitmap)[(top + y) * rowBytes + 20 + 6 * i + x] = '\xff';
            }
        }
    }
}

/// PackBits compression, row by row.
QByteArray packBits(const QByteArray& bitmap)
{
    QByteArray packed;
    for (int row = 0; row < bitmap.size(); row += rowBytes) {
        for (int at = row; at < row + rowBytes;) {
            int run = 1;
            while (at + run < row + rowBytes && run < 128 && bitmap[at + run] == bitmap[at])
                ++run;
            packed.append(static_cast<char>(1 - run)).append(bitmap[at]);
            at += run;
        }
    }
    return packed;
}

void append16(QByteArray* out, quint32 value)
{
    out->append(static_cast<char>(value)).append(static_cast<char>(value >> 8));
}

void append32(QByteArray* out, quint32 value)
{
    append16(out, value & 0xffff);
    append16(out, value >> 16);
}

/// One image file directory at offset @p at, followed by its two resolutions; 166 bytes.
const int directorySize = 2 + 12 * 12 + 4 + 16;
QByteArray tiffDirectory(quint32 at, quint32 strip, quint32 stripSize, quint32 height, quint32 compression,
                         int page, int pages, bool isLast)
{
    const quint32 resolutions = at + directorySize - 16;
    const quint32 shortType = 3;
    const quint32 longType = 4;
    const quint32 rationalType = 5;
    const struct
    {
        quint32 tag, type, count, value;
    } entries[] = {
        {254, longType, 1, 2}, // one page of a multi-page document
        {256, longType, 1, tiffWidth},
        {257, longType, 1, height},
        {258, shortType, 1, 1},
        {259, shortType, 1, compression},
        {262, shortType, 1, 0}, // white is zero
        {273, longType, 1, strip},
        {278, longType, 1, height},
        {279, longType, 1, stripSize},
        {282, rationalType, 1, resolutions},
        {283, rationalType, 1, resolutions + 8},
        {297, shortType, 2, static_cast<quint32>(page) | static_cast<quint32>(pages) << 16},
    };
    QByteArray out;
    append16(&out, 12);
    for (const auto& entry : entries) {
        append16(&out, entry.tag);
        append16(&out, entry.type);
        append32(&out, entry.count);
        append32(&out, entry.value);
    }
    append32(&out, isLast ? 0 : at + directorySize + stripSize + stripSize % 2);
    append32(&out, 204);
    append32(&out, 1);
    append32(&out, 98);
    append32(&out, 1);
    return out;
}

QByteArray tiffHeader()
{
    return QByteArray("II*\0\x08\0\0\0", 8);
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

QByteArray SimMedia::pdf(const QString& title, int pages)
{
    QByteArray out = QByteArrayLiteral("%PDF-1.4\n%\xe2\xe3\xcf\xd3\n");
    QVector<int> offsets;
    const auto object = [&out, &offsets](const QByteArray& text) {
        offsets.append(out.size());
        out += QByteArray::number(offsets.size()) + " 0 obj\n" + text + "\nendobj\n";
    };
    QByteArray kids;
    for (int i = 0; i < pages; ++i)
        kids += QByteArray::number(4 + 2 * i) + " 0 R ";
    object("<< /Type /Catalog /Pages 2 0 R >>");
    object("<< /Type /Pages /Kids [ " + kids + "] /Count " + QByteArray::number(pages) + " >>");
    object("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>");
    QByteArray escaped = title.toLatin1();
    escaped.replace('\\', "\\\\").replace('(', "\\(").replace(')', "\\)");
    for (int i = 0; i < pages; ++i) {
        const QByteArray stream = "BT /F1 24 Tf 72 740 Td (" + escaped + ") Tj 0 -40 Td (page " +
                                  QByteArray::number(i + 1) + " of " + QByteArray::number(pages) + ") Tj ET";
        object("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Resources << /Font << /F1 3 0 R >> >> "
               "/Contents " +
               QByteArray::number(5 + 2 * i) + " 0 R >>");
        object("<< /Length " + QByteArray::number(stream.size()) + " >>\nstream\n" + stream + "\nendstream");
    }
    const int table = out.size();
    const QByteArray size = QByteArray::number(offsets.size() + 1);
    out += "xref\n0 " + size + "\n0000000000 65535 f \n";
    for (const int offset : qAsConst(offsets))
        out += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    return out + "trailer\n<< /Size " + size + " /Root 1 0 R >>\nstartxref\n" + QByteArray::number(table) +
           "\n%%EOF\n";
}

QByteArray SimMedia::tiff(quint64 number, int pages)
{
    QByteArray out = tiffHeader();
    for (int page = 0; page < pages; ++page) {
        QByteArray bitmap(rowBytes * tiffHeight, '\0');
        drawNumber(&bitmap, number, 100);
        drawNumber(&bitmap, static_cast<quint64>(page) + 1, 300);
        const QByteArray strip = packBits(bitmap);
        const auto at = static_cast<quint32>(out.size());
        out += tiffDirectory(at, at + directorySize, static_cast<quint32>(strip.size()), tiffHeight, 32773,
                             page, pages, page == pages - 1);
        out += strip;
        if (strip.size() % 2 != 0)
            out += '\0'; // directories begin at even offsets
    }
    return out;
}

QByteArray SimMedia::hugeTiff(qint64 size, qint64 offset, qint64 length)
{
    const qint64 pixels = size - tiffHeader().size() - directorySize;
    const auto height = static_cast<quint32>(pixels / rowBytes);
    const QByteArray head =
        tiffHeader() + tiffDirectory(8, 8 + directorySize, height * rowBytes, height, 1, 0, 1, true);
    QByteArray part(static_cast<int>(std::min(length, size - offset)), '\0');
    for (int i = 0; i < part.size(); ++i) {
        const qint64 at = offset + i;
        // Horizontal lines, and the block number every 4096 bytes, so that no two blocks are equal.
        part[i] = at < head.size() ? head[static_cast<int>(at)]
                                   : static_cast<char>(at % 4096 < 8 ? (at >> 12) >> (8 * (at % 8))
                                                                     : at / rowBytes % 8 == 0);
    }
    return part;
}
