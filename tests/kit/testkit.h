#pragma once

// What several test programs need.

#include "logger.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLibrary>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>
#include <QTimer>

/// Runs the event loop until a condition holds. False after a time-out, 20 seconds by default. Thousands of
/// short waits would take minutes with QTRY_VERIFY, which polls every 50 ms.
template <typename Condition>
bool spinUntil(Condition condition, int seconds = 20)
{
    QTimer wake;
    wake.start(5);
    const QDeadlineTimer deadline(seconds * 1000);
    while (!condition() && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        // processEvents() does not deliver deferred deletions
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents(); // events posted by a thread just before its deletion
    }
    return condition();
}

/// Whether this is a Windows program that runs under Wine.
inline bool isWine()
{
#ifdef Q_OS_WIN
    return QLibrary::resolve(QStringLiteral("ntdll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

/// A log of the test's own: everything is written into a fresh folder for as long as this lives.
class TestLog
{
public:
    TestLog()
    {
        Logger::inst().setLocation(QDir(m_folder.path()));
        Logger::inst().setLevel(Logger::DEBUG);
    }
    ~TestLog()
    {
        Logger::inst().setLevel(Logger::NONE);
        Logger::inst().releaseLogFile();
    }

    /// The log so far.
    QString text() const
    {
        QFile file(Logger::inst().currentFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    /// The messages of one level, as "file.cpp message".
    QStringList messages(const QString& level) const
    {
        static const QRegularExpression line(
            QStringLiteral("^\\[[^\\]]*\\] \\[(\\w+) *\\] \\[([^:]*):\\d+ *\\] (.*?)\\r\\n(?=\\[\\d|\\z)"),
            QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
        QStringList found;
        auto matches = line.globalMatch(text());
        while (matches.hasNext()) {
            const auto match = matches.next();
            if (match.captured(1) == level)
                found.append(match.captured(2) + QLatin1Char(' ') + match.captured(3));
        }
        return found;
    }

private:
    QTemporaryDir m_folder;
};
