#pragma once

#include "contactprovider.h"
#include "qdcore_global.h"
#include "quicksearchresalt.h"

#include <QObject>
#include <QPointer>
#include <QSharedPointer>
#include <QVector>

/**
 * The entry to everything about contacts: owns the store and the providers, finds a contact by its id,
 * searches by name, and merges the providers' synchronisations into one busy indication.
 *
 * A client application makes one, before its FaxManager. Lives on the thread it was made on, and so do its
 * providers.
 */
class QDCORE_EXPORT ContactManager : public QObject
{
    Q_OBJECT
public:
    /// Opens or makes the contact store in the user's application-data folder.
    explicit ContactManager(QObject* parent = nullptr);
    /// Destroys the providers, in their order, then the store.
    ~ContactManager() override;

    /// The one store; owned by the manager.
    QPointer<ContactLocalStorage> storage() const { return m_storage; }

    /// The providers in the order added. Entries may be null.
    const QVector<QPointer<ContactProvider>>& providers() const { return m_providers; }

    /// Adds a provider, owned by the manager. An invalid type adds a null entry and returns null.
    QPointer<ContactProvider> addProvider(ContactProvider::Type type);

    /// Takes a provider off the list and deletes it later on the event loop; nothing when it is not in the
    /// list.
    void deleteProvider(const QPointer<ContactProvider>& provider);

    /// The unit of a store id as its provider's own class, group members included. Null when the id is
    /// unknown or its provider is gone. Reads the store on the calling thread.
    QSharedPointer<ContactUnit> getContactById(unsigned int id);

    /// Searches the stored names for a text, on the calling thread, and emits resultOfQuickSearch() before it
    /// returns.
    /// @p limit 0 is no limit; @p source1 and @p source2 restrict the search to sources, 0 is none.
    void quickSearch(const QString& text, unsigned int limit, unsigned int source1, unsigned int source2);

    /// Whether any provider is synchronising.
    bool isSync() const;

    /// Adds the Outlook provider, unless there is one, and hands it the chosen folder. @p syncNow: see
    /// OutlookContactProvider::setEntryID().
    void initOutlook(bool syncNow);
    /// Does nothing: there is no such source yet.
    void initAppleContacts(bool syncNow);
    /// Chooses the Outlook folder by its key, see ContactsOptionsOutlook; kept until there is an Outlook
    /// provider.
    void setOutlookEntryID(const QString& entryID, bool syncNow);
    /// The Outlook folder's source in the store; 0 without one.
    unsigned int outlookSourceId() const;
    /// Whether the Outlook folder is being read.
    bool isOutlookSync() const;

Q_SIGNALS:
    /// The first synchronisation of any provider has begun.
    void onSyncStart();
    /// The last synchronisation of any provider has ended.
    void onSyncStop();
    /// A provider was added, or taken off the list.
    void changedContactProviderList();
    /// The answer to quickSearch(), empty when nothing was found.
    void resultOfQuickSearch(QuickSearchResalt searchResult);

private Q_SLOTS:
    void slotSyncStart();
    void slotSyncStop();
    void slotResultOfQuickSearch(QuickSearchResalt searchResult);

private:
    QVector<QPointer<ContactProvider>> m_providers;
    QPointer<ContactLocalStorage> m_storage;
    QPointer<ContactProvider> m_outlookProvider;
    QString m_outlookEntryID;
    int m_syncCount{0};
};
