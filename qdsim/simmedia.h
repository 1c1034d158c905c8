#ifndef SIMMEDIA_H
#define SIMMEDIA_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// @brief Documents that a fax server holds: PDF and TIFF files, written and counted without foreign help.
namespace SimMedia {

/// A guess at the number of pages of a received document; at least 1.
int countPages(const QString& contentType, const QByteArray& bytes);

/// The types that an attachment may have.
bool isKnownType(const QString& contentType);

} // namespace SimMedia

#endif
