#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

/// @brief One element of a request document: either children or a text, never both.
struct SimElement
{
    QString name;
    QString text;
    QByteArray content; ///< the text of an element "content", not copied: dangling once the body is destroyed
    QVector<SimElement> children;
};

/// @brief Writes an XML document as text, without building a tree, so a book of 20,000 takes milliseconds.
class SimXmlWriter
{
public:
    /// Begins with the XML declaration.
    explicit SimXmlWriter(int expectedSize = 4096);

    SimXmlWriter& open(const char* name);
    SimXmlWriter& close(const char* name);
    /// An element with a text; characters that are not allowed in XML are omitted.
    SimXmlWriter& text(const char* name, const QString& value);
    SimXmlWriter& text(const char* name, const char* value);
    SimXmlWriter& number(const char* name, qint64 value);
    SimXmlWriter& boolean(const char* name, bool value);
    /// As text(), but nothing for an empty value.
    SimXmlWriter& textIfAny(const char* name, const QString& value);

    QByteArray& bytes() { return m_bytes; }

private:
    QByteArray m_bytes;
};

/// @brief Parses request documents strictly.
namespace SimXml {

/// Accepts: the declaration `<?xml version="1.0" encoding="utf-8"?>` at the first byte, UTF-8, elements
/// without attributes, a depth of at most 8, text or children but not both. Otherwise false and the reason.
bool parse(const QByteArray& body, SimElement* root, QString* why);

} // namespace SimXml

/// @brief Reads the children of an element in the documented order and keeps the first error.
///
/// Every take...() reads only the next child, so a child that is out of order is reported by end().
class SimCursor
{
public:
    /// @p why receives the first error; once it contains one, nothing is read.
    SimCursor(const SimElement& element, QString* why);

    bool ok() const { return m_why->isEmpty(); }
    /// The next child if it has this name, otherwise null.
    const SimElement* takeElement(const char* name);
    /// As takeElement(), but a missing child is an error.
    const SimElement* requireElement(const char* name);

    /// These return whether the next child has this name; otherwise they do not change @p value.
    bool takeText(const char* name, QString* value); ///< any text, also empty
    bool takeFilled(const char* name,
                    QString* value); ///< an empty text is an error, since empty fields are omitted
    bool takeNumber(const char* name, int least, int most, int* value); ///< plain decimal
    bool takeBoolean(const char* name, bool* value);                    ///< "true" or "false"
    bool takeOneOf(const char* name, const QStringList& values, QString* value);
    /// Reports that the child is missing if the preceding take...() returned false.
    void require(const char* name, bool taken);

    void complain(const QString& what);
    /// Reports the first child that was not read.
    void end();

private:
    const SimElement& m_element;
    QString* m_why;
    int m_next = 0;
};
