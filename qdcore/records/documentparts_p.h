#pragma once

// Writing a fax document whose files are not in it yet. Internal: not installed.

#include <functional>

class Attach;
class Content;
class DiskDataProvider;
class FaxDocument;
class QDomDocument;
class QDomElement;
class QString;

/// Returns the text of the element "content" for a file, empty when the file cannot be read.
using ContentText = std::function<QString(const DiskDataProvider& file)>;

/// Each writes what writeFax() of the record writes, with another text in place of the base64 of a file, and
/// returns what it returns.
bool writeRecord(const Content& content, QDomDocument& document, QDomElement& parent,
                 const ContentText& text);
bool writeRecord(const Attach& attach, QDomDocument& document, QDomElement& parent, const ContentText& text);
bool writeRecord(const FaxDocument& fax, QDomDocument& document, QDomElement& parent, int protocolVersion,
                 const ContentText& text);
