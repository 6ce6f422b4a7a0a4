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
/// begin with "#", and have no blanks around them. "General" (in any case), "%General" and "DEFAULT" are no
/// names of sub-configurations of a file. Other keys cannot be set. All operations belong to the
/// application's main thread; none waits for another process longer than a second.
class ZANPLATFORM_EXPORT ICfg {
public:
    /// The views that are asked for. All of them show the one settings file of the application, so that a key
    /// written through one view is read through the others.
    enum class View : int {
        OverheadPass = 1, ///< the overhead-pass parameters
        Outputs = 2,      ///< the outputs and the message hub
        Stations = 5,     ///< the stations
    };

    ICfg(const ICfg&) = delete;
    ICfg& operator=(const ICfg&) = delete;

    /// The value that is stored under a key, or the default when there is none. Nothing is written.
    [[nodiscard]] virtual QString GetString(const QString& key, const QString& defaultValue) const = 0;
    /// As `GetString`. Wide enough for any frequency in Hz. A text that is no integer, or out of range, gives
    /// the default and is reported, once a value.
    [[nodiscard]] virtual qint64 GetInt(const QString& key, qint64 defaultValue) const = 0;
    /// As `GetString`. "true" and "false" in any case, and the integers 1 and 0; any other text gives the
    /// default and is reported, once a value.
    [[nodiscard]] virtual bool GetBool(const QString& key, bool defaultValue) const = 0;
    /// Saves what has been set, under this and any other key of the file: each key is changed in what stands
    /// in the file by then, so that what other processes wrote under others stays. When that fails, the
    /// values stay in force, and the next commit and the event loop try again; the first failure is reported.
    /// While another process has the file locked nothing is reported before `CfgCenter::Close`.
    virtual void CommitKey(const QString& key) = 0;
    /// Stores a value, which is in force at once. It is saved with the next commit, when the event loop runs,
    /// or when the store is closed, whichever comes first: who sets several values commits once, after the
    /// last one, so that the file never holds half of them. Under a text that is not a key nothing is stored;
    /// that is reported.
    virtual void SetString(const QString& key, const QString& value) = 0;
    /// As `SetString`, in decimal digits.
    virtual void SetInt(const QString& key, qint64 value) = 0;
    /// As `SetString`, as "true" or "false".
    virtual void SetBool(const QString& key, bool value) = 0;
    /// The sub-configuration of a name; the caller releases it. One that is not there yet reads as empty and
    /// comes into being with its first key. Null when the name cannot be one (see the keys).
    [[nodiscard]] virtual ICfg* GetSubCfg(const QString& name) = 0;
    /// Destroys this object. What has been set is saved as `SetString` says.
    virtual void Release() = 0;
    /// The keys that hold something in this configuration itself, not in one below it: names without "/", in
    /// order.
    [[nodiscard]] virtual QStringList GetKeys() const = 0;
    /// The sub-configurations directly below this one that hold something, in order.
    [[nodiscard]] virtual QStringList GetSubCfgNames() const = 0;
    /// For objects that write all of their settings, changed or not, and shall undo nothing that other
    /// processes did meanwhile: locks the whole file and reads it again; when the result is destroyed, what
    /// was set is saved and the file unlocked. A key that was set to what this process was given for it last,
    /// or set it to last, keeps what is in the file by now; one that is not in the file is written in any
    /// case. What is committed meanwhile is saved at the end. To be short, for others wait. May be nested.
    /// When the lock is not to be had within a second, the keys are compared all the same, with the file as
    /// it is when the values are saved, which is tried as ever (`CommitKey`). `CfgCenter::Close` saves
    /// nothing of the file while a write-back lasts, and returns false when there was something; the end of
    /// the write-back saves it. A store that lives in memory has nothing to lock or compare: there each value
    /// counts.
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
