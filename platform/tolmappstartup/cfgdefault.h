#pragma once

#include "tolmappstartup/icfg.h"

/// \file
/// Reads a setting that must exist after the first run: the key is read with two different defaults. When the
/// results differ there is no value, and the default is written and committed. The result is that of a third
/// read. What cannot be stored or saved is reported by the store, and the result is the default all the same.
/// Belongs to the application's main thread, as `ICfg` does.

/// The integer under a key. When the key does not hold a 64-bit integer, the default is stored there first.
inline qint64 ReadOrCreateInt(ICfg& cfg, const QString& key, qint64 defaultValue) {
    const qint64 first = cfg.GetInt(key, 0);
    const qint64 second = cfg.GetInt(key, 1);
    if (first != second) {
        cfg.SetInt(key, defaultValue);
        cfg.CommitKey(key);
    }
    return cfg.GetInt(key, defaultValue);
}

/// As `ReadOrCreateInt`, for a boolean.
inline bool ReadOrCreateBool(ICfg& cfg, const QString& key, bool defaultValue) {
    const bool first = cfg.GetBool(key, false);
    const bool second = cfg.GetBool(key, true);
    if (first != second) {
        cfg.SetBool(key, defaultValue);
        cfg.CommitKey(key);
    }
    return cfg.GetBool(key, defaultValue);
}

/// As `ReadOrCreateInt`, for a text.
inline QString ReadOrCreateString(ICfg& cfg, const QString& key, const QString& defaultValue) {
    const QString first = cfg.GetString(key, QStringLiteral("A"));
    const QString second = cfg.GetString(key, QStringLiteral("B"));
    if (first != second) {
        cfg.SetString(key, defaultValue);
        cfg.CommitKey(key);
    }
    return cfg.GetString(key, defaultValue);
}
