#pragma once

#include "exitstatus.h"
#include "table.h"

#include <QCommandLineOption>
#include <QJsonArray>
#include <QJsonValue>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

class QCommandLineParser;
class Invocation;

/// One command of qdfax: its help, its options and arguments, and its function.
struct Command
{
    QString name;        ///< One word or two: "send", "server add".
    QString arguments;   ///< As in a usage line.
    QString summary;     ///< A line.
    QString description; ///< Paragraphs, lines already broken. May be empty.
    QStringList examples;
    QList<QCommandLineOption> options; ///< Beside the global ones.
    int leastArguments{0};
    int mostArguments{0};                  ///< -1: any number.
    std::function<int(Invocation&)> run{}; ///< Returns an exit status, having reported any error.
    bool needsDisplay{false};              ///< It opens windows, so the program has to be a QApplication.

    bool hasOption(const QString& option) const;
};

/// Every command, in the order of the help.
const QVector<Command>& commands();

// The groups of commands, each defined in a file of its own.
QVector<Command> serverCommands();
QVector<Command> profileCommands();
QVector<Command> sendCommands();
QVector<Command> logCommands();
QVector<Command> downloadCommands();
QVector<Command> outlookCommands();
QVector<Command> contactCommands();
QVector<Command> contactChangeCommands(); ///< Part of contactCommands(), as the next.
QVector<Command> contactFileCommands();
QVector<Command> captureCommands();
QVector<Command> helpCommands();

/// The options that every command takes.
QList<QCommandLineOption> globalOptions();
/// The global options that the command does not override by one of its own with the same name.
QList<QCommandLineOption> globalOptions(const Command& command);

/// Help for all, or for one command.
QString generalHelp();
QString commandHelp(const Command& command);

/// Whether the command on this command line opens windows. To be called before the application object is
/// created.
bool needsDisplay(const QStringList& arguments);

/// Runs a whole command line, the program's name first; returns the exit status.
int runCommandLine(const QStringList& arguments);

/**
 * A command being run: its options and arguments, and where its output goes.
 *
 * Output is either for people (line(), fields(), table()) or JSON (json()); isJson() says which was asked
 * for. Errors go to standard error in both cases.
 */
class Invocation
{
public:
    Invocation(const Command& command, const QCommandLineParser& parser, const QStringList& arguments);

    const Command& command() const { return m_command; }
    const QStringList& arguments() const { return m_arguments; }

    bool isSet(const char* option) const;
    /// The last value given, empty when there was none.
    QString value(const char* option) const;
    QStringList values(const char* option) const;

    /// Global options.
    bool isJson() const { return isSet("json"); }
    QString serverName() const { return value("server"); }
    /// In ms; 0: no time-out.
    int timeout() const { return m_timeout; }
    void setTimeout(int ms) { m_timeout = ms; }

    /// Prints an error and returns @p status.
    int fail(int status, const QString& sentence) const;
    /// The same for an invalid command line: also points to the help.
    int failUsage(const QString& sentence) const;
    int failOption(const char* option, const QString& what) const;
    /// Prints a remark that is not an error to standard error; nothing if it is empty.
    void note(const QString& sentence) const;

    void line(const QString& text) const;
    /// Prints names and values, one pair per line. Empty values are left out.
    void fields(const QVector<QPair<QString, QString>>& fields) const;
    void table(const Table& table) const;
    void json(const QJsonValue& value) const;
    /// Prints an array, creating and writing one element at a time, since a log may have 100,000.
    void jsonArray(int size, const std::function<QJsonValue(int index)>& element) const;

private:
    const Command& m_command;
    const QCommandLineParser& m_parser;
    QStringList m_arguments;
    int m_timeout{0};
};
