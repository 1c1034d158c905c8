#pragma once

// Creating and serialising the document of a request. Internal: not installed.

#include <QByteArray>
#include <QVector>

class OneShotBody;
class QDomDocument;
class QDomElement;
class QString;

/// Starts a request document with its declaration and returns its root element.
QDomElement startDocument(QDomDocument& document, const QString& rootName);

/// The document as one line: no indentation, every line feed removed, UTF-8.
QByteArray oneLine(const QDomDocument& document);

/// Appends the document to a body, indented by 1, in UTF-8. Each "content" element whose text is the
/// placeholder gets the content of the next of the files, which are encoded while the body is read.
void writeIndented(const QDomDocument& document, const QString& placeholder,
                   const QVector<QVector<QByteArray>>& files, OneShotBody& body);
