#include "pdfpages.h"

#ifdef QDFAX_WITH_POPPLER

#include <QVariant>

#include <poppler-qt5.h>

#include <memory>

int pdfPages(const QString& path)
{
    // a damaged file would produce a message for each of its objects
    static const bool silent = [] {
        Poppler::setDebugErrorFunction([](const QString&, const QVariant&) {}, QVariant());
        return true;
    }();
    Q_UNUSED(silent)
    const std::unique_ptr<Poppler::Document> document(Poppler::Document::load(path));
    // a locked document must not be queried
    return document && !document->isLocked() ? qMax(0, document->numPages()) : 0;
}

#else

int pdfPages(const QString&)
{
    return 0;
}

#endif
