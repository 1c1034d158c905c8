#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

/// @brief One element of a request document: either children or a text, never both.
struct SimElement
{
    QString name;
    QString text;
    QByteArray
        content; ///< the text of an element "content", which is not copied: valid as long as the body is
    QVector<SimElement> children;
};

/// @brief Writes an XML document as a stream of text; no tree is built, so a book of 20,000 takes
/// milliseconds.
class SimXmlWriter
{
public:
    /// Begins with the XML declaration.
    explicit SimXmlWriter(int expectedSize = 4096);

    SimXmlWriter& open(const char* name);
    SimXmlWriter& close(const char* name);
    /// An element with a text; characters that XML cannot carry are left out.
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

/// @brief Reads request documents as strictly as the protocol is written.
namespace SimXml {

/// Accepts: the declaration `<?xml version="1.0" encoding="utf-8"?>` at the first byte, UTF-8, elements
/// without attributes, a depth of at most 8, text or children but not both. Otherwise false and the reason.
bool parse(const QByteArray& body, SimElement* root, QString* why);

} // namespace SimXml

/// @brief Walks the children of an element in the documented order and keeps the first complaint.
///
/// Every take...() looks at the next child only: a child that is out of order is therefore reported, by
/// end().
class SimCursor
{
public:
    /// @p why receives the first complaint; if it already holds one, nothing is read any more.
    SimCursor(const SimElement& element, QString* why);

    bool ok() const { return m_why->isEmpty(); }
    /// The next child if it bears this name, null otherwise.
    const SimElement* takeElement(const char* name);
    /// Next child of this name must be there.
    const SimElement* requireElement(const char* name);

    /// These leave @p value alone if the next child has another name, and return whether it was taken.
    bool takeText(const char* name, QString* value); ///< any text, also empty
    bool takeFilled(const char* name,
                    QString* value); ///< an empty text is refused: empty fields are left out
    bool takeNumber(const char* name, int least, int most, int* value); ///< plain decimal
    bool takeBoolean(const char* name, bool* value);                    ///< "true" or "false"
    bool takeOneOf(const char* name, const QStringList& values, QString* value);
    /// Complains if the child before (of the last take) was not there.
    void require(const char* name, bool taken);

    void complain(const QString& what);
    /// Reports the first child that was not read.
    void end();

private:
    const SimElement& m_element;
    QString* m_why;
    int m_next = 0;
};
