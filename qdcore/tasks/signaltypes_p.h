#pragma once

// Making the values that signals carry known to Qt. Internal: not installed.

/// Registers what the signals of tasks, servers and contact providers carry, so that they can be connected
/// across threads and by name, and recorded. Contacts are polymorphic and given as references: those signals
/// cannot be.
void registerSignalTypes();
