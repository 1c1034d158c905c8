#pragma once

#include "iquendraserialization.h"
#include "iquendrastorage.h"

#include <QMetaType>
#include <QSharedPointer>
#include <QString>
#include <QUrl>
#include <QVector>

/**
 * The cover page of a fax, or one that a server offers. A value.
 */
class QDCORE_EXPORT CoverPage : public IQuendraSerialization, public IQuendraStorage
{
public:
    CoverPage() = default;
    CoverPage(const CoverPage&) = default;
    CoverPage& operator=(const CoverPage&) = default;

    /// "enabled" is required: false, with nothing changed, without it. The other elements are optional, and
    /// ignored if the cover page is disabled.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends "enabled" and, enabled or not, each other field that is not empty. Always true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~CoverPage();

    /// A cover page is not stored in the settings: reads nothing and returns true.
    bool readStorage(const QDomElement& element, int protocolVersion) override;
    /// Likewise: writes nothing and returns false.
    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    /// Element "enabled".
    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }

    /// Element "name".
    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    /// The server's name for the kind of cover page. Element "type".
    const QString& type() const { return m_type; }
    void setType(const QString& type) { m_type = type; }

    /// Element "url".
    const QUrl& url() const { return m_url; }
    void setUrl(const QUrl& url) { m_url = url; }

    /// Element "subject".
    const QString& subject() const { return m_subject; }
    void setSubject(const QString& subject) { m_subject = subject; }

    /// Element "comments".
    const QString& comments() const { return m_comments; }
    void setComments(const QString& comments) { m_comments = comments; }

private:
    bool m_enabled{false};
    QString m_name;
    QString m_type;
    QUrl m_url;
    QString m_subject;
    QString m_comments;
};

/// The cover pages that a server offers, in its order. @relates CoverPage
using CoverPageListPtr = QSharedPointer<QVector<CoverPage>>;

Q_DECLARE_METATYPE(CoverPage)
Q_DECLARE_METATYPE(CoverPageListPtr)
