#pragma once

// Running qdfax as users start it.

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

/// What came of a run.
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
};

/// A run of qdfax. In a terminal of its own, if told so, or with a limit to the size of files.
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

    /// Waits for its end. The event loop of this thread goes on: servers of the test may live on it.
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

#define CHECK_RUN(run, expected)                                                                             \
    do {                                                                                                     \
        const Result result_ = (run);                                                                        \
        QVERIFY2(result_.status == (expected),                                                               \
                 (QByteArray::number(result_.status) + ": " + result_.out + result_.err).constData());       \
    } while (false)
