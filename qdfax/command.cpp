#include "command.h"

#include "displaytext.h"
#include "logger.h"
#include "parsing.h"
#include "terminal.h"
#include "text.h"

#include <QCommandLineParser>

#include <algorithm>

namespace {

const int defaultTimeout = 60; // s
const int longestTimeout = 1000000;

QVector<Command> makeCommands()
{
    return serverCommands() + profileCommands() + sendCommands() + logCommands() + downloadCommands() +
           contactCommands() + outlookCommands() + captureCommands() + helpCommands();
}

const Command* findCommand(const QVector<Command>& commands, const QStringList& words, int* wordCount)
{
    const Command* found = nullptr;
    for (const Command& command : commands) {
        const QStringList name = command.name.split(QLatin1Char(' '));
        if (name.size() > *wordCount && words.mid(0, name.size()) == name) {
            found = &command;
            *wordCount = name.size();
        }
    }
    return found;
}

QString commandNames(const QString& group = QString())
{
    QStringList names;
    for (const Command& command : commands()) {
        if (group.isEmpty() || command.name.startsWith(group + QLatin1Char(' ')))
            names.append(command.name);
    }
    return names.join(QStringLiteral(", "));
}

int complain(int status, const QString& sentence)
{
    Terminal::writeError(QStringLiteral("qdfax: ") + sentence);
    return status;
}

/// The parser needs the command's options to tell words from values of options, but the words name the
/// command. So the global options are read first, up to the first word.
int leadingOptions(const QStringList& arguments, QStringList* rest)
{
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions(globalOptions());
    parser.addOption({QStringLiteral("version"), QString()});
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QString()});
    if (!parser.parse(arguments))
        return complain(ExitStatus::Usage, parser.errorText() + Text::tr(" See \"qdfax help\"."));
    if (parser.isSet(QStringLiteral("version"))) {
        Terminal::write("qdfax " QDFAX_VERSION "\n");
        return ExitStatus::Ok;
    }
    *rest = parser.positionalArguments();
    if (parser.isSet(QStringLiteral("help")) || rest->isEmpty()) {
        rest->clear();
        if (parser.isSet(QStringLiteral("help"))) {
            Terminal::write(generalHelp().toUtf8());
            return ExitStatus::Ok;
        }
        Terminal::writeError(generalHelp());
        return ExitStatus::Usage;
    }
    return -1;
}

/// The global options that hold numbers.
struct GlobalValues
{
    int timeout{defaultTimeout}; ///< In s.
    std::optional<int> logLevel;
    const char* wrongOption{nullptr}; ///< The invalid one, if any.
    QString error;
};

GlobalValues globalValues(const Command& command, const QCommandLineParser& parser)
{
    GlobalValues values;
    const auto number = [&](const char* option, int highest) -> std::optional<int> {
        const QString name = QLatin1String(option);
        if (values.wrongOption || command.hasOption(name) || !parser.isSet(name))
            return std::nullopt;
        const auto parsed = parseInteger(parser.value(name), 0, highest, &values.error);
        if (!parsed)
            values.wrongOption = option;
        return parsed;
    };
    values.timeout = number("timeout", longestTimeout).value_or(defaultTimeout);
    values.logLevel = number("log-level", 4);
    return values;
}

int runCommand(const QStringList& arguments)
{
    QStringList words;
    const int ended = leadingOptions(arguments, &words);
    if (ended >= 0)
        return ended;

    int wordCount = 0;
    const Command* command = findCommand(commands(), words, &wordCount);
    if (!command) {
        const QString ofGroup = commandNames(words.first());
        if (!ofGroup.isEmpty()) {
            return complain(ExitStatus::Usage,
                            Text::tr("\"%1\" needs a second word: %2. See \"qdfax help %1\".")
                                .arg(printable(words.first()), ofGroup));
        }
        return complain(ExitStatus::Usage, Text::tr("There is no command \"%1\". There are: %2. See "
                                                    "\"qdfax help\".")
                                               .arg(printable(words.first()), commandNames()));
    }

    // now all arguments but the program's name and the command's words
    QStringList line = arguments;
    for (int i = 0; i < wordCount; ++i)
        line.removeAt(arguments.size() - words.size());
    QCommandLineParser parser;
    parser.addOptions(globalOptions(*command));
    parser.addOptions(command->options);
    parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QString()});
    const QString hint = Text::tr(" See \"qdfax help %1\".").arg(command->name);
    if (!parser.parse(line))
        return complain(ExitStatus::Usage, printable(parser.errorText()) + hint);
    if (parser.isSet(QStringLiteral("help"))) {
        Terminal::write(commandHelp(*command).toUtf8());
        return ExitStatus::Ok;
    }

    const QStringList positional = parser.positionalArguments();
    if (positional.size() < command->leastArguments) {
        return complain(
            ExitStatus::Usage,
            Text::tr("Something is missing: qdfax %1 %2.%3").arg(command->name, command->arguments, hint));
    }
    if (command->mostArguments >= 0 && positional.size() > command->mostArguments) {
        return complain(ExitStatus::Usage, Text::tr("\"%1\" is one argument too many: qdfax %2 %3.%4")
                                               .arg(printable(positional.at(command->mostArguments)),
                                                    command->name, command->arguments, hint));
    }

    Invocation invocation(*command, parser, positional);
    const GlobalValues values = globalValues(*command, parser);
    if (values.wrongOption)
        return invocation.failOption(values.wrongOption, values.error);
    invocation.setTimeout(values.timeout * 1000);
    if (values.logLevel)
        Logger::inst().setLevel(Logger::LEVEL(*values.logLevel));
    return command->run(invocation);
}

} // namespace

const QVector<Command>& commands()
{
    static const QVector<Command> all = makeCommands();
    return all;
}

QList<QCommandLineOption> globalOptions()
{
    return {
        {QStringLiteral("server"), Text::tr("Use this server instead of the default one."),
         QStringLiteral("UID")},
        {QStringLiteral("json"), Text::tr("Print JSON instead of text for people.")},
        {QStringLiteral("timeout"),
         Text::tr("Give up when nothing was heard for so long (%1; 0: never).").arg(defaultTimeout),
         QStringLiteral("SECONDS")},
        {QStringLiteral("log-level"), Text::tr("What goes to the log file: 0 nothing to 4 everything (1)."),
         QStringLiteral("0..4")},
    };
}

bool Command::hasOption(const QString& option) const
{
    return std::any_of(options.cbegin(), options.cend(),
                       [&option](const QCommandLineOption& own) { return own.names().contains(option); });
}

QList<QCommandLineOption> globalOptions(const Command& command)
{
    QList<QCommandLineOption> options;
    const QList<QCommandLineOption> all = globalOptions();
    for (const QCommandLineOption& option : all) {
        if (!command.hasOption(option.names().constFirst()))
            options.append(option);
    }
    return options;
}

bool needsDisplay(const QStringList& arguments)
{
    QCommandLineParser words;
    words.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    words.addOptions(globalOptions());
    if (!words.parse(arguments))
        return false;
    int wordCount = 0;
    // not commands(): it would cache its texts before the translations are loaded
    const QVector<Command> untranslated = makeCommands();
    const Command* command = findCommand(untranslated, words.positionalArguments(), &wordCount);
    if (!command || !command->needsDisplay)
        return false;
    // errors and help need no windows
    QCommandLineParser parser;
    parser.addOptions(globalOptions(*command));
    parser.addOptions(command->options);
    if (!parser.parse(arguments) || globalValues(*command, parser).wrongOption)
        return false;
    const int count = parser.positionalArguments().size() - wordCount;
    return count >= command->leastArguments &&
           (command->mostArguments < 0 || count <= command->mostArguments);
}

int runCommandLine(const QStringList& arguments)
{
    const int status = runCommand(arguments);
    if (Terminal::outputFailed())
        return complain(ExitStatus::File, Text::tr("The output could not be written. Is the disk full?"));
    return status;
}

// --- Invocation

Invocation::Invocation(const Command& command, const QCommandLineParser& parser, const QStringList& arguments)
    : m_command(command)
    , m_parser(parser)
    , m_arguments(arguments)
{}

bool Invocation::isSet(const char* option) const
{
    return m_parser.isSet(QLatin1String(option));
}

QString Invocation::value(const char* option) const
{
    return m_parser.value(QLatin1String(option));
}

QStringList Invocation::values(const char* option) const
{
    return m_parser.values(QLatin1String(option));
}

int Invocation::fail(int status, const QString& sentence) const
{
    return complain(status, printable(sentence));
}

int Invocation::failUsage(const QString& sentence) const
{
    return fail(ExitStatus::Usage, Text::tr("%1 See \"qdfax help %2\".").arg(sentence, m_command.name));
}

int Invocation::failOption(const char* option, const QString& what) const
{
    return failUsage(QStringLiteral("--%1 %2.").arg(QLatin1String(option), what));
}

void Invocation::note(const QString& sentence) const
{
    if (!sentence.isEmpty())
        Terminal::writeError(QStringLiteral("qdfax: ") + printable(sentence));
}

void Invocation::line(const QString& text) const
{
    Terminal::write(printable(text).toUtf8() + '\n');
}

void Invocation::fields(const QVector<QPair<QString, QString>>& fields) const
{
    int width = 0;
    for (const auto& field : fields)
        width = std::max(width, displayWidth(field.first));
    for (const auto& field : fields) {
        if (!field.second.isEmpty())
            line((field.first + QLatin1Char(':')).leftJustified(width + 2) + field.second);
    }
}

void Invocation::table(const Table& table) const
{
    const QStringList rows = table.lines(Terminal::width());
    for (const QString& row : rows)
        Terminal::write(row.toUtf8() + '\n');
}

void Invocation::json(const QJsonValue& value) const
{
    Terminal::write(jsonText(value));
}

void Invocation::jsonArray(int size, const std::function<QJsonValue(int index)>& element) const
{
    const QByteArray begin = "[\n";
    const QByteArray end = "\n]\n";
    Terminal::write(begin);
    for (int i = 0; i < size; ++i) {
        const QByteArray whole = jsonText(QJsonArray{element(i)});
        Terminal::write(whole.mid(begin.size(), whole.size() - begin.size() - end.size()));
        Terminal::write(i + 1 < size ? ",\n" : "\n");
    }
    Terminal::write(end.mid(1));
}
