#pragma once

#include <QMap>
#include <QMetaType>
#include <QString>

/// The result of a quick search: contact names by store id. @relates ContactManager
using QuickSearchResalt = QMap<unsigned int, QString>;
