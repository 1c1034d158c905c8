#pragma once

#include "iquendrastorage.h"
#include "quendrainfo.h"

#include <QDomDocument>
#include <QString>
#include <QVector>

#include <functional>

class FaxManager;
class FaxServer;

/// An entry of the settings file as it can be shown without asking the server.
struct StoredServer
{
    QString uid; ///< FaxServer::genUID(): "login@address" in lower case.
    QString address;
    QString login;
    bool useSSL{false};
    bool isDefault{false};
    QuendraInfo info; ///< As of the last time the entry was saved.
};

/**
 * The settings file of qdfax, kept entry by entry.
 *
 * A FaxManager that reads a file starts the login of every server in it. So this class stands between the
 * file and the manager: it holds the entries as they are, hands a manager the one server that a command
 * needs, and leaves entries and elements alone that it does not know, so that a later program's additions
 * survive.
 *
 * A file is never replaced by less than it held: changes are made to what the file holds at that moment,
 * written to a side file, read back, and only then put in its place; a file that cannot be understood is
 * moved aside. From its first reading on, the file is readable by its owner only.
 */
class SettingsFile : private IQuendraStorage
{
public:
    enum State {
        Missing, ///< There is no file; an empty configuration.
        Good,
        Damaged,    ///< Empty, cut off, not XML, or not a settings file.
        Newer,      ///< Written by a later version in a format that this one does not know.
        Unreadable, ///< It is there, but cannot be opened.
    };

    /// The user's file.
    static QString defaultPath();

    explicit SettingsFile(const QString& path = defaultPath());
    ~SettingsFile();

    const QString& path() const { return m_path; }

    /// Reads the file, and restricts its permissions to its owner. Clears up after a program that died while
    /// it saved, for which takeRemark() has a sentence then. Contacts no server.
    State load();
    State state() const { return m_state; }
    /// A sentence for a file that is neither Good nor Missing: what is wrong, and what to do.
    QString problem() const;

    /// The entries that can be understood, in the order of the file.
    QVector<StoredServer> servers() const;
    /// Entries that cannot be understood, and are kept as they are.
    int strangeEntryCount() const;
    /// The entry that @p name means: a uid, or an address that only one entry has; without regard to case.
    /// Empty: the default. -1: none.
    int find(const QString& name) const;

    /// The key of the Outlook folder whose contacts are copied; empty when none was chosen.
    QString outlookFolder() const;

    /// Loads the file and picks the entry that @p name means. Empty when that went well, else what is wrong.
    QString choose(const QString& name, StoredServer* chosen);

    /// Hands one entry to the manager, which starts its login. The new server, null when the entry is
    /// unusable.
    FaxServer* open(const StoredServer& server, FaxManager& manager) const;

    // --- Changes, to what is loaded; save() makes them last

    /// Replaces the entry of this server, or appends one. The first entry becomes the default.
    void put(const FaxServer& server, bool makeDefault);
    void remove(const QString& uid);
    void setDefault(const QString& uid);
    void setOutlookFolder(const QString& key);

    /// Loads what the file holds now, lets @p change change it, and saves it; other programs doing the same
    /// wait. Empty when all went well, else what is wrong. @p movedTo is set when a damaged file was moved
    /// aside. A change that returns false is not saved, without an error.
    QString edit(const std::function<bool(SettingsFile&)>& change, QString* movedTo);
    /// What load() or edit() found that the user should know, once: a program before this one died while it
    /// saved. Mostly empty.
    QString takeRemark();

private:
    bool readStorage(const QDomElement& element, int version) override;
    bool writeStorage(QDomDocument& document, QDomElement& element, int version) const override;

    State read();
    void startEmpty();
    QDomElement entry(const QString& uid) const;
    QStringList sideFiles() const;
    void removeSideFiles();
    void clearUp();
    QString save(QString* movedTo);

    QString m_path;
    State m_state{Missing};
    QString m_detail;
    bool m_wasBrokenOff{false};
    QDomDocument m_document; ///< "settings" as read, with the changes.
};
