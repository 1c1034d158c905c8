#pragma once

#include "basefaxentry.h"

#include <QJsonObject>
#include <QString>

class BaseScheduleOptions;
class Contact;
class CoverPage;
class FaxEntry;
class InboundFaxEntry;
class OutboundFaxEntry;
class QuendraInfo;

// The library's records as JSON, every field of them. Texts are as the server sent them, times are local and
// in ISO form, and a time that is missing is null.

QJsonObject toJson(const QuendraInfo& info);
QJsonObject toJson(const Contact& contact);
QJsonObject toJson(const BaseScheduleOptions& options);
QJsonObject toJson(const CoverPage& page);
QJsonObject toJson(const FaxEntry& entry);
QJsonObject toJson(const OutboundFaxEntry& entry);
QJsonObject toJson(const InboundFaxEntry& entry);
QJsonValue toJson(const QDateTime& time);

/// The words of the option values, in the order of the enumerations.
QStringList receiptWords();
QStringList attachmentWords();
QStringList pageSizeWords();

/// "pending", "sent" and so on; "unknown" for a state that the library does not know.
QString stateText(BaseFaxEntry::FaxEntryState state);
/// The same in the language of the user.
QString stateForPeople(BaseFaxEntry::FaxEntryState state);

/// A URL to show or to pass on: encoded, without a password.
QString urlText(const QUrl& url);

/// A local time for tables, "2026-11-15 14:30"; empty when there is none.
QString timeText(const QDateTime& time);
