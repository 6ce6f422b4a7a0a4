#pragma once

#include <QString>

/// Prints what works on this machine: settings, device setup, serial ports, broker and hub client. Returns
/// the exit code: failed when something is broken; what is merely absent does not count.
int RunDoctor(const QString& configDirectory);
