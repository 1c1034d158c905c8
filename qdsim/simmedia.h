#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// @brief Writes PDF and TIFF documents and counts their pages, without other libraries.
namespace SimMedia {

/// An estimate of the number of pages of a received document; at least 1.
int countPages(const QString& contentType, const QByteArray& bytes);

/// Whether an attachment may have this type.
bool isKnownType(const QString& contentType);

/// A PDF 1.4 of @p pages A4 pages, each with the title and its number. The same arguments give the same
/// bytes.
QByteArray pdf(const QString& title, int pages);

/// A bilevel TIFF of @p pages fax pages (PackBits), each showing @p number and the page's number. The same
/// arguments give the same bytes.
QByteArray tiff(quint64 number, int pages);

/// Any range of a bilevel one-page TIFF of exactly @p size bytes (at least 4096), generated on demand.
QByteArray hugeTiff(qint64 size, qint64 offset, qint64 length);

} // namespace SimMedia
