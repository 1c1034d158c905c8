#include "command.h"

#include "faxoptions.h"
#include "faxserver.h"
#include "faxuser.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "tasks/taskmodifyfaxuser.h"
#include "text.h"

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
        {Text::tr("Login"), server.login()},
        {Text::tr("Name"), contact.name()},
        {Text::tr("Organization"), contact.organization()},
        {Text::tr("Phone"), contact.phone()},
        {Text::tr("Fax"), contact.fax()},
        {Text::tr("E-mail"), contact.email()},
        {Text::tr("Cover page"), user.isUsedCoverPage() ? user.defaultCoverpage() : Text::tr("none")},
        {Text::tr("Priority"), QString::number(options.priority())},
        {Text::tr("Tries"), QString::number(options.maxAttempts())},
        {Text::tr("Retry interval"), QStringLiteral("%1 s").arg(options.interval())},
        {Text::tr("Receipt"), receiptWords().value(options.receipt())},
        {Text::tr("Receipt attachment"), attachmentWords().value(options.receiptAttachment())}};
    if (server.isFaxPageSizeSupported())
        fields.append({Text::tr("Page size"), pageSizeWords().value(options.faxPageSize())});
    if (server.isPrintReceiptSupported()) {
        fields.append({Text::tr("Print receipt"), receiptWords().value(options.faxReceipt())});
        fields.append({Text::tr("Printer"), options.selectPrinter()});
        fields.append(
            {Text::tr("Print first page"), options.printWithFirstPage() ? Text::tr("yes") : Text::tr("no")});
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
    {"name", QT_TRANSLATE_NOOP("qdfax", "Your name as recipients see it."), &Contact::setName},
    {"organization", QT_TRANSLATE_NOOP("qdfax", "Your organization."), &Contact::setOrganization},
    {"phone", QT_TRANSLATE_NOOP("qdfax", "Your phone number."), &Contact::setPhone},
    {"fax", QT_TRANSLATE_NOOP("qdfax", "Your fax number."), &Contact::setFax},
    {"email", QT_TRANSLATE_NOOP("qdfax", "Your mail address, for receipts."), &Contact::setEmail},
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
        return call.failUsage(Text::tr("--cover and --no-cover exclude each other."));
    const std::optional<ScheduleChoices> choices = ScheduleChoices::read(call);
    if (!choices)
        return ExitStatus::Usage;
    if (!hasContactOption && !call.isSet("cover") && !call.isSet("no-cover") && choices->isEmpty())
        return call.failUsage(Text::tr("There is nothing to set."));

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
            [&server](const FaxUser& written) { server.setUser(written); }, Text::tr("Saving the profile")))
        return session.status();

    // The older protocol has no schedule defaults on the server: there they are kept in the settings alone.
    QString movedTo;
    const QString trouble = session.settings().edit(
        [&server](SettingsFile& file) {
            file.put(server, false);
            return true;
        },
        &movedTo);
    call.note(session.settings().takeRemark());
    if (!trouble.isEmpty())
        return call.fail(ExitStatus::Settings, Text::tr("The server took the profile. ") + trouble);
    show(call, server, server.user());
    return ExitStatus::Ok;
}

} // namespace

QVector<Command> profileCommands()
{
    Command showCommand;
    showCommand.name = QStringLiteral("profile show");
    showCommand.summary = Text::tr("Show your profile on the server: who you are, and the defaults of a fax");
    showCommand.examples = QStringList{QStringLiteral("qdfax profile show"),
                                       QStringLiteral("qdfax profile show --json | jq .schedule")};
    showCommand.run = profileShow;

    Command set;
    set.name = QStringLiteral("profile set");
    set.arguments = QStringLiteral("[OPTION VALUE]...");
    set.summary = Text::tr("Change your profile on the server");
    set.description =
        Text::tr("What is not named stays as it is; an empty value empties a field. The server has\n"
                 "to be of a recent version to keep the defaults of a fax; an older one gets them\n"
                 "from this program's settings.");
    set.examples =
        QStringList{QStringLiteral("qdfax profile set --name \"Mary Poe\" --organization \"Poe & Sons\""),
                    QStringLiteral("qdfax profile set --cover Standard --priority 4 --receipt always"),
                    QStringLiteral("qdfax profile set --no-cover")};
    for (const ContactOption& option : contactOptions) {
        set.options.append(
            {QString::fromLatin1(option.name), Text::tr(option.description), QStringLiteral("TEXT")});
    }
    set.options.append(
        {QStringLiteral("cover"), Text::tr("The cover page of a new fax."), QStringLiteral("NAME")});
    set.options.append({QStringLiteral("no-cover"), Text::tr("A new fax has no cover page.")});
    set.options += ScheduleChoices::options();
    set.run = profileSet;

    return {showCommand, set};
}
