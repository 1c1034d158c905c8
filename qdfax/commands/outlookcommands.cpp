#include "command.h"

#include "contactcache.h"
#include "contactlocalstorage.h"
#include "contactmanager.h"
#include "contactsoptionsoutlook.h"
#include "outlookcontactprovider.h"
#include "settingsfile.h"
#include "text.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>

namespace {

QString chooseHint()
{
    return Text::tr("\"qdfax outlook folders\" shows what there is.");
}

/// Held by a command while it runs: a reference to Outlook, which would otherwise exit after each use and be
/// started again for the next, and the settings.
class OutlookUse
{
public:
    /// Returns an exit status, having reported any error.
    int begin(const Invocation& call)
    {
        if (!m_application) {
            return call.fail(ExitStatus::NotSupported,
                             Text::tr("Outlook is not available: it has to be installed on this "
                                      "computer, and that takes Windows."));
        }
        settings.load();
        call.note(settings.takeRemark());
        if (!settings.problem().isEmpty())
            return call.fail(ExitStatus::Settings, settings.problem());
        return ExitStatus::Ok;
    }

    SettingsFile settings;

private:
    const OutlookAccess m_access;
    const QSharedPointer<OutlookApplication> m_application{m_access.createApplication()};
};

/// The folders below a parent, as they are shown to people or, nested, as JSON.
QJsonArray walk(const ContactsOptionsOutlook& model, const QModelIndex& parent, int depth, Table& table)
{
    QJsonArray folders;
    const int rows = model.rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (!index.isValid())
            continue; // no contacts in it or below it
        const QString key = model.entryIDByIndex(index);
        const QString name = model.data(index).toString();
        const bool isContacts = model.entryIDIsContact(key);
        const bool isChosen = isContacts && key == model.selectedEntryID();
        table.addRow({isChosen ? QStringLiteral("*") : QString(), QString(2 * depth, QLatin1Char(' ')) + name,
                      isContacts ? Text::tr("yes") : QString(), isContacts ? key : QString()});
        folders.append(QJsonObject{{QStringLiteral("name"), name},
                                   {QStringLiteral("key"), key},
                                   {QStringLiteral("contacts"), isContacts},
                                   {QStringLiteral("chosen"), isChosen},
                                   {QStringLiteral("folders"), walk(model, index, depth + 1, table)}});
    }
    return folders;
}

int outlookFolders(Invocation& call)
{
    OutlookUse outlook;
    const int status = outlook.begin(call);
    if (status != ExitStatus::Ok)
        return status;
    ContactsOptionsOutlook model;
    model.setSelectedEntryID(outlook.settings.outlookFolder());

    Table table({{QString(), Table::Left, 0, 0},
                 {Text::tr("Folder"), Table::Left, 0, 0},
                 {Text::tr("Contacts"), Table::Left, 0, 1},
                 {Text::tr("Key"), Table::Left, 0, 0}});
    // rows go into the table in the order of the walk, a folder before what is below it
    const QJsonArray folders = walk(model, QModelIndex(), 0, table);
    if (call.isJson())
        call.json(folders);
    else if (table.rowCount() == 0)
        call.line(Text::tr("Outlook has no contact folder."));
    else
        call.table(table);
    return ExitStatus::Ok;
}

/// Removes the contacts of every Outlook folder but one from the cache. Returns whether that succeeded.
bool forgetOtherFolders(ContactLocalStorage& storage, quint32 kept)
{
    const QList<quint32> sources = storage.getSourceList(ContactLocalStorage::SourceOutlook);
    for (const quint32 source : sources) {
        if (source != kept)
            storage.deleteSource(source);
    }
    return storage.getSourceList(ContactLocalStorage::SourceOutlook) == QList<quint32>{kept};
}

int outlookChoose(Invocation& call)
{
    OutlookUse outlook;
    const int status = outlook.begin(call);
    if (status != ExitStatus::Ok)
        return status;
    if (call.isSet("default") == !call.arguments().isEmpty())
        return call.failUsage(Text::tr("Name a folder by its key, or take the default with --default."));

    const ContactsOptionsOutlook model;
    const QString key = call.isSet("default") ? model.defaultEntryID() : call.arguments().first();
    if (!model.entryIDIsContact(key)) {
        return call.fail(ExitStatus::NotFound,
                         (call.isSet("default")
                              ? Text::tr("Outlook has no default contact folder. ")
                              : Text::tr("\"%1\" is not the key of a contact folder. ").arg(key)) +
                             chooseHint());
    }
    // adding shows whether the cache is writable, before anything is changed
    ContactLocalStorage storage;
    const bool isKnown = storage.getSource(key, ContactLocalStorage::SourceOutlook) != 0;
    const quint32 source = storage.addSource(key, ContactLocalStorage::SourceOutlook);
    if (source == 0)
        return call.fail(ExitStatus::File, ContactCache::unusableStore("outlook choose"));
    const QString trouble = outlook.settings.edit(
        [&key](SettingsFile& file) {
            file.setOutlookFolder(key);
            return true;
        },
        nullptr);
    call.note(outlook.settings.takeRemark());
    if (!trouble.isEmpty()) {
        if (!isKnown)
            storage.deleteSource(source);
        return call.fail(ExitStatus::Settings, trouble);
    }
    if (!forgetOtherFolders(storage, source)) {
        return call.fail(ExitStatus::File, Text::tr("The folder is chosen, but the contacts of the one "
                                                    "before could not be taken out of the cache."));
    }
    if (call.isJson())
        call.json(QJsonObject{{QStringLiteral("key"), key}});
    else
        call.line(Text::tr("Chosen. \"qdfax outlook sync\" copies the contacts."));
    return ExitStatus::Ok;
}

int outlookSync(Invocation& call)
{
    OutlookUse outlook;
    const int status = outlook.begin(call);
    if (status != ExitStatus::Ok)
        return status;
    const QString key = outlook.settings.outlookFolder();
    if (key.isEmpty()) {
        return call.fail(ExitStatus::Settings,
                         Text::tr("No Outlook folder is chosen. Choose one with \"qdfax outlook choose\"."));
    }
    if (!ContactsOptionsOutlook().entryIDIsContact(key)) {
        return call.fail(ExitStatus::NotFound,
                         Text::tr("The chosen Outlook folder is gone, or holds no contacts any more. ") +
                             chooseHint());
    }

    ContactManager manager;
    manager.setOutlookEntryID(key, false);
    manager.initOutlook(false);
    auto* provider = qobject_cast<OutlookContactProvider*>(manager.providers().first().data());
    const unsigned int source = provider->sourceId();
    if (source == 0) {
        if (manager.storage()->addSource(key, ContactLocalStorage::SourceOutlook) == 0)
            return call.fail(ExitStatus::File, ContactCache::unusableStore("outlook sync"));
        return call.fail(ExitStatus::NotFound, Text::tr("Outlook does not open the folder any more."));
    }
    QEventLoop loop;
    QObject::connect(&manager, &ContactManager::onSyncStop, &loop, &QEventLoop::quit);
    provider->syncContacts(ContactList::OutlookContacts, true);
    if (manager.isSync())
        loop.exec();
    if (!provider->isStored()) {
        return call.fail(ExitStatus::File,
                         Text::tr("The contacts could not be stored, and those copied before stay: check "
                                  "permissions and free space."));
    }
    if (!provider->isRead()) {
        return call.fail(ExitStatus::NotFound,
                         Text::tr("Outlook did not give the whole folder, and the cache holds only "
                                  "what it gave. Try again while Outlook runs."));
    }
    const int count = manager.storage()
                          ->getContactList(source, ContactLocalStorage::TypeContact,
                                           ContactLocalStorage::LocationPersonal, 0, 0, 0)
                          .size();
    if (call.isJson())
        call.json(QJsonObject{{QStringLiteral("key"), key}, {QStringLiteral("contacts"), count}});
    else
        call.line(Text::tr("%n contacts copied.", "", count));
    return ExitStatus::Ok;
}

} // namespace

QVector<Command> outlookCommands()
{
    Command folders;
    folders.name = QStringLiteral("outlook folders");
    folders.summary = Text::tr("Show Outlook's contact folders");
    folders.description = Text::tr("Folders that neither are contact folders nor hold one are left out. The\n"
                                   "chosen folder has a star.");
    folders.examples =
        QStringList{QStringLiteral("qdfax outlook folders"),
                    QStringLiteral("qdfax outlook folders --json | jq -r '.. | .key? // empty'")};
    folders.run = outlookFolders;

    Command choose;
    choose.name = QStringLiteral("outlook choose");
    choose.arguments = QStringLiteral("KEY|--default");
    choose.summary = Text::tr("Choose the Outlook folder whose contacts are copied");
    choose.description = Text::tr("The contacts of the folder chosen before leave the cache.");
    choose.examples = QStringList{QStringLiteral("qdfax outlook choose --default")};
    choose.options = {{QStringLiteral("default"), Text::tr("Outlook's own contact folder.")}};
    choose.mostArguments = 1;
    choose.run = outlookChoose;

    Command sync;
    sync.name = QStringLiteral("outlook sync");
    sync.summary = Text::tr("Copy the contacts of the chosen Outlook folder into the cache");
    sync.description =
        Text::tr("What was copied before is replaced. Takes as long as Outlook takes: --timeout\n"
                 "does not count here.");
    sync.examples = QStringList{QStringLiteral("qdfax outlook sync")};
    sync.run = outlookSync;

    return {folders, choose, sync};
}
