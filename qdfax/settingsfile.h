#pragma once

#include "iquendrastorage.h"
#include "quendrainfo.h"

#include <QDomDocument>
#include <QString>
#include <QVector>

#include <functional>

class FaxManager;
class FaxServer;

/// An entry of the settings file, readable without contacting the server.
struct StoredServer
{
    QString uid; ///< FaxServer::genUID(): "login@address" in lower case.
    QString address;
    QString login;
    bool useSSL{false};
    bool isDefault{false};
    QuendraInfo info; ///< As last saved.
};

/**
 * The settings file of qdfax, kept entry by entry.
 *
 * A FaxManager that reads a file starts the login of every server in it. So this class stands between the
 * file and the manager: it holds the unparsed entries, passes to a manager only the server that a command
 * needs, and preserves unknown entries and elements, so that a later version's additions survive.
 *
 * Saving never loses data: a change is applied to the file's current content, written to a temporary file,
 * read back and verified, and then replaces the file atomically; a damaged file is moved aside. When
 * first read, the file is made readable by its owner only.
 */
class SettingsFile : private IQuendraStorage
{
public:
    enum State {
        Missing, ///< There is no file; an empty configuration.
        Good,
        Damaged,    ///< Empty, truncated, not XML, or not a settings file.
        Newer,      ///< Written by a later version in an unknown format.
        Unreadable, ///< It exists, but cannot be opened.
    };

    /// The user's file.
    static QString defaultPath();

    explicit SettingsFile(const QString& path = defaultPath());
    ~SettingsFile();

    const QString& path() const { return m_path; }

    /// Reads the file, and restricts its permissions to its owner. Removes temporary files of a program that
    /// died while saving; takeRemark() then has a message. Contacts no server.
    State load();
    State state() const { return m_state; }
    /// The error text, with advice, for a file that is neither Good nor Missing.
    QString problem() const;

    /// The valid entries, in the order of the file.
    QVector<StoredServer> servers() const;
    /// Entries that cannot be understood, and are kept as they are.
    int strangeEntryCount() const;
    /// The entry named by @p name: a uid, or an address that only one entry has; ignores case.
    /// Empty: the default. -1: none.
    int find(const QString& name) const;

    /// The key of the Outlook folder whose contacts are copied; empty when none was chosen.
    QString outlookFolder() const;

    /// Loads the file and selects the entry named by @p name. Empty on success, else an error text.
    QString choose(const QString& name, StoredServer* chosen);

    /// Adds one entry to the manager, which starts its login. The new server, null if the entry is
    /// unusable.
    FaxServer* open(const StoredServer& server, FaxManager& manager) const;

    // --- Changes, to what is loaded; save() makes them last

    /// Replaces the entry of this server, or appends one. The first entry becomes the default.
    void put(const FaxServer& server, bool makeDefault);
    void remove(const QString& uid);
    void setDefault(const QString& uid);
    void setOutlookFolder(const QString& key);

    /// Loads the file's current content, applies @p change, and saves it; other programs doing the same wait.
    /// Empty on success, else an error text. @p movedTo is set if a damaged file was moved aside. If @p
    /// change returns false, nothing is saved, without an error.
    QString edit(const std::function<bool(SettingsFile&)>& change, QString* movedTo);
    /// A message for the user from load() or edit(), returned once: an earlier program died while saving.
    /// Usually empty.
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
