#pragma once

// Writing to the log from inside the library. Internal: not installed.

#include "logger.h"

/// Logs a line that carries the caller's own source file and line. @p level is an enumerator of Logger::LEVEL by its
/// bare name. The message is not built when the level is filtered out: some messages are whole reply bodies.
#define QD_LOG(level, message)                                                                               \
    do {                                                                                                     \
        if (Logger::inst().level() >= Logger::level)                                                         \
            Logger::inst().log(Logger::level, (message), __FILE__, __LINE__);                                \
    } while (false)
