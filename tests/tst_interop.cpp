// The library and the simulator read the protocol independently of each other: whatever one sends and the
// other refuses, or answers and the other does not understand, is a fault in one of them.

#include "attach.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "inboundfaxentry.h"
#include "quendracontactgroup.h"
#include "simserver.h"
#include "tasks/taskabort.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskcheckpermissions.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "tasks/taskgetprinternames.h"
#include "tasks/taskmodifycontact.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskreschedule.h"
#include "tasks/taskschedule.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

const auto nothing = [] {};

/// Runs a task to its end; the slot receives what it brings.
template <typename T, typename Signal, typename Slot>
Task::Status run(T* task, Signal done, Slot slot)
{
    Task::Status status = Task::Unknown;
    QEventLoop loop;
    QObject::connect(task, done, &loop, slot);
    QObject::connect(task, done, &loop, [&] { status = Task::Ok; });
    QObject::connect(task, &Task::errorExecute, &loop, [&](Task::Status error) { status = error; });
    QObject::connect(task, &QObject::destroyed, &loop, &QEventLoop::quit);
    QTimer::singleShot(20000, &loop, &QEventLoop::quit);
    task->execute();
    loop.exec();
    return status;
}

} // namespace

class TestInterop : public QObject
{
    Q_OBJECT

    SimOptions options() const;
    template <typename T>
    T* task(Task::Type type)
    {
        return qobject_cast<T*>(m_server->addTask(type));
    }
    ContactList contacts(ContactList::Type book, unsigned int since, unsigned int* time);

    std::unique_ptr<SimServer> m_sim;
    std::unique_ptr<FaxManager> m_manager;
    QPointer<FaxServer> m_server;

private Q_SLOTS:
    void init();
    void cleanup();
    void wholeService_data();
    void wholeService();
    void books_data();
    void books();
};

void TestInterop::init()
{
    m_manager = std::make_unique<FaxManager>(QPointer<ContactManager>());
}

void TestInterop::cleanup()
{
    if (m_sim)
        QCOMPARE(m_sim->refusals(), QStringList());
    m_manager.reset();
    m_sim.reset();
}

SimOptions TestInterop::options() const
{
    SimUser user;
    user.name = QStringLiteral("a b/%2f+\u00fc");
    user.password = QStringLiteral("p:\u00e4%");
    user.editGlobal = true;
    SimOptions options;
    options.users = {user};
    options.manualClock = true;
    options.inbound = 20;
    return options;
}

void TestInterop::wholeService_data()
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<QString>("version");
    QTest::newRow("current") << false << QStringLiteral("3.6.1");
    QTest::newRow("TLS") << true << QStringLiteral("3.6.1");
    QTest::newRow("without a choice of page size") << false << QStringLiteral("3.6");
    QTest::newRow("without printed receipts") << false << QStringLiteral("1.4");
    QTest::newRow("without schedule defaults") << false << QStringLiteral("0.9");
}

void TestInterop::wholeService()
{
    QFETCH(bool, tls);
    QFETCH(QString, version);
    SimOptions simOptions = options();
    simOptions.tls = tls;
    simOptions.version = version;
    const QString login = simOptions.users.first().name;
    m_sim = std::make_unique<SimServer>(simOptions);
    QVERIFY(m_sim->start());

    // Login, identity, profile
    m_server = m_manager->addServer(m_sim->address(), tls, login, simOptions.users.first().password);
    QSignalSpy loggedIn(m_server, &FaxServer::changedFaxUser);
    QVERIFY(loggedIn.wait(20000));
    QCOMPARE(m_server->info().version(), version);
    QCOMPARE(m_server->user().contact().user(), login);

    // Every option away from its default, so that every element is written
    FaxUser user = m_server->user();
    QuendraContact me = user.contact();
    me.setName(QStringLiteral("Zo\u00eb <Z> & \"Co\""));
    me.setEmail(QStringLiteral("z@example.com"));
    user.setContact(me);
    user.useCoverPage(true);
    FaxUserScheduleOptions defaults = user.faxScheduleOptions();
    defaults.setMaxAttempts(9);
    defaults.setSelectPrinter(QStringLiteral("Archive"));
    user.setScheduleOptions(defaults);
    auto* modify = task<TaskModifyFaxUser>(Task::ModifyFaxUser);
    modify->setUser(user);
    QCOMPARE(run(modify, &TaskModifyFaxUser::doneModifyFaxUser, nothing), Task::Ok);
    QCOMPARE(m_sim->user(login).person.name, me.name());
    QCOMPARE(m_sim->user(login).defaults.maxTries, m_server->info().protocolVersion() == 2 ? 9 : 3);
    QCOMPARE(run(task<TaskChekPermissions>(Task::ChekPermissions), &TaskChekPermissions::doneCheckPermissions,
                 [](unsigned int rights) { QCOMPARE(rights, 3U); }),
             Task::Ok);

    // A fax with everything
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("a.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("hello\n");
    file.close();
    DiskDataProvider data;
    data.setFileName(file.fileName());
    Content content;
    content.setType(Content::PlainText);
    content.setData(data);
    Attach attach;
    attach.setLocation(Attach::Inline);
    attach.setName(QStringLiteral("a.txt"));
    attach.setContent(content);
    CoverPage cover;
    cover.setEnabled(true);
    cover.setName(QStringLiteral("Standard"));
    cover.setSubject(QStringLiteral("S & T"));
    FaxScheduleOptions schedule;
    schedule.setSupportReceiptOptions(m_server->isPrintReceiptSupported());
    schedule.setSupportFaxPageSizeOptions(m_server->isFaxPageSizeSupported());
    schedule.setDateToSend(QDateTime::currentDateTime().addDays(1));
    schedule.setMaxTries(1);
    schedule.setTryInterval(60);
    schedule.setSelectPrinter(QStringLiteral("Archive"));
    schedule.setPrintWithFirstPage(true);
    FaxDocument document;
    document.setAttachs({attach, attach});
    document.setCoverPage(cover);
    document.setFaxSchedule(schedule);
    for (const char* number : {"100", "200"}) {
        QuendraContact recipient;
        recipient.setName(QStringLiteral("R"));
        recipient.setFax(QLatin1String(number));
        document.recipients().addContact(recipient);
    }
    auto* submit = task<TaskSchedule>(Task::Schedule);
    submit->setFaxDocument(document);
    QVector<QUrl> urls;
    QCOMPARE(run(submit, &TaskSchedule::doneFaxSchedule,
                 [&urls](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                     for (const auto& entry : *entries)
                         urls.append(entry->entryUrl());
                 }),
             Task::Ok);
    QCOMPARE(urls.size(), 2);
    const QVector<SimFax> faxes = m_sim->faxes();
    QCOMPARE(faxes.size(), 2);
    QCOMPARE(faxes[1].recipient.fax, QStringLiteral("200"));
    QCOMPARE(faxes[1].sender.name, m_server->user().contact().name()); // as last read
    QCOMPARE(faxes[1].cover.subject, cover.subject());
    QCOMPARE(faxes[1].schedule.sendAt, schedule.dateToSend().toMSecsSinceEpoch() / 1000 * 1000);
    QCOMPARE(faxes[1].schedule.printer,
             m_server->isPrintReceiptSupported() ? QStringLiteral("Archive") : QString());
    QCOMPARE(m_sim->attachments(2).value(1).name, QStringLiteral("a.txt1"));
    QCOMPARE(m_sim->attachments(2).value(1).content, QByteArrayLiteral("hello\n"));

    // Its way
    auto* later = task<TaskReschedule>(Task::Reschedule);
    later->setFaxEntryUrl(urls[0]);
    later->setDateTime(QDateTime::currentDateTime().addDays(2));
    QCOMPARE(run(later, &TaskReschedule::doneReschedule, nothing), Task::Ok);
    auto* atOnce = task<TaskReschedule>(Task::Reschedule);
    atOnce->setFaxEntryUrl(urls[0]);
    QCOMPARE(run(atOnce, &TaskReschedule::doneReschedule, nothing), Task::Ok);
    auto* abort = task<TaskAbort>(Task::Abort);
    abort->setFaxEntryUrl(urls[1]);
    QCOMPARE(run(abort, &TaskAbort::doneAbort, nothing), Task::Ok);

    const auto queue = [this](TaskGetFaxEntry::TaskEntryType type, int limit) {
        int count = -1;
        auto* get = task<TaskGetFaxEntry>(Task::GetFaxEntry);
        get->setTaskEntryType(type);
        get->setCompleteLimit(limit);
        run(get, &TaskGetFaxEntry::doneGetFaxEntry,
            [&count](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) { count = entries->size(); });
        return count;
    };
    QCOMPARE(queue(TaskGetFaxEntry::EntryQueue, -1), 1);
    QCOMPARE(queue(TaskGetFaxEntry::EntryQueue, 5), 2);
    QCOMPARE(queue(TaskGetFaxEntry::EntryOutboundStatus, 5), 1);
    m_sim->step(10000);
    auto* sent = task<TaskGetOutboundFaxEntry>(Task::GetOutboundFaxEntry);
    sent->setCompleteLimit(10);
    QCOMPARE(run(sent, &TaskGetOutboundFaxEntry::doneGetFaxEntry,
                 [](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                     QCOMPARE(entries->size(), 2);
                     QCOMPARE(int(entries->first()->state()), 6); // aborted
                     QCOMPARE(int(entries->last()->state()), 4);  // sent
                     QCOMPARE(entries->last()->pages(), 3);       // two documents and the cover page
                 }),
             Task::Ok);
    auto* received = task<TaskGetInboundFaxEntry>(Task::GetInboundFaxEntry);
    received->setCompleteLimit(7);
    QCOMPARE(run(received, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry,
                 [this](const InboundFaxEntriesPtrListPtr& entries) {
                     QCOMPARE(entries->size(), 7);
                     QCOMPARE(entries->first()->filename(), m_sim->inbound().last().filename);
                     QVERIFY(entries->first()->completeTime().isValid());
                 }),
             Task::Ok);

    // What the server offers
    QCOMPARE(run(task<TaskGetCoverPages>(Task::GetCoverPages), &TaskGetCoverPages::doneGetCoverPages,
                 [](const CoverPageListPtr& pages) { QCOMPARE(pages->size(), 4); }),
             Task::Ok);
    if (m_server->isPrintReceiptSupported()) {
        QCOMPARE(run(task<TaskGetPrinterNames>(Task::GetPrinterNames),
                     &TaskGetPrinterNames::doneGetPrinterNames,
                     [](const QStringListPtr& printers) { QCOMPARE(printers->size(), 3); }),
                 Task::Ok);
    }
}

ContactList TestInterop::contacts(ContactList::Type book, unsigned int since, unsigned int* time)
{
    ContactList result;
    const auto keep = [&](const ContactList& list, unsigned int stamp) {
        result = list;
        *time = stamp;
    };
    auto* get = task<TaskGetContacts>(Task::GetContacts);
    get->setContactsType(book);
    get->setContactsLastTimeSync(since);
    const auto done =
        since == 0 ? &TaskGetContacts::doneGetContacts : &TaskGetContacts::doneGetContactsAfterLastTimeSync;
    if (run(get, done, keep) != Task::Ok)
        qWarning("the book could not be read");
    return result;
}

void TestInterop::books_data()
{
    QTest::addColumn<int>("people");
    QTest::addColumn<int>("groups");
    QTest::addColumn<bool>("tls");
    QTest::newRow("personal") << int(ContactList::PersonalContacts) << int(ContactList::PersonalGroups)
                              << false;
    QTest::newRow("global") << int(ContactList::GlobalContacts) << int(ContactList::GlobalGroups) << false;
    QTest::newRow("TLS") << int(ContactList::PersonalContacts) << int(ContactList::PersonalGroups) << true;
}

void TestInterop::books()
{
    QFETCH(int, people);
    QFETCH(int, groups);
    QFETCH(bool, tls);
    const auto peopleBook = static_cast<ContactList::Type>(people);
    const auto groupBook = static_cast<ContactList::Type>(groups);
    SimOptions simOptions = options();
    simOptions.tls = tls;
    simOptions.contacts = 50;
    simOptions.groups = 5;
    const QString login = simOptions.users.first().name;
    m_sim = std::make_unique<SimServer>(simOptions);
    QVERIFY(m_sim->start());
    m_server = m_manager->addServer(m_sim->address(), tls, login, simOptions.users.first().password);
    QSignalSpy loggedIn(m_server, &FaxServer::changedFaxUser);
    QVERIFY(loggedIn.wait(20000));
    const QString owner = peopleBook == ContactList::GlobalContacts ? SimBooks::global() : login;

    unsigned int time = 0;
    const ContactList all = contacts(peopleBook, 0, &time);
    QCOMPARE(all.contacts().size(), 50);
    QVERIFY(time > 0);

    QuendraContact contact;
    contact.setName(QStringLiteral("New & <shiny> \u00e9"));
    contact.setFax(QStringLiteral("123"));
    auto* add = task<TaskAddContact>(Task::AddContact);
    add->setContact(contact, peopleBook);
    QCOMPARE(run(add, &TaskAddContact::doneAddContact,
                 [&](const ContactUnit& unit) { contact = dynamic_cast<const QuendraContact&>(unit); }),
             Task::Ok);
    QVERIFY(contact.url().isValid());
    contact.setEmail(QStringLiteral("n@example.com"));
    auto* modify = task<TaskModifyContact>(Task::ModifyContact);
    modify->setContact(contact, peopleBook);
    QCOMPARE(run(modify, &TaskModifyContact::doneModifyContact, nothing), Task::Ok);
    const ContactList changed = contacts(peopleBook, time, &time);
    QCOMPARE(changed.contacts().size(), 1);
    QVERIFY(*changed.contacts().first() == contact);
    QCOMPARE(contacts(peopleBook, time, &time).contacts().size(), 0);

    QuendraContactGroup group;
    group.setName(QStringLiteral("Team"));
    group.addContact(contact);
    group.addContact(*all.contacts().first());
    auto* addGroup = task<TaskAddContact>(Task::AddContact);
    addGroup->setContact(group, groupBook);
    QCOMPARE(run(addGroup, &TaskAddContact::doneAddContact,
                 [&](const ContactUnit& unit) { group = dynamic_cast<const QuendraContactGroup&>(unit); }),
             Task::Ok);
    group.setDescription(QStringLiteral("described"));
    auto* modifyGroup = task<TaskModifyContact>(Task::ModifyContact);
    modifyGroup->setContact(group, groupBook);
    QCOMPARE(run(modifyGroup, &TaskModifyContact::doneModifyContact, nothing), Task::Ok);
    const ContactList allGroups = contacts(groupBook, 0, &time);
    QCOMPARE(allGroups.contacts().size(), 6);
    const auto* last = dynamic_cast<const QuendraContactGroup*>(allGroups.contacts().last().data());
    QVERIFY(last);
    QCOMPARE(last->description(), QStringLiteral("described"));
    QCOMPARE(last->contacts().contacts().size(), 2);
    QVERIFY(last->contacts().contains(contact));

    auto* remove = task<TaskDeleteContact>(Task::DeleteContact);
    remove->setContact(contact, peopleBook);
    QCOMPARE(run(remove, &TaskDeleteContact::doneDeleteContact, nothing), Task::Ok);
    const auto oids = [this](ContactList::Type book) {
        QStringList list;
        auto* get = task<TaskGetContactsOids>(Task::GetContactsOids);
        get->setContactsType(book);
        run(get, &TaskGetContactsOids::doneGetContactsOids,
            [&list](const QList<QString>& got) { list = got; });
        return list;
    };
    QStringList expected;
    for (const SimEntry& entry : m_sim->book(owner))
        expected.append(entry.uid);
    QCOMPARE(expected.size(), 50);
    QCOMPARE(oids(peopleBook), expected);
    auto* removeGroup = task<TaskDeleteContact>(Task::DeleteContact);
    removeGroup->setContact(group, groupBook);
    QCOMPARE(run(removeGroup, &TaskDeleteContact::doneDeleteContact, nothing), Task::Ok);
    QCOMPARE(oids(groupBook).size(), 5);
}

QTEST_GUILESS_MAIN(TestInterop)
#include "tst_interop.moc"
