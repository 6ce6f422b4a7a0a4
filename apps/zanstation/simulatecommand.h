#pragma once

#include <QString>

/// Writes the recording of a simulated emitter. False, with a message, when that fails.
bool WriteSimulation(quint64 seed, quint64 rowCount, const QString& fileName);
