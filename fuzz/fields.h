#pragma once

// The fields of the records as texts, and their expected values after writing and reading a record again.

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

/// The fields of a new server, in which only the data is set that determines its user's support flags.
Fields freshServer(const FaxServer& like);

QString toText(const Fields& fields);

/// The two forms in which a record is written.
enum class Form { Fax, Storage };

/// The expected fields of a record after it was written and read into a fresh record: unchanged, except by
/// the rules of the table in fields.cpp. @p fresh: the fields of a fresh record; @p again: the fields
/// actually read, for a rule that cannot predict the value.
Fields readAgain(const QString& record, Form form, int version, const Fields& fields, const Fields& fresh,
                 const Fields& again);

/// Whether reading refuses what such a record writes, by the same table.
bool isRefused(const QString& record, Form form, int version, const Fields& fields);
