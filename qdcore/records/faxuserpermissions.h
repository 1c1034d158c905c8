#pragma once

#include "iquendraserialization.h"

/**
 * The rights of the logged-in user on the contact books. A value.
 */
class QDCORE_EXPORT FaxUserPermissions : public IQuendraSerialization
{
public:
    FaxUserPermissions() = default;
    FaxUserPermissions(const FaxUserPermissions&) = default;
    FaxUserPermissions& operator=(const FaxUserPermissions&) = default;

    /// Reads the right on the global book from "add_global"; false, and nothing changed, when it is missing.
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

    virtual ~FaxUserPermissions();

    /// Both rights as bits: 1 the personal book, 2 the global book.
    unsigned int flags() const { return m_flags; }

    /// Whether the user may change the personal book: true by default, and no reply changes it.
    bool editPersonalContactsEnabled() const { return m_flags & EditPersonalContacts; }
    void setEditPersonalContactsEnabled(bool enabled) { setFlag(EditPersonalContacts, enabled); }

    /// Whether the user may change the global book.
    bool editGlobalContactsEnabled() const { return m_flags & EditGlobalContacts; }
    void setEditGlobalContactsEnabled(bool enabled) { setFlag(EditGlobalContacts, enabled); }

private:
    enum Flag : unsigned int { EditPersonalContacts = 1, EditGlobalContacts = 2 };

    void setFlag(Flag flag, bool on) { m_flags = on ? m_flags | flag : m_flags & ~flag; }

    unsigned int m_flags{EditPersonalContacts};
};
