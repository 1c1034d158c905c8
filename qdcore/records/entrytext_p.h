#pragma once

// Helpers shared by the log entries. Internal: not installed, not exported.

#include "contact.h"

#include <QStringList>

#include <limits>

/// A contact in one line: those of name, fax number and organization that are not empty.
inline QString recipientLine(const Contact& contact)
{
    QStringList parts{contact.name(), contact.fax(), contact.organization()};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

/// The number of pages shown: the cover page counts as one.
inline int withCoverPage(int pages, bool used)
{
    return used && pages < std::numeric_limits<int>::max() ? pages + 1 : pages;
}
