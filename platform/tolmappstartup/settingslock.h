#pragma once

#include <QLockFile>
#include <QString>

#include <chrono>

/// The lock under which a settings file is read and replaced: the file "<settings file>.lock". QSettings uses
/// the same, so that both exclude each other.
class SettingsLock {
public:
    enum class Result {
        Locked,
        Busy,      ///< somebody else has it
        Impossible ///< the lock file cannot be created: the folder is read-only or missing, or its disk is
                   ///< full
    };

    explicit SettingsLock(const QString& settingsPath);

    /// Takes the lock (again, when it is held already) and waits for it no longer than `patience`. A lock
    /// file that a killed process left behind is removed.
    Result Lock(std::chrono::milliseconds patience);
    void Unlock() { m_file.unlock(); }
    /// The holder of the lock, as a text for messages.
    [[nodiscard]] QString GetHolder() const;

private:
    QString m_path;
    QLockFile m_file;
};
