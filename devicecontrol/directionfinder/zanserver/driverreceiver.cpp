#include "zanserver/driverreceiver.h"

#include "zanserver/drivertext.h"

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

/// Of what a driver reports, in bytes: the whole name of a file has room.
constexpr qsizetype LONGEST_TEXT = 5000;

std::size_t SizeOf(const QString& text) {
    return static_cast<std::size_t>(text.capacity()) * sizeof(QChar);
}

} // namespace

DriverReceiver::DriverReceiver(QString deviceAddress, std::size_t capacity)
    : m_deviceAddress(std::move(deviceAddress))
    , m_longestPiece((std::max(capacity, OWN_SIZE<Delivery> + sizeof(Bearing)) - OWN_SIZE<Delivery>) /
                     sizeof(Bearing))
    , m_queue(capacity) {}

void DriverReceiver::fillScanBuffer(long range, unsigned long long& time, unsigned firstChannel,
                                    unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    PostBearings({time, status, {}, BearingBlock::Kind::Scan, range, firstChannel}, count, bearings);
}

void DriverReceiver::fillTDMABuffer(long range, unsigned long long& time, unsigned firstChannel,
                                    unsigned count, Bearing* bearings, KvZANCommon::StatusStruct& status) {
    fillScanBuffer(range, time, firstChannel, count, bearings, status);
}

void DriverReceiver::fillFFMBuffer(const KvZANCommon::FFMData& data, KvZANCommon::StatusStruct& status,
                                   bool /*averaged*/) {
    Bearing bearing;
    bearing.azimuth = data.azimuth;
    bearing.elevation = data.elevation;
    bearing.level = data.level;
    bearing.azimuthSpread = data.azimuthSpread;
    bearing.averageCount = data.averageCount;
    bearing.quality = data.quality;
    BearingBlock block{data.time, status, {}, BearingBlock::Kind::FixedFrequency};
    block.status.frequency = data.frequency;
    PostBearings(std::move(block), 1, &bearing);
}

void DriverReceiver::fillFFMSRBuffer(KvZANCommon::SuperResolutionStruct& data,
                                     KvZANCommon::StatusStruct& status) {
    constexpr std::size_t MOST_EMITTERS = 64; // no array of antennas tells more apart
    BearingBlock block{data.time, status, {}, BearingBlock::Kind::SuperResolution};
    block.status.frequency = data.frequency;
    PostBearings(std::move(block), static_cast<unsigned>(std::min(data.emitters.size(), MOST_EMITTERS)),
                 data.emitters.data());
}

void DriverReceiver::fillTestValuesBuffer(double* values, unsigned short count) {
    const unsigned short valid = values ? count : 0;
    Post(QList<double>(values, values + valid), valid * sizeof(double));
}

void DriverReceiver::fillGPSData(double latitude, double longitude, unsigned long long time, bool valid,
                                 int satelliteCount, int /*quality*/) {
    Post(PositionFix{latitude, longitude, time, valid, satelliteCount}, 0);
}

void DriverReceiver::PostBearings(BearingBlock head, unsigned count, const Bearing* bearings) {
    std::size_t rest = bearings ? count : 0;
    head.whole = rest > m_longestPiece ? rest : 0;
    do { // also for a block without bearings, which carries the state of the device
        const std::size_t length = std::min(rest, m_longestPiece);
        BearingBlock piece = head;
        piece.bearings.assign(bearings, bearings + length);
        Post(std::move(piece), length * sizeof(Bearing));
        head.firstChannel += static_cast<unsigned>(length);
        head.firstOfWhole += length;
        bearings += length;
        rest -= length;
    } while (rest > 0);
}

void DriverReceiver::reportError(KvZANCommon::ErrorStruct& error) {
    const QString text = Bounded(error.text, LONGEST_TEXT);
    Post(KvZANCommon::ErrorStruct{error.code, error.fatal, text}, SizeOf(text));
}

void DriverReceiver::ReportBITResult(KvZANCommon::ErrorStruct& result) {
    const QString text = Bounded(result.text, LONGEST_TEXT);
    Post(BitResult{{result.code, result.fatal, text}}, SizeOf(text));
}

void DriverReceiver::CloseDataLink() {
    Post(End{}, 0);
}

void DriverReceiver::MarkOpening() {
    Post(Begin{}, 0);
}

void DriverReceiver::SetCommandLog(QString& line) {
    const QString entry = WithoutControls(line);
    Post(entry, SizeOf(entry));
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
        PassOn(delivery);
    }
    Q_EMIT PassingOnEnds();
}

void DriverReceiver::PassOn(Delivery& delivery) {
    if (auto* block = std::get_if<BearingBlock>(&delivery)) {
        Q_EMIT BlockReceived(*block);
    } else if (const auto* fix = std::get_if<PositionFix>(&delivery)) {
        Q_EMIT PositionReceived(*fix);
    } else if (const auto* values = std::get_if<QList<double>>(&delivery)) {
        Q_EMIT TestValuesReceived(*values);
    } else if (const auto* error = std::get_if<KvZANCommon::ErrorStruct>(&delivery)) {
        Q_EMIT ErrorReported(*error);
    } else if (const auto* bit = std::get_if<BitResult>(&delivery)) {
        Q_EMIT BitResultReported(bit->result);
    } else if (const auto* command = std::get_if<QString>(&delivery)) {
        Q_EMIT CommandReported(*command);
    } else if (std::holds_alternative<Begin>(delivery)) {
        Q_EMIT Opening();
    } else {
        Q_EMIT LinkClosed();
    }
}

} // namespace ZANServer
