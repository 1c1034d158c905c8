#pragma once

// What the fuzz targets have in common.

#include <QByteArray>
#include <QMap>
#include <QString>

/// A target: a function that feeds arbitrary bytes to a part of the library and checks its guarantees.
using FuzzTarget = void (*)(const QByteArray& input);

/// The targets linked into this program, by name. The corpus of a target lies in corpus/NAME.
QMap<QByteArray, FuzzTarget>& fuzzTargets();
/// Adds one; true.
bool addFuzzTarget(const char* name, FuzzTarget target);

/// Creates the application object and a folder for files; isolates the run from the user's settings, locale
/// and time zone. @p log: whether the library writes its log to a file, which is slow.
void startFuzzing(bool log);

/// A folder for files of a target, in memory if possible.
QString fuzzFolder();

/// Ends the program with a message, so that the fuzzer keeps the input.
[[noreturn]] void brokenPromise(const char* promise, const QString& detail, const char* file, int line);

/// Checks a condition that must hold for any input. @p detail is evaluated only if it fails.
#define PROMISE_THAT(condition, detail)                                                                      \
    (static_cast<bool>(condition) ? void() : brokenPromise(#condition, detail, __FILE__, __LINE__))
#define PROMISE(condition)                                                                                   \
    (static_cast<bool>(condition) ? void() : brokenPromise(#condition, QString(), __FILE__, __LINE__))

/// Defines a target: FUZZ_TARGET(cipher) { ... input ... }
#define FUZZ_TARGET(name)                                                                                    \
    static void fuzz_##name(const QByteArray& input);                                                        \
    static const bool added_##name = addFuzzTarget(#name, &fuzz_##name);                                     \
    static void fuzz_##name(const QByteArray& input)

/// Consumes an input from the front: choices first, as characters, so that inputs can be written by hand.
class FuzzChoices
{
public:
    explicit FuzzChoices(const QByteArray& input)
        : m_rest(input)
    {}

    /// A number from 0 to @p count - 1: 'a' is 0, 'b' is 1, any byte is some number; 0 when the input is at
    /// its end.
    int choose(int count)
    {
        const int byte = m_rest.isEmpty() ? 'a' : static_cast<unsigned char>(m_rest.at(0));
        m_rest.remove(0, 1);
        return ((byte - 'a') % count + count) % count;
    }

    const QByteArray& rest() const { return m_rest; }

private:
    QByteArray m_rest;
};
