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

void StationPosition::SetMeasured(const std::optional<double>& latitude,
                                  const std::optional<double>& longitude, quint64 time) {
    m_measured.reset();
    if (Accepts(*m_pLatitude, latitude) && Accepts(*m_pLongitude, longitude)) {
        m_measured = Place{*latitude, *longitude, time};
    }
    ShowCurrent();
}

void StationPosition::SetRecorded(const std::optional<double>& latitude,
                                  const std::optional<double>& longitude,
                                  const std::optional<quint64>& time) {
    m_isRecorded = true;
    m_recorded.reset();
    if (Accepts(*m_pLatitude, latitude) && Accepts(*m_pLongitude, longitude)) {
        m_recorded = Place{*latitude, *longitude, time};
    }
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

std::optional<StationPosition::Place> StationPosition::GetSet() const {
    return m_setLatitude && m_setLongitude ? std::optional(Place{*m_setLatitude, *m_setLongitude, {}})
                                           : std::nullopt;
}

void StationPosition::ShowCurrent() {
    Show(m_isRecorded ? m_recorded : m_pSource->GetCurrentKey() == SOURCE_MANUAL ? GetSet() : m_measured);
}

void StationPosition::Show(const std::optional<Place>& place) {
    Publish(*m_pLatitude, place ? std::optional(place->latitude) : std::nullopt, this);
    Publish(*m_pLongitude, place ? std::optional(place->longitude) : std::nullopt, this);
    Publish(*m_pTime, place ? place->time : std::nullopt, this);
}

} // namespace ZANServer
