#pragma once

#include "krakensdr/httpreader.h"
#include "krakensdr/receiveraddress.h"
#include "krakensdr/recordreader.h"
#include "zancommon/driverdescription.h"
#include "zancommon/idrivercallback.h"
#include "zancommon/nulldriver.h"

#include <QString>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace KrakenSdr {

/// The driver of a KrakenSDR, whose software serves its newest bearings over HTTP (`ReceiverAddress`).
///
/// `Initialize` asks it once. What a receiver serves at the first contact may be old, so that it counts as
/// seen; what was seen stays so when the same receiver is opened again. `SetMode` with a mode to measure in,
/// fixed frequency or scan, which are the same here, asks it again and again on a thread of the driver;
/// standby ends that. Each new record
/// (`RecordReader`) becomes a block of one bearing of `fillScanBuffer`, and before it its values over the
/// azimuth, in hundredths, for `fillSRSpectrumBuffer`. The name of its station is told to the command log,
/// once.
///
/// The receiver counts its bearings clockwise from the front of its array. With a heading in the record they
/// count from the bow, as this interface has it; without one the front has to look north.
///
/// A receiver that does not answer with a record `LOST_AFTER` times in a row is lost: a fatal error and the
/// end of the data link, once. Bad lines are reported as errors that are not fatal, the first of each kind
/// and each time that their number reaches a power of ten. The receiver is tuned by its own pages: all other
/// operations return `NOT_SUPPORTED`.
class KrakenSdrDriver final : public KvZANCommon::NullDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -2;
    /// A record that is met half rewritten, or an answer that is lost, is no loss of the receiver.
    static constexpr int LOST_AFTER = 5;

    KrakenSdrDriver();
    KrakenSdrDriver(const KrakenSdrDriver&) = delete;
    KrakenSdrDriver& operator=(const KrakenSdrDriver&) = delete;
    ~KrakenSdrDriver() override;

    static KvZANCommon::DriverDescription Describe();

    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_pCallback = callback; }
    int Initialize(std::string& address, bool simulation) override;
    QString GetLastError() override { return m_lastError; }
    void ClearLastError() override { m_lastError.clear(); }
    long SetMode(EMode mode) override;
    long GetReadCount() override { return m_blockCount; }

private:
    void Stop();
    void Poll();
    /// Asks the receiver once; why that failed, empty when it did not.
    QString Ask(HttpReader& http);
    bool WaitUntil(std::chrono::steady_clock::time_point due);
    bool IsStopping();
    void Lose(const QString& reason);
    void Deliver(const Record& record);
    void TellStation(const Record& record);
    long Refuse(const QString& reason, long code = FAILED);
    void Log(QString line);
    void Report(const QString& text, bool isFatal);

    KvZANCommon::IDriverCallback* m_pCallback = nullptr;
    ReceiverAddress m_address;
    QString m_lastError;
    bool m_isOpen = false;
    std::atomic<bool> m_isLost = false;
    RecordReader m_reader;
    QUrl m_known;      // whose records the reader has seen
    QString m_station; // that was told
    std::atomic<long> m_blockCount = 0;
    std::mutex m_mutex;
    std::condition_variable m_stopRequested;
    bool m_isStopping = false;     // guarded by m_mutex
    HttpReader* m_pHttp = nullptr; // of the thread; guarded by m_mutex
    std::thread m_thread;
};

} // namespace KrakenSdr
