#pragma once

#include "faxuserscheduleoptions.h"
#include "iquendrastorage.h"
#include "quendracontact.h"

#include <QMetaType>

/**
 * The profile of the logged-in user. A value.
 *
 * The document is flat: the elements of the contact, of the cover page and of the schedule options are all
 * children of one element.
 */
class QDCORE_EXPORT FaxUser : public IQuendraSerialization, public IQuendraStorage
{
public:
    FaxUser() = default;
    FaxUser(const FaxUser&) = default;
    FaxUser& operator=(const FaxUser&) = default;

    /// "default_cover_page_enabled" and "default_cover_page_name" are required; false if one is missing, but
    /// the contact may have changed by then. Incomplete schedule options leave the current ones unchanged.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Appends contact and cover page, and with protocol version 2 the schedule options. Always true.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~FaxUser();

    /// As readFax().
    bool readStorage(const QDomElement& element, int protocolVersion) override;
    /// As writeFax(), with the schedule options in protocol version 1 too. Always true.
    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    /// The user's own name, numbers and addresses.
    const QuendraContact& contact() const { return m_contact; }
    void setContact(const QuendraContact& contact) { m_contact = contact; }

    /// The name of the cover page that a new fax starts with. Element "default_cover_page_name".
    const QString& defaultCoverpage() const { return m_defaultCoverpage; }
    void setDefaultCoverPage(const QString& name) { m_defaultCoverpage = name; }

    //@{
    /// The defaults of a new fax; convertible to FaxScheduleOptions.
    const FaxUserScheduleOptions& faxScheduleOptions() const { return m_faxScheduleOptions; }
    void setScheduleOptions(const FaxUserScheduleOptions& options) { m_faxScheduleOptions = options; }
    //@}

    //@{
    /// Whether a new fax starts with a cover page. Element "default_cover_page_enabled".
    bool isUsedCoverPage() const { return m_usedCoverPage; }
    void useCoverPage(bool use) { m_usedCoverPage = use; }
    //@}

    //@{
    /// Properties of the server, stored in the schedule options; see BaseScheduleOptions.
    bool isSupportReceiptOptions() const { return m_faxScheduleOptions.isSupportReceiptOptions(); }
    void setSupportReceiptOptions(bool support) const
    {
        m_faxScheduleOptions.setSupportReceiptOptions(support);
    }
    void setSupportFaxPageSizeOptions(bool support) const
    {
        m_faxScheduleOptions.setSupportFaxPageSizeOptions(support);
    }
    //@}

private:
    /// Appends the fields common to service and settings: contact and cover page.
    void makeXML(QDomDocument& document, QDomElement& parent, int protocolVersion) const;

    QuendraContact m_contact;
    QString m_defaultCoverpage;
    FaxUserScheduleOptions m_faxScheduleOptions;
    bool m_usedCoverPage{false};
};

Q_DECLARE_METATYPE(FaxUser)
