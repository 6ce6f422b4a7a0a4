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
#include "zanserver/driverchoice.h"
#include "zanserver/driverreceiver.h"
#include "zanserver/stationattitude.h"
#include "zanserver/stationposition.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace ZANServer {

class DriverSource;
class GpsdSource;
class ValueLink;

/// What has happened to the bearings so far. Each is counted once in one of the other five counts, which add
/// up to `bearings`.
struct StationCounts {
    quint64 bearings = 0;          ///< delivered by the driver
    quint64 rejectedPitchRoll = 0; ///< the platform was tilted beyond its threshold
    quint64 rejectedOverhead = 0;  ///< the emitter was too high above the antenna
    quint64 withoutSignal = 0;     ///< had quality 0 when they were delivered
    quint64 unusable =
        0; ///< marked as unusable by the connection filter, the driver or the check of its numbers
    quint64 published = 0; ///< with quality above 0, published in the tree for all outputs
};

/// The station: uses the library as an application does, in the right order.
///
/// The constructor publishes the device in the tree, reads its options, connects the characteristics to it,
/// restores the parameters from the settings and sets the filters up. `StartOutput` creates the output.
/// `Process` takes each block of the driver: attitude and position go into the tree, the filters mark the
/// bearings, and each bearing becomes the current one, from which the output makes a sentence. The operator's
/// setup of the device is kept in the settings from run to run. When the settings contain errors
/// (`CheckSettings`), the station warns about them and leaves them unchanged. A station without an output
/// only answers queries: it writes all settings of a new station, and otherwise only missing ones of device
/// and overhead pass. Set the directory of the settings (`CfgCenter::SetConfigDirectory`) first. There is one
/// station in a process; it belongs to the main thread.
class ZANSERVER_EXPORT Station {
public:
    /// Publishes the device and the operator's setup in the tree, restores the parameters and connects the
    /// filters. Never fails: problems of the settings are in `GetWarnings`.
    /// \param driver whose device it is
    explicit Station(const DriverChoice& driver = DriverChoice::FromSettings());
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;
    /// Writes what waits, switches the output off, saves the setup, and removes the station's branches from
    /// the tree.
    ~Station();

    /// Creates the output with its settings, which may open its file and its serial line, and connects to
    /// gpsd while a source of position or heading is gpsd. Call it once. \param fileOfThisRun replaces the
    /// file of the settings for this run; "-": standard output
    void StartOutput(const QString& fileOfThisRun = {});

    /// Bearings are rejected from these platform angles (degrees) on.
    void SetPitchThreshold(double degrees) { m_pPitchThreshold->SetValue(degrees, nullptr); }
    void SetRollThreshold(double degrees) { m_pRollThreshold->SetValue(degrees, nullptr); }
    /// Rejects bearings from this elevation (degrees) on. Saved in the settings.
    void SetOverheadThreshold(double degrees);
    /// From 1 on, bearings of quality 0 are marked as unusable.
    void SetConnectionSpeed(int speed) { m_pConnectionSpeed->SetValue(speed, nullptr); }

    /// Takes a block of bearings from the driver: publishes attitude and position, applies the filters, which
    /// change the bearings of the block, and publishes each bearing that is not marked as unusable. The
    /// output writes its sentences meanwhile. The emitters of super resolution are published as one list;
    /// they are not counted.
    void Process(BearingBlock& block);
    /// Takes a position fix of the device. It counts until the next one, or a block with a position.
    ///
    /// Position, altitude, heading, pitch and roll that no longer come, with blocks or by themselves, become
    /// not measured after the age limit of the settings (`[Gpsd]` `MaxAge`), unless the driver is the replay
    /// of a recording: its positions belong to its rows.
    void TakePosition(const PositionFix& fix);
    /// The recording that is replayed was made by a station and holds what that has used: this position, and
    /// with each block the heading. From now on they count whatever the sources and offsets are.
    /// \param fix with a time of 0 when the time of the position is not known
    void TakeRecordedPosition(const PositionFix& fix);
    /// The device is lost: what it has measured is not current any more.
    void ForgetMeasurements();

    /// Tells the frequency (Hz) of a bearing of a block, or NaN when it is not known. At first that is the
    /// receive frequency of the block.
    using FrequencyOf = std::function<double(const BearingBlock& block, std::size_t bearing)>;
    void SetFrequencyOf(FrequencyOf frequencyOf) { m_frequencyOf = std::move(frequencyOf); }

    /// Gets each block before the filters change it, when attitude and position are in the tree, and its
    /// bearings as the station uses them: with complete azimuths and their own frequencies.
    using BlockObserver =
        std::function<void(const BearingBlock& block, const std::vector<BearingResult>& bearings)>;
    void SetBlockObserver(BlockObserver observer) { m_blockObserver = std::move(observer); }

    /// The problems that the constructor has found, as texts for the operator.
    [[nodiscard]] const QStringList& GetWarnings() const { return m_warnings; }

    /// False: the settings contain errors, and are left unchanged for the operator to correct.
    [[nodiscard]] bool AreSettingsUsable() const { return m_areSettingsUsable; }
    /// The counts since the station was created.
    [[nodiscard]] const StationCounts& GetCounts() const { return m_counts; }
    /// The output. Only after `StartOutput`.
    [[nodiscard]] DFDataOutput& GetOutput() const { return *m_pOutput; }
    [[nodiscard]] static QString GetDeviceAddress();
    [[nodiscard]] static ZANCharacteristics& GetCharacteristics();

private:
    ZANSERVER_NO_EXPORT void CheckSettings(const QString& address);
    ZANSERVER_NO_EXPORT void ReadOptions();
    ZANSERVER_NO_EXPORT void PublishSetup();
    ZANSERVER_NO_EXPORT void ConnectSources(bool isRecording);
    ZANSERVER_NO_EXPORT void RestoreOverheadParams();
    ZANSERVER_NO_EXPORT void TellBlock(const BearingBlock& block, int mechOffset) const;
    ZANSERVER_NO_EXPORT bool ApplyBlockFilters(BearingBlock& block);
    [[nodiscard]] ZANSERVER_NO_EXPORT BearingResult ToResult(const BearingBlock& block, std::size_t index,
                                                             int mechOffset) const;
    ZANSERVER_NO_EXPORT void PublishBearing(const BearingBlock& block, std::size_t index, int mechOffset);
    ZANSERVER_NO_EXPORT void ForgetEmittersOfOthers(const BearingBlock& block);
    ZANSERVER_NO_EXPORT void PublishEmitters(const BearingBlock& block, int mechOffset);

    // The values of the tree that the station fills.
    ValueBearing* m_pAzimuth;
    ValueBearingList* m_pEmitters;
    ValueInt* m_pEmitterCount;
    ValueBool* m_pDataValid;
    ValueString* m_pDataStateInfo;
    ValueInt* m_pConnectionSpeed;
    ValueNumericDouble* m_pPitchThreshold;
    ValueNumericDouble* m_pRollThreshold;

    QStringList m_warnings;
    bool m_areSettingsUsable = true;
    std::optional<DeviceConnection> m_device;
    std::unique_ptr<ValueLink> m_modifyTimes; // links that of the server and that of the device
    ZANSetupData m_setup;
    std::optional<StationPosition> m_position;
    std::optional<StationAttitude> m_attitude;
    std::unique_ptr<DriverSource> m_driver; // feeds position and attitude
    std::unique_ptr<GpsdSource> m_gpsd;     // the same
    DFDataOutput* m_pOutput = nullptr;      // the list of outputs deletes it
    KvZANCommon::PitchRollFilter m_pitchRollFilter;
    KvZANCommon::ConnectionSpeedFilter m_connectionSpeedFilter;
    KvZANCommon::OverheadPassParams m_overheadParams;
    std::optional<KvZANCommon::OHPParamsVtSynchronizer> m_overheadSynchronizer;
    KvZANCommon::OverheadPassFilter m_overheadFilter;
    double m_emitterFrequency = 0.0; // Hz, of the list of the emitters
    FrequencyOf m_frequencyOf;
    BlockObserver m_blockObserver;
    StationCounts m_counts;
};

} // namespace ZANServer
