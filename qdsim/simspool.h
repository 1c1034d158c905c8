#pragma once

#include "simtypes.h"

/// @brief The folder in which received attachments are stored: one subfolder per submission, one file per
/// attachment.
namespace SimSpool {

/// A file name without path traversal: separators, control characters and leading dots are replaced, and it
/// is shortened to 200 bytes.
QString safeName(const QString& name);

/// Stores the attachments in @p folder / @p job and sets their paths. Duplicate names get a number.
bool store(const QString& folder, quint64 job, QVector<SimAttachment>* attachments, QString* error);

} // namespace SimSpool
