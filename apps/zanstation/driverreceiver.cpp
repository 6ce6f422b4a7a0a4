#include "zanstation/driverreceiver.h"

#include <utility>

namespace {

/// Some seconds of a fast scan; a few hundred kilobytes.
constexpr std::size_t QUEUE_CAPACITY = 4096;

} // namespace

DriverReceiver::DriverReceiver(QString deviceAddress)
    : m_deviceAddress(std::move(deviceAddress))
    , m_queue(QUEUE_CAPACITY) {}

void DriverReceiver::fillScanBuffer(long /*range*/, unsigned long long& time, unsigned /*firstChannel*/,
                                    unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    Post(BearingBlock{time, status, std::vector<Bearing>(bearings, bearings + count)});
}

void DriverReceiver::fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel,
                                    unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    fillScanBuffer(range, time, firstChannel, count, bearings, status);
}

void DriverReceiver::reportError(KvZANCommon::ErrorStruct& error) {
    Post(error);
}

void DriverReceiver::CloseDataLink() {
    Post(End{});
}

void DriverReceiver::SetCommandLog(QString& line) {
    Post(line);
}

void DriverReceiver::Post(Delivery delivery) {
    if (m_queue.Push(std::move(delivery))) {
        QMetaObject::invokeMethod(this, &DriverReceiver::PassOnWaiting, Qt::QueuedConnection);
    }
}

void DriverReceiver::PassOnWaiting() {
    std::vector<Delivery> waiting = m_queue.TakeAll();
    Q_EMIT PassingOnBegins();
    for (Delivery& delivery : waiting) {
        if (auto* block = std::get_if<BearingBlock>(&delivery)) {
            Q_EMIT BlockReceived(*block);
        } else if (const auto* error = std::get_if<KvZANCommon::ErrorStruct>(&delivery)) {
            Q_EMIT ErrorReported(*error);
        } else if (const auto* command = std::get_if<QString>(&delivery)) {
            Q_EMIT CommandReported(*command);
        } else {
            Q_EMIT LinkClosed();
        }
    }
    Q_EMIT PassingOnEnds();
}
