#include "command.h"

#include "contactfile.h"
#include "contactsession.h"
#include "displaytext.h"
#include "quendracontact.h"
#include "terminal.h"
#include "text.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSaveFile>
#include <QSet>

namespace {

const qint64 largestFile = qint64(64) * 1024 * 1024;

/// The words for the books that files are made of.
QStringList exchangedBooks()
{
    return {QStringLiteral("personal"), QStringLiteral("global")};
}

/// All fields, for comparing contacts.
QString key(const Contact& contact)
{
    return QStringList{contact.name(), contact.organization(), contact.phone(), contact.fax(),
                       contact.email()}
        .join(QChar(0));
}

// --- Export

int exportContacts(Invocation& call)
{
    if (call.isSet("csv") == call.isSet("vcard"))
        return call.failUsage(Text::tr("Choose one of --csv and --vcard."));
    if (call.isSet("vcard") && !ContactFile::knowsVcards())
        return call.failUsage(Text::tr("This qdfax was built without vCards; use --csv."));
    const auto book = readBook(call, ContactList::Unknown);
    if (!book)
        return ExitStatus::Usage;
    if (*book == ContactList::PersonalGroups || *book == ContactList::GlobalGroups)
        return call.failOption("book", Text::tr("takes personal or global; groups are not exported"));
    const QString path = call.arguments().value(0);
    const bool isToFile = !path.isEmpty() && path != QLatin1String("-");
    if (call.isJson() && !isToFile)
        return call.failUsage(Text::tr("With --json the contacts go to a FILE."));
    const QFileInfo target(path);
    if (isToFile && (target.exists() || target.isSymLink()) && !call.isSet("overwrite")) {
        return call.fail(ExitStatus::File,
                         Text::tr("%1 exists already. Choose another name, or replace it with --overwrite.")
                             .arg(QDir::toNativeSeparators(path)));
    }
    int status = ExitStatus::Ok;
    const auto cache = ContactCache::open(call, &status);
    if (!cache)
        return status;
    const QVector<StoredContact> units =
        *book == ContactList::Unknown ? cache->list(ContactLocalStorage::TypeContact) : cache->list(*book);
    QVector<Contact> contacts;
    QStringList uids;
    for (const StoredContact& unit : units) {
        contacts.append(unit.contact());
        uids.append(bookWords().value(unit.book() - 1) + QLatin1Char('/') + unit.uid);
    }
    const QByteArray text =
        call.isSet("csv") ? ContactFile::writeCsv(contacts) : ContactFile::writeVcards(contacts, uids);
    if (!isToFile) {
        Terminal::write(text);
        return ExitStatus::Ok;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        return call.fail(ExitStatus::File, Text::tr("%1 cannot be written: %2. Nothing of it was.")
                                               .arg(QDir::toNativeSeparators(path), file.errorString()));
    }
    if (call.isJson()) {
        call.json(QJsonObject{{QStringLiteral("file"), target.absoluteFilePath()},
                              {QStringLiteral("contacts"), contacts.size()}});
    } else {
        call.line(
            Text::tr("Exported %n contacts to %1.", "", contacts.size()).arg(QDir::toNativeSeparators(path)));
    }
    return ExitStatus::Ok;
}

// --- Import

/// The result of an import.
struct ImportReport
{
    struct Failure
    {
        int line;
        QString why;
    };

    int imported{0};
    int present{0}; ///< Left out because the book has them already.
    QVector<Failure> failures;
    int nextLine{0}; ///< The line of the first entry not tried; 0: all were.
    int notTried{0};
};

/// Prints immediately why a line was not imported.
void fail(const Invocation& call, ImportReport& report, int line, const QString& why)
{
    report.failures.append({line, why});
    call.note(Text::tr("Line %1 is not imported: %2.").arg(line).arg(why));
}

void print(const Invocation& call, const ImportReport& report, const QString& book, bool isDry)
{
    if (call.isJson()) {
        QJsonArray failures;
        for (const ImportReport::Failure& failure : report.failures) {
            failures.append(
                QJsonObject{{QStringLiteral("line"), failure.line}, {QStringLiteral("why"), failure.why}});
        }
        QJsonObject object{{QStringLiteral("imported"), report.imported},
                           {QStringLiteral("present"), report.present},
                           {QStringLiteral("notImported"), failures},
                           {QStringLiteral("notTried"), report.notTried},
                           {QStringLiteral("dryRun"), isDry}};
        object.insert(QStringLiteral("stoppedAtLine"),
                      report.nextLine == 0 ? QJsonValue() : QJsonValue(report.nextLine));
        call.json(object);
        return;
    }
    QString text = (isDry ? Text::tr("%n contacts can be imported to the %1", "", report.imported)
                          : Text::tr("Imported %n contacts to the %1", "", report.imported))
                       .arg(book);
    if (report.present > 0)
        text += Text::tr(", %n were there already", "", report.present);
    if (!report.failures.isEmpty())
        text += Text::tr(", %n were not imported", "", report.failures.size());
    if (report.notTried > 0)
        text += Text::tr(", %n from line %1 on were not tried", "", report.notTried).arg(report.nextLine);
    call.line(text + QLatin1Char('.'));
}

int readContactFile(const Invocation& call, const QString& path, ContactFile* contacts)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool isCsv = suffix == QLatin1String("csv");
    if (!isCsv && suffix != QLatin1String("vcf") && suffix != QLatin1String("vcard"))
        return call.failUsage(Text::tr("FILE has to end in .csv or .vcf, which tells what it holds."));
    const QString shown = QDir::toNativeSeparators(path);
    const auto refuse = [&call, &shown](const QString& why) {
        return call.fail(ExitStatus::File,
                         Text::tr("%1 cannot be imported: %2. Nothing was imported.").arg(shown, why));
    };
    QFile file(path);
    if (!QFileInfo(path).isFile())
        return refuse(QFileInfo::exists(path) ? Text::tr("it is not a file")
                                              : Text::tr("there is no such file"));
    if (!file.open(QIODevice::ReadOnly))
        return refuse(file.errorString());
    if (file.size() > largestFile)
        return refuse(Text::tr("it is larger than %1").arg(sizeText(largestFile)));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return refuse(file.errorString());
    *contacts = isCsv ? ContactFile::readCsv(bytes) : ContactFile::readVcards(bytes);
    return contacts->problem.isEmpty() ? int(ExitStatus::Ok) : refuse(contacts->problem);
}

/// Whether the next contact would fail likewise.
bool endsImport(int status, int httpStatus)
{
    return httpStatus == 0 || httpStatus == 401 || status == ExitStatus::AccessDenied ||
           status == ExitStatus::NotPermitted || status == ExitStatus::AuthError ||
           status == ExitStatus::TimeOut;
}

/// Adds the contacts that the book lacks. Returns the status that stopped it, or Ok.
int addAll(const Invocation& call, ContactSession& contacts, const QVector<ContactFile::Entry>& entries,
           ContactList::Type book, ImportReport& report)
{
    QSet<QString> present;
    const QVector<StoredContact> stored = contacts.cache().list(book);
    for (const StoredContact& unit : stored)
        present.insert(key(unit.contact()));
    Terminal::ProgressLine line;
    QElapsedTimer clock;
    clock.start();
    qint64 shown = 0;
    for (int i = 0; i < entries.size(); ++i) {
        const ContactFile::Entry& entry = entries.at(i);
        if (!entry.problem.isEmpty()) {
            fail(call, report, entry.line, entry.problem);
            continue;
        }
        if (present.contains(key(entry.contact))) {
            ++report.present;
            continue;
        }
        if (clock.elapsed() - shown >= 100) { // ms
            shown = clock.elapsed();
            line.show(Text::tr("Importing %1 of %2 (line %3), %4 left")
                          .arg(i + 1)
                          .arg(entries.size())
                          .arg(entry.line)
                          .arg(durationText(shown * (entries.size() - i) / (i + 1) / 1000)));
        }
        Terminal::setLastWords(
            Text::tr("qdfax: Interrupted at line %1. %n contacts were imported before it, and perhaps this "
                     "one; \"qdfax contacts sync\" shows it.",
                     "", report.imported)
                .arg(entry.line));
        QuendraContact contact;
        static_cast<Contact&>(contact) = entry.contact;
        quint32 id = 0;
        if (contacts.add(contact, book, &id)) {
            ++report.imported;
            present.insert(key(entry.contact));
            continue;
        }
        const int status = contacts.status();
        fail(call, report, entry.line, contacts.session().error().chopped(1)); // a sentence
        if (endsImport(status, contacts.session().replies().last().httpStatus)) {
            if (status == ExitStatus::TimeOut || contacts.session().replies().last().httpStatus == 0)
                call.note(Text::tr("Whether the server took line %1 is not known; \"qdfax contacts sync\" "
                                   "shows it.")
                              .arg(entry.line));
            report.notTried = entries.size() - i - 1;
            if (report.notTried > 0)
                report.nextLine = entries.at(i + 1).line;
            return status;
        }
    }
    return ExitStatus::Ok;
}

int importContacts(Invocation& call)
{
    const QString path = call.arguments().at(0);
    const auto book = readBook(call, ContactList::PersonalContacts);
    if (!book)
        return ExitStatus::Usage;
    if (*book == ContactList::PersonalGroups || *book == ContactList::GlobalGroups)
        return call.failOption("book", Text::tr("takes personal or global; groups are not imported"));
    ContactFile file;
    int status = readContactFile(call, path, &file);
    if (status != ExitStatus::Ok)
        return status;
    if (!file.unusedColumns.isEmpty()) {
        call.note(Text::tr("These columns are not imported: %1.")
                      .arg(file.unusedColumns.join(QStringLiteral(", "))));
    }
    const bool isDry = call.isSet("dry-run");
    ImportReport report;
    if (isDry) {
        for (const ContactFile::Entry& entry : qAsConst(file.entries)) {
            if (entry.problem.isEmpty())
                ++report.imported;
            else
                fail(call, report, entry.line, entry.problem);
        }
    } else {
        ContactSession contacts(call);
        if (!contacts.open())
            return contacts.status();
        contacts.session().setQuiet(true);
        status = addAll(call, contacts, file.entries, *book, report);
        Terminal::setLastWords(QString());
    }
    print(call, report, bookText(*book), isDry);
    if (status == ExitStatus::Ok && !report.failures.isEmpty())
        status = ExitStatus::File;
    return status;
}

} // namespace

QVector<Command> contactFileCommands()
{
    Command exportCommand;
    exportCommand.name = QStringLiteral("contacts export");
    exportCommand.arguments = QStringLiteral("--csv|--vcard [FILE]");
    exportCommand.summary = Text::tr("Write contacts as a table or as vCards");
    exportCommand.description = Text::tr(
        "Writes what the last \"qdfax contacts sync\" brought, without asking the server: to FILE, or to\n"
        "standard output. Both forms are UTF-8; the table has the columns name, organization, phone, fax\n"
        "and email. Groups are not part of it.");
    exportCommand.examples =
        QStringList{QStringLiteral("qdfax contacts export --csv contacts.csv"),
                    QStringLiteral("qdfax contacts export --vcard --book global > server.vcf")};
    exportCommand.options = QList<QCommandLineOption>{
        {QStringLiteral("csv"), Text::tr("A table, as spreadsheets read it.")},
        {QStringLiteral("vcard"), Text::tr("vCards 3.0, as address books and telephones read them.")},
        bookOption(Text::tr("Only personal or only global contacts."), exchangedBooks()),
        {QStringLiteral("overwrite"), Text::tr("Replace a file of the same name.")}};
    exportCommand.mostArguments = 1;
    exportCommand.run = exportContacts;

    Command importCommand;
    importCommand.name = QStringLiteral("contacts import");
    importCommand.arguments = QStringLiteral("FILE.csv|FILE.vcf");
    importCommand.summary = Text::tr("Add the contacts of a table or of vCards to a book of the server");
    importCommand.description =
        Text::tr(
            "The first line of a table names its columns: name, organization, phone, fax, email, in any\n"
            "order; titles of other address books are understood too. Of a vCard the name, the "
            "organization,\n"
            "a phone and a fax number and an e-mail address are taken, those at work before others. "
            "Contacts\n"
            "that the cache has in this book with the same fields are left out, so an import that broke off\n"
            "can be repeated. Each line that cannot be imported is named with the reason, and the others "
            "are\n"
            "imported; the exit status is %1 then. A file that is damaged as a whole imports nothing.")
            .arg(ExitStatus::File);
    importCommand.examples = QStringList{QStringLiteral("qdfax contacts import contacts.csv --dry-run"),
                                         QStringLiteral("qdfax contacts import contacts.vcf --book global")};
    importCommand.options = QList<QCommandLineOption>{
        bookOption(Text::tr("The book to add them to (personal)."), exchangedBooks()),
        {QStringLiteral("dry-run"), Text::tr("Only say what can be imported.")}};
    importCommand.leastArguments = importCommand.mostArguments = 1;
    importCommand.run = importContacts;

    return {exportCommand, importCommand};
}
