#pragma once

// Registering the argument types of signals with Qt. Internal: not installed.

/// Registers the argument types of the signals of tasks, servers and contact providers, so that these can be
/// connected across threads and by name, and recorded. Signals that pass a contact cannot: contacts are
/// polymorphic and passed by reference.
void registerSignalTypes();
