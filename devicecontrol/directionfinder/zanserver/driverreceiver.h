#pragma once

#include "zanserver_export.h"

#include "zancommon/driverrecords.h"
#include "zancommon/idriver.h"
#include "zancommon/nulldrivercallback.h"
#include "zanserver/blockqueue.h"

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <cstddef>
#include <variant>
#include <vector>

namespace ZANServer {

/// One block of bearings with the state of the device while it was measured.
struct BearingBlock {
    enum class Kind {
        Scan,            ///< one bearing per channel
        FixedFrequency,  ///< one bearing
        SuperResolution, ///< one bearing per emitter on one frequency
    };
    static constexpr long WIDEBAND = -1; ///< a range: the channels around the receive frequency

    quint64 time = 0; ///< milliseconds since 1970-01-01 00:00:00 UTC
    KvZANCommon::StatusStruct status;
    std::vector<Bearing> bearings;
    Kind kind = Kind::Scan;
    long range = 0;            ///< index of the frequency range
    unsigned firstChannel = 0; ///< of the first bearing, as the range counts

    // Of a piece of a block that was too large:
    std::size_t firstOfWhole = 0; ///< place of the first bearing in the whole
    std::size_t whole = 0;        ///< bearings of the whole; 0: this is no piece

    /// How many bearings the driver has delivered together.
    [[nodiscard]] std::size_t GetWholeCount() const { return whole > 0 ? whole : bearings.size(); }
};

/// A position fix of the device.
struct PositionFix {
    double latitude = 0.0;  ///< degrees, north positive
    double longitude = 0.0; ///< degrees, east positive
    quint64 time = 0;       ///< of the fix, milliseconds since 1970-01-01 00:00:00 UTC
    bool valid = false;     ///< false: the other fields hold no fix
    int satelliteCount = 0;
};

/// The driver's callback: takes deliveries in the driver's thread, and passes them on as signals in the
/// thread of this object.
///
/// Each block is copied once, between the threads. The queue is bounded in bytes: a driver that is faster
/// than the station waits until there is room, and a block larger than the bound is passed on in pieces.
/// Deliveries that the station does not use (spectra, audio, simulation) are dropped. The driver may deliver
/// on any number of threads at a time.
class ZANSERVER_EXPORT DriverReceiver final : public QObject, public KvZANCommon::NullDriverCallback {
    Q_OBJECT

public:
    /// Default bound of the queue in bytes: some ten thousand blocks of one bearing, or eight of the longest
    /// scan. While waiting deliveries are passed on, as many can arrive; a delivery that waits for room is
    /// not counted.
    static constexpr std::size_t DEFAULT_CAPACITY = 8UL * 1024 * 1024;

    /// \param capacity bound of the queue in bytes
    explicit DriverReceiver(QString deviceAddress, std::size_t capacity = DEFAULT_CAPACITY);

    /// In the driver's thread, before the device is opened: what was delivered before belongs to an earlier
    /// connection (`Opening`).
    void MarkOpening();
    /// Passes on everything that is waiting, at once.
    void PassOnWaiting();
    /// The driver is held up no more, now and later: one that waits for room could not be stopped.
    void StopHoldingUp() { m_queue.StopBounding(); }
    /// From now on nothing that the driver delivers is taken, and what is waiting is dropped.
    void CutOff();

    void fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                        Bearing* bearings, KvZANCommon::StatusStruct& status) override;
    void fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel, unsigned count,
                        Bearing* bearings, KvZANCommon::StatusStruct& status) override;
    void fillFFMBuffer(const KvZANCommon::FFMData& data, KvZANCommon::StatusStruct& status,
                       bool averaged) override;
    void fillFFMSRBuffer(KvZANCommon::SuperResolutionStruct& data,
                         KvZANCommon::StatusStruct& status) override;
    void fillTestValuesBuffer(double* values, unsigned short count) override;
    void fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                     int satelliteCount, int quality) override;
    void reportError(KvZANCommon::ErrorStruct& error) override;
    void ReportBITResult(KvZANCommon::ErrorStruct& result) override;
    void CloseDataLink() override;
    void SetCommandLog(QString& line) override;
    QString GetDevAddress() override { return m_deviceAddress; }
    void getOperateMode(EMode& mode) override { mode = m_mode; }
    /// The mode that the driver is told when it asks. From any thread.
    void SetOperateMode(EMode mode) { m_mode = mode; }

Q_SIGNALS:
    /// Emitted before and after all waiting deliveries are passed on together.
    void PassingOnBegins();
    void PassingOnEnds();
    void BlockReceived(BearingBlock& block);
    void PositionReceived(const PositionFix& fix);
    void TestValuesReceived(const QList<double>& values);
    void ErrorReported(const KvZANCommon::ErrorStruct& error);
    void BitResultReported(const KvZANCommon::ErrorStruct& result);
    /// The driver reports a command that it exchanges with its device.
    void CommandReported(const QString& command);
    /// The driver will deliver nothing more.
    void LinkClosed();
    /// What follows was delivered after `MarkOpening`.
    void Opening();

private:
    struct BitResult {
        KvZANCommon::ErrorStruct result;
    };
    struct End {};
    struct Begin {};
    using Delivery = std::variant<BearingBlock, PositionFix, QList<double>, KvZANCommon::ErrorStruct,
                                  BitResult, QString, End, Begin>;

    ZANSERVER_NO_EXPORT void PostBearings(BearingBlock head, unsigned count, const Bearing* bearings);
    ZANSERVER_NO_EXPORT void PassOn(Delivery& delivery);
    /// \param ownedBytes size of what the delivery owns
    ZANSERVER_NO_EXPORT void Post(Delivery delivery, std::size_t ownedBytes);

    const QString m_deviceAddress;
    const std::size_t m_longestPiece; // bearings
    BlockQueue<Delivery> m_queue;
    std::atomic<bool> m_isCutOff = false;
    std::atomic<EMode> m_mode = EMODE_STANDBY;
};

} // namespace ZANServer
