// Sends a PDF as a fax: sendfax ADDRESS LOGIN PASSWORD NUMBER FILE
//
// Every request has the same steps: a server creates a task, the task gets its parameters and is executed,
// and it ends with one of two signals.

#include "contact.h"
#include "contactmanager.h"
#include "faxmanager.h"
#include "faxserver.h"
#include "tasks/taskschedule.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

//! [fax]
static FaxDocument makeFax(const QString& number, const QString& file)
{
    Contact recipient;
    recipient.setFax(number);

    DiskDataProvider data;
    data.setFileName(file); // read when the fax is submitted
    Content content;
    content.setType(Content::Pdf);
    content.setData(data);
    Attach attachment;
    attachment.setLocation(Attach::Inline);
    attachment.setName(QFileInfo(file).fileName());
    attachment.setContent(content);

    FaxDocument fax;
    fax.recipients().addContact(recipient);
    fax.attachs().append(attachment);
    return fax;
}
//! [fax]

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() != 6)
        qFatal("usage: sendfax ADDRESS LOGIN PASSWORD NUMBER FILE");
    QTextStream out(stdout);

    //! [login]
    FaxManager manager{QPointer<ContactManager>()}; // no contacts needed here
    QPointer<FaxServer> server = manager.addServer(arguments[1], false, arguments[2], arguments[3]);

    // Adding a server logs in. The user's profile is requested last; it contains the defaults of a new fax.
    QObject::connect(server, &FaxServer::changedFaxUser, [&](const FaxUser& user) {
        //! [login]
        //! [submit]
        FaxDocument fax = makeFax(arguments[4], arguments[5]);
        fax.setFaxSchedule(user.faxScheduleOptions());

        auto* task = static_cast<TaskSchedule*>(server->addTask(Task::Schedule));
        task->setFaxDocument(fax);
        QObject::connect(task, &TaskSchedule::doneFaxSchedule,
                         [&](const BaseFaxEntry::FaxEntriesPtrListPtr& entries) {
                             for (const auto& entry : *entries)
                                 out << "queued: " << entry->recipient() << ' '
                                     << entry->entryUrl().toDisplayString() << '\n';
                             app.quit();
                         });
        task->execute();
        //! [submit]
    });
    //! [failure]
    // Every failure, of the login or the submission, is also the server's last status.
    QObject::connect(server, &FaxServer::changedLastStatus, [&](Task::Status status) {
        if (status == Task::Ok)
            return;
        out << "failed: " << QVariant::fromValue(status).toString() << '\n';
        app.exit(1);
    });
    //! [failure]
    return app.exec();
}
