#pragma once

// The memory of this process, as Linux reports it.

#include "bench.h"

#include <QFile>

#include <cstring>

/// A value in kB from /proc/self/status.
inline double memory(const char* name)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        fail("status");
    const QByteArray status = file.readAll();
    const int at = status.indexOf(name);
    return at < 0 ? 0 : std::atof(status.constData() + at + std::strlen(name) + 1);
}

/// Resets the peak, "VmHWM".
inline void resetPeakMemory()
{
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}
