// The model with which a user chooses a folder of Outlook's, over an Outlook in memory.

#include "contactsoptionsoutlook.h"
#include "fakeoutlook.h"
#include "shorthand.h"

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QTest>

#include <memory>

class TestOutlookFolders : public QObject
{
    Q_OBJECT

    std::unique_ptr<FakeMailbox> m_fake;

private Q_SLOTS:
    void init() { m_fake = std::make_unique<FakeMailbox>(); }
    void cleanup()
    {
        const auto outlook = m_fake->outlook;
        m_fake.reset();
        QVERIFY(outlook->isBalanced()); // the models of the test are gone
    }

    void withoutOutlook()
    {
        m_fake->outlook->logsOn = false;
        for (const auto& [isInstalled, hasSession] : {std::pair{false, true}, {true, false}, {true, true}}) {
            m_fake->outlook->isInstalled = isInstalled;
            m_fake->outlook->hasSession = hasSession;
            ContactsOptionsOutlook model;
            const QAbstractItemModelTester tester(&model,
                                                  QAbstractItemModelTester::FailureReportingMode::QtTest);
            QVERIFY(model.rowCount() == 0 && model.columnCount() == 0 && !model.index(0, 0).isValid());
            QCOMPARE(model.defaultEntryID(), QString());
            QVERIFY(!model.entryIDIsContact(m_fake->contacts->key()));
            QVERIFY(!model.indexByEntryID(m_fake->contacts->key()).isValid());
            model.setSelectedEntryID(m_fake->contacts->key());
            QCOMPARE(model.selectedEntryID(), m_fake->contacts->key());
        }
    }

    void tree()
    {
        const auto archive = m_fake->outlook->add(FakeFolderPtr(), s("Archive"), 0);
        const auto deep = m_fake->outlook->add(m_fake->outlook->add(m_fake->mail, s("Old"), 0), s("Friends"),
                                               OutlookFolder::contactItems);
        m_fake->outlook->add(m_fake->mailbox, s("Sent"), 0);
        struct Model : ContactsOptionsOutlook
        {
            using ContactsOptionsOutlook::createIndex;
        } model;
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.columnCount(), 1);
        const QModelIndex mailbox = model.index(0, 0);
        for (const int row : {1, 2, -1}) // the first has no contacts in it, and is counted
            QVERIFY(!model.index(row, 0).isValid());

        QCOMPARE(model.rowCount(mailbox), 3);
        const QModelIndex inbox = model.index(0, 0, mailbox);
        const QModelIndex contactsIndex = model.index(1, 0, mailbox);
        QVERIFY(!model.index(2, 0, mailbox).isValid());
        const QModelIndex old = model.index(0, 0, inbox);
        const QModelIndex friends = model.index(0, 0, old);
        QCOMPARE(model.entryIDByIndex(friends), deep->key());
        QCOMPARE(model.columnCount(friends), 0);
        QCOMPARE(model.rowCount(friends), 0);

        // up again, and the same indexes as before
        QCOMPARE(model.parent(friends), old);
        QCOMPARE(model.parent(old), inbox);
        QCOMPARE(model.parent(inbox), mailbox);
        QVERIFY(!model.parent(mailbox).isValid());
        QCOMPARE(model.index(1, 0, mailbox), contactsIndex);
        QCOMPARE(model.indexByEntryID(m_fake->contacts->key()), contactsIndex);
        for (const QString& unknown : {m_fake->team->key(), QString()})
            QVERIFY(!model.indexByEntryID(unknown).isValid());
        QCOMPARE(model.entryIDByIndex(QModelIndex()), QString());
        // a folder keeps its index wherever it moves
        std::swap(m_fake->mailbox->folders[0], m_fake->mailbox->folders[1]);
        QCOMPARE(model.index(0, 0, mailbox), contactsIndex);

        QCOMPARE(model.data(mailbox).toString(), s("Mailbox"));
        QVERIFY(!model.data(friends, Qt::DecorationRole).value<QIcon>().pixmap(16).isNull());
        QVERIFY(!model.data(friends, Qt::EditRole).isValid());
        QVERIFY(!model.data(QModelIndex()).isValid());
        QCOMPARE(model.data(friends, Qt::CheckStateRole), QVariant(int(Qt::Unchecked)));
        QVERIFY(!model.data(old, Qt::CheckStateRole).isValid());
        QCOMPARE(model.flags(friends), Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        QCOMPARE(model.flags(old), Qt::ItemIsSelectable | Qt::ItemIsEnabled);

        // an index that was not handed out, and a column that is not shown
        const QModelIndex foreign = model.createIndex(0, 0, quintptr(99));
        QVERIFY(!model.data(foreign).isValid());
        QVERIFY(!model.parent(foreign).isValid());
        QCOMPARE(model.flags(foreign), Qt::NoItemFlags);
        QCOMPARE(model.rowCount(foreign), 0);
        QVERIFY(!model.data(model.createIndex(0, 1, mailbox.internalId())).isValid());

        QCOMPARE(model.defaultEntryID(), m_fake->contacts->key());
        m_fake->outlook->defaultContacts.clear();
        QCOMPARE(model.defaultEntryID(), QString());
        QVERIFY(model.entryIDIsContact(m_fake->team->key()));
        for (const QString& key : {archive->key(), s("E-Team"), QString()})
            QVERIFY(!model.entryIDIsContact(key));
    }

    void choosing()
    {
        // A folder without contacts is counted and has no index, since Outlook's count is the only one that
        // can be had without searching every folder. Where there is none the model keeps the rules of models.
        m_fake->outlook->add(m_fake->mail, s("Friends"), OutlookFolder::contactItems);
        ContactsOptionsOutlook model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const auto isChecked = [&model](const QModelIndex& index) {
            return model.data(index, Qt::CheckStateRole).toInt() == Qt::Checked;
        };
        // before the tree has been there
        model.setSelectedEntryID(m_fake->team->key());
        const QModelIndex contactsIndex = model.index(1, 0, model.index(0, 0));
        const QModelIndex team = model.index(0, 0, contactsIndex);
        QVERIFY(isChecked(team));
        QVERIFY(!isChecked(contactsIndex));

        QStringList redrawn;
        connect(&model, &QAbstractItemModel::dataChanged,
                [&](const QModelIndex& from, const QModelIndex& to) {
                    redrawn << model.data(from).toString();
                    QCOMPARE(from, to);
                });
        QVERIFY(model.setData(contactsIndex, Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(redrawn, QStringList({s("Team"), s("Contacts")}));
        QCOMPARE(model.selectedEntryID(), m_fake->contacts->key());
        QVERIFY(isChecked(contactsIndex));
        QVERIFY(!isChecked(team));

        // only replaced by another, never unchecked
        QVERIFY(!model.setData(contactsIndex, Qt::Unchecked, Qt::CheckStateRole));
        QVERIFY(!model.setData(team, Qt::PartiallyChecked, Qt::CheckStateRole));
        QVERIFY(!model.setData(team, Qt::Checked, Qt::EditRole));
        QVERIFY(!model.setData(QModelIndex(), Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(model.selectedEntryID(), m_fake->contacts->key());

        redrawn.clear();
        model.setSelectedEntryID(s("never shown:anywhere"));
        model.setSelectedEntryID(QString());
        QCOMPARE(redrawn, QStringList{s("Contacts")});
    }

    void vanishedFolders()
    {
        ContactsOptionsOutlook model;
        const QModelIndex mailbox = model.index(0, 0);
        const QModelIndex contactsIndex = model.index(1, 0, mailbox);
        const QModelIndex team = model.index(0, 0, contactsIndex);
        m_fake->contacts->isGone = true;
        QVERIFY(!model.data(contactsIndex).isValid());
        QCOMPARE(model.rowCount(contactsIndex), 0);
        QCOMPARE(model.columnCount(contactsIndex), 0);
        QVERIFY(!model.index(0, 0, contactsIndex).isValid());
        QVERIFY(!model.index(1, 0, mailbox).isValid());
        QVERIFY(!model.parent(team).isValid());
        QVERIFY(!(model.flags(contactsIndex) & Qt::ItemIsUserCheckable));
        QCOMPARE(model.data(team).toString(), s("Team"));
    }

    void questionsToOutlook()
    {
        // 330 folders of mail, before those of the contacts
        m_fake->mailbox->folders.removeAll(m_fake->contacts);
        for (int i = 0; i < 30; ++i) {
            const auto folder = m_fake->outlook->add(m_fake->mailbox, s("Project %1").arg(i), 0);
            for (int k = 0; k < 10; ++k)
                m_fake->outlook->add(folder, s("%1, %2").arg(folder->name).arg(k), 0);
        }
        m_fake->mailbox->folders.append(m_fake->contacts);
        ContactsOptionsOutlook model;
        const auto questions = [this](const auto& query) {
            m_fake->outlook->questions = 0;
            query();
            return m_fake->outlook->questions.load();
        };
        QModelIndex mailbox;
        QCOMPARE(questions([&] { mailbox = model.index(0, 0); }), 2 * 32 + 8); // not one below a project
        QCOMPARE(questions([&] { model.index(1, 0, mailbox); }), 4 * 11 + 3);  // nothing found, nothing twice
        QCOMPARE(questions([&] { model.hasChildren(mailbox); }), 3);
        QCOMPARE(questions([&] { model.flags(mailbox); }), 2);
        QCOMPARE(questions([&] { model.itemData(mailbox); }), 2 + 1 + 2);
        const QModelIndex contactsIndex = model.index(31, 0, mailbox);
        QCOMPARE(questions([&] { QCOMPARE(model.parent(contactsIndex), mailbox); }), 1);

        m_fake->contacts->isGone = true; // no answer is from before
        QVERIFY(!model.index(0, 0).isValid());
    }
};

QTEST_MAIN(TestOutlookFolders)
#include "tst_outlookfolders.moc"
