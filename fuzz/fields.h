#pragma once

// The fields of the records as texts, and what becomes of them when a record is written and read again.

#include "contactgroup.h"
#include "coverpage.h"
#include "faxscheduleoptions.h"
#include "faxuser.h"
#include "quendracontactgroup.h"
#include "quendrainfo.h"

#include <QPair>
#include <QString>
#include <QVector>

class FaxServer;

/// Name and value of every field, in a fixed order. Absent dates and empty addresses are empty texts.
using Fields = QVector<QPair<QString, QString>>;

Fields fieldsOf(const Contact& record);
Fields fieldsOf(const QuendraContact& record);
Fields fieldsOf(const QuendraContactGroup& record);
Fields fieldsOf(const QuendraInfo& record);
Fields fieldsOf(const CoverPage& record);
Fields fieldsOf(const FaxScheduleOptions& record);
Fields fieldsOf(const FaxUserScheduleOptions& record);
Fields fieldsOf(const FaxUser& record);
Fields fieldsOf(const FaxServer& record);

/// The fields of a server that nothing was read into but what decides about the support flags of its user.
Fields freshServer(const FaxServer& like);

QString toText(const Fields& fields);

/// Which of a record's two forms.
enum class Form { Fax, Storage };

/// What the fields of a record must be after it was written and read into a fresh record: themselves, but for
/// what one table in fields.cpp says. @p fresh are the fields of a record that nothing was read into, @p
/// again those that were read, for a row that cannot know.
Fields readAgain(const QString& record, Form form, int version, const Fields& fields, const Fields& fresh,
                 const Fields& again);

/// Whether what such a record writes is refused when it is read, by the same table.
bool isRefused(const QString& record, Form form, int version, const Fields& fields);
