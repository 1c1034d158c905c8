#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// The terminal that qdfax runs in, if any: its size, typing without echo, a line that is written over, and
/// Ctrl-C.
namespace Terminal {

/// Whether standard output, or standard error, is a terminal.
bool isOutput();
bool isError();

/// The columns of the terminal, or what the variable COLUMNS says; 0 when nobody knows, as for a pipe.
int width();
/// The lines of the terminal; 0 when nobody knows.
int height();

/// UTF-8 to standard output. After a failure, such as a full disk, outputFailed() says so; when the reader
/// has gone, the program ends.
void write(const QByteArray& text);
/// A line to standard error. A progress line that stands there is wiped first.
void writeError(const QString& line);
/// Writes out what is buffered. True when some output was lost.
bool outputFailed();

/// Asks on the terminal itself, whatever standard input is, and reads a line without showing it. Nothing when
/// there is no terminal, or at its end of input.
std::optional<QString> askHidden(const QString& prompt);

/// Makes Ctrl-C, a hang-up and a termination end the program at once, with the exit status that shells expect
/// (130 for Ctrl-C), the terminal as it was, and the last words on standard error. On Windows it also has the
/// console take what write() writes: UTF-8, with escape sequences.
void installInterrupt();
/// What to say when the program is interrupted from now on; empty: nothing.
void setLastWords(const QString& text);

/// While one exists an interruption waits: for the few moments in which files are exchanged.
class InterruptBlocker
{
public:
    InterruptBlocker();
    ~InterruptBlocker();
    Q_DISABLE_COPY(InterruptBlocker)
};

/// One line on standard error that is written over and over, and wiped at the end. Shows nothing where
/// standard error is no terminal.
class ProgressLine
{
public:
    ProgressLine() = default;
    ~ProgressLine() { clear(); }
    Q_DISABLE_COPY(ProgressLine)

    /// The columns that it has.
    static int width();
    /// Cut to the terminal's width.
    void show(const QString& text);
    static void clear();
};

/// A few lines on standard error that are written over and over, and wiped at the end. Shows nothing where
/// standard error is no terminal.
class LiveBlock
{
public:
    LiveBlock() = default;
    ~LiveBlock() { show(QStringList()); }
    Q_DISABLE_COPY(LiveBlock)

    void show(const QStringList& lines);

private:
    int m_shown{0};
};

/// Replaces what standard output shows, where it is a terminal; else appends the lines and a blank one.
void showScreen(const QStringList& lines);

} // namespace Terminal
