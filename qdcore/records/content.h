#pragma once

#include "diskdataprovider.h"
#include "iquendraserialization.h"

/**
 * The bytes of an attachment that is sent within the fax document. A value; the file is read when the
 * document is written.
 */
class QDCORE_EXPORT Content : public IQuendraSerialization
{
public:
    /// Element "content_type".
    enum Type {
        None = 0,       ///< Not set: the content is not written.
        Pdf = 1,        ///< "application/pdf"
        PostScript = 2, ///< "application/postscript"
        PlainText = 3,  ///< "text/plain"
        Tiff = 4        ///< "image/tiff"
    };

    Content() = default;
    Content(const Content&) = default;
    Content& operator=(const Content&) = default;

    /// Not supported: false.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends "content_type", "content_transfer_encoding" and "content". False, and nothing written, without
    /// a type or when the file is missing, unreadable or empty.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~Content();

    /// Element "content_type": the type of the file, whose content is not checked.
    Type type() const { return m_type; }
    void setType(Type type) { m_type = type; }

    /// The file whose bytes are sent.
    const DiskDataProvider& data() const { return m_data; }
    void setData(const DiskDataProvider& data) { m_data = data; }

private:
    Type m_type{None};
    DiskDataProvider m_data;
};
