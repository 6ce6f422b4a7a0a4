#pragma once

#include <QString>

/// Writes the recording of a simulated emitter. False, with a message, when it cannot be written.
bool WriteSimulation(quint64 seed, quint64 rowCount, const QString& fileName);
