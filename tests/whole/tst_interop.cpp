// The library and the simulator implement the protocol independently: a request that the simulator refuses or
// misinterprets is a fault in one of them. The simulator's replies are tested with the program qdfax.

#include "faxkit.h"
#include "operations.h"
#include "shorthand.h"
#include "simserver.h"
#include "taskkit.h"
#include "tasks/taskcheckpermissions.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskschedule.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestInterop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyElement_data()
    {
        const Rows<bool, QString> row;
        row("current", false, "3.6.1");
        row("TLS", true, "3.6.1");
        row("without a choice of page size", false, "3.6");
        row("without printed receipts", false, "1.4");
        row("without schedule defaults", false, "0.9");
    }
    void everyElement()
    {
        const auto [tls, version] = cells<bool, QString>();
        SimUser someone;
        someone.name = s("a b/%2f+\u00fc");
        someone.password = s("p:\u00e4%");
        someone.editGlobal = true;
        SimOptions options;
        options.tls = tls;
        options.version = version;
        options.users = {someone};
        options.manualClock = true;
        SimServer sim(options);
        QVERIFY(sim.start());
        FaxManager manager(noContacts);
        FaxServer& server = *manager.addServer(sim.address(), tls, someone.name, someone.password);
        QSignalSpy loggedIn(&server, &FaxServer::changedFaxUser);
        QVERIFY(loggedIn.wait(20000));
        QCOMPARE(server.info().version(), version);
        QCOMPARE(server.user().contact().user(), someone.name);

        // No option has its default, so that every element is written
        FaxUser user = server.user();
        QuendraContact me = user.contact();
        me.setName(QStringLiteral("Zo\u00eb <Z> & \"Co\""));
        me.setEmail(s("z@example.com"));
        user.setContact(me);
        user.useCoverPage(true);
        FaxUserScheduleOptions defaults = user.faxScheduleOptions();
        defaults.setMaxAttempts(9);
        defaults.setSelectPrinter(s("Archive"));
        user.setScheduleOptions(defaults);
        auto* modify = qobject_cast<TaskModifyFaxUser*>(server.addTask(Task::ModifyFaxUser));
        modify->setUser(user);
        QCOMPARE(Outcome(modify).run(), Task::Ok);
        QCOMPARE(sim.user(someone.name).person.name, me.name());
        QCOMPARE(sim.user(someone.name).defaults.maxTries, server.info().protocolVersion() == 2 ? 9 : 3);
        auto* check = qobject_cast<TaskChekPermissions*>(server.addTask(Task::ChekPermissions));
        QCOMPARE(resultOf(check, &TaskChekPermissions::doneCheckPermissions), 3U);

        // A fax with all elements
        QTemporaryDir folder;
        writeFile(folder.filePath(s("a.txt")), "hello\n");
        const Attach attach =
            inlineAttach(s("a.txt"), contentOf(Content::PlainText, folder.filePath(s("a.txt"))));
        CoverPage cover;
        cover.setEnabled(true);
        cover.setName(s("Standard"));
        cover.setSubject(s("S & T"));
        FaxScheduleOptions schedule;
        schedule.setSupportReceiptOptions(server.isPrintReceiptSupported());
        schedule.setSupportFaxPageSizeOptions(server.isFaxPageSizeSupported());
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
        auto* submit = qobject_cast<TaskSchedule*>(server.addTask(Task::Schedule));
        submit->setFaxDocument(document);
        const auto submitted = resultOf(submit, &TaskSchedule::doneFaxSchedule);
        QCOMPARE(submitted->size(), 2);
        const QVector<SimFax> faxes = sim.faxes();
        QCOMPARE(faxes.size(), 2);
        QCOMPARE(faxes[1].recipient.fax, s("200"));
        QCOMPARE(faxes[1].sender.name, server.user().contact().name()); // as last read
        QCOMPARE(faxes[1].cover.subject, cover.subject());
        QCOMPARE(faxes[1].schedule.sendAt, schedule.dateToSend().toMSecsSinceEpoch() / 1000 * 1000);
        QCOMPARE(faxes[1].schedule.printer, server.isPrintReceiptSupported() ? s("Archive") : QString());
        QCOMPARE(sim.attachments(2).value(1).name, s("a.txt1"));
        QCOMPARE(sim.attachments(2).value(1).content, QByteArrayLiteral("hello\n"));

        // All operations that read and have no parameter
        for (const Operation& operation : operations()) {
            if (operation.request != QByteArray("GET ") + operation.row.path ||
                (operation.type == Task::GetPrinterNames && !server.isPrintReceiptSupported()))
                continue;
            const Task::Status status = Outcome(operation.make(server)).run();
            QVERIFY2(status == Task::Ok, operation.name.constData());
        }
        QCOMPARE(sim.refusals(), QStringList());
    }
};
QTEST_GUILESS_MAIN(TestInterop)
#include "tst_interop.moc"
