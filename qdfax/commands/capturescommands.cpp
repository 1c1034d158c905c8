#include "command.h"

#include "capturemodel.h"
#include "capturewindow.h"
#include "datetimeconverter.h"
#include "displaytext.h"
#include "faxdialog.h"
#include "folderwatch.h"
#include "parsing.h"
#include "recordjson.h"
#include "settingsfile.h"
#include "terminal.h"
#include "text.h"

#include <QDesktopServices>
#include <QDir>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>
#include <QMessageBox>
#include <QSettings>
#include <QUrl>

#include <algorithm>

namespace {

const int mostRounds = 1000000;

/// The documents, the newest first, as the commands number them.
class Captures
{
public:
    Captures()
        : m_model(m_converter, false)
    {
        read();
    }

    void read()
    {
        m_model.slotUpdate();
        m_documents = m_model.countedDocuments();
        std::stable_sort(m_documents.begin(), m_documents.end(),
                         [](const auto& a, const auto& b) { return a.created > b.created; });
    }

    CaptureModel& model() { return m_model; }
    const QVector<CaptureModel::Document>& documents() const { return m_documents; }

    /// The document with a name or a number; null if there is none.
    const CaptureModel::Document* find(const QString& text) const
    {
        for (const CaptureModel::Document& document : m_documents) {
            if (document.file.fileName() == text)
                return &document;
        }
        QString error;
        const auto number = parseInteger(text, 1, m_documents.size(), &error);
        return number ? &m_documents.at(*number - 1) : nullptr;
    }

    Table table() const
    {
        Table table({{Text::tr("N"), Table::Right},
                     {Text::tr("NAME"), Table::Left, 16},
                     {Text::tr("PAGES"), Table::Right, 0, 1},
                     {Text::tr("CREATED")},
                     {Text::tr("SIZE"), Table::Right, 0, 2},
                     {Text::tr("BESIDE IT"), Table::Left, 0, 3}});
        for (int i = 0; i < m_documents.size(); ++i) {
            const CaptureModel::Document& document = m_documents.at(i);
            table.addRow({QString::number(i + 1), document.file.fileName(), QString::number(document.pages),
                          timeText(document.created), sizeText(document.file.size()),
                          CaptureModel::companionText(document)});
        }
        return table;
    }

    QJsonArray json() const
    {
        static const QStringList states{QStringLiteral("none"), QStringLiteral("present"),
                                        QStringLiteral("older"), QStringLiteral("unreadable")};
        QJsonArray array;
        for (const CaptureModel::Document& document : m_documents) {
            array.append(QJsonObject{{QStringLiteral("name"), document.file.fileName()},
                                     {QStringLiteral("file"), document.file.filePath()},
                                     {QStringLiteral("pages"), document.pages},
                                     {QStringLiteral("created"), toJson(document.created)},
                                     {QStringLiteral("bytes"), document.file.size()},
                                     {QStringLiteral("tiff"), states.value(document.companion)},
                                     {QStringLiteral("tiffBytes"), document.tiff.size()}});
        }
        return array;
    }

private:
    DateTimeConverter m_converter;
    CaptureModel m_model;
    QVector<CaptureModel::Document> m_documents;
};

int failUnknown(const Invocation& call, const QString& text)
{
    return call.fail(
        ExitStatus::NotFound,
        Text::tr("There is no captured document \"%1\". \"qdfax captures list\" shows them.").arg(text));
}

int list(Invocation& call)
{
    const Captures captures;
    if (call.isJson())
        call.json(captures.json());
    else if (captures.documents().isEmpty())
        call.note(Text::tr("There are no captured documents in %1.")
                      .arg(QDir::toNativeSeparators(CaptureModel::folder())));
    else
        call.table(captures.table());
    return ExitStatus::Ok;
}

int view(Invocation& call)
{
    const Captures captures;
    const CaptureModel::Document* document = captures.find(call.arguments().at(0));
    if (!document)
        return failUnknown(call, call.arguments().at(0));
    const QString path = document->file.absoluteFilePath();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        return call.fail(ExitStatus::File, Text::tr("No program is there to open %1.").arg(path));
    return ExitStatus::Ok;
}

/// Reports the result of deleting documents and their companions.
int reportDeleted(const Invocation& call, const QStringList& wanted)
{
    QStringList left;
    int deleted = 0;
    for (const QString& path : wanted) {
        if (QFileInfo::exists(path))
            left.append(QFileInfo(path).fileName());
        else
            ++deleted;
        const QFileInfo companion = CaptureModel::companionOf(QFileInfo(path));
        if (companion.exists())
            left.append(companion.fileName());
    }
    if (call.isJson())
        call.json(QJsonObject{{QStringLiteral("deleted"), deleted},
                              {QStringLiteral("left"), QJsonArray::fromStringList(left)}});
    else
        call.line(Text::tr("Deleted: %1").arg(deleted));
    if (left.isEmpty())
        return ExitStatus::Ok;
    return call.fail(ExitStatus::File,
                     Text::tr("Files that cannot be deleted: %1 (%2). Check the rights of %3.")
                         .arg(QString::number(left.size()),
                              left.mid(0, 3).join(QStringLiteral(", ")) +
                                  (left.size() > 3 ? QStringLiteral(", ...") : QString()),
                              QDir::toNativeSeparators(CaptureModel::folder())));
}

int deleteSome(Invocation& call)
{
    Captures captures;
    QStringList paths;
    for (const QString& text : call.arguments()) {
        const CaptureModel::Document* document = captures.find(text);
        if (!document)
            return failUnknown(call, text);
        if (!paths.contains(document->file.filePath()))
            paths.append(document->file.filePath());
    }
    for (const QString& path : qAsConst(paths))
        captures.model().removePrintCapture(QFileInfo(path));
    return reportDeleted(call, paths);
}

int deleteAll(Invocation& call)
{
    Captures captures;
    QStringList paths;
    for (const CaptureModel::Document& document : captures.documents())
        paths.append(document.file.filePath());
    if (!call.isSet("yes") && !paths.isEmpty()) {
        return call.failUsage(
            Text::tr("This would delete everything in %2: %1. Say so by --yes.")
                .arg(captureSummary(captures.model()), QDir::toNativeSeparators(CaptureModel::folder())));
    }
    QEventLoop loop;
    QObject::connect(&captures.model(), &CaptureModel::signalDeleteAllComlete, &loop, &QEventLoop::quit);
    captures.model().deleteAll();
    loop.exec();
    return reportDeleted(call, paths);
}

int watch(Invocation& call)
{
    QString error;
    int rounds = 0;
    if (call.isSet("rounds")) {
        const auto number = parseInteger(call.value("rounds"), 1, mostRounds, &error);
        if (!number)
            return call.failOption("rounds", error);
        rounds = *number;
    }
    FolderWatch folder(CaptureModel::folder());
    QEventLoop loop;
    bool isChanged = false; // counting pages runs the event loop, which may deliver changes too
    QObject::connect(&folder, &FolderWatch::changed, &loop, [&] {
        isChanged = true;
        loop.quit();
    });
    Captures captures;
    if (!call.isJson() && Terminal::isOutput())
        Terminal::write("\x1b[2J");
    for (int round = 1;; ++round) {
        if (call.isJson()) {
            call.json(captures.json());
        } else {
            const int width = Terminal::width();
            const QString title =
                Text::tr("%1 in %2. Ctrl-C ends.")
                    .arg(captureSummary(captures.model()), QDir::toNativeSeparators(CaptureModel::folder()));
            Terminal::showScreen(
                QStringList{width > 0 ? cutToWidth(printable(title), width) : printable(title)} +
                captures.table().lines(width));
        }
        if (Terminal::outputFailed()) // flushes
            return ExitStatus::File;
        if (round == rounds)
            return ExitStatus::Ok;
        folder.setFiles(captures.model().filesToWatch());
        if (!isChanged)
            loop.exec();
        isChanged = false;
        captures.read();
    }
}

int window(Invocation& call)
{
    const QFileInfo settingsFile(SettingsFile::defaultPath());
    QSettings settings(settingsFile.dir().filePath(QStringLiteral("qdfax-windows.ini")),
                       QSettings::IniFormat);
    DateTimeConverter converter;
    CaptureModel model(converter, true);
    int status = ExitStatus::Ok;
    while (true) {
        QString file;
        QString name;
        model.slotUpdate();
        auto* captures = new CaptureWindow(model, converter, settings); // deletes itself
        QEventLoop loop;
        // clazy:excludeall=lambda-in-connect (the loop, and so the connection, ends before what is captured)
        QObject::connect(captures, &PrintCaptureBase::signalSendNewFax, &loop,
                         [&](const QString& fileName, const QString& documentName) {
                             file = fileName;
                             name = documentName;
                         });
        QObject::connect(captures, &QObject::destroyed, &loop, &QEventLoop::quit);
        captures->show();
        loop.exec();
        if (file.isEmpty())
            return status;
        // the window closes for a new fax; when that is done with, there may be other documents to look after
        FaxDialog dialog(call, file, name);
        dialog.exec();
        status = dialog.status();
    }
}

} // namespace

QVector<Command> captureCommands()
{
    Command captures;
    captures.name = QStringLiteral("captures");
    captures.summary = Text::tr("Open the window of captured print jobs");
    captures.description = Text::tr(
        "Shows what the print-capture driver has left in its folder, and follows it. \"New Fax\" asks for a\n"
        "number and a name and sends the document through the server, as \"qdfax send\" does. The exit\n"
        "status is that of the last fax.\n"
        "Without a window: captures list, view, delete, delete-all, watch.");
    captures.examples = QStringList{QStringLiteral("qdfax captures"),
                                    QStringLiteral("qdfax --server anna@fax.example.org captures")};
    captures.needsDisplay = true;
    captures.run = window;

    Command listCommand;
    listCommand.name = QStringLiteral("captures list");
    listCommand.summary = Text::tr("Show the captured print jobs");
    listCommand.description = Text::tr(
        "The newest first. Pages are 0 for what is no PDF. BESIDE IT tells of a TIFF file of the same name,\n"
        "which goes with its document.");
    listCommand.examples = QStringList{
        QStringLiteral("qdfax captures list"),
        QStringLiteral("qdfax send \"$(qdfax captures list --json | jq -r '.[0].file')\" --to 5551234")};
    listCommand.run = list;

    Command viewCommand;
    viewCommand.name = QStringLiteral("captures view");
    viewCommand.arguments = QStringLiteral("NAME|N");
    viewCommand.summary = Text::tr("Open a captured print job with the desktop's program");
    viewCommand.description = Text::tr("NAME and N are those of \"qdfax captures list\"; 1 is the newest.");
    viewCommand.examples = QStringList{QStringLiteral("qdfax captures view 1")};
    viewCommand.leastArguments = viewCommand.mostArguments = 1;
    viewCommand.needsDisplay = true;
    viewCommand.run = view;

    Command deleteCommand;
    deleteCommand.name = QStringLiteral("captures delete");
    deleteCommand.arguments = QStringLiteral("NAME|N...");
    deleteCommand.summary = Text::tr("Delete captured print jobs");
    deleteCommand.description =
        viewCommand.description +
        Text::tr("\nNothing is deleted when one of them does not exist. A TIFF file beside one goes too.\n"
                 "JSON: how many documents were deleted, and the names of all files that were left.");
    deleteCommand.examples = QStringList{QStringLiteral("qdfax captures delete 1 offer.pdf")};
    deleteCommand.leastArguments = 1;
    deleteCommand.mostArguments = -1;
    deleteCommand.run = deleteSome;

    Command deleteAllCommand;
    deleteAllCommand.name = QStringLiteral("captures delete-all");
    deleteAllCommand.summary = Text::tr("Delete all captured print jobs");
    deleteAllCommand.examples = QStringList{QStringLiteral("qdfax captures delete-all --yes")};
    deleteAllCommand.options = {{QStringLiteral("yes"), Text::tr("Really.")}};
    deleteAllCommand.run = deleteAll;

    Command watchCommand;
    watchCommand.name = QStringLiteral("captures watch");
    watchCommand.summary = Text::tr("Show the captured print jobs whenever they change");
    watchCommand.examples =
        QStringList{QStringLiteral("qdfax captures watch"),
                    QStringLiteral("qdfax captures watch --json | jq --unbuffered length")};
    watchCommand.options = {
        {QStringLiteral("rounds"), Text::tr("End when it was shown so often."), QStringLiteral("N")}};
    watchCommand.run = watch;

    return {captures, listCommand, viewCommand, deleteCommand, deleteAllCommand, watchCommand};
}
