#pragma once

// From the bytes of a reply to its document. Internal: not installed.

#include <QByteArray>

#include <functional>

class QDomDocument;
class QString;

/// Decodes UTF-8 and writes "&amp;" for every ampersand that does not begin one of the five predefined
/// entities. Numeric references become literal text by this.
QString withAmpersands(const QByteArray& data);

/// Repairs and parses a reply body. False when it is not XML, or nested or numerous beyond what the DOM can
/// take (256 levels, 2 million nodes). @p data is to be moved in: as a text it takes twice as much, and a
/// third time in the document.
bool parseReply(QByteArray data, QDomDocument& document);

/// Repairs and decodes what an XmlScanner has found fit, and returns what @p parse makes of the text.
bool withText(QByteArray data, const std::function<bool(const QString&)>& parse);
