#pragma once

#include <QMap>
#include <QMetaType>
#include <QString>

/// The result of a quick search: contact names by store id.
typedef QMap<unsigned int, QString> QuickSearchResalt;
