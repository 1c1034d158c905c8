#pragma once

#include <QString>

/// The number of pages of a PDF; 0 when the file is none, cannot be read, is incomplete or asks for a
/// password, and always 0 where this program was built without a reader of PDFs. May be called from any
/// thread, but by one at a time.
int pdfPages(const QString& path);
