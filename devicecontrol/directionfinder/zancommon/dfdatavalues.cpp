#include "zancommon/dfdatavalues.h"

using namespace Qt::StringLiterals;
using ZANPlatform::ValuePtr;

namespace {

constexpr long SUPER_RESOLUTION_ACTIVE = 1; // index of the super-resolution status

/// The value when its content is valid, else null.
template <class T>
T* Current(const ValuePtr<T>& value) {
    return value && value->GetState() == TValueState::Valid ? value.get() : nullptr;
}

/// Sets a field from a value; when the value is missing, the field keeps its marker.
template <class Field, class T>
void Take(Field& field, const ValuePtr<T>& value) {
    if (const T* current = Current(value)) {
        field = current->GetValue();
    }
}

/// Sets a field from a member of a bearing, likewise.
template <class Field, class T>
void Take(Field& field, const BearingResult& bearing, BearingResult::Member member,
          T (BearingResult::*getter)() const) {
    if (bearing.IsValueValid(member)) {
        field = (bearing.*getter)();
    }
}

} // namespace

void DFDataValues::Find(IObserver* observer) {
    m_bearing.Find(u"/ZANServer/Res/DfR/Azimuth"_s, observer);
    m_heading.Find(u"/ZANServer/Res/HeaR/TrueHeading"_s);
    m_altitude.Find(u"/ZANServer/Res/PosR/Altitude"_s);
    m_roll.Find(u"/ZANServer/Res/PosR/Roll"_s);
    m_pitch.Find(u"/ZANServer/Res/PosR/Pitch"_s);
    m_positionTime.Find(u"/ZANServer/Res/PosR/PosLastUpdate"_s);
    m_latitude.Find(u"/ZANServer/Res/PosR/PosLatitude"_s);
    m_longitude.Find(u"/ZANServer/Res/PosR/PosLongitude"_s);
    m_emitters.Find(u"/ZANServer/Res/DfR/AzimuthList"_s, observer);
    m_superResolution.Find(u"/ZANServer/Par/Evt/SRStatus"_s);
    m_emitterCount.Find(u"/ZANServer/Res/EvtR/SRNumEmitterResult"_s);
    m_operationMode.Find(u"/ZANServer/DevAttr/OperationMode"_s);
}

BearingResult DFDataValues::GetBearing() const {
    BearingResult bearing;
    Take(bearing, m_bearing);
    return bearing;
}

const std::vector<BearingResult>* DFDataValues::GetEmitters() const {
    const ValueSelection* const status = Current(m_superResolution);
    const ValueBearingList* const emitters = Current(m_emitters);
    return status && emitters && status->GetCurrentIndex() == SUPER_RESOLUTION_ACTIVE
               ? &emitters->GetElements()
               : nullptr;
}

bool DFDataValues::IsOperating() const {
    const ValueSelection* const mode = Current(m_operationMode);
    return mode && mode->GetCurrentKey() != 0;
}

DFDataSentence::Head DFDataValues::MakeHead(const BearingResult& bearing) const {
    DFDataSentence::Head head;
    Take(head.azimuth, bearing, BearingResult::AZIMUTH, &BearingResult::GetAzimuth);
    Take(head.frequency, bearing, BearingResult::FREQUENCY, &BearingResult::GetFrequency);
    Take(head.quality, bearing, BearingResult::QUALITY, &BearingResult::GetQuality);
    Take(head.level, bearing, BearingResult::LEVEL, &BearingResult::GetLevel);
    Take(head.time, bearing, BearingResult::TIME_STAMP, &BearingResult::GetTimeStamp);
    Take(head.heading, m_heading);
    return head;
}

DFDataSentence::Tail DFDataValues::MakeTail(const BearingResult& bearing) const {
    DFDataSentence::Tail tail;
    Take(tail.elevation, bearing, BearingResult::ELEVATION, &BearingResult::GetElevation);
    Take(tail.pitch, m_pitch);
    Take(tail.roll, m_roll);
    Take(tail.altitude, m_altitude);
    // Latitude and longitude count only together; the time of a lost position would make it look current.
    if (Current(m_latitude) && Current(m_longitude)) {
        Take(tail.positionTime, m_positionTime);
        Take(tail.latitude, m_latitude);
        Take(tail.longitude, m_longitude);
    }
    return tail;
}
