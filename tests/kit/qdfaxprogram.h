#pragma once

// Running qdfax as users start it.

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

/// The result of a run.
struct Result
{
    int status{-1};
    QByteArray out;
    QByteArray err;
    QJsonArray array() const { return QJsonDocument::fromJson(out).array(); }
    /// A value of one of the objects that make up the output.
    QVariant value(int index, const char* name) const
    {
        return array().at(index).toObject().value(QLatin1String(name)).toVariant();
    }
    QJsonObject object() const { return QJsonDocument::fromJson(out).object(); }
    /// A value of the object that is the output.
    QVariant value(const char* name) const { return object().value(QLatin1String(name)).toVariant(); }
    /// What came instead, if it did not end with this status, or without this among its messages.
    QByteArray mismatch(int expected, const QByteArray& says = QByteArray()) const
    {
        const bool isExpected = status == expected && err.contains(says);
        return isExpected ? QByteArray() : QByteArray::number(status) + ": " + out + err;
    }
};

/// A pseudo-terminal for a run, with its output and input.
class Terminal
{
public:
    Terminal()
    {
        if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
            qFatal("no terminal");
        m_slave =
            ::open(ptsname(m_master), O_RDWR | O_NOCTTY | O_CLOEXEC); // keeps its settings and unread output
    }
    ~Terminal()
    {
        ::close(m_slave);
        ::close(m_master);
    }
    Q_DISABLE_COPY(Terminal)

    QString name() const { return QString::fromLocal8Bit(ptsname(m_master)); }
    bool hasEcho() const
    {
        termios state;
        return tcgetattr(m_slave, &state) == 0 && (state.c_lflag & ECHO) != 0;
    }
    bool type(const QByteArray& text)
    {
        return ::write(m_master, text.constData(), size_t(text.size())) == text.size();
    }
    /// All output so far.
    const QByteArray& shown()
    {
        char buffer[65536];
        const ssize_t count = ::read(m_master, buffer, sizeof buffer);
        return m_shown += QByteArray(buffer, int(qMax<ssize_t>(0, count)));
    }

private:
    const int m_master{posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)};
    int m_slave{-1};
    QByteArray m_shown;
};

/// A run of qdfax, optionally in a terminal of its own or with a limit on file sizes.
class Program : public QProcess
{
public:
    static constexpr int longest = 60000; ///< ms, of one run

    QString terminal;
    rlim_t largestFile{0};

    void begin(const QStringList& arguments, const QString& folder, const QProcessEnvironment& environment)
    {
        setProgram(QStringLiteral(QDFAX_PROGRAM));
        setArguments(arguments);
        setWorkingDirectory(folder);
        setProcessEnvironment(environment);
        start();
    }

    /// Waits for its end while running this thread's event loop, on which the test's servers may live.
    Result finish()
    {
        const auto ended = [this] { return state() == QProcess::NotRunning; };
        if (!QTest::qWaitFor(ended, longest))
            kill();
        Result result;
        result.status = exitStatus() == QProcess::NormalExit ? exitCode() : -2;
        result.out = readAllStandardOutput();
        result.err = readAllStandardError();
        return result;
    }

protected:
    void setupChildProcess() override
    {
        setsid();
        if (!terminal.isEmpty()) {
            const int slave = ::open(terminal.toLocal8Bit().constData(), O_RDWR);
            ioctl(slave, TIOCSCTTY, 0);
            for (int descriptor = 0; descriptor < 3; ++descriptor)
                dup2(slave, descriptor);
        }
        if (largestFile > 0) {
            const rlimit limit = {largestFile, largestFile};
            setrlimit(RLIMIT_FSIZE, &limit);
            ::signal(SIGXFSZ, SIG_IGN); // writing fails, as on a full disk
        }
    }
};

/// The arguments after the run: the expected status, and optionally a part of its messages.
#define CHECK_RUN(run, ...)                                                                                  \
    do {                                                                                                     \
        const QByteArray mismatch_ = (run).mismatch(__VA_ARGS__);                                            \
        QVERIFY2(mismatch_.isEmpty(), mismatch_.constData());                                                \
    } while (false)
