#include "zanstation/stationposition.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/valueaccess.h"
#include "zanstation/publish.h"

using namespace StdDeviceDefinition;

namespace {

constexpr long SOURCE_MANUAL = 2; // key of the position source

bool Accepts(const ValueNumericDouble& value, const std::optional<double>& number) {
    return number && *number >= value.GetMin() && *number <= value.GetMax();
}

} // namespace

StationPosition::StationPosition()
    : m_pSource(CreateValue<ValueSelection>(g_vdPosSource, nullptr))
    , m_pLatitude(CreateValue<ValueNumericDouble>(g_vdPosLatitude, nullptr))
    , m_pLongitude(CreateValue<ValueNumericDouble>(g_vdPosLongitude, nullptr))
    , m_pTime(CreateValue<ValueTimeStamp>(g_vdPosLastUpdate, nullptr))
    , m_set{m_pLatitude->GetValue(), m_pLongitude->GetValue(), {}} {
    m_pSource->AddObserver(this);
    m_pLatitude->AddObserver(this);
    m_pLongitude->AddObserver(this);
    ShowCurrent();
}

StationPosition::~StationPosition() {
    Show(m_set);
}

void StationPosition::SetMeasured(const std::optional<double>& latitude,
                                  const std::optional<double>& longitude, quint64 time) {
    m_measured.reset();
    if (Accepts(*m_pLatitude, latitude) && Accepts(*m_pLongitude, longitude)) {
        m_measured = Place{*latitude, *longitude, time};
    }
    ShowCurrent();
}

void StationPosition::Update(Observable* subject, TChangeCode code) {
    if (code != TChangeCode::Changed) {
        return;
    }
    if (subject == m_pLatitude) {
        m_set.latitude = m_pLatitude->GetValue();
    } else if (subject == m_pLongitude) {
        m_set.longitude = m_pLongitude->GetValue();
    }
    ShowCurrent();
}

void StationPosition::ShowCurrent() {
    Show(m_pSource->GetCurrentKey() == SOURCE_MANUAL ? std::optional(m_set) : m_measured);
}

void StationPosition::Show(const std::optional<Place>& place) {
    Publish(*m_pLatitude, place ? std::optional(place->latitude) : std::nullopt, this);
    Publish(*m_pLongitude, place ? std::optional(place->longitude) : std::nullopt, this);
    Publish(*m_pTime, place ? place->time : std::nullopt, this);
}
