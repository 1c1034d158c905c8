#pragma once

// qdfax as users start it, against a simulated server.

#include "qdfaxprogram.h"
#include "shorthand.h"
#include "simwire.h"

#include <QTemporaryDir>

#include <memory>

/// What tests of qdfax have in common: a folder for each, which the program works in, and a server.
class QdfaxTest : public QObject
{
protected:
    /// An empty folder, the user's password, and no settings.
    void newFolder(const QString& password = QStringLiteral("secret"))
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(s("APPDATA"), path("appdata"));
        m_environment.insert(s("QDFAX_PASSWORD"), password);
        m_environment.remove(s("COLUMNS"));
    }
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString path(const char* name) const { return path(s(name)); }

    void start(Program& program, const QStringList& arguments)
    {
        program.begin(arguments, m_folder->path(), m_environment);
    }
    Result run(const QStringList& arguments, const QByteArray& input = QByteArray())
    {
        Program program;
        start(program, arguments);
        program.write(input);
        program.closeWriteChannel();
        return program.finish();
    }
    /// One line as a shell would split it; quotes keep blanks.
    Result run(const char* line) { return run(QProcess::splitCommand(s(line))); }

    /// Has the program know the server, as its default.
    void addServer(const char* login = "mary")
    {
        CHECK_RUN(run({s("server"), s("add"), m_sim->address(), s("--login"), s(login), s("--default")}), 0);
        m_sim->clearRequests();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
    std::unique_ptr<SimServer> m_sim;
};
