// The module that bench_load loads: sends the first request of the library.

#include "benchserver.h"
#include "tasks/taskgetquendrainfo.h"

#include <QCoreApplication>

/// Requests the identity of the server at an address. Returns 0 if it has replied.
extern "C" Q_DECL_EXPORT int sendFirstTask(int argc, char** argv, const char* address)
{
    QCoreApplication application(argc, argv);
    FaxManager manager{QPointer<ContactManager>()};
    BareServer server(manager, QString::fromLatin1(address));
    auto* task = static_cast<TaskGetQuendraInfo*>(server.addTask(Task::GetQuendraInfo));
    QObject::connect(task, &TaskGetQuendraInfo::doneGetFaxInfo, [] { QCoreApplication::exit(0); });
    QObject::connect(task, &Task::errorExecute, [] { QCoreApplication::exit(1); });
    task->execute();
    return QCoreApplication::exec();
}
