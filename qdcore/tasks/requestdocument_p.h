#pragma once

// How the document of a request is begun and serialised. Internal: not installed.

#include <QByteArray>

class QDomDocument;
class QDomElement;
class QString;

/// Starts a request document with its declaration and returns its root element.
QDomElement startDocument(QDomDocument& document, const QString& rootName);

/// The document as one line: no indentation, every line feed removed, UTF-8.
QByteArray oneLine(const QDomDocument& document);

/// The document indented by 1, UTF-8. The texts of "content" elements, base64 of whole files, are moved into
/// the result without passing through the DOM's serialiser, and are no longer in the document afterwards.
/// Empty when the result would not fit into 2 GiB.
QByteArray indented(QDomDocument& document);
