#include "faxuserpermissions.h"

#include "domtext_p.h"

FaxUserPermissions::~FaxUserPermissions() = default;

bool FaxUserPermissions::readFax(const QDomElement& element, int)
{
    const QDomElement global = element.firstChildElement(QStringLiteral("add_global"));
    if (global.isNull())
        return false;
    setEditGlobalContactsEnabled(isTrue(global.text()));
    return true;
}

bool FaxUserPermissions::writeFax(QDomDocument&, QDomElement&, int) const
{
    return false;
}
