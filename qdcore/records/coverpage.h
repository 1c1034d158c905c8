#pragma once

#include "iquendraserialization.h"
#include "iquendrastorage.h"

#include <QMetaType>
#include <QSharedPointer>
#include <QString>
#include <QUrl>
#include <QVector>

/**
 * The cover page of a fax, and each of those that a server offers. A value.
 */
class QDCORE_EXPORT CoverPage : public IQuendraSerialization, public IQuendraStorage
{
public:
    CoverPage() = default;
    CoverPage(const CoverPage&) = default;
    CoverPage& operator=(const CoverPage&) = default;

    /// "enabled" is required: false, and nothing changed, without it. The other elements are read if present,
    /// but those of a disabled cover page are ignored.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends "enabled" and, enabled or not, each further field that is not empty. Always true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~CoverPage();

    /// A cover page is not kept in the settings: true, and nothing read.
    bool readStorage(const QDomElement& element, int protocolVersion) override;
    /// Likewise: false, and nothing written.
    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    /// Element "enabled".
    bool enabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }

    /// Element "name".
    const QString& name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }

    /// What the server calls the kind of cover page. Element "type".
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
