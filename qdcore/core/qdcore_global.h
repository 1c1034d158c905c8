#pragma once

#include <QtGlobal>

/// Exports a symbol for client applications. All other symbols are hidden in the shared library.
#if defined(QDCORE_LIBRARY)
#define QDCORE_EXPORT Q_DECL_EXPORT
#else
#define QDCORE_EXPORT Q_DECL_IMPORT
#endif
