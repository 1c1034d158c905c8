// Outlook by COM automation, over a double that speaks COM: in this process, and in one of its own.

#include "contactsoptionsoutlook.h"
#include "outlookworld.h"
#include "testkit.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <limits>
#include <thread>

namespace {

/// The double in a process of its own, where the system's own port finds it.
class Program
{
public:
    explicit Program(const QStringList& arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationDirPath() + s("/outlookdouble.exe"), arguments);
        OutlookPort::setCurrent(QSharedPointer<OutlookPort>());
    }
    bool says(const char* line)
    {
        QElapsedTimer timer;
        timer.start();
        while (!m_said.contains(line) && timer.elapsed() < 30000) {
            m_process.waitForReadyRead(100);
            m_said += m_process.readAll();
        }
        return m_said.contains(line);
    }
    /// Whether everything in it was released, and nobody asked for its events.
    bool isClean()
    {
        m_process.write("\n");
        const bool isClean = says("objects") && exitCode() == 0;
        if (!isClean)
            qWarning("%s", m_said.constData());
        return isClean;
    }
    int exitCode()
    {
        m_process.waitForFinished(); // false also if it has finished before
        return m_process.state() == QProcess::NotRunning ? m_process.exitCode() : -1;
    }

private:
    QProcess m_process;
    QByteArray m_said;
};

void read(const QSharedPointer<OutlookFolders>& folders, QStringList& into)
{
    for (int i = 1; i <= folders->count(); ++i) {
        const auto folder = folders->item(i);
        into << folder->name() << folder->entryID() << folder->storeID()
             << QString::number(folder->defaultItemType());
        const auto items = folder->items();
        for (int j = 1; j <= items->count(); ++j) {
            const auto item = items->item(j);
            into << QString::number(item->itemClass()) << item->entryID()
                 << item->lastModificationTime().toString(Qt::ISODateWithMs);
            if (item->itemClass() == OutlookItem::contactClass)
                into << item->fullName() << item->businessTelephoneNumber() << item->businessFaxNumber()
                     << item->companyName();
        }
        read(folder->folders(), into);
    }
}

/// Everything that the current port gives.
QStringList everything()
{
    const OutlookAccess access;
    const auto session = access.createApplication()->session();
    session->logon();
    QStringList all;
    read(session->folders(), all);
    const auto contacts = session->defaultFolder(OutlookSession::contactsFolder);
    all << contacts->entryID() << session->folderFromID(contacts->entryID(), contacts->storeID())->name();
    session->logoff();
    return all;
}

/// What the model of folders gives.
QStringList shown(const ContactsOptionsOutlook& model, const QModelIndex& parent = QModelIndex())
{
    QStringList all;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (index.isValid())
            all += QStringList{model.data(index).toString()} + shown(model, index);
    }
    return all;
}

/// A member gives a value of a type.
ComFault gives(const char* member, int type, qint64 bits)
{
    return {member, [=](VARIANT& value, EXCEPINFO&) {
                value.vt = VARTYPE(type);
                value.llVal = bits; // of which each type takes the bytes that it has
                if (type == VT_BSTR && bits != 0)
                    value.bstrVal = toBstr(QString::number(bits));
                return S_OK;
            }};
}

ComFault fails(const char* member, HRESULT result, int first = 1, int last = INT_MAX)
{
    return {member, [=](VARIANT&, EXCEPINFO&) { return result; }, first, last};
}

ComFault throws(const char* member, int call)
{
    return {member, [](VARIANT&, EXCEPINFO& exception) { return throwException(exception); }, call, call};
}

const char* const inProcess = "in-process";

} // namespace

Q_DECLARE_METATYPE(ComFault)

class TestComOutlook : public OutlookTest
{
    Q_OBJECT

    ComOutlookDouble& com() { return m_fake->overCom->com(); }

    std::unique_ptr<Program> m_program;

    /// The double in this process or in its own, by the row, with the same mailbox.
    bool start()
    {
        fill(*m_fake, 5);
        if (s(QTest::currentDataTag()) == s(inProcess))
            return true;
        m_program = std::make_unique<Program>(QStringList{s("5")});
        return m_program->says("ready");
    }
    static void bothWays()
    {
        QTest::addColumn<int>("rounds");
        QTest::newRow(inProcess) << 5000;
        QTest::newRow("out-of-process") << 30;
    }

private Q_SLOTS:
    void initTestCase() { qputenv("OUTLOOK_OVER_COM", "1"); }
    void init() { newOutlook(); }
    void cleanup()
    {
        const bool isClean = !m_program || m_program->isClean();
        m_program.reset();
        QVERIFY(isClean);
        const auto overCom = m_fake->overCom;
        OutlookPort::setCurrent(overCom);
        static_cast<void>(OutlookAccess()); // also in a test that uses the other process alone
        leaveOutlook();
        QCOMPARE(int(overCom->com().objects), 0);
        QCOMPARE(int(overCom->com().violations), 0);
        QCOMPARE(int(overCom->com().listeners), 0);
    }

    void initialisation()
    {
        const auto apartment = [] {
            APTTYPE type;
            APTTYPEQUALIFIER qualifier;
            if (FAILED(CoGetApartmentType(&type, &qualifier)))
                return -1;
            return int(type == APTTYPE_MAINSTA ? APTTYPE_STA : type); // the first of its kind, or another
        };
        QVector<int> seen;
        std::thread([&] {
            seen << apartment();
            {
                const OutlookAccess access;
                const OutlookAccess another;
                seen << apartment();
            }
            seen << apartment();
        }).join();
        // an apartment of the other kind stays, and Outlook can be used in it
        OutlookPort::setCurrent(QSharedPointer<OutlookPort>());
        std::thread([&] {
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            m_outlook->enterThread();
            const DWORD cookie = com().registerClass(CLSCTX_INPROC_SERVER);
            {
                const OutlookAccess access;
                seen << int(bool(access.createApplication()));
            }
            seen << apartment();
            CoRevokeClassObject(cookie);
            m_outlook->leaveThread();
            CoUninitialize();
            seen << apartment();
        }).join();
        QCOMPARE(seen, QVector<int>({-1, APTTYPE_STA, -1, 1, APTTYPE_MTA, -1}));
    }

    void everyMember_data() { bothWays(); }
    void everyMember()
    {
        QVERIFY(start());
        const auto port = OutlookPort::current();
        OutlookPort::setCurrent(m_outlook);
        const QStringList expected = everything();
        OutlookPort::setCurrent(port);
        QVERIFY(expected.size() > 50);
        QCOMPARE(everything(), expected);
    }

    // Nothing that Outlook returns is taken for what it is not.

    void values_data()
    {
        const Rows<int, qint64, int, QString> row("type", "bits", "number", "text");
        const int largest = std::numeric_limits<int>::max();
        row("8 bits", VT_I1, 2, 2, {});
        row("8 bits, negative", VT_I1, -2, -1, {});
        row("8 bits, unsigned", VT_UI1, 200, 200, {});
        row("16 bits", VT_I2, 40, 40, {});
        row("16 bits, negative", VT_I2, -2, -1, {});
        row("16 bits, unsigned", VT_UI2, 65535, 65535, {});
        row("32 bits", VT_I4, largest, largest, {});
        row("32 bits, negative", VT_I4, -2, -1, {});
        row("32 bits, unsigned", VT_UI4, 2, 2, {});
        row("too large", VT_UI4, 0x80000000LL, -1, {});
        row("64 bits", VT_I8, 2, 2, {});
        row("too large by 64 bits", VT_I8, 0x100000002LL, -1, {});
        row("64 bits, unsigned", VT_UI8, 2, 2, {});
        row("negative once it is signed", VT_UI8, -1, -1, {});
        row("int", VT_INT, 2, 2, {});
        row("int, unsigned", VT_UINT, 2, 2, {});
        row("truth", VT_BOOL, -1, -1, {});
        row("fraction", VT_R8, 0x4000000000000000LL, -1, {});
        row("money", VT_CY, 20000, -1, {});
        row("error", VT_ERROR, 2, -1, {});
        row("nothing", VT_EMPTY, 2, -1, {});
        row("null", VT_NULL, 2, -1, {});
        row("no object", VT_DISPATCH, 0, -1, {});
        row("text", VT_BSTR, 2, -1, "2");
        row("empty text", VT_BSTR, 0, -1, "");
    }
    void values()
    {
        QFETCH(int, type);
        QFETCH(qint64, bits);
        QVector<ComFault> faults;
        for (const char* member :
             {"Folder.DefaultItemType", "Folder.Name", "Folder.StoreID", "Folders.Count", "Items.Count",
              "Item.Class", "Item.FullName", "Item.CompanyName", "Item.LastModificationTime"})
            faults.append(gives(member, type, bits));
        com().setFaults(faults);
        const OutlookAccess access;
        const auto session = access.createApplication()->session();
        session->logon();
        const auto folder = session->folderFromID(m_team->entryID, m_team->storeID);
        QTEST(folder->defaultItemType(), "number");
        QTEST(folder->folders()->count(), "number");
        QTEST(folder->items()->count(), "number");
        const auto item = folder->items()->item(1);
        QTEST(item->itemClass(), "number");
        QVERIFY(!item->lastModificationTime().isValid());
        for (const QString& text :
             {folder->name(), folder->storeID(), item->fullName(), item->companyName()}) {
            QTEST(text, "text");
            QCOMPARE(text.isNull(), type != VT_BSTR);
        }
        com().setFaults({gives("Folder.Items", type, type == VT_BSTR ? bits : 0)});
        QVERIFY(!folder->items());
        session->logoff();
    }

    void dates_data()
    {
        const Rows<double, QString> row("date", "time");
        row("day", 36526, "2000-01-01T00:00:00.000");
        row("noon", 36526.5, "2000-01-01T12:00:00.000");
        row("seconds", 46085 + 18367 / 86400.0, "2026-03-04T05:06:07.000");
        row("up to the next day", 36526.9999999999, "2000-01-02T00:00:00.000");
        row("before the first", -1.25, "1899-12-29T06:00:00.000");
        row("an hour of no day", 0.5, {});
        row("last", 2958465.5, "9999-12-31T12:00:00.000");
        row("Outlook's none", 949998, {});
        row("and the day after it", 949999, "4501-01-02T00:00:00.000");
        row("nought", 0, {});
        row("too late", 2958466, {});
        row("too early", -657435, {});
        row("not a number", std::numeric_limits<double>::quiet_NaN(), {});
    }
    void dates()
    {
        QFETCH(double, date);
        com().setFaults({{"Item.LastModificationTime", [date](VARIANT& value, EXCEPINFO&) {
                              value.vt = VT_DATE;
                              value.date = date;
                              return S_OK;
                          }}});
        const OutlookAccess access;
        const auto session = access.createApplication()->session();
        session->logon();
        const auto time = session->folderFromID(m_team->entryID, m_team->storeID)->items()->item(1);
        QTEST(time->lastModificationTime().toString(Qt::ISODateWithMs), "time");
        QCOMPARE(time->lastModificationTime().timeSpec(), Qt::LocalTime);
        session->logoff();
    }

    void otherThread()
    {
        const OutlookAccess access;
        auto application = access.createApplication();
        std::thread([&] { QVERIFY(!application->session()); }).join();
        QVERIFY(application->session());
    }

    void faults_data()
    {
        // of five contacts
        const Rows<ComFault, int, bool> row("fault", "stored", "isRead");
        row("absent", fails("Application", REGDB_E_CLASSNOTREG), 0, false);
        row("refused", fails("Application", E_ACCESSDENIED), 0, false);
        row("no session", ComFault{"Application.Session", {}}, 0, false);
        row("busy at logon", fails("Session.Logon", RPC_E_CALL_REJECTED), 0, false);
        row("folder refuses", throws("Session.GetFolderFromID", 1), 0, false);
        row("items refused", fails("Folder.Items", E_ACCESSDENIED), 0, false);
        row("items are a number", gives("Folder.Items", VT_I4, 1), 0, false);
        row("count throws", throws("Items.Count", 3), 2, false);
        row("busy at count", fails("Items.Count", RPC_E_CALL_REJECTED, 3, 3), 2, false);
        row("an item fails", fails("Items.Item", E_FAIL, 3, 3), 4, true);
        row("an item throws", throws("Items.Item", 3), 4, true);
        row("an item crashes", fails("Items.Item", RPC_E_SERVERFAULT, 3, 3), 4, true);
        row("busy at an item", fails("Items.Item", RPC_E_SERVERCALL_RETRYLATER, 3, 3), 2, false);
        row("class is a text", gives("Item.Class", VT_BSTR, 40), 0, true);
        row("no class", ComFault{"Item.Class", {}}, 0, true);
        row("no name", ComFault{"Item.FullName", {}}, 5, true);
        row("a name throws", throws("Item.FullName", 2), 5, true);
        row("busy at a name", fails("Item.FullName", RPC_E_CALL_REJECTED, 3, 3), 2, false);
        row("ends at a date", fails("Item.LastModificationTime", RPC_E_DISCONNECTED, 5), 4, false);
        row("ended at logoff", fails("Session.Logoff", HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)), 5,
            true);
    }

    // No fault is an error to the client, and the next copy is whole.
    void faults()
    {
        QFETCH(ComFault, fault);
        m_contacts->items = contacts(5);
        World world(m_contacts);
        const quint32 source = world.provider->sourceId();
        TestLog log;
        com().setFaults({fault});
        QVERIFY(world.sync());
        QCOMPARE(*world.said, success);
        QTEST(world.ids(source).size(), "stored");
        QTEST(world.provider->isRead(), "isRead");
        QVERIFY(world.provider->isStored());
        QCOMPARE(log.messages(s("ERROR")), QStringList());
        const QStringList refusals = log.messages(s("DEBUG")).filter(s("comoutlook.cpp"));
        QCOMPARE(refusals.isEmpty(), s(QTest::currentDataTag()) == s("class is a text") ||
                                         s(QTest::currentDataTag()) == s("items are a number"));
        if (s(QTest::currentDataTag()) == s("an item throws"))
            QCOMPARE(refusals, QStringList{s("comoutlook.cpp Outlook refused Item: Outlook: "
                                             "An object could not be found. (8004010f)")});
        com().setFaults({});
        QVERIFY(world.sync());
        QCOMPARE(world.rows(source).size(), 5);
        QCOMPARE(world.rows(source).last(), row(contact(5)));
        QVERIFY(world.provider->isRead());
    }

    void changesWhileRead()
    {
        m_contacts->items = contacts(5);
        m_outlook->beforeItem = [this](int number) {
            if (number == 2)
                m_contacts->items.append(contact(6));
            if (number == 4)
                m_contacts->items.remove(4, 2);
        };
        World world(m_contacts);
        QVERIFY(world.sync());
        QCOMPARE(world.ids(world.provider->sourceId()).size(), 4);
        QVERIFY(world.provider->isRead());
    }

    void costs_data() { bothWays(); }
    void costs()
    {
        const int count = s(QTest::currentDataTag()) == s(inProcess) ? 2000 : 200;
        m_contacts->items = contacts(count);
        if (count < 2000) {
            m_program = std::make_unique<Program>(QStringList{QString::number(count)});
            QVERIFY(m_program->says("ready"));
        }
        World world(m_contacts);
        com().calls = com().names = 0;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(world.sync());
        qInfo("%d contacts in %lld ms", count, timer.elapsed());
        QCOMPARE(world.ids(world.provider->sourceId()).size(), count);
        if (!m_program) {
            // each value once, with Item and Count; each name once for an object that is asked for it
            QCOMPARE(int(com().calls), count * 9 + 7);
            QCOMPARE(int(com().names), count * 7 + 8);
        }
    }

    // The chooser's thread and a worker, both at work all the time.
    void chooserAndReader_data() { bothWays(); }
    void chooserAndReader()
    {
        QFETCH(int, rounds);
        QVERIFY(start());
        const QStringList expected = everything();
        const QStringList folders = shown(ContactsOptionsOutlook());
        QVERIFY(folders.size() > 3);
        int right = 0;
        std::thread reader([&] {
            for (int i = 0; i < rounds; ++i)
                right += everything() == expected;
        });
        int seen = 0;
        for (int i = 0; i < rounds; ++i)
            seen += shown(ContactsOptionsOutlook()) == folders;
        reader.join();
        QCOMPARE(right, rounds);
        QCOMPARE(seen, rounds);
    }

    void eightReaders_data() { bothWays(); }
    void eightReaders()
    {
        QFETCH(int, rounds);
        QVERIFY(start());
        const QStringList expected = everything();
        std::atomic<int> right{0};
        std::vector<std::thread> readers;
        for (int i = 0; i < 8; ++i)
            readers.emplace_back([&] {
                for (int j = 0; j < rounds / 10; ++j)
                    right += everything() == expected;
            });
        for (std::thread& reader : readers)
            reader.join();
        QCOMPARE(int(right), 8 * (rounds / 10));
    }

    // Whoever waits for the worker is in nobody's way, although the thread has an application of its own.
    void endsWhileServed()
    {
        for (const bool isDestroyed : {true, false}) {
            Program program({s("10"), s("waits"), s("Items.Item"), s("4")});
            QVERIFY(program.says("ready"));
            {
                const ContactsOptionsOutlook chooser;
                World world(m_contacts);
                world.provider->syncContacts(contactBook, false);
                QVERIFY(program.says("serving"));
                if (isDestroyed) {
                    world.manager.reset();
                    QCOMPARE(world.said->last(), s("error 2"));
                } else {
                    world.provider->setEntryID(m_team->key(), true);
                    QVERIFY(world.settle());
                    QVERIFY(world.sync());
                    QCOMPARE(world.rows(world.provider->sourceId()), QStringList{row(contact(7))});
                }
                QVERIFY(shown(chooser).contains(s("Team")));
            }
            QVERIFY(program.isClean());
        }
    }

    void diesOrIsBusy()
    {
        for (const char* fault : {"busy", "dies"}) {
            Program program({s("10"), s(fault), s("Item.CompanyName"), s("4")});
            QVERIFY(program.says("ready"));
            World world(m_contacts);
            QVERIFY(world.sync());
            QCOMPARE(*world.said, success);
            const quint32 source = world.provider->sourceId();
            QCOMPARE(world.ids(source).size(), 3);
            QVERIFY(!world.provider->isRead());
            QVERIFY(qstrcmp(fault, "busy") == 0 ? program.isClean() : program.exitCode() == 3);

            QVERIFY(world.sync()); // there is none
            QVERIFY(world.ids(source).isEmpty());
            Program next({s("10")});
            QVERIFY(next.says("ready"));
            QVERIFY(world.sync());
            QVERIFY(world.provider->isRead());
            QCOMPARE(world.ids(source).size(), 10);
            world.manager.reset();
            QVERIFY(next.isClean());
        }
    }
};

QTEST_MAIN(TestComOutlook)
#include "tst_comoutlook.moc"
