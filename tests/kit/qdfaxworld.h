#pragma once

// qdfax as users start it, against a simulated server.

#include "qdfaxprogram.h"
#include "shorthand.h"
#include "simwire.h"

#include <QTemporaryDir>

#include <memory>

/// Base class of tests of qdfax: a working folder for each test, and a server.
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
    /// One line as a shell would split it; quotes keep blanks. The texts stand for %1, %2...
    template <typename... Text>
    Result run(const char* line, const Text&... texts)
    {
        if constexpr (sizeof...(texts) > 0)
            return run(QProcess::splitCommand(s(line).arg(texts...)));
        else
            return run(QProcess::splitCommand(s(line)));
    }

    /// Starts a server, replacing the previous one.
    void startSim(SimOptions options, std::initializer_list<const char*> users)
    {
        for (const char* user : users)
            options.users.append(someUser(user));
        m_sim = std::make_unique<Started>(options);
    }

    /// Adds the server to the program's settings, as its default.
    void addServer(const char* login = "mary")
    {
        CHECK_RUN(run("server add %1 --login %2 --default", m_sim->address(), s(login)), 0);
        m_sim->clearRequests();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
    std::unique_ptr<SimServer> m_sim;
};
