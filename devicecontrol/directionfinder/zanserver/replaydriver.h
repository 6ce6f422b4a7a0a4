#pragma once

#include "zanserver_export.h"

#include "connections/interruptibleinput.h"
#include "zancommon/ilegacydriver.h"
#include "zancommon/ilegacydrivercallback.h"
#include "zanserver/recordingreader.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ZANServer {

/// A driver whose device is a bearing recording. It is written against the older driver interface, as most
/// drivers in use are, and stands as the example of one.
///
/// `Initialize` opens the recording that its first argument names: a file, whose header line is read at once,
/// or a stream, a FIFO or standard input ("-"), which is read line by line as they come. `SetMode` with a
/// mode other than standby starts a thread that delivers the rows as scan blocks, at the pace of their times,
/// and ends with `CloseDataLink`; standby stops it. Rows of the same time, frequency and platform data make
/// one block. Lines that are no rows are reported through `reportError`, and the commands that the driver is
/// given through `SetCommandLog`. What a recording cannot do answers `NOT_SUPPORTED`.
class ZANSERVER_EXPORT ReplayDriver final : public KvZANCommon::ILegacyDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -1;
    static constexpr long NOT_SUPPORTED = -2;
    /// The pace that waits for nothing.
    static constexpr double AS_FAST_AS_POSSIBLE = 0.0;

    /// \param callback told of everything, on the driver's own thread; not owned
    /// \param pace how many times faster than recorded, above 0; or `AS_FAST_AS_POSSIBLE`
    ReplayDriver(KvZANCommon::ILegacyDriverCallback& callback, double pace);
    ReplayDriver(const ReplayDriver&) = delete;
    ReplayDriver& operator=(const ReplayDriver&) = delete;
    virtual ~ReplayDriver();

    /// How much of the recording has been read, 0 to 1. From any thread.
    [[nodiscard]] double GetProgress() const { return m_progress; }
    /// What could not be read, one text a reason with its count. Once the driver has stopped.
    [[nodiscard]] QStringList GetBadLineSummary() const;

    int Initialize(std::string& recording, bool simulation) override;
    QString GetLastError() override;
    void ClearLastError() override;
    long SetMode(EMode mode) override;
    long Reset() override { return OK; }
    long GetReadCount() override { return m_blockCount; }
    void GetGPSBuffer(KvZANCommon::GPSStruct& buffer) override { buffer = {}; }
    long GetMaxChannelCount(EMode) override { return 1; }
    long DeleteAllChannels() override { return OK; }

    long Calibrate(unsigned long) override { return NOT_SUPPORTED; }
    long BIT(long&, bool, bool) override { return NOT_SUPPORTED; }
    long SetTest(QString) override { return NOT_SUPPORTED; }
    long SetRfAttenuator(unsigned long, long) override { return NOT_SUPPORTED; }
    long SetFrequency(double) override { return NOT_SUPPORTED; }
    long SetGainControl(KvZANCommon::GainControlStruct) override { return NOT_SUPPORTED; }
    long SetFilterSettings(KvZANCommon::FilterSettingsStruct) override { return NOT_SUPPORTED; }
    long SetFilterSettings(KvZANCommon::FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetAverageTime(double) override { return NOT_SUPPORTED; }
    long ResetAverage() override { return NOT_SUPPORTED; }
    long AddFreqRange(KvZANCommon::FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetGPSTimeUsage(bool) override { return NOT_SUPPORTED; }
    long GetGPSTimeUsage(bool&) override { return NOT_SUPPORTED; }
    long SetAntennaSetup(KvZANCommon::AntennaSetupStruct) override { return NOT_SUPPORTED; }
    long SetConverterSetup(KvZANCommon::ConverterSetupStruct) override { return NOT_SUPPORTED; }
    long ReadCompass(unsigned long, unsigned long&) override { return NOT_SUPPORTED; }
    long SetAudioVolume(int) override { return NOT_SUPPORTED; }
    long SetExternalReference(bool) override { return NOT_SUPPORTED; }
    long SetHoldTime(int, int, int) override { return NOT_SUPPORTED; }
    long SearchHold() override { return NOT_SUPPORTED; }
    long SearchContinue(unsigned long) override { return NOT_SUPPORTED; }
    long GetFrequency(double&) override { return NOT_SUPPORTED; }
    long GetGainControl(KvZANCommon::GainControlStruct&) override { return NOT_SUPPORTED; }
    long GetMeasureSettings(double&, KvZANCommon::DFSettingsStruct&,
                            KvZANCommon::DEMSettingsStruct&) override {
        return NOT_SUPPORTED;
    }
    long GetFilterSettings(KvZANCommon::FilterSettingsStruct&) override { return NOT_SUPPORTED; }
    long GetAverageTime(double&) override { return NOT_SUPPORTED; }
    long GetAntennaProperty(unsigned long, KvZANCommon::AntennaPropertyStruct&,
                            KvZANCommon::AntennaSubRangeStruct&, int&) override {
        return NOT_SUPPORTED;
    }
    long GetAntennaSetup(unsigned long, KvZANCommon::AntennaSetupStruct&) override { return NOT_SUPPORTED; }
    long GetConverterProperty(unsigned long, KvZANCommon::ConverterSetupStruct&) override {
        return NOT_SUPPORTED;
    }
    long GetConverterSetup(unsigned long, KvZANCommon::ConverterSetupStruct&) override {
        return NOT_SUPPORTED;
    }
    long GetCompassProperty(unsigned long, KvZANCommon::CompassPropertyStruct&) override {
        return NOT_SUPPORTED;
    }
    long AlterMeasureSetting(double, KvZANCommon::DFSettingsStruct, KvZANCommon::DEMSettingsStruct) override {
        return NOT_SUPPORTED;
    }
    long AlterMeasureSetting(KvZANCommon::FreqRangeDefinition*) override { return NOT_SUPPORTED; }
    long SetSkip(long, long, bool) override { return NOT_SUPPORTED; }
    void SetSimulationScan(unsigned, unsigned, unsigned, int, int, unsigned,
                           KvZANCommon::ChannelRangeStruct*) override {}
    long SetSRNumOfEmitters(bool, long) override { return NOT_SUPPORTED; }
    long SetScanAveraging(unsigned long) override { return NOT_SUPPORTED; }
    long RequestHWStatus(QList<KvZANCommon::ComponentInfo*>*) override { return NOT_SUPPORTED; }
    long GetSweepTime(long&) override { return NOT_SUPPORTED; }
    long SetSyncTimes(unsigned long long&, long) override { return NOT_SUPPORTED; }
    long GetZANTime(unsigned long long&) override { return NOT_SUPPORTED; }
    long SetGSMSetting(double, KvZANCommon::FreqRangeDefinition*, KvZANCommon::GSMSettingsStruct&) override {
        return NOT_SUPPORTED;
    }
    long FcbSynch() override { return NOT_SUPPORTED; }
    void EnableTimeSync(bool) override {}
    long SendCompassCommand(unsigned long, const QString&, QString&) override { return NOT_SUPPORTED; }
    long SetCompassValue(unsigned long) override { return NOT_SUPPORTED; }

private:
    void Start();
    void Stop();
    void Replay();
    bool BeginStream();
    std::optional<RecordedBearing> Tell(std::optional<RecordedBearing> row);
    void ReportCommand(QString command);
    void Report(const QString& text, bool isFatal);
    bool IsStopping();
    /// Waits for the moment of a recorded time. False when the driver is being stopped.
    bool WaitFor(quint64 recordedTime);
    void Deliver(const RecordedBearing& platform);

    KvZANCommon::ILegacyDriverCallback& m_callback;
    const double m_pace;
    InterruptibleInput m_stream;
    QString m_streamName; // empty: the stream has been begun, or there is none
    RecordingReader m_reader;
    qsizetype m_reportedLines = 0;
    QString m_lastError;
    std::vector<Bearing> m_block; // the bearings of the block that is being put together
    std::atomic<double> m_progress = 0.0;
    std::atomic<long> m_blockCount = 0;

    // The pace: the recorded and the real time of the first block.
    std::optional<quint64> m_firstTime;
    std::chrono::steady_clock::time_point m_begin;

    std::mutex m_mutex;
    std::condition_variable m_stopRequested;
    bool m_isStopping = false; // guarded by m_mutex
    std::thread m_thread;
};

} // namespace ZANServer
