#pragma once

// A manager with the provider of Outlook's contacts, using the fake Outlook.

#include "contactlocalstorage.h"
#include "contactmanager.h"
#include "fakeoutlook.h"
#include "outlookcontactprovider.h"
#include "shorthand.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

inline const auto contactBook = ContactList::OutlookContacts;
inline const int distributionList = 69;
inline const QStringList success{s("start"), s("stop"), s("synced 5")};

inline FakeItem contact(int number, int itemClass = OutlookItem::contactClass)
{
    const auto text = [number](const char* format) { return s(format).arg(number); };
    const QDateTime modified(QDate(2026, 1, 2), QTime(3, 4, 5));
    return {itemClass,   text("I%1"),        text("Name %1"),         text("1%1"),
            text("2%1"), text("Company %1"), modified.addSecs(number)};
}

inline QVector<FakeItem> contacts(int count)
{
    QVector<FakeItem> items;
    for (int i = 1; i <= count; ++i)
        items.append(contact(i));
    return items;
}

/// Contacts, another item and texts that need care, in folders one of which has an identifier as long as
/// Outlook's.
inline void fill(FakeMailbox& mailbox, int count)
{
    mailbox.contacts->items = contacts(count);
    mailbox.team->items = {contact(7)};
    const auto deep = mailbox.outlook->add(mailbox.mail, QString(138, QLatin1Char('F')), 2);
    deep->items = {contact(1), contact(9, distributionList), contact(3)};
    deep->items[0].fullName = s("\"Mary\" O'Poe & \xc3\xbc \xf0\x9f\x93\xa0 (a, b); %1\n\t\\");
    deep->items[0].company = QString();
    deep->items[2].modified = QDateTime();
}

/// How an item's row in the store is to look.
inline QString row(const FakeItem& item)
{
    const qint64 seconds = item.modified.isValid() ? item.modified.toSecsSinceEpoch() : 0;
    return s("%1: 1/2 %2 %3||%4|%5||%6")
        .arg(item.entryID, QString::number(seconds), item.fullName, item.phone, item.fax, item.company);
}

/// A manager with its Outlook provider, and the provider's recorded signals.
struct World
{
    explicit World(const FakeFolderPtr& folder = FakeFolderPtr())
    {
        manager->initOutlook(false);
        provider = qobject_cast<OutlookContactProvider*>(manager->providers().first().data());
        using P = ContactProvider;
        const auto hear = [this](auto signal, const char* what) {
            QObject::connect(provider, signal, [heard = said.get(), what](auto... value) {
                heard->append(
                    (QStringList{s(what)} + QStringList{QString::number(value)...}).join(QLatin1Char(' ')));
            });
        };
        hear(&P::onSyncStart, "start");
        hear(&P::onSyncStop, "stop");
        hear(&P::syncedContacts, "synced");
        hear(&P::errorSyncedContacts, "error");
        hear(&P::errorGotContacts, "get");
        hear(&P::errorAddedContact, "add");
        hear(&P::errorModifiedContact, "modify");
        hear(&P::errorDeletedContact, "delete");
        if (folder)
            provider->setEntryID(folder->key(), false);
    }
    bool sync()
    {
        provider->syncContacts(contactBook, false);
        return settle();
    }
    bool settle()
    {
        return QTest::qWaitFor([this] { return !manager->isSync(); }, 120000);
    }
    QList<quint32> ids(quint32 source) const
    {
        return manager->storage()->getContactList(source, ContactLocalStorage::AnyType,
                                                  ContactLocalStorage::AnyLocation, 0, 0, 0);
    }
    /// The rows of a source.
    static QStringList rows(quint32 source)
    {
        return onStore(
            s("SELECT uid||': '||type||'/'||location||' '||timestamp||' '||name||'|'||description||'|'||"
              "phone||'|'||fax||'|'||email||'|'||organization FROM contacts WHERE source=%1 ORDER BY id")
                .arg(source));
    }

    const std::unique_ptr<QStringList> said{new QStringList};
    std::unique_ptr<ContactManager> manager{new ContactManager};
    QPointer<OutlookContactProvider> provider;
};

/// Base class of tests of the provider: an Outlook and a store for each test.
class OutlookTest : public QObject
{
protected:
    void newOutlook()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("APPDATA", QFile::encodeName(m_folder->path()));
        m_fake = std::make_unique<FakeMailbox>();
        m_outlook = m_fake->outlook;
        m_contacts = m_fake->contacts;
        m_team = m_fake->team;
        m_team->items = {contact(7)};
    }
    void leaveOutlook()
    {
        m_fake.reset();
        QVERIFY(m_outlook->isBalanced()); // the test's worlds are destroyed
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeMailbox> m_fake;
    QSharedPointer<FakeOutlook> m_outlook;
    FakeFolderPtr m_contacts, m_team;
};
