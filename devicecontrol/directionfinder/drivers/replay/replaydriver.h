#pragma once

#include "zancommon/driverdescription.h"
#include "zancommon/ilegacydrivercallback.h"
#include "zancommon/nulllegacydriver.h"
#include "zancommon/recordingreader.h"
#include "zancommon/rowblock.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace Replay {

/// A driver whose device is a bearing recording. It uses the older driver interface, as most drivers in use
/// do, and is the example of such a driver.
///
/// `Initialize` opens the recording that its first argument names: a file, whose header line is read at once,
/// or a stream (a FIFO or standard input, "-"), whose lines are read as they arrive. `SetMode` with a mode
/// other than standby starts a thread that delivers the rows as scan blocks, at the pace of their times, and
/// ends with `CloseDataLink`; standby stops it. Rows of the same time, frequency and platform data form one
/// block. Lines that are not valid rows are reported through `reportError`, those of each kind with their
/// number through `ReportBITResult` at the end, and the commands that the driver receives through
/// `SetCommandLog`. Rows with a mode or emitter are delivered as fixed-frequency or super-resolution results.
/// A recording with the time of the position tells the position through `fillGPSData`, before the first block
/// that it holds for. `fillTestValuesBuffer` tells how much of the recording has been read, 0 to 1.
/// Operations that a recording cannot carry out return `NOT_SUPPORTED`.
///
/// The test command `speed realtime|N|max` sets the pace, from the next start on: as recorded, N times
/// faster, or without waiting.
class ReplayDriver final : public KvZANCommon::NullLegacyDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -2;

    /// \param callback gets all notifications, in the driver's own thread; not owned
    explicit ReplayDriver(KvZANCommon::ILegacyDriverCallback& callback);
    ReplayDriver(const ReplayDriver&) = delete;
    ReplayDriver& operator=(const ReplayDriver&) = delete;
    virtual ~ReplayDriver();

    static KvZANCommon::DriverDescription Describe();

    int Initialize(std::string& recording, bool simulation) override;
    QString GetLastError() override;
    void ClearLastError() override;
    long SetMode(EMode mode) override;
    long SetTest(QString command) override;
    long Reset() override { return OK; }
    long GetReadCount() override { return m_blockCount; }
    long GetMaxChannelCount(EMode) override { return 1; }
    long DeleteAllChannels() override { return OK; }

private:
    struct Position {
        std::optional<double> latitude;
        std::optional<double> longitude;
        std::optional<double> timeMs;

        bool operator==(const Position&) const = default;
    };

    void Start();
    void Stop();
    void Replay();
    std::optional<KvZANCommon::RecordedBearing> Tell(std::optional<KvZANCommon::RecordedBearing> row);
    void TellProgress();
    void TellPosition(const KvZANCommon::RecordedBearing& platform);
    void TellBadLines();
    void ReportCommand(QString command);
    void Report(const QString& text, bool isFatal);
    bool IsStopping();
    /// Waits until a recorded time is due. False when the driver is being stopped.
    bool WaitFor(quint64 recordedTime);

    KvZANCommon::ILegacyDriverCallback& m_callback;
    double m_pace = 1.0; // times as fast as recorded; 0: without waiting
    KvZANCommon::RecordingReader m_reader;
    qsizetype m_reportedLines = 0;
    QString m_lastError;
    KvZANCommon::RowBlock m_block; // that is being assembled
    double m_toldProgress = 0.0;
    std::optional<Position> m_toldPosition;
    std::atomic<long> m_blockCount = 0;

    // The pace: the recorded and the real time of the first block.
    std::optional<quint64> m_firstTime;
    std::chrono::steady_clock::time_point m_begin;

    std::mutex m_mutex;
    std::condition_variable m_stopRequested;
    bool m_isStopping = false; // guarded by m_mutex
    std::thread m_thread;
};

} // namespace Replay
