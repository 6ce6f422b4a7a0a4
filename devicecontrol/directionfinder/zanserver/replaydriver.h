#pragma once

#include "zanserver_export.h"

#include "connections/interruptibleinput.h"
#include "zancommon/ilegacydrivercallback.h"
#include "zancommon/nulllegacydriver.h"
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

/// A driver whose device is a bearing recording. It uses the older driver interface, as most drivers in use
/// do, and is the example of such a driver.
///
/// `Initialize` opens the recording that its first argument names: a file, whose header line is read at once,
/// or a stream (a FIFO or standard input, "-"), whose lines are read as they arrive. `SetMode` with a mode
/// other than standby starts a thread that delivers the rows as scan blocks, at the pace of their times, and
/// ends with `CloseDataLink`; standby stops it. Rows of the same time, frequency and platform data form one
/// block. Lines that are not valid rows are reported through `reportError`, and the commands that the driver
/// receives through `SetCommandLog`. Operations that a recording cannot carry out return `NOT_SUPPORTED`.
class ZANSERVER_EXPORT ReplayDriver final : public KvZANCommon::NullLegacyDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -2;
    /// The pace without waiting.
    static constexpr double AS_FAST_AS_POSSIBLE = 0.0;

    /// \param callback gets all notifications, in the driver's own thread; not owned
    /// \param pace how many times faster than recorded, above 0; or `AS_FAST_AS_POSSIBLE`
    ReplayDriver(KvZANCommon::ILegacyDriverCallback& callback, double pace);
    ReplayDriver(const ReplayDriver&) = delete;
    ReplayDriver& operator=(const ReplayDriver&) = delete;
    virtual ~ReplayDriver();

    /// How much of the recording has been read, 0 to 1. From any thread.
    [[nodiscard]] double GetProgress() const { return m_progress; }
    /// The lines that could not be read: one text per reason, with the count. Call it after the driver has
    /// stopped.
    [[nodiscard]] QStringList GetBadLineSummary() const;

    int Initialize(std::string& recording, bool simulation) override;
    QString GetLastError() override;
    void ClearLastError() override;
    long SetMode(EMode mode) override;
    long Reset() override { return OK; }
    long GetReadCount() override { return m_blockCount; }
    long GetMaxChannelCount(EMode) override { return 1; }
    long DeleteAllChannels() override { return OK; }

private:
    ZANSERVER_NO_EXPORT void Start();
    ZANSERVER_NO_EXPORT void Stop();
    ZANSERVER_NO_EXPORT void Replay();
    ZANSERVER_NO_EXPORT bool BeginStream();
    ZANSERVER_NO_EXPORT std::optional<RecordedBearing> Tell(std::optional<RecordedBearing> row);
    ZANSERVER_NO_EXPORT void ReportCommand(QString command);
    ZANSERVER_NO_EXPORT void Report(const QString& text, bool isFatal);
    ZANSERVER_NO_EXPORT bool IsStopping();
    /// Waits until a recorded time is due. False when the driver is being stopped.
    ZANSERVER_NO_EXPORT bool WaitFor(quint64 recordedTime);
    ZANSERVER_NO_EXPORT void Deliver(const RecordedBearing& platform);

    KvZANCommon::ILegacyDriverCallback& m_callback;
    const double m_pace;
    InterruptibleInput m_stream;
    QString m_streamName; // empty when reading the stream has begun, or without a stream
    RecordingReader m_reader;
    qsizetype m_reportedLines = 0;
    QString m_lastError;
    std::vector<Bearing> m_block; // the bearings of the block that is being assembled
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
