#pragma once

#include "zanplatform_export.h"

#include <QFile>
#include <QString>

/// Holds the settings directory for one station, so that no two of them work on it at once. The lock belongs
/// to the process: the system takes it away when the process ends, however it ends.
class ZANPLATFORM_EXPORT DirectoryLock {
public:
    /// Takes the lock of a directory that is there. False when another process has it, which `GetErrorText`
    /// names then, or when it cannot be had.
    bool Take(const QString& directory);
    [[nodiscard]] const QString& GetErrorText() const { return m_errorText; }

private:
    QFile m_file; // locked while it is open
    QString m_errorText;
};
