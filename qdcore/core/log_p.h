#pragma once

// Writing to the log from inside the library. Internal: not installed.

#include "logger.h"

/// Logs a line that carries the caller's own source file and line. @p enumerator is one of Logger::LEVEL by
/// its bare name. The message is not built when the level is filtered out: some messages are whole reply
/// bodies.
#define QD_LOG(enumerator, message)                                                                          \
    do {                                                                                                     \
        if (Logger::inst().level() >= Logger::enumerator)                                                    \
            Logger::inst().log(Logger::enumerator, (message), __FILE__, __LINE__);                           \
    } while (false)

/// A text for the log with the place in the source that it speaks for, so that shared code can log on behalf
/// of a class and the line still names that class's file.
struct LogText
{
    QString text;
    const char* file;
    int line;
};

// clang-format off
#define LOG_TEXT(text) LogText{(text), __FILE__, __LINE__}
// clang-format on
