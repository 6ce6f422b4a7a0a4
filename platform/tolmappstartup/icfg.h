#pragma once

#include "zanplatform_export.h"

#include <QString>

#include <memory>

/// A hierarchical store of settings.
///
/// A "/" in a key separates sub-configurations: "SystemConfiguration/Antenna0" is the key "Antenna0" of the
/// sub-configuration "SystemConfiguration". A key is a text without control characters, "=", "[" and "]"; the
/// names between its slashes are neither empty nor begin with ";" or "#", and have no blanks around them.
/// Other keys hold nothing and cannot be set. All operations belong to the application's main thread.
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
    /// Saves what has been set, under this and any other key of the file. A failure is reported, the values
    /// stay in force, and the next commit tries again.
    virtual void CommitKey(const QString& key) = 0;
    /// Stores a value, which is in force at once. It is saved with the next commit, when a sub-configuration
    /// of the file is released, when the event loop runs, or when the store is closed, whichever comes first.
    /// Under a text that is no key nothing is stored; that is reported.
    virtual void SetString(const QString& key, const QString& value) = 0;
    /// As `SetString`, in decimal digits.
    virtual void SetInt(const QString& key, qint64 value) = 0;
    /// As `SetString`, as "true" or "false".
    virtual void SetBool(const QString& key, bool value) = 0;
    /// The sub-configuration of a name; the caller releases it. One that is not there yet reads as empty and
    /// comes into being with its first key. Null when the name cannot be one (see the keys).
    [[nodiscard]] virtual ICfg* GetSubCfg(const QString& name) = 0;
    /// Saves what has been set, in this object or elsewhere in its file, and destroys this object.
    virtual void Release() = 0;

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
