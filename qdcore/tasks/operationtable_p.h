#pragma once

// The table of operations. Internal: not installed.

#include "tasks/operations_p.h"
#include "tasks/taskabort.h"
#include "tasks/taskaddcontact.h"
#include "tasks/taskcheckpermissions.h"
#include "tasks/taskdeletecontact.h"
#include "tasks/taskgetcontacts.h"
#include "tasks/taskgetcontactsoids.h"
#include "tasks/taskgetcoverpages.h"
#include "tasks/taskgetfaxentry.h"
#include "tasks/taskgetfaxuser.h"
#include "tasks/taskgetinboundfaxentry.h"
#include "tasks/taskgetoutboundfaxentry.h"
#include "tasks/taskgetprinternames.h"
#include "tasks/taskgetquendrainfo.h"
#include "tasks/taskmodifycontact.h"
#include "tasks/taskmodifyfaxuser.h"
#include "tasks/taskreschedule.h"
#include "tasks/taskschedule.h"
#include "tasks/taskverifylogin.h"

/**
 * Calls @p visit with each operation and its done signals, in the order of Task::Type.
 *
 * The only place where an operation is registered: FaxServer::addTask() creates and monitors the tasks, a
 * task looks up its error mapping, and the tests and the fuzzer enumerate the operations here.
 */
template <typename Visit>
void forEachOperation(Visit visit)
{
    using T = Task;
    using E = ErrorMapping;
    // clang-format off
    visit(WebOperation{T::GetQuendraInfo, "GET", "/qdws/v1/about", E::AuthApart, T::Error},
          &TaskGetQuendraInfo::doneGetFaxInfo);
    visit(WebOperation{T::VerifyLogin, "GET", "/qdws/v1/verify", E::AuthApart, T::AuthError},
          &TaskVerifyLogin::doneVerifyLogin);
    visit(WebOperation{T::GetFaxUser, "GET", "/qdws/v1/users/", E::AlwaysError, T::Error},
          &TaskGetFaxUser::doneGetFaxUser);
    visit(WebOperation{T::ModifyFaxUser, "PUT", "/qdws/v1/users/", E::AlwaysError, T::Error},
          &TaskModifyFaxUser::doneModifyFaxUser);
    visit(WebOperation{T::Schedule, "POST", "/qdws/v1/ofax", E::ContentApart, T::InvalidReply},
          &TaskSchedule::doneFaxSchedule);
    visit(WebOperation{T::GetContacts, "GET", "/qdws/v1/contacts/", E::AuthApart, T::Ok},
          &TaskGetContacts::doneGetContacts, &TaskGetContacts::doneGetContactsAfterLastTimeSync);
    visit(WebOperation{T::AddContact, "POST", "/qdws/v1/contacts/", E::Contact, T::InvalidReply},
          &TaskAddContact::doneAddContact);
    visit(WebOperation{T::ModifyContact, "PUT", "/qdws/v1/contacts/", E::Contact, T::InvalidReply},
          &TaskModifyContact::doneModifyContact);
    visit(WebOperation{T::GetContactsOids, "GET", "/qdws/v1/contact_oids/", E::AlwaysError, T::Ok},
          &TaskGetContactsOids::doneGetContactsOids);
    visit(WebOperation{T::DeleteContact, "DELETE", "/qdws/v1/contacts/", E::Contact, T::InvalidReply},
          &TaskDeleteContact::doneDeleteContact);
    visit(WebOperation{T::GetCoverPages, "GET", "/qdws/v1/data/cover_pages", E::AlwaysError, T::Ok},
          &TaskGetCoverPages::doneGetCoverPages);
    visit(WebOperation{T::GetFaxEntry, "GET", "/qdws/v1/ofax", E::AuthApart, T::Ok},
          &TaskGetFaxEntry::doneGetFaxEntry);
    visit(WebOperation{T::GetInboundFaxEntry, "GET", "/qdws/v1/inbound_log", E::AuthApart, T::Ok},
          &TaskGetInboundFaxEntry::doneGetInboundFaxEntry);
    visit(WebOperation{T::GetOutboundFaxEntry, "GET", "/qdws/v1/outbound_log", E::AuthApart, T::Ok},
          &TaskGetOutboundFaxEntry::doneGetFaxEntry);
    visit(WebOperation{T::Abort, "DELETE", "/qdws/v1/ofax/", E::AuthApart, T::Error},
          &TaskAbort::doneAbort);
    visit(WebOperation{T::Reschedule, "PUT", "/qdws/v1/outbound_log/", E::AuthApart, T::Error},
          &TaskReschedule::doneReschedule);
    visit(WebOperation{T::ChekPermissions, "GET", "/qdws/v1/user_options", E::AuthApart, T::Error},
          &TaskChekPermissions::doneCheckPermissions);
    visit(WebOperation{T::GetPrinterNames, "GET", "/qdws/v1/data/printer_names", E::AlwaysError, T::Ok},
          &TaskGetPrinterNames::doneGetPrinterNames);
    // clang-format on
}
