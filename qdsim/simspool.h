#pragma once

#include "simtypes.h"

/// @brief The folder in which received attachments are stored: one subfolder a submission, one file an
/// attachment.
namespace SimSpool {

/// A file name that stays in its folder: separators, control characters and leading dots replaced, at most
/// 200 bytes.
QString safeName(const QString& name);

/// Stores the attachments in @p folder / @p job and sets their paths. Names used twice get a number.
bool store(const QString& folder, quint64 job, QVector<SimAttachment>* attachments, QString* error);

} // namespace SimSpool
