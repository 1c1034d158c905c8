// The library and the simulator read the protocol independently of each other: whatever one sends and the
// other refuses, or answers and the other does not understand, is a fault in one of them.

#include "faxkit.h"
#include "inboundfaxentry.h"
#include "quendracontactgroup.h"
#include "shorthand.h"
#include "simserver.h"
#include "taskkit.h"
#include "tasks/taskabort.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskcheckpermissions.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "tasks/taskgetprinternames.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskreschedule.h"
#include "tasks/taskschedule.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// Runs a task to its end, and tells whether it was a good one.
bool run(Task* task)
{
    return Outcome(task).run() == Task::Ok;
}

} // namespace

class TestInterop : public QObject
{
    Q_OBJECT

    /// A simulated server, and the library logged in to it.
    void start(SimOptions options)
    {
        SimUser user;
        user.name = s("a b/%2f+\u00fc");
        user.password = QStringLiteral("p:\u00e4%");
        user.editGlobal = true;
        options.users = {user};
        options.manualClock = true;
        options.inbound = 20;
        m_login = user.name;
        m_sim = std::make_unique<SimServer>(options);
        QVERIFY(m_sim->start());
        m_server = m_manager->addServer(m_sim->address(), options.tls, user.name, user.password);
        QSignalSpy loggedIn(m_server, &FaxServer::changedFaxUser);
        QVERIFY(loggedIn.wait(20000));
    }

    template <typename T>
    T* task(Task::Type type)
    {
        return qobject_cast<T*>(m_server->addTask(type));
    }
    /// Adds a contact or a group on the server, and returns whether that worked.
    template <typename Unit>
    bool add(Unit& unit, ContactList::Type book)
    {
        auto* add = task<TaskAddContact>(Task::AddContact);
        add->setContact(unit, book);
        connect(add, &TaskAddContact::doneAddContact, this,
                [&](const ContactUnit& made) { unit = dynamic_cast<const Unit&>(made); });
        return run(add);
    }
    /// Changes or deletes one.
    bool change(Task::Type type, const ContactUnit& unit, ContactList::Type book)
    {
        auto* change = task<TaskChangeContact>(type);
        change->setContact(unit, book);
        return run(change);
    }
    ContactList contacts(ContactList::Type book, unsigned int since, unsigned int* time)
    {
        auto* get = task<TaskGetContacts>(Task::GetContacts);
        get->setContactsType(book);
        get->setContactsLastTimeSync(since);
        const auto done = since == 0 ? &TaskGetContacts::doneGetContacts
                                     : &TaskGetContacts::doneGetContactsAfterLastTimeSync;
        connect(get, done, this, [time](const ContactList&, unsigned int stamp) { *time = stamp; });
        return resultOf(get, done);
    }

    QString m_login;
    std::unique_ptr<SimServer> m_sim;
    std::unique_ptr<FaxManager> m_manager;
    QPointer<FaxServer> m_server;

private Q_SLOTS:
    void init() { m_manager = std::make_unique<FaxManager>(noContacts); }

    void cleanup()
    {
        if (m_sim)
            QCOMPARE(m_sim->refusals(), QStringList());
        m_manager.reset();
        m_sim.reset();
    }

    void wholeService_data()
    {
        const Rows<bool, QString> row("tls", "version");
        row("current", false, "3.6.1");
        row("TLS", true, "3.6.1");
        row("without a choice of page size", false, "3.6");
        row("without printed receipts", false, "1.4");
        row("without schedule defaults", false, "0.9");
    }
    void wholeService()
    {
        QFETCH(bool, tls);
        QFETCH(QString, version);
        SimOptions simOptions;
        simOptions.tls = tls;
        simOptions.version = version;
        start(simOptions);
        QCOMPARE(m_server->info().version(), version);
        QCOMPARE(m_server->user().contact().user(), m_login);

        // Every option away from its default, so that every element is written
        FaxUser user = m_server->user();
        QuendraContact me = user.contact();
        me.setName(QStringLiteral("Zo\u00eb <Z> & \"Co\""));
        me.setEmail(s("z@example.com"));
        user.setContact(me);
        user.useCoverPage(true);
        FaxUserScheduleOptions defaults = user.faxScheduleOptions();
        defaults.setMaxAttempts(9);
        defaults.setSelectPrinter(s("Archive"));
        user.setScheduleOptions(defaults);
        auto* modify = task<TaskModifyFaxUser>(Task::ModifyFaxUser);
        modify->setUser(user);
        QVERIFY(run(modify));
        QCOMPARE(m_sim->user(m_login).person.name, me.name());
        QCOMPARE(m_sim->user(m_login).defaults.maxTries, m_server->info().protocolVersion() == 2 ? 9 : 3);
        auto* check = task<TaskChekPermissions>(Task::ChekPermissions);
        QCOMPARE(resultOf(check, &TaskChekPermissions::doneCheckPermissions), 3U);

        // A fax with everything
        QTemporaryDir folder;
        writeFile(folder.filePath(s("a.txt")), "hello\n");
        const Attach attach =
            inlineAttach(s("a.txt"), contentOf(Content::PlainText, folder.filePath(s("a.txt"))));
        CoverPage cover;
        cover.setEnabled(true);
        cover.setName(s("Standard"));
        cover.setSubject(s("S & T"));
        FaxScheduleOptions schedule;
        schedule.setSupportReceiptOptions(m_server->isPrintReceiptSupported());
        schedule.setSupportFaxPageSizeOptions(m_server->isFaxPageSizeSupported());
        schedule.setDateToSend(QDateTime::currentDateTime().addDays(1));
        schedule.setMaxTries(1);
        schedule.setTryInterval(60);
        schedule.setSelectPrinter(s("Archive"));
        schedule.setPrintWithFirstPage(true);
        FaxDocument document;
        document.setAttachs({attach, attach});
        document.setCoverPage(cover);
        document.setFaxSchedule(schedule);
        for (const char* number : {"100", "200"}) {
            QuendraContact recipient;
            recipient.setName(s("R"));
            recipient.setFax(QLatin1String(number));
            document.recipients().addContact(recipient);
        }
        auto* submit = task<TaskSchedule>(Task::Schedule);
        submit->setFaxDocument(document);
        const auto submitted = resultOf(submit, &TaskSchedule::doneFaxSchedule);
        QCOMPARE(submitted->size(), 2);
        const QVector<SimFax> faxes = m_sim->faxes();
        QCOMPARE(faxes.size(), 2);
        QCOMPARE(faxes[1].recipient.fax, s("200"));
        QCOMPARE(faxes[1].sender.name, m_server->user().contact().name()); // as last read
        QCOMPARE(faxes[1].cover.subject, cover.subject());
        QCOMPARE(faxes[1].schedule.sendAt, schedule.dateToSend().toMSecsSinceEpoch() / 1000 * 1000);
        QCOMPARE(faxes[1].schedule.printer, m_server->isPrintReceiptSupported() ? s("Archive") : QString());
        QCOMPARE(m_sim->attachments(2).value(1).name, s("a.txt1"));
        QCOMPARE(m_sim->attachments(2).value(1).content, QByteArrayLiteral("hello\n"));

        // Its way
        for (const QDateTime& when : {QDateTime::currentDateTime().addDays(2), QDateTime()}) {
            auto* reschedule = task<TaskReschedule>(Task::Reschedule);
            reschedule->setFaxEntryUrl(submitted->first()->entryUrl());
            reschedule->setDateTime(when);
            QVERIFY(run(reschedule));
        }
        auto* abort = task<TaskAbort>(Task::Abort);
        abort->setFaxEntryUrl(submitted->last()->entryUrl());
        QVERIFY(run(abort));

        const auto queue = [this](TaskGetFaxEntry::TaskEntryType type, int limit) {
            auto* get = task<TaskGetFaxEntry>(Task::GetFaxEntry);
            get->setTaskEntryType(type);
            get->setCompleteLimit(limit);
            return resultOf(get, &TaskGetFaxEntry::doneGetFaxEntry)->size();
        };
        QCOMPARE(queue(TaskGetFaxEntry::EntryQueue, -1), 1);
        QCOMPARE(queue(TaskGetFaxEntry::EntryQueue, 5), 2);
        QCOMPARE(queue(TaskGetFaxEntry::EntryOutboundStatus, 5), 1);
        m_sim->step(10000);
        auto* sent = task<TaskGetOutboundFaxEntry>(Task::GetOutboundFaxEntry);
        sent->setCompleteLimit(10);
        const auto log = resultOf(sent, &TaskGetOutboundFaxEntry::doneGetFaxEntry);
        QCOMPARE(log->size(), 2);
        QCOMPARE(int(log->first()->state()), 6); // aborted
        QCOMPARE(int(log->last()->state()), 4);  // sent
        QCOMPARE(log->last()->pages(), 3);       // two documents and the cover page
        auto* received = task<TaskGetInboundFaxEntry>(Task::GetInboundFaxEntry);
        received->setCompleteLimit(7);
        const auto inbound = resultOf(received, &TaskGetInboundFaxEntry::doneGetInboundFaxEntry);
        QCOMPARE(inbound->size(), 7);
        QCOMPARE(inbound->first()->filename(), m_sim->inbound().last().filename);
        QVERIFY(inbound->first()->completeTime().isValid());

        // Whatever reads without a parameter
        for (const Operation& operation : operations()) {
            if (operation.request != QByteArray("GET ") + operation.row.path ||
                (operation.type == Task::GetPrinterNames && !m_server->isPrintReceiptSupported()))
                continue;
            QVERIFY2(run(operation.make(*m_server)), operation.name.constData());
        }

        // What the server offers
        auto* pages = task<TaskGetCoverPages>(Task::GetCoverPages);
        QCOMPARE(resultOf(pages, &TaskGetCoverPages::doneGetCoverPages)->size(), 4);
        auto* printers = task<TaskGetPrinterNames>(Task::GetPrinterNames);
        if (m_server->isPrintReceiptSupported())
            QCOMPARE(resultOf(printers, &TaskGetPrinterNames::doneGetPrinterNames)->size(), 3);
    }

    void books_data()
    {
        const Rows<ContactList::Type, ContactList::Type, bool> row("peopleBook", "groupBook", "tls");
        row("personal", ContactList::PersonalContacts, ContactList::PersonalGroups, false);
        row("global", ContactList::GlobalContacts, ContactList::GlobalGroups, false);
        row("TLS", ContactList::PersonalContacts, ContactList::PersonalGroups, true);
    }
    void books()
    {
        QFETCH(ContactList::Type, peopleBook);
        QFETCH(ContactList::Type, groupBook);
        QFETCH(bool, tls);
        SimOptions simOptions;
        simOptions.tls = tls;
        simOptions.contacts = 50;
        simOptions.groups = 5;
        start(simOptions);
        const QString owner = peopleBook == ContactList::GlobalContacts ? SimBooks::global() : m_login;

        unsigned int time = 0;
        const ContactList all = contacts(peopleBook, 0, &time);
        QCOMPARE(all.contacts().size(), 50);
        QVERIFY(time > 0);

        QuendraContact contact;
        contact.setName(QStringLiteral("New & <shiny> \u00e9"));
        contact.setFax(s("123"));
        QVERIFY(add(contact, peopleBook));
        QVERIFY(contact.url().isValid());
        contact.setEmail(s("n@example.com"));
        QVERIFY(change(Task::ModifyContact, contact, peopleBook));
        const ContactList changed = contacts(peopleBook, time, &time);
        QCOMPARE(changed.contacts().size(), 1);
        QVERIFY(*changed.contacts().first() == contact);
        QCOMPARE(contacts(peopleBook, time, &time).contacts().size(), 0);

        QuendraContactGroup group;
        group.setName(s("Team"));
        group.addContact(contact);
        group.addContact(*all.contacts().first());
        QVERIFY(add(group, groupBook));
        group.setDescription(s("described"));
        QVERIFY(change(Task::ModifyContact, group, groupBook));
        const ContactList allGroups = contacts(groupBook, 0, &time);
        QCOMPARE(allGroups.contacts().size(), 6);
        const auto* last = dynamic_cast<const QuendraContactGroup*>(allGroups.contacts().last().data());
        QVERIFY(last);
        QCOMPARE(last->description(), s("described"));
        QCOMPARE(last->contacts().contacts().size(), 2);
        QVERIFY(last->contacts().contains(contact));

        QVERIFY(change(Task::DeleteContact, contact, peopleBook));
        const auto oids = [this](ContactList::Type book) {
            auto* get = task<TaskGetContactsOids>(Task::GetContactsOids);
            get->setContactsType(book);
            return QStringList(resultOf(get, &TaskGetContactsOids::doneGetContactsOids));
        };
        QStringList expected;
        for (const SimEntry& entry : m_sim->book(owner))
            expected.append(entry.uid);
        QCOMPARE(expected.size(), 50);
        QCOMPARE(oids(peopleBook), expected);
        QVERIFY(change(Task::DeleteContact, group, groupBook));
        QCOMPARE(oids(groupBook).size(), 5);
    }
};
QTEST_GUILESS_MAIN(TestInterop)
#include "tst_interop.moc"
