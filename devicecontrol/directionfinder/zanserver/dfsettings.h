#pragma once

#include "zancommon/dfsettingsparams.h"
#include "zanserver/controlvalues.h"

#include <QString>

#include <optional>

namespace ZANServer {

/// The DF settings of the operator (`DFSettingsParams`) and the three selections that their keys are of: DF
/// bandwidth, DF mode and update interval, with the level threshold.
///
/// Bandwidths and modes are those that the device has where it is tuned to. What the operator has chosen is
/// kept as a bandwidth in Hz and a mode by name, so that it returns with an antenna that has it. Belongs to
/// the thread of the tree.
class DfSettings {
public:
    /// Restores the settings from a file of their own ("DFSettings.ini").
    explicit DfSettings(ControlValues& values);

    /// Fills bandwidths and modes for the antenna that serves the frequency, when it is another one or the
    /// mode of operation is. Returns whether it is.
    bool Follow();
    /// The antennas have been read again: the next `Follow` fills them anew.
    void ForgetAntenna() { m_antenna.reset(); }
    /// The operator has chosen in one of the selections: takes over what is chosen now.
    void TakeChoice();
    /// Keeps the settings in their file.
    void MakePersistent();

private:
    void FillBandwidths(EOperationMode mode, double frequency);
    void FillModes(double frequency);

    ControlValues& m_values;
    KvZANCommon::DFSettingsParams m_params;
    std::optional<const AntennaData*> m_antenna; ///< for which they are filled; compared only
    EOperationMode m_mode = OPMODE_END;
    double m_bandwidth = 0.0; ///< Hz, as chosen; 0: not yet
    QString m_dfMode;         ///< as chosen; empty: not yet
};

} // namespace ZANServer
