#pragma once

#include <QMetaType>
#include <QSharedPointer>
#include <QStringList>

/// A list of texts in signals, such as a server's printer names. @relates TaskGetPrinterNames
using QStringListPtr = QSharedPointer<QStringList>;

Q_DECLARE_METATYPE(QStringListPtr)
