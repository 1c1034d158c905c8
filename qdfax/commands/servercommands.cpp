#include "command.h"

#include "contactlocalstorage.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "faxuserpermissions.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "settingsfile.h"
#include "tasks/taskcheckpermissions.h"
#include "terminal.h"
#include "text.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

namespace {

const char passwordVariable[] = "QDFAX_PASSWORD";
const qint64 longestPassword = 4096;

/// The password, from the source that the user chose: never the command line, which other users can read.
std::optional<QString> askPassword(const Invocation& call, const QString& account, int* status)
{
    QString password;
    if (call.isSet("password-file")) {
        const QString path = call.value("password-file");
        QFile file(path);
        const bool isOpen = path == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                       : file.open(QIODevice::ReadOnly);
        if (!isOpen) {
            *status =
                call.fail(ExitStatus::File,
                          Text::tr("The password file %1 cannot be read: %2.").arg(path, file.errorString()));
            return std::nullopt;
        }
        password = QString::fromUtf8(file.readLine(longestPassword));
        while (password.endsWith(QLatin1Char('\n')) || password.endsWith(QLatin1Char('\r')))
            password.chop(1);
    } else if (qEnvironmentVariableIsSet(passwordVariable)) {
        password = qEnvironmentVariable(passwordVariable);
    } else {
        const auto typed = Terminal::askHidden(Text::tr("Password of %1: ").arg(account));
        if (!typed) {
            *status = call.failUsage(
                Text::tr("No password, and no terminal to ask for it. Give it by --password-file "
                         "or the variable %1.")
                    .arg(QLatin1String(passwordVariable)));
            return std::nullopt;
        }
        password = *typed;
    }
    // HTTP basic authentication supports only these characters
    if (QString::fromLatin1(password.toLatin1()) != password) {
        *status = call.failUsage(Text::tr(
            "The password holds characters that cannot be sent to a fax server (only Latin-1 can)."));
        return std::nullopt;
    }
    return password;
}

/// Changes the settings and prints the result.
int editSettings(const Invocation& call, const std::function<bool(SettingsFile&)>& change)
{
    QString movedTo;
    SettingsFile settings;
    const QString problem = settings.edit(change, &movedTo);
    call.note(settings.takeRemark());
    if (!movedTo.isEmpty()) {
        call.note(Text::tr("The settings file was damaged. It is kept as %1, and a new one was begun.")
                      .arg(QDir::toNativeSeparators(movedTo)));
    }
    return problem.isEmpty() ? int(ExitStatus::Ok) : call.fail(ExitStatus::Settings, problem);
}

int serverAdd(Invocation& call)
{
    const QString address = call.arguments().at(0);
    const QString login = call.value("login");
    QString error;
    if (!checkAddress(address, &error))
        return call.failUsage(QStringLiteral("ADDRESS %1.").arg(error));
    if (!call.isSet("login"))
        return call.failUsage(Text::tr("--login LOGIN is missing."));
    if (!checkText(login, false, &error))
        return call.failOption("login", error);
    if (login.contains(QLatin1Char(':')) || QString::fromLatin1(login.toLatin1()) != login)
        return call.failOption("login", Text::tr("cannot hold a colon, nor characters beyond Latin-1"));

    int status = ExitStatus::Ok;
    const auto password = askPassword(call, login + QLatin1Char('@') + address, &status);
    if (!password)
        return status;

    // before contacting the server: fail at once if the file must not be changed
    SettingsFile settings;
    settings.load();
    call.note(settings.takeRemark());
    if (settings.state() == SettingsFile::Newer || settings.state() == SettingsFile::Unreadable)
        return call.fail(ExitStatus::Settings, settings.problem());

    Session session(call);
    FaxManager unheard{QPointer<ContactManager>()};
    QPointer<FaxServer> server;
    if (call.isSet("no-check")) {
        // The login starts with the server. Without an address it goes nowhere.
        server = unheard.addServer(QString(), call.isSet("ssl"), login, *password);
        server->setAddress(address);
    } else {
        if (!session.openNew(address, call.isSet("ssl"), login, *password))
            return session.status();
        server = &session.server();
    }
    status = editSettings(call, [&](SettingsFile& file) {
        file.put(*server, call.isSet("default"));
        return true;
    });
    if (status != ExitStatus::Ok)
        return status;
    if (call.isJson()) {
        call.json(QJsonObject{{QStringLiteral("uid"), server->genUID()},
                              {QStringLiteral("checked"), !call.isSet("no-check")}});
    } else {
        call.line(Text::tr("Added %1: %2").arg(server->genUID(), server->getServerPreambule()));
    }
    return ExitStatus::Ok;
}

int serverList(Invocation& call)
{
    SettingsFile settings;
    settings.load();
    call.note(settings.takeRemark());
    if (!settings.problem().isEmpty())
        return call.fail(ExitStatus::Settings, settings.problem());
    const QVector<StoredServer> servers = settings.servers();
    if (const int strange = settings.strangeEntryCount()) {
        call.note(Text::tr("%n of the entries in %1 cannot be read. They are kept as they are.", "", strange)
                      .arg(settings.path()));
    }
    if (call.isJson()) {
        QJsonArray array;
        for (const StoredServer& server : servers) {
            QJsonObject object = toJson(server.info);
            object.remove(QStringLiteral("uptime"));
            object.insert(QStringLiteral("uid"), server.uid);
            object.insert(QStringLiteral("address"), server.address);
            object.insert(QStringLiteral("login"), server.login);
            object.insert(QStringLiteral("ssl"), server.useSSL);
            object.insert(QStringLiteral("default"), server.isDefault);
            array.append(object);
        }
        call.json(array);
        return ExitStatus::Ok;
    }
    if (servers.isEmpty()) {
        call.note(Text::tr("No fax server is configured. Add one: qdfax server add ADDRESS --login LOGIN"));
        return ExitStatus::Ok;
    }
    Table table({{QString()},
                 {Text::tr("SERVER")},
                 {Text::tr("HTTPS")},
                 {Text::tr("MODEL"), Table::Left, 8, 1},
                 {Text::tr("VERSION"), Table::Left, 0, 2},
                 {Text::tr("DESCRIPTION"), Table::Left, 12, 3}});
    for (const StoredServer& server : servers) {
        table.addRow({server.isDefault ? QStringLiteral("*") : QString(), server.uid,
                      server.useSSL ? Text::tr("yes") : Text::tr("no"), server.info.model(),
                      server.info.version(), server.info.description()});
    }
    call.table(table);
    return ExitStatus::Ok;
}

/// Finds the entry that the argument names and changes it.
int changeEntry(const Invocation& call, void (SettingsFile::*change)(const QString&), const QString& done,
                void (*afterwards)(const QString& uid) = nullptr)
{
    const QString wanted = call.arguments().at(0);
    SettingsFile settings;
    settings.load();
    call.note(settings.takeRemark());
    if (!settings.problem().isEmpty())
        return call.fail(ExitStatus::Settings, settings.problem());
    QString uid;
    // cppcheck-suppress constParameter ; the change is not for constants
    const int status = editSettings(call, [&](SettingsFile& file) {
        const int index = wanted.isEmpty() ? -1 : file.find(wanted);
        if (index >= 0) {
            uid = file.servers().at(index).uid;
            (file.*change)(uid);
        }
        return index >= 0;
    });
    if (status != ExitStatus::Ok)
        return status;
    if (uid.isEmpty()) {
        return call.fail(
            ExitStatus::Settings,
            Text::tr("No configured server is called \"%1\". \"qdfax server list\" shows them.").arg(wanted));
    }
    if (afterwards)
        afterwards(uid);
    if (call.isJson())
        call.json(QJsonObject{{QStringLiteral("uid"), uid}});
    else
        call.line(done.arg(uid));
    return ExitStatus::Ok;
}

int serverRemove(Invocation& call)
{
    // its cached contacts are useless without it, and nothing else would remove them
    return changeEntry(call, &SettingsFile::remove, Text::tr("Removed %1."), [](const QString& uid) {
        ContactLocalStorage().deleteSource(uid, ContactLocalStorage::SourceQuendra);
    });
}

int serverDefault(Invocation& call)
{
    return changeEntry(call, &SettingsFile::setDefault, Text::tr("%1 is the default server now."));
}

int whoami(Invocation& call)
{
    Session session(call);
    if (!session.open())
        return session.status();
    unsigned int bits = 0;
    if (!session.run(
            session.task<TaskChekPermissions>(Task::ChekPermissions),
            &TaskChekPermissions::doneCheckPermissions, [&bits](unsigned int received) { bits = received; },
            Text::tr("Reading the permissions")))
        return session.status();

    const FaxServer& server = session.server();
    const FaxUser& user = server.user();
    const Contact& contact = user.contact();
    FaxUserPermissions permissions;
    permissions.setEditPersonalContactsEnabled(bits & 1U);
    permissions.setEditGlobalContactsEnabled(bits & 2U);
    if (call.isJson()) {
        call.json(QJsonObject{
            {QStringLiteral("uid"), server.genUID()},
            {QStringLiteral("address"), server.address()},
            {QStringLiteral("ssl"), server.useSSL()},
            {QStringLiteral("login"), server.login()},
            {QStringLiteral("server"), toJson(server.info())},
            {QStringLiteral("profile"), toJson(contact)},
            {QStringLiteral("permissions"),
             QJsonObject{{QStringLiteral("editPersonalContacts"), permissions.editPersonalContactsEnabled()},
                         {QStringLiteral("editGlobalContacts"), permissions.editGlobalContactsEnabled()}}}});
        return ExitStatus::Ok;
    }
    const QuendraInfo& info = server.info();
    const auto allowed = [](bool yes) { return yes ? Text::tr("yes") : Text::tr("no"); };
    call.fields({{Text::tr("Server"), server.getServerPreambule()},
                 {Text::tr("Address"), server.address()},
                 {QStringLiteral("HTTPS"), allowed(server.useSSL())},
                 {Text::tr("Model"), info.model()},
                 {Text::tr("Version"), info.version()},
                 {Text::tr("Serial number"), info.serial()},
                 {Text::tr("Host name"), info.hostname()},
                 {Text::tr("Channels"), info.channels()},
                 {Text::tr("Uptime"), info.uptime()},
                 {Text::tr("Login"), server.login()},
                 {Text::tr("Name"), contact.name()},
                 {Text::tr("Organization"), contact.organization()},
                 {Text::tr("Phone"), contact.phone()},
                 {Text::tr("Fax"), contact.fax()},
                 {Text::tr("E-mail"), contact.email()},
                 {Text::tr("May edit personal contacts"), allowed(permissions.editPersonalContactsEnabled())},
                 {Text::tr("May edit global contacts"), allowed(permissions.editGlobalContactsEnabled())}});
    return ExitStatus::Ok;
}

} // namespace

QVector<Command> serverCommands()
{
    Command add;
    add.name = QStringLiteral("server add");
    add.arguments = QStringLiteral("ADDRESS --login LOGIN");
    add.summary = Text::tr("Log in to a fax server and keep it in the settings");
    add.description = Text::tr(
        "ADDRESS is a host name or IP address with an optional port: fax.example.org,\n"
        "192.0.2.7:8080, [2001:db8::7]:8080. The password is asked for, or comes from --password-file\n"
        "or the variable QDFAX_PASSWORD; it is stored enciphered. A server that refuses the login, or\n"
        "cannot be reached, is not kept. Adding an account again replaces its entry.\n"
        "The first server becomes the default one.");
    add.examples =
        QStringList{QStringLiteral("qdfax server add fax.example.org --login mary --ssl"),
                    QStringLiteral("qdfax server add 127.0.0.1:8080 --login mary --password-file pw.txt"),
                    QStringLiteral("QDFAX_PASSWORD=secret qdfax server add fax --login mary --default")};
    add.options = {
        {QStringLiteral("login"), Text::tr("The user's name on the server."), QStringLiteral("LOGIN")},
        {QStringLiteral("ssl"),
         Text::tr("Use HTTPS. The certificate is not verified, so self-signed ones work.")},
        {QStringLiteral("default"), Text::tr("Make it the default server.")},
        {QStringLiteral("password-file"),
         Text::tr("Read the password from the first line of this file; - is standard input."),
         QStringLiteral("FILE")},
        {QStringLiteral("no-check"), Text::tr("Keep the server without asking it.")},
    };
    add.leastArguments = add.mostArguments = 1;
    add.run = serverAdd;

    Command list;
    list.name = QStringLiteral("server list");
    list.summary = Text::tr("List the configured servers, without asking them");
    list.description = Text::tr("A star marks the default server.");
    list.examples = QStringList{QStringLiteral("qdfax server list"),
                                QStringLiteral("qdfax server list --json | jq -r '.[].uid'")};
    list.run = serverList;

    Command remove;
    remove.name = QStringLiteral("server remove");
    remove.arguments = QStringLiteral("UID");
    remove.summary = Text::tr("Forget a server");
    remove.description =
        Text::tr("UID is as \"qdfax server list\" shows it; the address alone will do where only one\n"
                 "account has it. When the default server goes, the first of the others takes its place.\n"
                 "Its contacts go from this machine with it.");
    remove.examples = QStringList{QStringLiteral("qdfax server remove mary@fax.example.org")};
    remove.leastArguments = remove.mostArguments = 1;
    remove.run = serverRemove;

    Command makeDefault;
    makeDefault.name = QStringLiteral("server default");
    makeDefault.arguments = QStringLiteral("UID");
    makeDefault.summary = Text::tr("Choose the server that commands use without --server");
    makeDefault.examples = QStringList{QStringLiteral("qdfax server default mary@fax.example.org")};
    makeDefault.leastArguments = makeDefault.mostArguments = 1;
    makeDefault.run = serverDefault;

    Command me;
    me.name = QStringLiteral("whoami");
    me.summary = Text::tr("Log in and show the server's identity, your profile and your permissions");
    me.examples = QStringList{QStringLiteral("qdfax whoami"),
                              QStringLiteral("qdfax whoami --server mary@fax.example.org --json")};
    me.run = whoami;

    return {add, list, remove, makeDefault, me};
}
