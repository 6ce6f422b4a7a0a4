#include "zanserver/stationattitude.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "zanserver/publish.h"
#include "zanserver/servervalue.h"
#include "zanserver/tenths.h"

#include <cmath>

using namespace StdDeviceDefinition;

namespace ZANServer {

StationAttitude::StationAttitude(bool usePitchAndRoll)
    : m_usePitchAndRoll(usePitchAndRoll)
    , m_pSource(ServerValue<ValueSelection>(g_vdHeaSource))
    , m_pHeading(ServerValue<ValueNumericInt>(g_vdTrueHeading))
    , m_pOffset(ServerValue<ValueNumericInt>(g_vdHeaOffset))
    , m_pDeclination(ServerValue<ValueNumericInt>(g_vdDeclination))
    , m_pPitch(ServerValue<ValueNumericDouble>(g_vdPitch))
    , m_pRoll(ServerValue<ValueNumericDouble>(g_vdRoll)) {
    m_pSource->AddObserver(this);
}

void StationAttitude::SetMeasured(const Measurement& measurement) {
    m_measured = measurement;
    ShowCurrent();
}

void StationAttitude::SetGpsd(const Measurement& measurement) {
    m_gpsd = measurement;
    ShowCurrent();
}

void StationAttitude::SetRecorded(const Measurement& measurement) {
    m_recorded = measurement;
    ShowCurrent();
}

void StationAttitude::Update(Observable* /*subject*/, TChangeCode code) {
    if (code == TChangeCode::Changed) {
        ShowCurrent();
    }
}

void StationAttitude::ShowCurrent() {
    const bool isGpsd = m_pSource->GetCurrentKey() == SOURCE_GPSD;
    const Measurement& heading = m_recorded ? *m_recorded : isGpsd ? m_gpsd : m_measured;
    const Measurement& tilt = m_recorded ? *m_recorded : isGpsd && m_usePitchAndRoll ? m_gpsd : m_measured;
    Publish(*m_pHeading, GetTrueHeading(heading), this);
    Publish(*m_pPitch, tilt.pitch, this);
    Publish(*m_pRoll, tilt.roll, this);
}

std::optional<int> StationAttitude::GetTrueHeading(const Measurement& measured) const {
    if (!measured.heading || !std::isfinite(*measured.heading)) {
        return {};
    }
    const int offset = m_recorded ? 0 : m_pOffset->GetValue();
    const int declination = measured.isMagnetic ? m_pDeclination->GetValue() : 0;
    return WithinCircle(ToTenths(*measured.heading) + offset + declination);
}

} // namespace ZANServer
