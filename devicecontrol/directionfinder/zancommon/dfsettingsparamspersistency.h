#pragma once

#include "tolmappstartup/icfg.h"
#include "zancommon_export.h"

#include <QString>

namespace KvZANCommon {

class DFSettingsParams;

/// Keeps DF settings in a separate settings file. They are in the sub-configuration "DFSettings" under
/// the integer keys "DFBandwidthKey", "DFModeKey", "UpdateIntervalKey" and "LevelThreshold" (dB). Belongs to
/// the application's main thread.
class ZANCOMMON_EXPORT DFSettingsParamsPersistency {
public:
    /// \param params is not owned and must outlive this object.
    /// \param name   of the settings file, as `CfgCenter::CreateCfg` takes it
    /// \param view   likewise
    DFSettingsParamsPersistency(DFSettingsParams& params, QString name, ICfg::View view);

    /// Writes the settings and saves them; the level threshold loses its fraction. Does nothing when the file
    /// cannot be opened, which `CfgCenter` reports.
    void MakePersistent();
    /// Sets the settings from the file. A key that is missing or unreadable is written with its default, so
    /// that all keys exist after the first run. Does nothing when the file cannot be opened, which
    /// `CfgCenter` reports.
    void Restore();

private:
    DFSettingsParams& m_params;
    QString m_name;
    ICfg::View m_view;
};

} // namespace KvZANCommon
