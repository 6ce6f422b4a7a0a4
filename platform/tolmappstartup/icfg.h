#pragma once

#include "zanplatform_export.h"

#include <QString>
#include <QStringList>

#include <memory>

/// Lasts as long as settings are written back (`ICfg::BeginWriteBack`).
using CfgWriteBack = std::shared_ptr<void>;

/// A hierarchical store of settings.
///
/// A "/" in a key separates sub-configurations: "SystemConfiguration/Antenna0" is the key "Antenna0" of the
/// sub-configuration "SystemConfiguration". A key is a text without control characters and any of = [ ] : ; "
/// \, and without a "%" that hexadecimal digits follow; the names between its slashes are neither empty nor
/// begin with "#", and have no blanks around them. "General" (in any case), "%General" and "DEFAULT" cannot
/// be names of a file's sub-configurations. Other keys cannot be set. All operations belong to the
/// application's main thread; none waits for another process longer than a second.
class ZANPLATFORM_EXPORT ICfg {
public:
    /// The views that callers may name. All of them show the same settings file of the application, so that a
    /// key written through one view is read through the others.
    enum class View : int {
        OverheadPass = 1, ///< the overhead-pass parameters
        Outputs = 2,      ///< the outputs and the message hub
        Stations = 5,     ///< the stations
    };

    ICfg(const ICfg&) = delete;
    ICfg& operator=(const ICfg&) = delete;

    /// The value that is stored under a key, or the default when there is none. Nothing is written.
    [[nodiscard]] virtual QString GetString(const QString& key, const QString& defaultValue) const = 0;
    /// As `GetString`. Wide enough for any frequency in Hz. A text that is not an integer, or out of range,
    /// gives the default and is reported, once per value.
    [[nodiscard]] virtual qint64 GetInt(const QString& key, qint64 defaultValue) const = 0;
    /// As `GetString`. "true" and "false" in any case, and the integers 1 and 0; any other text gives the
    /// default and is reported, once per value.
    [[nodiscard]] virtual bool GetBool(const QString& key, bool defaultValue) const = 0;
    /// Saves what has been set, under this and any other key of the file: the file is read again and only
    /// these keys are changed, so that what other processes wrote under other keys stays. When that fails,
    /// the values stay in force, and the next commit and the event loop try again; the first failure is
    /// reported. A lock of another process is reported only by `CfgCenter::Close`.
    virtual void CommitKey(const QString& key) = 0;
    /// Stores a value, which is in force at once. It is saved with the next commit, when the event loop runs,
    /// or when the store is closed, whichever comes first: callers that set several values commit once, after
    /// the last one, so that the file never holds only some of them. A text that is not a valid key is
    /// refused and reported.
    virtual void SetString(const QString& key, const QString& value) = 0;
    /// As `SetString`, in decimal digits.
    virtual void SetInt(const QString& key, qint64 value) = 0;
    /// As `SetString`, as "true" or "false".
    virtual void SetBool(const QString& key, bool value) = 0;
    /// The sub-configuration of a name; the caller releases it. One that does not exist yet is empty and is
    /// created with its first key. Null when the name is not valid (see the keys).
    [[nodiscard]] virtual ICfg* GetSubCfg(const QString& name) = 0;
    /// Destroys this object. What has been set is saved as described for `SetString`.
    virtual void Release() = 0;
    /// The keys that hold something in this configuration itself, not in one below it: names without "/", in
    /// order.
    [[nodiscard]] virtual QStringList GetKeys() const = 0;
    /// The sub-configurations directly below this one that hold something, in order.
    [[nodiscard]] virtual QStringList GetSubCfgNames() const = 0;
    /// For objects that write all of their settings, changed or not, and must not undo changes that other
    /// processes made meanwhile. Locks the whole file and reads it again; when the result is destroyed, what
    /// was set is saved and the file unlocked. A key that is set to the value that this process last read or
    /// set for it has not been changed by this process, and keeps what is in the file now; one that is
    /// missing in the file is always written. What is committed meanwhile is saved at the end. Keep it short,
    /// because other processes wait. May be nested. When the lock cannot be taken within a second, the keys
    /// are compared with the file when the values are saved, which is tried again as described for
    /// `CommitKey`. During a write-back `CfgCenter::Close` does not save the file, and returns false when
    /// there was something to save; the end of the write-back saves it. A store that lives in memory has
    /// nothing to lock or compare: there each value counts.
    [[nodiscard]] virtual CfgWriteBack BeginWriteBack() = 0;

protected:
    ICfg() = default;
    ~ICfg() = default;
};

/// Releases a configuration object that was handed out.
struct CfgReleaser {
    void operator()(ICfg* cfg) const { cfg->Release(); }
};

/// Owns a configuration object that its holder has to release.
using CfgPtr = std::unique_ptr<ICfg, CfgReleaser>;
