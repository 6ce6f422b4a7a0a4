#pragma once

#include "zanserver_export.h"

#include "valueframework/valuetypes.h"
#include "zancommon/connectionspeedfilter.h"
#include "zancommon/dfdataoutput.h"
#include "zancommon/ohpparamsvtsynchronizer.h"
#include "zancommon/overheadpassfilter.h"
#include "zancommon/overheadpassparams.h"
#include "zancommon/pitchrollfilter.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zansetupdata.h"
#include "zanserver/deviceconnection.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/stationposition.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace ZANServer {

class ValueLink;

/// What has become of the bearings so far: each of them counts once, so that the five ways out add up to
/// `bearings`.
struct StationCounts {
    quint64 bearings = 0;          ///< delivered by the driver
    quint64 rejectedPitchRoll = 0; ///< the platform was tilted beyond its threshold
    quint64 rejectedOverhead = 0;  ///< the emitter stood too high above the antenna
    quint64 withoutSignal = 0;     ///< of quality 0 already when they arrived
    quint64 unusable = 0;  ///< likewise, or usable, but marked: by the connection filter or the driver
    quint64 published = 0; ///< of a quality above 0, in the tree for all outputs
};

/// The station: does what an application does with the library, in an application's order.
///
/// It connects to the device, which publishes itself in the tree, reads the device's options and connects the
/// characteristics to it; restores the parameters from the settings and makes the filters; starts the output;
/// and then takes block after block from the driver: attitude and position go into the tree, the filters mark
/// the bearings, and each of them becomes the current bearing, which the output turns into a sentence. What
/// the operator has set for the device is kept in the settings from run to run, unless the settings cannot be
/// used as they are (`CheckSettings`): then they stay as they were written, and are warned of. A station
/// whose output is never started only answers questions: it writes the settings of a new station, and of
/// another one what is missing of device and overhead pass. Needs the settings
/// (`CfgCenter::SetConfigDirectory`) before it is made. There is one station in a process.
class ZANSERVER_EXPORT Station {
public:
    /// Address of its device, by which its settings are found.
    static constexpr QStringView ADDRESS = u"replay";

    Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    /// Switches the output off, with everything written, and takes the station's branches out of the tree.
    ~Station();

    /// Makes the output as the settings say, which may open its file and its serial line.
    /// \param fileOfThisRun in place of the file of the settings, which stays there; "-": standard output
    void StartOutput(const QString& fileOfThisRun = {});

    /// Platform angles in degrees from which on bearings are rejected.
    void SetPitchThreshold(double degrees) { m_pPitchThreshold->SetValue(degrees, nullptr); }
    void SetRollThreshold(double degrees) { m_pRollThreshold->SetValue(degrees, nullptr); }
    /// Rejects bearings from this elevation on, in degrees. Kept in the settings.
    void SetOverheadThreshold(double degrees);
    /// From 1 on, bearings of quality 0 are marked as unusable.
    void SetConnectionSpeed(int speed) { m_pConnectionSpeed->SetValue(speed, nullptr); }

    void Process(BearingBlock& block);

    /// What was found wrong when the station was made, in words for the operator.
    [[nodiscard]] const QStringList& GetWarnings() const { return m_warnings; }

    [[nodiscard]] const StationCounts& GetCounts() const { return m_counts; }
    /// Once it has been started.
    [[nodiscard]] DFDataOutput& GetOutput() const { return *m_pOutput; }
    [[nodiscard]] static QString GetDeviceAddress();
    [[nodiscard]] static ZANCharacteristics& GetCharacteristics();

private:
    void CheckSettings();
    void ReadOptions();
    void PublishSetup();
    void RestoreOverheadParams();
    void PublishPlatform(const BearingBlock& block);
    [[nodiscard]] std::optional<int> GetTrueHeading(const KvZANCommon::StatusStruct& status) const;
    bool ApplyBlockFilters(BearingBlock& block);
    void PublishBearing(const BearingBlock& block, const Bearing& bearing, int mechOffset);

    // The values of the tree that the station fills.
    ValueBearing* m_pAzimuth;
    ValueNumericInt* m_pHeading;
    ValueNumericInt* m_pHeadingOffset;
    ValueNumericInt* m_pDeclination;
    ValueNumericDouble* m_pPitch;
    ValueNumericDouble* m_pRoll;
    ValueNumericDouble* m_pAltitude;
    ValueBool* m_pDataValid;
    ValueString* m_pDataStateInfo;
    ValueInt* m_pConnectionSpeed;
    ValueNumericDouble* m_pPitchThreshold;
    ValueNumericDouble* m_pRollThreshold;

    QStringList m_warnings;
    bool m_areSettingsUsable = true;
    std::optional<DeviceConnection> m_device;
    std::unique_ptr<ValueLink> m_modifyTimes; // of server and device
    ZANSetupData m_setup;
    std::optional<StationPosition> m_position;
    DFDataOutput* m_pOutput = nullptr; // owned through the list of outputs
    KvZANCommon::PitchRollFilter m_pitchRollFilter;
    KvZANCommon::ConnectionSpeedFilter m_connectionSpeedFilter;
    KvZANCommon::OverheadPassParams m_overheadParams;
    std::optional<KvZANCommon::OHPParamsVtSynchronizer> m_overheadSynchronizer;
    KvZANCommon::OverheadPassFilter m_overheadFilter;
    StationCounts m_counts;
};

} // namespace ZANServer
