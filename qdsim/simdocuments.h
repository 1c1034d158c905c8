#pragma once

#include "simfaxes.h"
#include "simtypes.h"
#include "simxml.h"

/// @brief The features of a server that decide which elements documents contain.
struct SimFeatures
{
    bool profileDefaults = false; ///< profiles contain schedule defaults (protocol version 2)
    bool printReceipts = false;   ///< printed receipts and printer names: versions above 3.2.7
    bool pageSize = false;        ///< the choice of a page size: versions above 3.6

    static SimFeatures of(const QString& model, const QString& version);
};

/// @brief Reads and writes the records that requests and replies consist of.
///
/// Reading is strict: @p why receives the first violation of the protocol, even an element that should have
/// been omitted because its value is the default.
namespace SimDocuments {

/// The elements of a contact; all optional, none empty.
void readPerson(SimCursor& cursor, SimPerson* person);
void writePerson(SimXmlWriter& xml, const char* urlName, const SimPerson& person);

/// A user's profile: contact, default cover page, schedule defaults.
void readProfile(SimCursor& cursor, const SimFeatures& features, SimUser* user);
/// The element "user".
void writeUser(SimXmlWriter& xml, const SimFeatures& features, const SimUser& user, const QByteArray& root);

/// A whole "schedule_fax" document. The contents of the attachments are decoded.
bool readSubmission(const SimElement& root, const SimFeatures& features, SimSubmission* submission,
                    QString* why);

/// Decodes standard base64: padded, without line breaks or any other character. Null if it is not.
QByteArray fromBase64(const QByteArray& text);

/// An entry of the queue: the element "fax_entry". @p root is the server's own "http://HOST".
void writeQueueEntry(SimXmlWriter& xml, const SimFeatures& features, const SimFax& fax,
                     const QByteArray& root);

/// An entry of the outbound log: the element "outbound_fax_entry".
void writeOutboundEntry(SimXmlWriter& xml, const SimFax& fax, const QByteArray& root);

} // namespace SimDocuments
