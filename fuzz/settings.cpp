// The settings file, as the library and as qdfax read it: anybody may have edited or cut it.

#include "fuzz.h"

#include "fakenetwork.h"
#include "faxserver.h"
#include "fields.h"
#include "quendrastorage.h"
#include "settingsfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What a manager reads from a file: the fields of each server.
QVector<Fields> read(const QString& path, FakeManager& manager)
{
    PROMISE(QuendraStorage(path).Load(manager));
    QVector<Fields> servers;
    for (const QPointer<FaxServer>& server : manager.servers())
        servers.append(fieldsOf(*server));
    return servers;
}

/// The library: what was read, saved and read again is the same.
QVector<Fields> library(const QString& path, const QString& copy)
{
    FakeManager manager;
    const QVector<Fields> servers = read(path, manager);
    PROMISE(QuendraStorage(copy).Save(manager));
    FakeManager other;
    const QVector<Fields> again = read(copy, other);
    PROMISE(again.size() == servers.size());
    PROMISE(manager.defaultServerIndex() == other.defaultServerIndex());
    for (int i = 0; i < servers.size(); ++i) {
        const int version = manager.servers().at(i)->info().protocolVersion();
        // what belongs to no server keeps the flags that this one's version gives
        const Fields fresh = freshServer(*manager.servers().at(i));
        const Fields expected =
            readAgain(QStringLiteral("FaxServer"), Form::Storage, version, servers.at(i), fresh, again.at(i));
        PROMISE_THAT(again.at(i) == expected,
                     toText(again.at(i)) + QStringLiteral("expected\n") + toText(expected));
    }
    return servers;
}

struct Entry
{
    QString uid;
    bool useSSL;
    QString model;
    bool isDefault;

    bool operator==(const Entry& other) const
    {
        return uid == other.uid && useSSL == other.useSSL && model == other.model &&
               isDefault == other.isDefault;
    }
};

QVector<Entry> entriesOf(const SettingsFile& file)
{
    QVector<Entry> entries;
    const QVector<StoredServer> servers = file.servers();
    for (const StoredServer& server : servers)
        entries.append({server.uid, server.useSSL, server.info.model(), server.isDefault});
    return entries;
}

} // namespace

FUZZ_TARGET(settings)
{
    static const QString folder = fuzzFolder() + QStringLiteral("/settings");
    static const QString path = folder + QStringLiteral("/qdfax.xml");
    QDir().mkpath(folder);
    {
        QFile file(path);
        PROMISE(file.open(QIODevice::WriteOnly) && file.write(input) == input.size());
    }
    const QVector<Fields> servers = library(path, folder + QStringLiteral("/copy.xml"));

    SettingsFile file(path);
    const SettingsFile::State state = file.load();
    const QVector<Entry> entries = entriesOf(file);
    PROMISE(state == SettingsFile::Good || entries.isEmpty());
    PROMISE(state != SettingsFile::Missing && state != SettingsFile::Unreadable);
    PROMISE((state == SettingsFile::Good) == file.problem().isEmpty());
    if (state == SettingsFile::Good) {
        PROMISE(file.strangeEntryCount() >= 0);
        // both read the same from a file that both accept
        PROMISE_THAT(entries.size() == servers.size(), QString::number(entries.size()));
        for (int i = 0; i < entries.size(); ++i) {
            const Fields& server = servers.at(i);
            PROMISE(entries.at(i).uid ==
                    (server.at(2).second + QLatin1Char('@') + server.at(0).second).toLower());
            PROMISE(QString::number(entries.at(i).useSSL) == server.at(1).second);
        }
    }

    // a change preserves all other content, a damaged file is moved aside unchanged, a failure changes
    // nothing
    QString movedTo;
    const QString error = SettingsFile(path).edit(
        [](SettingsFile& edited) {
            edited.setOutlookFolder(QStringLiteral("folder"));
            return true;
        },
        &movedTo);
    if (!error.isEmpty()) {
        PROMISE_THAT(contentOf(path) == input && movedTo.isEmpty(), error);
        PROMISE_THAT(state == SettingsFile::Newer, error);
    } else {
        SettingsFile edited(path);
        PROMISE(edited.load() == SettingsFile::Good);
        PROMISE(edited.outlookFolder() == QLatin1String("folder"));
        PROMISE(entriesOf(edited) == entries);
        PROMISE(movedTo.isEmpty() == (state != SettingsFile::Damaged));
        PROMISE(movedTo.isEmpty() || contentOf(movedTo) == input);
    }
    const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden);
    for (const QString& name : names)
        QFile::remove(folder + QLatin1Char('/') + name);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
