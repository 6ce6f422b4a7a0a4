#include "exampledriver.h"

#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned long long BEGIN = 1767225600000; // ms since 1970: 2026-01-01 00:00:00 UTC

/// Angles in tenths of a degree.
Bearing MakeBearing(quint16 azimuth, qint16 elevation, quint16 quality) {
    Bearing bearing;
    bearing.azimuth = azimuth;
    bearing.elevation = elevation;
    bearing.level = -4250; // hundredths of a dB
    bearing.averageCount = 1;
    bearing.quality = quality;
    return bearing;
}

} // namespace

ExampleDriver::~ExampleDriver() {
    Stop();
}

KvZANCommon::DriverDescription ExampleDriver::Describe() {
    return {u"example"_s, u"measures three known bearings"_s, u"demo"_s, u"demo"_s, {EMODE_SCAN}};
}

int ExampleDriver::Initialize(std::string& address, bool /*simulation*/) {
    Stop();
    if (address != "demo") {
        m_lastError = u"there is no device at "_s + QString::fromStdString(address);
        return FAILED;
    }
    return OK;
}

long ExampleDriver::SetMode(EMode mode) {
    Stop();
    QString command = u"mode "_s + QString::number(mode);
    m_callback.SetCommandLog(command);
    if (mode != EMODE_STANDBY) {
        m_isStopping = false;
        m_blockCount = 0;
        m_thread = std::thread([this, frequency = m_frequency] { Measure(frequency); });
    }
    return OK;
}

long ExampleDriver::SetFrequency(double frequency) {
    m_frequency = frequency;
    return OK;
}

long ExampleDriver::GetFrequency(double& frequency) {
    frequency = m_frequency;
    return OK;
}

/// When it returns, nothing is delivered any more.
void ExampleDriver::Stop() {
    m_isStopping = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

/// On the driver's own thread.
void ExampleDriver::Measure(double frequency) {
    Deliver(BEGIN, frequency, {MakeBearing(715, 100, 90), MakeBearing(1200, 700, 80)});
    Deliver(BEGIN + 1000, frequency, {MakeBearing(722, 110, 85)});
    KvZANCommon::ErrorStruct error{FAILED, false, u"the device has no more to measure"_s};
    m_callback.reportError(error);
    m_callback.CloseDataLink();
}

void ExampleDriver::Deliver(unsigned long long time, double frequency,
                            std::initializer_list<Bearing> bearings) {
    if (m_isStopping) {
        return;
    }
    KvZANCommon::StatusStruct status;
    status.frequency = frequency;
    status.heading = 90.0; // degrees; what is not measured stays empty
    std::vector<Bearing> block = bearings;
    ++m_blockCount;
    m_callback.fillScanBuffer(0, time, 0, static_cast<unsigned>(block.size()), block.data(), status);
}
