#pragma once

#include <QtGlobal>

/// Marks what client applications may use. Everything else stays hidden inside the shared library.
#if defined(QDCORE_LIBRARY)
#define QDCORE_EXPORT Q_DECL_EXPORT
#else
#define QDCORE_EXPORT Q_DECL_IMPORT
#endif
