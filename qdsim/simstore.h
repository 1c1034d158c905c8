#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

class SimState;

/// @brief Keeps the state in one JSON file: profiles, faxes, books. Passwords, rights and the inbound log
/// come from the options every time.
namespace SimStore {

/// The state as a file's content. The caller holds the state.
QByteArray write(SimState& state);
/// False if the bytes are no saved state; the state is then unchanged. The caller holds the state.
bool read(const QByteArray& bytes, SimState* state);

/// Loads the file in @p folder; true also if there is none yet.
bool load(const QString& folder, SimState* state, QString* error);
/// Replaces the file in @p folder, or leaves the old one if anything goes wrong.
bool save(const QString& folder, const QByteArray& bytes, QString* error);

} // namespace SimStore
