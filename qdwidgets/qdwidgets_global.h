#pragma once

#include <QtGlobal>

/**
 * The library exists once in a process, or casts and signals between its copies would fail silently.
 *
 * It is compiled once, with its classes marked for export. qdcore links all of it into its own shared library
 * and thereby exports it: whoever links qdcore gets these classes from there, sees them as imported, and must
 * not link qdwidgets too. A program without qdcore links qdwidgets itself, and the build system defines
 * QDWIDGETS_STATIC for it.
 */
#if defined(QDWIDGETS_LIBRARY)
#define QDWIDGETS_EXPORT Q_DECL_EXPORT
#elif defined(QDWIDGETS_STATIC)
#define QDWIDGETS_EXPORT
#else
#define QDWIDGETS_EXPORT Q_DECL_IMPORT
#endif
