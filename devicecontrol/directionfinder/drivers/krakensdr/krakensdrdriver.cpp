#include "krakensdr/krakensdrdriver.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace KrakenSdr {

using KvZANCommon::ErrorStruct;

namespace {

/// Hundredths as a 16-bit number; its lowest value means "not measured".
qint16 ToHundredths(double value) {
    return static_cast<qint16>(
        std::clamp(std::lround(std::clamp(value, -1e6, 1e6) * 100.0), -32767L, 32767L));
}

QString NoRecord(const RecordReader& reader) {
    return u"it serves no record"_s + (reader.GetLastFault().isEmpty()
                                           ? QString()
                                           : u"; the last line that is none: "_s + reader.GetLastFault());
}

Bearing ToBearing(const Record& record, const ReceiverAddress& address) {
    constexpr int FULL_CIRCLE = 3600;
    Bearing bearing;
    bearing.azimuth = static_cast<quint16>(std::lround(record.bearing * 10.0) % FULL_CIRCLE);
    bearing.quality =
        static_cast<quint16>(std::lround(std::min(record.confidence * address.qualityFactor, 100.0)));
    if (record.level) {
        bearing.level = ToHundredths(*record.level + address.levelOffset);
    }
    bearing.averageCount = 1;
    return bearing;
}

} // namespace

KrakenSdrDriver::KrakenSdrDriver()
    : m_reader([this](const QString& text) { Report(text, false); }) {}

KrakenSdrDriver::~KrakenSdrDriver() {
    Stop();
}

KvZANCommon::DriverDescription KrakenSdrDriver::Describe() {
    return {u"krakensdr"_s,
            u"a KrakenSDR, the bearings that its software serves"_s,
            u"http://HOST:8081[?SETTING=VALUE&...]"_s,
            u"http://192.168.1.50:8081"_s,
            {EMODE_FFM, EMODE_SCAN}};
}

int KrakenSdrDriver::Initialize(std::string& address, bool /*simulation*/) {
    if (!m_pCallback) {
        return static_cast<int>(Refuse(u"there is no callback"_s));
    }
    Stop();
    m_isOpen = false;
    m_isLost = false;
    m_blockCount = 0;
    const QString text = QString::fromStdString(address);
    Log(u"open "_s + text);
    QString reason;
    const std::optional<ReceiverAddress> parsed = ReceiverAddress::Parse(text, reason);
    if (!parsed) {
        return static_cast<int>(Refuse(text + u": "_s + reason));
    }
    m_address = *parsed;
    const bool isFirstContact = m_address.url != m_known;
    if (isFirstContact) {
        m_known.clear();
        m_reader.Reset();
    } else {
        m_reader.Reconnect();
    }
    HttpReader http;
    const std::optional<QByteArray> body = http.Get(m_address.url, m_address.timeout, RecordReader::MAX_BODY);
    const auto take = [&](const Record& record) {
        TellStation(record);
        if (isFirstContact) {
            m_reader.See(record);
        }
    };
    RecordReader trial([](const QString&) {});
    m_isOpen = body && trial.Read(*body, take);
    if (m_isOpen) {
        trial.Read(*body, take); // a last line without an end counts now
        m_known = m_address.url;
        return static_cast<int>(OK);
    }
    return static_cast<int>(
        Refuse(m_address.url.toString() + u": "_s + (body ? NoRecord(trial) : http.GetErrorText())));
}

long KrakenSdrDriver::SetMode(EMode mode) {
    if (m_pCallback) {
        Log(u"mode "_s + QString::number(mode));
    }
    if (mode != EMODE_STANDBY && mode != EMODE_FFM && mode != EMODE_SCAN) {
        return Refuse(u"mode %1 is not one of standby, fixed frequency, scan"_s.arg(mode), NOT_SUPPORTED);
    }
    Stop();
    if (mode == EMODE_STANDBY) {
        return OK;
    }
    if (!m_isOpen || m_isLost) {
        return Refuse(m_isOpen ? u"the receiver is lost"_s : u"the receiver is not open"_s);
    }
    m_thread = std::thread([this] { Poll(); });
    return OK;
}

void KrakenSdrDriver::Stop() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
        if (m_pHttp) {
            m_pHttp->Interrupt();
        }
    }
    m_stopRequested.notify_all();
    m_thread.join();
    m_isStopping = false;
}

void KrakenSdrDriver::Poll() {
    HttpReader http;
    {
        const std::lock_guard lock(m_mutex);
        m_pHttp = &http;
    }
    int failures = 0;
    QString failure;
    auto due = std::chrono::steady_clock::now();
    while (failures < LOST_AFTER && WaitUntil(due)) {
        due = std::chrono::steady_clock::now() + m_address.interval;
        failure = Ask(http);
        failures = failure.isEmpty() ? 0 : failures + 1;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_pHttp = nullptr;
    }
    if (failures == LOST_AFTER && !IsStopping()) {
        Lose(failure);
    }
}

QString KrakenSdrDriver::Ask(HttpReader& http) {
    const std::optional<QByteArray> body = http.Get(m_address.url, m_address.timeout, RecordReader::MAX_BODY);
    if (!body) {
        return http.GetErrorText();
    }
    if (!m_reader.Read(*body, [this](const Record& record) { Deliver(record); })) {
        return NoRecord(m_reader);
    }
    return {};
}

/// False when the driver is being stopped.
bool KrakenSdrDriver::WaitUntil(std::chrono::steady_clock::time_point due) {
    std::unique_lock lock(m_mutex);
    return !m_stopRequested.wait_until(lock, due, [this] { return m_isStopping; });
}

bool KrakenSdrDriver::IsStopping() {
    const std::lock_guard lock(m_mutex);
    return m_isStopping;
}

void KrakenSdrDriver::Lose(const QString& reason) {
    m_isLost = true;
    for (int i = 0; i < static_cast<int>(BadRecord::COUNT); ++i) {
        const auto kind = static_cast<BadRecord>(i);
        if (const quint64 count = m_reader.GetCounts().Get(kind); count > 0) {
            ErrorStruct result{FAILED, false,
                               RecordParser::GetReasonText(kind) + u": "_s + QString::number(count)};
            m_pCallback->ReportBITResult(result);
        }
    }
    Report(m_address.url.toString() + u": "_s + reason, true);
    m_pCallback->CloseDataLink();
}

void KrakenSdrDriver::Deliver(const Record& record) {
    if (IsStopping()) {
        return;
    }
    TellStation(record);
    unsigned long long time = record.timeMs;
    if (record.hasSpectrum) {
        std::array<short, Record::DIRECTIONS> spectrum{};
        std::ranges::transform(record.spectrum, spectrum.begin(),
                               [](float value) { return ToHundredths(value); });
        m_pCallback->fillSRSpectrumBuffer(spectrum.data(), static_cast<int>(spectrum.size()), time);
    }
    Bearing bearing = ToBearing(record, m_address);
    KvZANCommon::StatusStruct status;
    status.frequency = record.frequency;
    status.heading = record.heading;
    status.latitude = record.latitude;
    status.longitude = record.longitude;
    ++m_blockCount;
    m_pCallback->fillScanBuffer(0, time, 0, 1, &bearing, status);
}

void KrakenSdrDriver::TellStation(const Record& record) {
    const QString station =
        QString::fromUtf8(record.station.data(), static_cast<qsizetype>(record.station.size())).simplified();
    if (!station.isEmpty() && station != m_station) {
        m_station = station;
        Log(u"station "_s + station);
    }
}

long KrakenSdrDriver::Refuse(const QString& reason, long code) {
    m_lastError = reason;
    return code;
}

void KrakenSdrDriver::Log(QString line) {
    m_pCallback->SetCommandLog(line);
}

void KrakenSdrDriver::Report(const QString& text, bool isFatal) {
    ErrorStruct error{FAILED, isFatal, text};
    m_pCallback->reportError(error);
}

} // namespace KrakenSdr
