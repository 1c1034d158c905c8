#pragma once

#include "qdcore_global.h"

#include <QMetaType>
#include <QString>

/// A fax server's answer to Discover. A value; fields that the server left out are empty.
struct QDCORE_EXPORT DiscoverEntry
{
    QString inetAddr; ///< Reply property "inet_addr": the server's IP address as the server itself gives it.
    QString model;    ///< Reply property "model".
    QString version;  ///< Reply property "version": the firmware version.
};

Q_DECLARE_METATYPE(DiscoverEntry)
