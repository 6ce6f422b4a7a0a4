#pragma once

#include "zanserver_export.h"

#include "zancommon/driverrecords.h"
#include "zancommon/idriver.h"
#include "zancommon/nulldrivercallback.h"
#include "zanserver/blockqueue.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <cstddef>
#include <variant>
#include <vector>

namespace ZANServer {

/// One block of bearings with the state of the device while it was measured.
struct BearingBlock {
    quint64 time = 0; ///< milliseconds since 1970-01-01 00:00:00 UTC
    KvZANCommon::StatusStruct status;
    std::vector<Bearing> bearings;
};

/// The driver's callback: takes deliveries in the driver's thread, and passes them on as signals in the
/// thread of this object.
///
/// Each block is copied once, between the threads. The queue is bounded in bytes: a driver that is faster
/// than the station waits until there is room, and a block larger than the bound is passed on in pieces.
/// Deliveries that the station does not use (spectra, audio, simulation) are dropped.
class ZANSERVER_EXPORT DriverReceiver final : public QObject, public KvZANCommon::NullDriverCallback {
    Q_OBJECT

public:
    /// Default bound of the queue in bytes: some ten thousand blocks of one bearing, or eight of the longest
    /// scan. While waiting deliveries are passed on, as many can arrive; a delivery that waits for room is
    /// not counted.
    static constexpr std::size_t DEFAULT_CAPACITY = 8UL * 1024 * 1024;

    /// \param capacity bound of the queue in bytes
    explicit DriverReceiver(QString deviceAddress, std::size_t capacity = DEFAULT_CAPACITY);

    /// Sets a driver that delivers here to standby, and passes on everything that it has delivered. From now
    /// on the driver does not wait for room: while waiting it could not be stopped.
    void Stop(KvZANCommon::IDriver& driver);
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
    void reportError(KvZANCommon::ErrorStruct& error) override;
    void CloseDataLink() override;
    void SetCommandLog(QString& line) override;
    QString GetDevAddress() override { return m_deviceAddress; }
    void getOperateMode(EMode& mode) override { mode = EMODE_SCAN; }

Q_SIGNALS:
    /// Emitted before and after all waiting deliveries are passed on together.
    void PassingOnBegins();
    void PassingOnEnds();
    void BlockReceived(BearingBlock& block);
    void ErrorReported(const KvZANCommon::ErrorStruct& error);
    /// The driver reports a command that it exchanges with its device.
    void CommandReported(const QString& command);
    /// The driver will deliver nothing more.
    void LinkClosed();

private:
    struct End {};
    using Delivery = std::variant<BearingBlock, KvZANCommon::ErrorStruct, QString, End>;

    /// \param ownedBytes size of what the delivery owns
    ZANSERVER_NO_EXPORT void Post(Delivery delivery, std::size_t ownedBytes);

    const QString m_deviceAddress;
    const std::size_t m_longestPiece; // bearings
    BlockQueue<Delivery> m_queue;
    std::atomic<bool> m_isCutOff = false;
};

} // namespace ZANServer
