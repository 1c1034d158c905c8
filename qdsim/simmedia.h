#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// @brief Documents that a fax server holds: PDF and TIFF files, written and counted without foreign help.
namespace SimMedia {

/// A guess at the number of pages of a received document; at least 1.
int countPages(const QString& contentType, const QByteArray& bytes);

/// The types that an attachment may have.
bool isKnownType(const QString& contentType);

/// A PDF 1.4 of so many A4 pages, each with the title and its number. The same arguments give the same bytes.
QByteArray pdf(const QString& title, int pages);

/// A bilevel TIFF of so many fax pages (PackBits), each showing @p number and the page's number. The same
/// arguments give the same bytes.
QByteArray tiff(quint64 number, int pages);

/// Any stretch of a bilevel one-page TIFF of exactly @p size bytes (at least 4096), made on the spot.
QByteArray hugeTiff(qint64 size, qint64 offset, qint64 length);

} // namespace SimMedia
