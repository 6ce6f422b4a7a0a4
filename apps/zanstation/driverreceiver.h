#pragma once

#include "zancommon/driverrecords.h"
#include "zancommon/idrivercallback.h"
#include "zanstation/blockqueue.h"

#include <QObject>
#include <QString>

#include <variant>
#include <vector>

/// One block of bearings with the state of the device while it was measured.
struct BearingBlock {
    quint64 time = 0; ///< milliseconds since 1970-01-01 00:00:00 UTC
    KvZANCommon::StatusStruct status;
    std::vector<Bearing> bearings;
};

/// What the station hands to the driver: takes its deliveries on the driver's thread, and passes them on as
/// signals on the thread that this object lives on.
///
/// Each block is copied once, where it crosses the threads. What a station without spectra, audio and
/// simulation has no use for is dropped.
class DriverReceiver final : public QObject, public KvZANCommon::IDriverCallback {
    Q_OBJECT

public:
    explicit DriverReceiver(QString deviceAddress);

    /// Holds the driver up no more, so that it can be stopped; what it still delivers is passed on all the
    /// same.
    void StopBounding() { m_queue.StopBounding(); }
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

    void fillFFMBuffer(const KvZANCommon::FFMData&, KvZANCommon::StatusStruct&, bool) override {}
    void fillFFMSRBuffer(KvZANCommon::SuperResolutionStruct&, KvZANCommon::StatusStruct&) override {}
    void fillSpectrumBuffer(const short*, int) override {}
    void fillSRSpectrumBuffer(short*, int, unsigned long long&) override {}
    void fillTestValuesBuffer(double*, unsigned short) override {}
    void fillAudioBuffer(void*, unsigned) override {}
    void fillAudioBufferTime(void*, unsigned) override {}
    void fillAudioFormat(void*, unsigned) override {}
    void fillAudioLevel(double) override {}
    void fillGPSData(double, double, unsigned long long, bool, int, int) override {}
    void InitSimulation(KvZANCommon::INITStruct&, unsigned, KvZANCommon::ChannelRangeStruct*) override {}
    void setSearchFrequency(double) override {}
    void getOperateMode(EMode& mode) override { mode = EMODE_SCAN; }
    void ReportBITResult(KvZANCommon::ErrorStruct&) override {}
    void SetEndOfScan(bool) override {}
    void fillSyncTimestamp(long long) override {}

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

    void Post(Delivery delivery);

    const QString m_deviceAddress;
    BlockQueue<Delivery> m_queue;
};
