#include "terminal.h"

#include "displaytext.h"

#include <QtGlobal>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#ifdef Q_OS_WIN
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace {

struct Size
{
    int columns{0};
    int lines{0};
};

bool outputLost = false;
std::atomic<int> progressWidth{0}; ///< Columns of the progress line that stands on the terminal.

// Read by a signal handler, so no heap: a double buffer, one half valid while the other is written.
char lastWords[2][4096];
std::atomic<int> lastWordsIndex{0};

} // namespace

// --- What differs between platforms

#ifdef Q_OS_WIN

namespace {

Size sizeOf(DWORD handle)
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(handle), &info))
        return {};
    return {info.srWindow.Right - info.srWindow.Left + 1, info.srWindow.Bottom - info.srWindow.Top + 1};
}

Size outputSize()
{
    return sizeOf(STD_OUTPUT_HANDLE);
}

Size errorSize()
{
    return sizeOf(STD_ERROR_HANDLE);
}

DWORD consoleMode = 0;
std::atomic<bool> echoIsOff{false};
std::atomic<int> interruptBlocks{0};
std::atomic<bool> isInterrupted{false};

/// Without destructors: Windows runs the handler in a thread of its own, and waiting for a lock that another
/// thread holds could deadlock.
void endInterrupted()
{
    if (echoIsOff)
        SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), consoleMode);
    const char* words = lastWords[lastWordsIndex];
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), words, DWORD(std::strlen(words)), &written, nullptr);
    TerminateProcess(GetCurrentProcess(), 130);
}

BOOL WINAPI onInterrupt(DWORD)
{
    isInterrupted = true;
    if (interruptBlocks == 0)
        endInterrupted();
    return TRUE;
}

} // namespace

bool Terminal::isOutput()
{
    return _isatty(_fileno(stdout)) != 0;
}

bool Terminal::isError()
{
    return _isatty(_fileno(stderr)) != 0;
}

std::optional<QString> Terminal::askHidden(const QString& prompt)
{
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (!GetConsoleMode(input, &consoleMode))
        return std::nullopt;
    std::fputs(prompt.toUtf8().constData(), stderr);
    std::fflush(stderr);
    echoIsOff = true;
    SetConsoleMode(input, (consoleMode & ~DWORD(ENABLE_ECHO_INPUT)) | ENABLE_LINE_INPUT);
    wchar_t buffer[512];
    DWORD count = 0;
    const bool read = ReadConsoleW(input, buffer, DWORD(std::size(buffer)), &count, nullptr) && count > 0;
    SetConsoleMode(input, consoleMode);
    echoIsOff = false;
    std::fputs("\n", stderr);
    if (!read)
        return std::nullopt;
    QString line = QString::fromWCharArray(buffer, int(count));
    while (line.endsWith(QLatin1Char('\n')) || line.endsWith(QLatin1Char('\r')))
        line.chop(1);
    return line;
}

void Terminal::installInterrupt()
{
    SetConsoleCtrlHandler(onInterrupt, TRUE);
    // binary mode: output is UTF-8, and a redirected table must keep its line ends
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    // escape sequences, which showScreen() and LiveBlock write
    for (DWORD handle : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        DWORD mode = 0;
        if (GetConsoleMode(GetStdHandle(handle), &mode))
            SetConsoleMode(GetStdHandle(handle), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
}

Terminal::InterruptBlocker::InterruptBlocker()
{
    ++interruptBlocks;
}

Terminal::InterruptBlocker::~InterruptBlocker()
{
    if (--interruptBlocks == 0 && isInterrupted)
        endInterrupted();
}

#else

namespace {

Size sizeOf(int descriptor)
{
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0)
        return {};
    return {size.ws_col, size.ws_row};
}

Size outputSize()
{
    return sizeOf(STDOUT_FILENO);
}

Size errorSize()
{
    return sizeOf(STDERR_FILENO);
}

const int handledSignals[] = {SIGINT, SIGTERM, SIGHUP};

termios savedTerminal;
volatile sig_atomic_t hiddenTerminal = -1; ///< File descriptor of the terminal with echo off.

sigset_t signalSet()
{
    sigset_t set;
    sigemptyset(&set);
    for (int signal : handledSignals)
        sigaddset(&set, signal);
    return set;
}

void say(const char* text)
{
    const ssize_t ignored = ::write(STDERR_FILENO, text, std::strlen(text));
    (void)ignored; // dying anyway
}

// Only async-signal-safe calls. The program ends here and not in its event loop, which may be busy encoding a
// large file or not be running at all.
void onSignal(int signal)
{
    if (hiddenTerminal >= 0) {
        tcsetattr(hiddenTerminal, TCSANOW, &savedTerminal);
        say("\n");
    } else if (progressWidth > 0) {
        say("\n");
    }
    say(lastWords[lastWordsIndex]);
    _exit(128 + signal);
}

} // namespace

bool Terminal::isOutput()
{
    return isatty(STDOUT_FILENO) != 0;
}

bool Terminal::isError()
{
    return isatty(STDERR_FILENO) != 0;
}

std::optional<QString> Terminal::askHidden(const QString& prompt)
{
    const int terminal = ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0)
        return std::nullopt;
    if (tcgetattr(terminal, &savedTerminal) != 0) {
        ::close(terminal);
        return std::nullopt;
    }
    const QByteArray question = prompt.toUtf8();
    hiddenTerminal = terminal;
    termios silent = savedTerminal;
    silent.c_lflag &= ~tcflag_t(ECHO);
    silent.c_lflag |= tcflag_t(ICANON | ISIG | ECHONL);
    tcsetattr(terminal, TCSAFLUSH, &silent);
    QByteArray line;
    bool ended = ::write(terminal, question.constData(), size_t(question.size())) < 0;
    bool any = false;
    while (!ended) {
        char c = 0;
        const ssize_t count = ::read(terminal, &c, 1);
        if (count < 0 && errno == EINTR)
            continue;
        ended = count <= 0 || c == '\n';
        any = any || count > 0;
        if (!ended)
            line.append(c);
    }
    tcsetattr(terminal, TCSANOW, &savedTerminal);
    hiddenTerminal = -1;
    ::close(terminal);
    if (!any)
        return std::nullopt;
    return QString::fromUtf8(line);
}

void Terminal::installInterrupt()
{
    for (int signal : handledSignals) {
        struct sigaction now = {};
        // a signal that is ignored at the start (nohup) stays ignored
        if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_mask = signalSet();
        sigaction(signal, &action, nullptr);
    }
}

Terminal::InterruptBlocker::InterruptBlocker()
{
    const sigset_t set = signalSet();
    sigprocmask(SIG_BLOCK, &set, nullptr);
}

Terminal::InterruptBlocker::~InterruptBlocker()
{
    const sigset_t set = signalSet();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

#endif

// --- Common to all platforms

namespace {

/// When the reader of a pipe has gone (`qdfax inbox | head`), ends the program silently, as SIGPIPE would
/// have done, which Qt ignores for its sockets.
void endWithReader()
{
    if (errno == EPIPE)
        std::_Exit(128 + 13);
}

/// Writes to stderr unbuffered. A failure could not be reported anywhere.
void writeToErrors(const QByteArray& text)
{
    static_cast<void>(std::fputs(text.constData(), stderr));
    static_cast<void>(std::fflush(stderr));
}

} // namespace

int Terminal::width()
{
    if (isOutput()) {
        const int columns = outputSize().columns;
        if (columns > 0)
            return columns;
    }
    bool ok = false;
    const int columns = qEnvironmentVariableIntValue("COLUMNS", &ok);
    return ok && columns > 0 ? columns : 0;
}

int Terminal::height()
{
    return isOutput() ? outputSize().lines : 0;
}

void Terminal::write(const QByteArray& text)
{
    if (std::fwrite(text.constData(), 1, size_t(text.size()), stdout) != size_t(text.size())) {
        endWithReader();
        outputLost = true;
    }
}

void Terminal::writeError(const QString& line)
{
    ProgressLine::clear();
    if (std::fflush(stdout) != 0)
        outputLost = true;
    writeToErrors((line + QLatin1Char('\n')).toUtf8());
}

bool Terminal::outputFailed()
{
    if (std::fflush(stdout) != 0) {
        endWithReader();
        outputLost = true;
    }
    return outputLost;
}

void Terminal::setLastWords(const QString& text)
{
    const int other = 1 - lastWordsIndex;
    const QByteArray words = text.isEmpty() ? QByteArray() : (text + QLatin1Char('\n')).toUtf8();
    qstrncpy(lastWords[other], words.constData(), sizeof lastWords[other]);
    lastWordsIndex = other;
}

int Terminal::ProgressLine::width()
{
    const int columns = errorSize().columns;
    return columns > 1 ? columns - 1 : 79; // some terminals wrap after the last column
}

void Terminal::ProgressLine::show(const QString& text)
{
    if (!isError())
        return;
    const QString line = cutToWidth(printable(text), width());
    const int used = displayWidth(line);
    // blanks instead of an escape sequence: they erase on any terminal
    const QString filler(qMax(0, progressWidth - used), QLatin1Char(' '));
    writeToErrors((QLatin1Char('\r') + line + filler).toUtf8());
    progressWidth = used;
}

void Terminal::ProgressLine::clear()
{
    if (progressWidth == 0)
        return;
    const QByteArray blanks(progressWidth, ' ');
    writeToErrors("\r" + blanks + "\r");
    progressWidth = 0;
}

void Terminal::LiveBlock::show(const QStringList& lines)
{
    if (!isError())
        return;
    const Size size = errorSize();
    const int columns = size.columns > 1 ? size.columns - 1 : 79;
    // lines that have scrolled off the screen could not be overwritten
    const QStringList fitting = lines.mid(0, size.lines > 1 ? size.lines - 1 : -1);
    if (m_shown == 0 && fitting.isEmpty())
        return;
    QByteArray text;
    if (m_shown > 0)
        text += "\x1b[" + QByteArray::number(m_shown) + "A\r";
    for (const QString& line : fitting)
        text += cutToWidth(line, columns).toUtf8() + "\x1b[K\n";
    writeToErrors(text + "\x1b[J");
    m_shown = fitting.size();
}

void Terminal::showScreen(const QStringList& lines)
{
    if (!isOutput()) {
        write(lines.join(QLatin1Char('\n')).toUtf8() + "\n\n");
        outputFailed(); // flushes
        return;
    }
    QByteArray text = "\x1b[H";
    const QStringList visible = lines.mid(0, height() > 1 ? height() - 1 : lines.size());
    for (const QString& line : visible)
        text += line.toUtf8() + "\x1b[K\n";
    write(text + "\x1b[J");
    outputFailed(); // flushes
}
