#pragma once

#include <QString>

/// The number of pages of a PDF; 0 if the file is not a PDF, is unreadable, truncated or password-protected,
/// and always 0 if this program was built without PDF support. May be called from any thread, but not
/// concurrently.
int pdfPages(const QString& path);
