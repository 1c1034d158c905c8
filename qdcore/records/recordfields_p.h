#pragma once

// Reading records from the children of an element that has more to give: the entries of a log are many, and
// their children are walked once. Internal: not installed.

class BaseScheduleOptions;
class DomChildren;
class FaxScheduleOptions;
class Recepient;
class Sender;

/// Each reads what readFax() of the record reads, and returns what it returns.
bool readFields(Sender& sender, const DomChildren& children);
bool readFields(Recepient& recipient, const DomChildren& children);
bool readFields(FaxScheduleOptions& options, const DomChildren& children);

/// Reads "receipt" if present; an unknown text is logged and ignored.
void readReceipt(BaseScheduleOptions& options, const DomChildren& children);
/// Likewise "receipt_attachment".
void readReceiptAttachment(BaseScheduleOptions& options, const DomChildren& children);
/// Reads the print options and the page size, each if present.
void readPrintOptions(BaseScheduleOptions& options, const DomChildren& children);
