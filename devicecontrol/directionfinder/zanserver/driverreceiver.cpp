#include "zanserver/driverreceiver.h"

#include <QThread>

#include <algorithm>
#include <utility>

namespace ZANServer {

namespace {

/// Bytes that a delivery takes in the queue in addition to what it owns: while the vector of waiting
/// deliveries grows, the old one has room for one and the new one for two. Each block that it owns has a
/// header on the heap.
template <class Delivery>
constexpr std::size_t OWN_SIZE = 3 * sizeof(Delivery) + 2 * sizeof(void*);

std::size_t SizeOf(const QString& text) {
    return static_cast<std::size_t>(text.capacity()) * sizeof(QChar);
}

} // namespace

DriverReceiver::DriverReceiver(QString deviceAddress, std::size_t capacity)
    : m_deviceAddress(std::move(deviceAddress))
    , m_longestPiece((std::max(capacity, OWN_SIZE<Delivery> + sizeof(Bearing)) - OWN_SIZE<Delivery>) /
                     sizeof(Bearing))
    , m_queue(capacity) {}

void DriverReceiver::fillScanBuffer(long /*range*/, unsigned long long& time, unsigned /*firstChannel*/,
                                    unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    std::size_t rest = count;
    do { // also for a block without bearings, which carries the state of the device
        const std::size_t length = std::min(rest, m_longestPiece);
        Post(BearingBlock{time, status, std::vector<Bearing>(bearings, bearings + length)},
             length * sizeof(Bearing));
        bearings += length;
        rest -= length;
    } while (rest > 0);
}

void DriverReceiver::fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel,
                                    unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    fillScanBuffer(range, time, firstChannel, count, bearings, status);
}

void DriverReceiver::reportError(KvZANCommon::ErrorStruct& error) {
    Post(error, SizeOf(error.text));
}

void DriverReceiver::CloseDataLink() {
    Post(End{}, 0);
}

void DriverReceiver::SetCommandLog(QString& line) {
    Post(line, SizeOf(line));
}

void DriverReceiver::Stop(KvZANCommon::IDriver& driver) {
    m_queue.StopBounding();
    driver.SetMode(EMODE_STANDBY);
    PassOnWaiting();
}

void DriverReceiver::CutOff() {
    m_isCutOff = true;
    StopHoldingUp();
    m_queue.TakeAll();
}

void DriverReceiver::Post(Delivery delivery, std::size_t ownedBytes) {
    if (m_isCutOff) {
        return;
    }
    const bool mayWait = QThread::currentThread() != thread();
    if (m_queue.Push(std::move(delivery), OWN_SIZE<Delivery> + ownedBytes, mayWait)) {
        QMetaObject::invokeMethod(this, &DriverReceiver::PassOnWaiting, Qt::QueuedConnection);
    }
}

void DriverReceiver::PassOnWaiting() {
    std::vector<Delivery> waiting = m_queue.TakeAll();
    if (m_isCutOff) {
        return;
    }
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

} // namespace ZANServer
