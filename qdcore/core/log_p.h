#pragma once

// Writing to the log from inside the library. Internal: not installed.

#include "logger.h"

/// Logs a line with the caller's source file and line. @p enumerator is an unqualified name of Logger::LEVEL.
/// The message is not evaluated if the level is filtered out, since some messages are whole reply bodies.
#define QD_LOG(enumerator, message)                                                                          \
    do {                                                                                                     \
        if (Logger::inst().level() >= Logger::enumerator)                                                    \
            Logger::inst().log(Logger::enumerator, (message), __FILE__, __LINE__);                           \
    } while (false)

/// A log text with a source location, so that shared code can log on behalf of a class and the line names
/// that class's file.
struct LogText
{
    QString text;
    const char* file;
    int line;
};

// clang-format off
#define LOG_TEXT(text) LogText{(text), __FILE__, __LINE__}
// clang-format on
