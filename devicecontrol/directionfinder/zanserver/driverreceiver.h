#pragma once

#include "zanserver_export.h"

#include "zancommon/driverrecords.h"
#include "zancommon/idriver.h"
#include "zancommon/nulldrivercallback.h"
#include "zanserver/blockqueue.h"

#include <QObject>
#include <QString>

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

/// What the station hands to the driver: takes its deliveries on the driver's thread, and passes them on as
/// signals on the thread that this object lives on.
///
/// Each block is copied once, where it crosses the threads. What is waiting is bounded in bytes: a driver
/// that is faster than the station is held up until there is room, and a block larger than the bound is
/// passed on in pieces. What a station without spectra, audio and simulation has no use for is dropped.
class ZANSERVER_EXPORT DriverReceiver final : public QObject, public KvZANCommon::NullDriverCallback {
    Q_OBJECT

public:
    /// Bytes that wait for this thread at most, unless said otherwise: some ten thousand blocks of one
    /// bearing, or eight of the longest scan. While they are passed on, as many can come again; what a driver
    /// is held up with does not wait yet.
    static constexpr std::size_t DEFAULT_CAPACITY = 8UL * 1024 * 1024;

    /// \param capacity bytes that wait at most
    explicit DriverReceiver(QString deviceAddress, std::size_t capacity = DEFAULT_CAPACITY);

    /// Sets a driver that delivers here to standby, and passes on what it has delivered until it stood still.
    /// The driver is held up no more, now and later: one that waits for room could not be stopped.
    void Stop(KvZANCommon::IDriver& driver);
    /// Passes on what is waiting, at once.
    void PassOnWaiting();

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
    /// What has been waiting is passed on now, all of it, between these two.
    void PassingOnBegins();
    void PassingOnEnds();
    void BlockReceived(BearingBlock& block);
    void ErrorReported(const KvZANCommon::ErrorStruct& error);
    /// The driver tells of a command that it exchanges with its device.
    void CommandReported(const QString& command);
    /// The driver delivers nothing more.
    void LinkClosed();

private:
    struct End {};
    using Delivery = std::variant<BearingBlock, KvZANCommon::ErrorStruct, QString, End>;

    /// \param ownedBytes what the delivery owns beside itself
    void Post(Delivery delivery, std::size_t ownedBytes);

    const QString m_deviceAddress;
    const std::size_t m_longestPiece; // bearings
    BlockQueue<Delivery> m_queue;
};

} // namespace ZANServer
