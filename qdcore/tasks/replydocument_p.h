#pragma once

// From the bytes of a reply to its document. Internal: not installed.

#include <QByteArray>

#include <functional>

class QDomDocument;
class QString;

/// Decodes UTF-8 and writes "&amp;" for every ampersand that does not begin one of the five predefined
/// entities. Numeric references become literal text by this.
QString withAmpersands(const QByteArray& data);

/// Repairs and parses a reply body. False if it is not XML, or exceeds the limits for the DOM (256 levels, 2
/// million nodes). Move @p data in, so that it is freed early: the decoded text takes twice as much memory,
/// and the document more.
bool parseReply(QByteArray data, QDomDocument& document);

/// Repairs and decodes XML that an XmlScanner has accepted, and returns the result of @p parse for the text.
bool withText(QByteArray data, const std::function<bool(const QString&)>& parse);
