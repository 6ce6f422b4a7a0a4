#include "zanserver/stationposition.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "zanserver/publish.h"
#include "zanserver/servervalue.h"

using namespace StdDeviceDefinition;

namespace ZANServer {

namespace {

bool Accepts(const ValueNumericDouble& value, const std::optional<double>& number) {
    return number && *number >= value.GetMin() && *number <= value.GetMax();
}

/// Writes what was set back into a value; if nothing was set, removes the value from the tree.
void RestoreOrRemove(ValueNumericDouble* value, const std::optional<double>& set, IObserver* originator) {
    if (set) {
        Publish(*value, set, originator);
    } else {
        Tree::Instance()->Remove(value);
    }
}

} // namespace

StationPosition::StationPosition(const std::optional<double>& latitude,
                                 const std::optional<double>& longitude)
    : m_pSource(ServerValue<ValueSelection>(g_vdPosSource))
    , m_pLatitude(ServerValue<ValueNumericDouble>(g_vdPosLatitude))
    , m_pLongitude(ServerValue<ValueNumericDouble>(g_vdPosLongitude))
    , m_pAltitude(ServerValue<ValueNumericDouble>(g_vdAltitude))
    , m_pTime(ServerValue<ValueTimeStamp>(g_vdPosLastUpdate))
    , m_setLatitude(latitude)
    , m_setLongitude(longitude) {
    m_pSource->AddObserver(this);
    m_pLatitude->AddObserver(this);
    m_pLongitude->AddObserver(this);
    ShowCurrent();
}

StationPosition::~StationPosition() {
    RestoreOrRemove(m_pLatitude, m_setLatitude, this);
    RestoreOrRemove(m_pLongitude, m_setLongitude, this);
}

void StationPosition::SetMeasured(const Measurement& measurement) {
    m_measured = measurement;
    ShowCurrent();
}

void StationPosition::SetGpsd(const Measurement& measurement) {
    m_gpsd = measurement;
    ShowCurrent();
}

void StationPosition::SetRecorded(const Measurement& measurement) {
    m_recorded = measurement;
    ShowCurrent();
}

void StationPosition::Update(Observable* subject, TChangeCode code) {
    if (code != TChangeCode::Changed) {
        return;
    }
    if (subject == m_pLatitude) {
        m_setLatitude = m_pLatitude->GetValue();
    } else if (subject == m_pLongitude) {
        m_setLongitude = m_pLongitude->GetValue();
    }
    ShowCurrent();
}

void StationPosition::ShowCurrent() {
    const long source = m_pSource->GetCurrentKey();
    const bool isSet = source == SOURCE_MANUAL && !m_recorded;
    const Measurement& measured = m_recorded ? *m_recorded : source == SOURCE_GPSD ? m_gpsd : m_measured;
    ShowPlace(isSet ? Measurement{m_setLatitude, m_setLongitude, {}, {}} : measured);
    Publish(*m_pAltitude, measured.altitude, this);
}

void StationPosition::ShowPlace(const Measurement& place) {
    const bool isPlace = Accepts(*m_pLatitude, place.latitude) && Accepts(*m_pLongitude, place.longitude);
    Publish(*m_pLatitude, isPlace ? place.latitude : std::nullopt, this);
    Publish(*m_pLongitude, isPlace ? place.longitude : std::nullopt, this);
    Publish(*m_pTime, isPlace ? place.time : std::nullopt, this);
}

} // namespace ZANServer
