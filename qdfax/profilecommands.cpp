#include "command.h"

#include "faxoptions.h"
#include "faxserver.h"
#include "faxuser.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "tasks/taskmodifyfaxuser.h"

namespace {

void show(const Invocation& call, const FaxServer& server, const FaxUser& user)
{
    const FaxUserScheduleOptions& options = user.faxScheduleOptions();
    if (call.isJson()) {
        call.json(QJsonObject{{QStringLiteral("login"), server.login()},
                              {QStringLiteral("contact"), toJson(user.contact())},
                              {QStringLiteral("defaultCoverPage"), user.defaultCoverpage()},
                              {QStringLiteral("usesCoverPage"), user.isUsedCoverPage()},
                              {QStringLiteral("schedule"), toJson(options)}});
        return;
    }
    const Contact& contact = user.contact();
    QVector<QPair<QString, QString>> fields{
        {QStringLiteral("Login"), server.login()},
        {QStringLiteral("Name"), contact.name()},
        {QStringLiteral("Organization"), contact.organization()},
        {QStringLiteral("Phone"), contact.phone()},
        {QStringLiteral("Fax"), contact.fax()},
        {QStringLiteral("E-mail"), contact.email()},
        {QStringLiteral("Cover page"),
         user.isUsedCoverPage() ? user.defaultCoverpage() : QStringLiteral("none")},
        {QStringLiteral("Priority"), QString::number(options.priority())},
        {QStringLiteral("Tries"), QString::number(options.maxAttempts())},
        {QStringLiteral("Retry interval"), QStringLiteral("%1 s").arg(options.interval())},
        {QStringLiteral("Receipt"), receiptWords().value(options.receipt())},
        {QStringLiteral("Receipt attachment"), attachmentWords().value(options.receiptAttachment())}};
    if (server.isFaxPageSizeSupported())
        fields.append({QStringLiteral("Page size"), pageSizeWords().value(options.faxPageSize())});
    if (server.isPrintReceiptSupported()) {
        fields.append({QStringLiteral("Print receipt"), receiptWords().value(options.faxReceipt())});
        fields.append({QStringLiteral("Printer"), options.selectPrinter()});
        fields.append({QStringLiteral("Print first page"),
                       options.printWithFirstPage() ? QStringLiteral("yes") : QStringLiteral("no")});
    }
    call.fields(fields);
}

int profileShow(Invocation& call)
{
    Session session(call);
    if (!session.open())
        return session.status();
    show(call, session.server(), session.server().user());
    return ExitStatus::Ok;
}

struct ContactOption
{
    const char* name;
    const char* description;
    void (Contact::*set)(const QString&);
};

const ContactOption contactOptions[] = {
    {"name", "Your name as recipients see it.", &Contact::setName},
    {"organization", "Your organization.", &Contact::setOrganization},
    {"phone", "Your phone number.", &Contact::setPhone},
    {"fax", "Your fax number.", &Contact::setFax},
    {"email", "Your mail address, for receipts.", &Contact::setEmail},
};

int profileSet(Invocation& call)
{
    bool hasContactOption = false;
    for (const ContactOption& option : contactOptions) {
        QString error;
        if (!checkText(call.value(option.name), false, &error))
            return call.failOption(option.name, error);
        hasContactOption = hasContactOption || call.isSet(option.name);
    }
    QString error;
    if (!checkText(call.value("cover"), false, &error))
        return call.failOption("cover", error);
    if (call.isSet("cover") && call.isSet("no-cover"))
        return call.failUsage(QStringLiteral("--cover and --no-cover exclude each other."));
    const std::optional<ScheduleChoices> choices = ScheduleChoices::read(call);
    if (!choices)
        return ExitStatus::Usage;
    if (!hasContactOption && !call.isSet("cover") && !call.isSet("no-cover") && choices->isEmpty())
        return call.failUsage(QStringLiteral("There is nothing to set."));

    Session session(call);
    if (!session.open())
        return session.status();
    FaxServer& server = session.server();
    const QString problem = choices->problem(server);
    if (!problem.isEmpty())
        return call.fail(ExitStatus::NotSupported, problem);

    FaxUser user = server.user();
    QuendraContact contact = user.contact();
    for (const ContactOption& option : contactOptions) {
        if (call.isSet(option.name))
            (contact.*option.set)(call.value(option.name));
    }
    user.setContact(contact);
    if (call.isSet("cover")) {
        user.setDefaultCoverPage(call.value("cover"));
        user.useCoverPage(true);
    } else if (call.isSet("no-cover")) {
        user.useCoverPage(false);
    }
    FaxUserScheduleOptions options = user.faxScheduleOptions();
    choices->applyTo(options);
    user.setScheduleOptions(options);

    auto* task = session.task<TaskModifyFaxUser>(Task::ModifyFaxUser);
    task->setUser(user);
    if (!session.run(
            task, &TaskModifyFaxUser::doneModifyFaxUser,
            [&server](const FaxUser& written) { server.setUser(written); },
            QStringLiteral("Saving the profile")))
        return session.status();

    // The older protocol has no schedule defaults on the server: there they are kept in the settings alone.
    QString movedTo;
    const QString trouble = session.settings().edit(
        [&server](SettingsFile& file) {
            file.put(server, false);
            return true;
        },
        &movedTo);
    if (!session.settings().remark().isEmpty())
        call.note(session.settings().remark());
    if (!trouble.isEmpty())
        return call.fail(ExitStatus::Settings, QStringLiteral("The server took the profile. ") + trouble);
    show(call, server, server.user());
    return ExitStatus::Ok;
}

} // namespace

QVector<Command> profileCommands()
{
    Command showCommand;
    showCommand.name = QStringLiteral("profile show");
    showCommand.summary =
        QStringLiteral("Show your profile on the server: who you are, and the defaults of a fax");
    showCommand.examples = QStringList{QStringLiteral("qdfax profile show"),
                                       QStringLiteral("qdfax profile show --json | jq .schedule")};
    showCommand.run = profileShow;

    Command set;
    set.name = QStringLiteral("profile set");
    set.arguments = QStringLiteral("[OPTION VALUE]...");
    set.summary = QStringLiteral("Change your profile on the server");
    set.description =
        QStringLiteral("What is not named stays as it is; an empty value empties a field. The server has\n"
                       "to be of a recent version to keep the defaults of a fax; an older one gets them\n"
                       "from this program's settings.");
    set.examples =
        QStringList{QStringLiteral("qdfax profile set --name \"Mary Poe\" --organization \"Poe & Sons\""),
                    QStringLiteral("qdfax profile set --cover Standard --priority 4 --receipt always"),
                    QStringLiteral("qdfax profile set --no-cover")};
    for (const ContactOption& option : contactOptions) {
        set.options.append({QString::fromLatin1(option.name), QString::fromLatin1(option.description),
                            QStringLiteral("TEXT")});
    }
    set.options.append(
        {QStringLiteral("cover"), QStringLiteral("The cover page of a new fax."), QStringLiteral("NAME")});
    set.options.append({QStringLiteral("no-cover"), QStringLiteral("A new fax has no cover page.")});
    set.options += ScheduleChoices::options();
    set.run = profileSet;

    return {showCommand, set};
}
