#pragma once

#include "zanplatform_export.h"

#include <QFile>
#include <QString>

/// Reserves the settings directory for one station, so that no two stations work on it at once. The lock
/// belongs to the process: the system releases it when the process ends, however it ends.
class ZANPLATFORM_EXPORT DirectoryLock {
public:
    /// Takes the lock of an existing directory. False when another process has it, which `GetErrorText` then
    /// names, or when it cannot be taken.
    bool Take(const QString& directory);
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }

private:
    QFile m_file; // locked while it is open
    QString m_errorText;
};
