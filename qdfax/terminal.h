#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// The terminal that qdfax runs in, if any: its size, input without echo, progress lines, and Ctrl-C.
namespace Terminal {

/// Whether standard output, or standard error, is a terminal.
bool isOutput();
bool isError();

/// The columns of the terminal, or of the variable COLUMNS; 0 if unknown, as for a pipe.
int width();
/// The lines of the terminal; 0 if unknown.
int height();

/// Writes UTF-8 to standard output. After a failure, such as a full disk, outputFailed() is true; on a broken
/// pipe the program ends.
void write(const QByteArray& text);
/// Writes a line to standard error, erasing a progress line first.
void writeError(const QString& line);
/// Flushes standard output. True if some output was lost.
bool outputFailed();

/// Prompts on the controlling terminal, even if standard input is redirected, and reads a line without echo.
/// Nothing without a terminal, or at end of input.
std::optional<QString> askHidden(const QString& prompt);

/// Makes Ctrl-C, SIGHUP and SIGTERM end the program at once, with the exit status that shells expect (130 for
/// Ctrl-C), the terminal's settings restored, and the text of setLastWords() on standard error. On Windows it
/// also switches the console to UTF-8 and escape sequences, as write() needs.
void installInterrupt();
/// The text to print if the program is interrupted from now on; empty: none.
void setLastWords(const QString& text);

/// Defers interruption while it exists: for the short time in which files are replaced.
class InterruptBlocker
{
public:
    InterruptBlocker();
    ~InterruptBlocker();
    Q_DISABLE_COPY(InterruptBlocker)
};

/// One line on standard error that is repeatedly overwritten, and erased at the end. Shows nothing if
/// standard error is not a terminal.
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

/// A few lines on standard error that are repeatedly overwritten, and erased at the end. Shows nothing if
/// standard error is not a terminal.
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

/// Replaces the screen's content if standard output is a terminal; else appends the lines and a blank one.
void showScreen(const QStringList& lines);

} // namespace Terminal
