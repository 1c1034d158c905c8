#pragma once

// How the document of a request is begun and serialised. Internal: not installed.

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

/// Appends the document to a body, indented by 1, in UTF-8. Each of the files, which are encoded while the
/// body is read, takes the place of a "content" element's text that is the placeholder, in the order of the
/// document.
void writeIndented(const QDomDocument& document, const QString& placeholder,
                   const QVector<QVector<QByteArray>>& files, OneShotBody& body);
