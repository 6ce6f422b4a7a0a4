#pragma once

#include <QLockFile>
#include <QString>

#include <chrono>

/// The lock under which a settings file is read and replaced: the file "<settings file>.lock", which
/// QSettings takes, too, so that both keep each other out.
class SettingsLock {
public:
    enum class Result {
        Locked,
        Busy,      ///< somebody else has it
        Impossible ///< the lock file cannot be made: the folder is read-only, not there, or on a full disk
    };

    explicit SettingsLock(const QString& settingsPath);

    /// Takes the lock, which may be held already, and waits for it so long. One that a killed process left
    /// behind is removed.
    Result Lock(std::chrono::milliseconds patience);
    void Unlock() { m_file.unlock(); }
    /// Who has the lock, in words.
    [[nodiscard]] QString GetHolder() const;

private:
    QString m_path;
    QLockFile m_file;
};
