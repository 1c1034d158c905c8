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

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// Runs a task to its end; the slot receives what it brings.
template <typename T, typename Signal, typename Slot>
Task::Status run(T* task, Signal done, Slot slot)
{
    QObject::connect(task, done, task, slot);
    return Outcome(task, QByteArray::number(QSIGNAL_CODE) + QMetaMethod::fromSignal(done).methodSignature())
        .run();
}

/// Runs one that brings nothing, or nothing that is asked for.
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
        const auto keep = [&](const ContactUnit& made) { unit = dynamic_cast<const Unit&>(made); };
        return run(add, &TaskAddContact::doneAddContact, keep) == Task::Ok;
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
        ContactList result;
        const auto keep = [&](const ContactList& list, unsigned int stamp) {
            result = list;
            *time = stamp;
        };
        auto* get = task<TaskGetContacts>(Task::GetContacts);
        get->setContactsType(book);
        get->setContactsLastTimeSync(since);
        const auto done = since == 0 ? &TaskGetContacts::doneGetContacts
                                     : &TaskGetContacts::doneGetContactsAfterLastTimeSync;
        if (run(get, done, keep) != Task::Ok)
            qWarning("the book could not be read");
        return result;
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
        QCOMPARE(run(task<TaskChekPermissions>(Task::ChekPermissions),
                     &TaskChekPermissions::doneCheckPermissions,
                     [](unsigned int rights) { QCOMPARE(rights, 3U); }),
                 Task::Ok);

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
            reschedule->setFaxEntryUrl(urls[0]);
            reschedule->setDateTime(when);
            QVERIFY(run(reschedule));
        }
        auto* abort = task<TaskAbort>(Task::Abort);
        abort->setFaxEntryUrl(urls[1]);
        QVERIFY(run(abort));

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

        // Whatever reads without a parameter
        for (const Operation& operation : operations()) {
            if (operation.request != QByteArray("GET ") + operation.row.path ||
                (operation.type == Task::GetPrinterNames && !m_server->isPrintReceiptSupported()))
                continue;
            QVERIFY2(run(operation.make(*m_server)), operation.name.constData());
        }

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
        QVERIFY(change(Task::DeleteContact, group, groupBook));
        QCOMPARE(oids(groupBook).size(), 5);
    }
};
QTEST_GUILESS_MAIN(TestInterop)
#include "tst_interop.moc"
