#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

class SimState;

/// @brief Saves the state in one JSON file: profiles, faxes, books. Passwords, rights and the inbound log are
/// not saved; they always come from the options.
namespace SimStore {

/// The content of the file. The caller holds a SimState::Lock.
QByteArray write(SimState& state);
/// False, with the state unchanged, if the bytes are not a saved state. The caller holds a SimState::Lock.
bool read(const QByteArray& bytes, SimState* state);

/// Loads the file in @p folder; true if there is none yet.
bool load(const QString& folder, SimState* state, QString* error);
/// Replaces the file in @p folder atomically; if that fails, the old file is unchanged.
bool save(const QString& folder, const QByteArray& bytes, QString* error);

} // namespace SimStore
