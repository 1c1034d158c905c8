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
    std::optional<QString> cover; ///< The cover page's name, empty: none; nothing: the user's usual one.
    QString subject;
    QString comments;
    ScheduleChoices schedule;
    QDateTime at; ///< Null: now.
};

/// Submits a fax in a session that is open. Returns what the server made of it, an entry for each recipient;
/// null, with the reason in the session, when that failed. @p doubt is then set if the server may have taken
/// the fax all the same.
BaseFaxEntry::FaxEntriesPtrListPtr submitFax(Session& session, const FaxOrder& order, QString* doubt);
