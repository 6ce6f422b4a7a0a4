#pragma once

#include "stream/bearingreader.h"
#include "stream/streamsource.h"
#include "zancommon/driverdescription.h"
#include "zancommon/idrivercallback.h"
#include "zancommon/linereader.h"
#include "zancommon/nulldriver.h"
#include "zancommon/rowblock.h"

#include <QString>

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace Stream {

/// A driver whose device is another program: its bearings come as lines (`BearingReader`) from a connection,
/// a serial line, a FIFO or standard input (`StreamSource`).
///
/// `Initialize` opens the source. The first `SetMode` with a mode to measure in, fixed frequency or scan,
/// which are the same here, begins to read on a thread of the driver; rows of the same time, frequency and
/// platform that arrive together form one block of `fillScanBuffer`. In standby what arrives is dropped, so
/// that it is not taken for new later. When the source ends or fails, the driver reports a fatal error and
/// closes the data link, once; `Initialize` opens it again.
///
/// Bad lines are reported as errors that are not fatal: the first of each kind, and each time that their
/// number reaches a power of ten; at the end their numbers through `ReportBITResult`. Operations that a
/// stream cannot carry out return `NOT_SUPPORTED`.
class StreamDriver final : public KvZANCommon::NullDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -2;

    StreamDriver();
    StreamDriver(const StreamDriver&) = delete;
    StreamDriver& operator=(const StreamDriver&) = delete;
    ~StreamDriver() override;

    static KvZANCommon::DriverDescription Describe();

    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_pCallback = callback; }
    int Initialize(std::string& address, bool simulation) override;
    QString GetLastError() override { return m_lastError; }
    void ClearLastError() override { m_lastError.clear(); }
    long SetMode(EMode mode) override;
    long GetReadCount() override { return m_blockCount; }

private:
    void Stop();
    void Read();
    void ReadToEnd();
    void Deliver();
    void ReportBadLine(const QString& text);
    void ReportCounts();
    void Lose();
    long Refuse(const QString& reason, long code = FAILED);
    void Log(QString line);
    void Report(const QString& text, bool isFatal);

    KvZANCommon::IDriverCallback* m_pCallback = nullptr;
    QString m_address;
    std::optional<StreamSource::Fifo> m_fifo; // that was opened
    QString m_lastError;
    bool m_isOpen = false;
    bool m_hasInputEnded = false; // standard input, which cannot be opened again
    std::atomic<bool> m_isLost = false;
    KvZANCommon::LineReader m_lines;
    BearingReader m_reader;
    KvZANCommon::RowBlock m_block; // that is being assembled
    std::atomic<long> m_blockCount = 0;
    std::mutex m_delivery;      // held while a block is delivered
    bool m_isMeasuring = false; // guarded by m_delivery
    std::thread m_thread;
};

} // namespace Stream
