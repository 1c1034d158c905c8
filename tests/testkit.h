#pragma once

// What several test programs need.

#include "logger.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

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

    /// Everything that was written so far.
    QString text() const
    {
        QFile file(Logger::inst().currentFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    /// The messages of one level since the log began or clear() was called, as "file.cpp message".
    QStringList messages(const QString& level) const
    {
        static const QRegularExpression line(
            QStringLiteral("^\\[[^\\]]*\\] \\[(\\w+) *\\] \\[([^:]*):\\d+ *\\] (.*?)\\r\\n(?=\\[\\d|\\z)"),
            QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption);
        QStringList found;
        auto matches = line.globalMatch(text().mid(m_start));
        while (matches.hasNext()) {
            const auto match = matches.next();
            if (match.captured(1) == level)
                found.append(match.captured(2) + QLatin1Char(' ') + match.captured(3));
        }
        return found;
    }

    void clear() { m_start = text().size(); }

private:
    QTemporaryDir m_folder;
    int m_start{0};
};
