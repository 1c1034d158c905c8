#pragma once

// Reads several records from the children of one element, which are walked only once, since a log has many
// entries. Internal: not installed.

class BaseScheduleOptions;
class DomChildren;
class FaxScheduleOptions;
class Recepient;
class Sender;

/// Same fields and result as the record's readFax().
bool readFields(Sender& sender, const DomChildren& children);
bool readFields(Recepient& recipient, const DomChildren& children);
bool readFields(FaxScheduleOptions& options, const DomChildren& children);

/// Reads "receipt" if present; an unknown text is logged and ignored.
void readReceipt(BaseScheduleOptions& options, const DomChildren& children);
/// Likewise "receipt_attachment".
void readReceiptAttachment(BaseScheduleOptions& options, const DomChildren& children);
/// Reads the print options and the page size, each if present.
void readPrintOptions(BaseScheduleOptions& options, const DomChildren& children);
