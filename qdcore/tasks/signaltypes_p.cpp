#include "tasks/signaltypes_p.h"

#include "basefaxentry.h"
#include "contactlist.h"
#include "coverpage.h"
#include "faxuser.h"
#include "inboundfaxentry.h"
#include "qstringlistptr.h"
#include "quendrainfo.h"
#include "tasks/task.h"

void registerSignalTypes()
{
    // by the names that stand in the signals, which is what Qt looks for
    qRegisterMetaType<BaseFaxEntry::FaxEntriesPtrListPtr>("BaseFaxEntry::FaxEntriesPtrListPtr");
    qRegisterMetaType<ContactList>("ContactList");
    qRegisterMetaType<ContactList::Type>("ContactList::Type");
    qRegisterMetaType<CoverPageListPtr>("CoverPageListPtr");
    qRegisterMetaType<FaxUser>("FaxUser");
    qRegisterMetaType<InboundFaxEntriesPtrListPtr>("InboundFaxEntriesPtrListPtr");
    qRegisterMetaType<QList<QString>>("QList<QString>");
    qRegisterMetaType<QStringListPtr>("QStringListPtr");
    qRegisterMetaType<QuendraInfo>("QuendraInfo");
    qRegisterMetaType<Task::Status>("Task::Status");
}
