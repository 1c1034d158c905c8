#include "command.h"

#include "displaytext.h"
#include "settingsfile.h"
#include "terminal.h"
#include "text.h"

#include <QDir>

#include <algorithm>
#include <iterator>

namespace {

const int helpWidth = 90;

QString indented(const QString& left, int leftWidth, const QString& right)
{
    QString text;
    QString line = QStringLiteral("  ") + left.leftJustified(leftWidth);
    if (left.size() > leftWidth) {
        text = QStringLiteral("  ") + left + QLatin1Char('\n');
        line = QString(leftWidth + 2, QLatin1Char(' '));
    }
    bool begun = false;
    const QStringList words = right.split(QLatin1Char(' '));
    for (const QString& word : words) {
        if (begun && line.size() + 1 + word.size() > helpWidth) {
            text += line + QLatin1Char('\n');
            line = QString(leftWidth + 2, QLatin1Char(' '));
        }
        line += QStringLiteral("  ").left(begun && line.size() > leftWidth + 2 ? 1 : 0) + word;
        begun = true;
    }
    return text + line + QLatin1Char('\n');
}

QString optionsText(const QList<QCommandLineOption>& options)
{
    QString text;
    for (const QCommandLineOption& option : options) {
        QString name = QStringLiteral("--") + option.names().constFirst();
        if (!option.valueName().isEmpty())
            name += QLatin1Char(' ') + option.valueName();
        text += indented(name, 28, option.description());
    }
    return text;
}

QVector<Command> commandsOf(const QString& group)
{
    QVector<Command> found;
    std::copy_if(commands().cbegin(), commands().cend(), std::back_inserter(found),
                 [start = group + QLatin1Char(' ')](const Command& command) {
                     return command.name.startsWith(start);
                 });
    return found;
}

QString overview(const QVector<Command>& commands)
{
    QString text;
    int width = 0;
    for (const Command& command : commands)
        width = std::max(width, command.name.size() + 2);
    for (const Command& command : commands)
        text += indented(command.name, width, command.summary);
    return text;
}

/// Help for the commands that begin with one word.
QString groupHelp(const QString& group, const QVector<Command>& commands)
{
    return Text::tr("qdfax %1 COMMAND\n\nCommands:\n").arg(group) + overview(commands) +
           Text::tr("\nOptions of every command:\n") + optionsText(globalOptions()) +
           Text::tr("\n\"qdfax help %1\" explains a command, with its own options and examples.\n")
               .arg(commands.constFirst().name);
}

int help(Invocation& call)
{
    const QString wanted = call.arguments().join(QLatin1Char(' '));
    if (wanted.isEmpty()) {
        Terminal::write(generalHelp().toUtf8());
        return ExitStatus::Ok;
    }
    const auto command = std::find_if(commands().cbegin(), commands().cend(),
                                      [&wanted](const Command& known) { return known.name == wanted; });
    const QVector<Command> group = commandsOf(wanted);
    if (command == commands().cend() && group.isEmpty()) {
        return call.fail(ExitStatus::Usage,
                         Text::tr("There is no command \"%1\". \"qdfax help\" lists them.").arg(wanted));
    }
    const QString text = command != commands().cend() ? commandHelp(*command) : groupHelp(wanted, group);
    Terminal::write(text.toUtf8());
    return ExitStatus::Ok;
}

} // namespace

QString generalHelp()
{
    QString text = Text::tr("qdfax: send and watch faxes through a network fax server.\n\n"
                            "Usage: qdfax [OPTIONS] COMMAND [ARGUMENTS]\n\nCommands:\n");
    text += overview(commands());
    text += Text::tr("\nOptions of every command:\n") + optionsText(globalOptions());
    text += Text::tr("  --help                      Explain a command, as \"qdfax help COMMAND\" does.\n"
                     "  --version                   Print the version.\n");
    text += Text::tr("\nExit status:\n");
    const auto rows = ExitStatus::table();
    for (const ExitStatus::Row& row : rows)
        text += indented(QString::number(row.status), 5, row.meaning);
    text += Text::tr("\nA UID is LOGIN@ADDRESS, as \"qdfax server list\" shows it.\n");
    text += Text::tr("Settings: %1\n").arg(QDir::toNativeSeparators(SettingsFile::defaultPath()));
    return text;
}

QString commandHelp(const Command& command)
{
    QString text = QStringLiteral("qdfax ") + command.name;
    if (!command.arguments.isEmpty())
        text += QLatin1Char(' ') + command.arguments;
    text += QStringLiteral("\n\n%1.\n").arg(command.summary);
    if (!command.description.isEmpty())
        text += command.description + QLatin1Char('\n');
    if (!command.options.isEmpty())
        text += Text::tr("\nOptions:\n") + optionsText(command.options);
    text += Text::tr("\nOptions of every command:\n") + optionsText(globalOptions(command));
    if (!command.examples.isEmpty()) {
        text += Text::tr("\nExamples:\n");
        for (const QString& example : command.examples)
            text += QStringLiteral("  ") + example + QLatin1Char('\n');
    }
    return text;
}

QVector<Command> helpCommands()
{
    Command helpCommand;
    helpCommand.name = QStringLiteral("help");
    helpCommand.arguments = QStringLiteral("[COMMAND]");
    helpCommand.summary = Text::tr("Explain qdfax or one of its commands");
    helpCommand.examples =
        QStringList{QStringLiteral("qdfax help send"), QStringLiteral("qdfax help server")};
    helpCommand.mostArguments = 2;
    helpCommand.run = help;
    return {helpCommand};
}
