#pragma once

// What the fuzz targets have in common.

#include <QByteArray>
#include <QMap>
#include <QString>

/// A target: one function that takes any bytes, runs them through a piece of the library and checks what it
/// promises.
using FuzzTarget = void (*)(const QByteArray& input);

/// The targets linked into this program, by name. The corpus of a target lies in corpus/NAME.
QMap<QByteArray, FuzzTarget>& fuzzTargets();
/// Adds one; true.
bool addFuzzTarget(const char* name, FuzzTarget target);

/// Makes the application and a place for files; sees to it that neither the user's settings, nor the locale,
/// nor the time zone plays a part. @p log: whether the library's log lines are made, to a file, which is
/// slow.
void startFuzzing(bool log);

/// A folder for what a target writes, in memory where the system has such a place.
QString fuzzFolder();

/// Ends the program with a message, so that the fuzzer keeps the input.
[[noreturn]] void brokenPromise(const char* promise, const QString& detail, const char* file, int line);

/// Checks what must hold whatever the input. @p detail is evaluated only when it does not.
#define PROMISE_THAT(condition, detail)                                                                      \
    (static_cast<bool>(condition) ? void() : brokenPromise(#condition, detail, __FILE__, __LINE__))
#define PROMISE(condition)                                                                                   \
    (static_cast<bool>(condition) ? void() : brokenPromise(#condition, QString(), __FILE__, __LINE__))

/// Defines a target: FUZZ_TARGET(cipher) { ... input ... }
#define FUZZ_TARGET(name)                                                                                    \
    static void fuzz_##name(const QByteArray& input);                                                        \
    static const bool added_##name = addFuzzTarget(#name, &fuzz_##name);                                     \
    static void fuzz_##name(const QByteArray& input)

/// Takes an input apart from the front: choices first, as characters, so that inputs can be written by hand.
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
