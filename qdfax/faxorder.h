#pragma once

#include "basefaxentry.h"
#include "contactlist.h"
#include "faxoptions.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

class Session;

/// A fax that a user wants to be sent.
struct FaxOrder
{
    ContactList recipients;
    QStringList files;
    std::optional<QString> cover; ///< The cover page's name; empty: none; no value: the user's default.
    QString subject;
    QString comments;
    ScheduleChoices schedule;
    QDateTime at; ///< Null: now.
};

/// Submits a fax in an open session. Returns the server's entries, one per recipient; null, with the reason
/// in the session, on failure. @p doubt is then set if the server may have accepted the fax nevertheless.
BaseFaxEntry::FaxEntriesPtrListPtr submitFax(Session& session, const FaxOrder& order, QString* doubt);
