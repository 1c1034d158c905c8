// The file that speaks to Outlook by COM automation, over objects that stand in for Outlook's.

#include "activeqtoutlook_p.h"
#include "shorthand.h"

#include <QAxObject>
#include <QTest>

#include <limits>

#include <objbase.h>

class TestActiveQt : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        AxScript::inst() = AxScript();
        ComCalls::inst() = ComCalls();
        OutlookPort::setCurrent(QSharedPointer<OutlookPort>()); // the system's own
        QVERIFY(OutlookPort::current().dynamicCast<ActiveQtOutlook>());
    }
    void cleanup() { QCOMPARE(AxScript::inst().alive, 0); }

    void everyMember()
    {
        AxScript& script = AxScript::inst();
        const QString folder = s("Session.GetFolderFromID(E1,S:1)");
        const QString item = folder + s(".Items.Item(3)");
        const QDateTime modified(QDate(2026, 3, 4), QTime(5, 6, 7));
        script.objects = QStringList{s("Session"),
                                     s("Session.Folders"),
                                     s("Session.Folders.Item(2)"),
                                     s("Session.GetDefaultFolder(10)"),
                                     folder,
                                     folder + s(".Folders"),
                                     folder + s(".Items"),
                                     item};
        script.values = {{s("Session.Folders.Count"), 2},
                         {s("Session.Folders.Item(2).Name"), s("Archive")},
                         {s("Session.GetDefaultFolder(10).EntryID"), s("E10")},
                         {s("Session.GetDefaultFolder(10).StoreID"), s("S10")},
                         {folder + s(".DefaultItemType"), 2},
                         {folder + s(".Folders.Count"), 0},
                         {folder + s(".Items.Count"), 3},
                         {item + s(".Class"), 40},
                         {item + s(".EntryID"), s("I3")},
                         {item + s(".FullName"), s("Mary Poe")},
                         {item + s(".BusinessTelephoneNumber"), s("111")},
                         {item + s(".BusinessFaxNumber"), s("222")},
                         {item + s(".CompanyName"), s("Poe & Sons")},
                         {item + s(".LastModificationTime"), modified}};
        {
            const OutlookAccess access;
            QCOMPARE(ComCalls::inst().initialized, 1);
            const auto session = access.createApplication()->session();
            session->logon();
            QCOMPARE(session->folders()->count(), 2);
            // the objects on the way are released before the last one is used
            QCOMPARE(session->folders()->item(2)->name(), s("Archive"));
            QCOMPARE(session->defaultFolder(OutlookSession::contactsFolder)->entryID(), s("E10"));
            QCOMPARE(session->defaultFolder(OutlookSession::contactsFolder)->storeID(), s("S10"));
            const auto contacts = session->folderFromID(s("E1"), s("S:1"));
            QCOMPARE(contacts->defaultItemType(), int(OutlookFolder::contactItems));
            QCOMPARE(contacts->folders()->count(), 0);
            QCOMPARE(contacts->items()->count(), 3);
            const auto contact = contacts->items()->item(3);
            QCOMPARE(contact->itemClass(), int(OutlookItem::contactClass));
            QCOMPARE(contact->entryID(), s("I3"));
            QCOMPARE(contact->fullName(), s("Mary Poe"));
            QCOMPARE(contact->businessTelephoneNumber(), s("111"));
            QCOMPARE(contact->businessFaxNumber(), s("222"));
            QCOMPARE(contact->companyName(), s("Poe & Sons"));
            QCOMPARE(contact->lastModificationTime(), modified);
            QCOMPARE(contact->lastModificationTime().timeSpec(), Qt::LocalTime);
            session->logoff();
            QCOMPARE(ComCalls::inst().uninitialized, 0);
        }
        QCOMPARE(ComCalls::inst().uninitialized, 1);
        QCOMPARE(script.calls.first(), s("{0006f03a-0000-0000-c000-000000000046}"));
        for (const char* call : {"Logon()", "Logoff()", "Item(int)", "GetDefaultFolder(int)"})
            QVERIFY2(script.calls.contains(s(call)), call);
    }

    // Nothing that Outlook returns is taken for what it is not.

    void oddValues()
    {
        AxScript& script = AxScript::inst();
        const QString item = s("Session.GetDefaultFolder(10).Items.Item(1)");
        script.objects = QStringList{s("Session"), s("Session.GetDefaultFolder(10)"),
                                     s("Session.GetDefaultFolder(10).Items"), item};
        script.values = {{item + s(".Class"), s("40")},
                         {item + s(".FullName"), 7},
                         {item + s(".LastModificationTime"), s("2026-03-04T05:06:07")}};
        const OutlookAccess access;
        const auto folder =
            access.createApplication()->session()->defaultFolder(OutlookSession::contactsFolder);
        QCOMPARE(folder->defaultItemType(), -1);
        QVERIFY(!folder->folders());
        QCOMPARE(folder->items()->count(), -1);
        QVERIFY(!folder->items()->item(2));
        const auto odd = folder->items()->item(1);
        QCOMPARE(odd->itemClass(), -1);
        QVERIFY(odd->fullName().isNull());
        QVERIFY(odd->entryID().isNull());
        QVERIFY(!odd->lastModificationTime().isValid());
    }

    void numbers_data()
    {
        const Rows<QVariant, int> row("value", "number");
        row("int", 2, 2);
        row("unsigned", 2U, 2);
        row("64 bits", Q_INT64_C(2), 2);
        row("unsigned, 64 bits", Q_UINT64_C(2), 2);
        row("the largest", std::numeric_limits<int>::max(), std::numeric_limits<int>::max());
        row("negative", -2, -1);
        row("too large", 0x80000000U, -1);
        row("too large by 64 bits", Q_INT64_C(0x100000002), -1);
        row("negative once it is signed", ~Q_UINT64_C(0), -1);
        row("truth", true, -1);
        row("fraction", 2.0, -1);
        row("text", s("2"), -1);
        row("bytes", QByteArray("2"), -1);
        row("time", QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7)), -1);
        row("nothing", QVariant(), -1);
    }
    void numbers()
    {
        QFETCH(QVariant, value);
        AxScript& script = AxScript::inst();
        const QString folder = s("Session.GetDefaultFolder(10)");
        const QString item = folder + s(".Items.Item(1)");
        script.objects =
            QStringList{s("Session"), folder, folder + s(".Folders"), folder + s(".Items"), item};
        for (const char* name :
             {".DefaultItemType", ".Folders.Count", ".Items.Count", ".Items.Item(1).Class"})
            script.values.insert(folder + s(name), value);
        const OutlookAccess access;
        const auto contacts =
            access.createApplication()->session()->defaultFolder(OutlookSession::contactsFolder);
        QTEST(contacts->defaultItemType(), "number");
        QTEST(contacts->folders()->count(), "number");
        QTEST(contacts->items()->count(), "number");
        QTEST(contacts->items()->item(1)->itemClass(), "number");
    }

    void nothingThere()
    {
        {
            const OutlookAccess access;
            QVERIFY(!access.createApplication()->session());
            AxScript::inst().hasServer = false;
            QVERIFY(!access.createApplication());
        }
        QCOMPARE(ComCalls::inst().uninitialized, 1);

        // a thread that COM refuses is not undone
        ComCalls::inst() = ComCalls();
        ComCalls::inst().answer = -1;
        {
            const OutlookAccess access;
        }
        QCOMPARE(ComCalls::inst().initialized, 1);
        QCOMPARE(ComCalls::inst().uninitialized, 0);
    }
};

QTEST_GUILESS_MAIN(TestActiveQt)
#include "tst_activeqt.moc"
