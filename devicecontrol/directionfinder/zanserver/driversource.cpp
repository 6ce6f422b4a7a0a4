#include "zanserver/driversource.h"

#include <algorithm>

namespace ZANServer {

namespace {

constexpr std::chrono::hours NEVER(24 * 365 * 100);

} // namespace

DriverSource::DriverSource(StationPosition& position, StationAttitude& attitude,
                           const std::optional<Milliseconds>& maxAge)
    : m_position(position)
    , m_attitude(attitude)
    , m_ages(maxAge)
    , m_status(maxAge.value_or(NEVER))
    , m_fix(maxAge.value_or(NEVER)) {
    m_clock.start();
    m_ageing.setSingleShot(true);
    m_ageing.callOnTimeout([this] { Show(); });
}

void DriverSource::TakeStatus(const KvZANCommon::StatusStruct& status, quint64 time) {
    m_status.Take({}, {},
                  {{status.heading, status.magneticHeading, status.pitch, status.roll},
                   {status.latitude, status.longitude, status.altitude, time}},
                  Now());
    m_isFixLast = m_isRecord || !(status.latitude || status.longitude);
    Show();
}

void DriverSource::TakeFix(const PositionFix& fix) {
    Take(fix);
}

void DriverSource::TakeRecorded(const PositionFix& fix) {
    m_isRecord = true;
    Take(fix);
}

void DriverSource::Take(const PositionFix& fix) {
    const auto ifValid = [&fix](double degrees) { return fix.valid ? std::optional(degrees) : std::nullopt; };
    const std::optional<quint64> time = fix.time > 0 ? std::optional(fix.time) : std::nullopt;
    // The rows of a recording have the position that was current then, which may be the same for many.
    m_fix.Take({}, m_isRecord || !fix.valid ? std::nullopt : time,
               {ifValid(fix.latitude), ifValid(fix.longitude), {}, time}, Now());
    m_isFixLast = true;
    Show();
}

void DriverSource::Forget() {
    m_status.Lose({});
    m_fix.Lose({});
    Show();
}

/// Hands over what is current, and comes back when that changes by itself.
void DriverSource::Show() {
    const Milliseconds now = Now();
    const Status status = m_status.Get(now).value_or(Status());
    StationPosition::Measurement position =
        m_isFixLast ? m_fix.Get(now).value_or(StationPosition::Measurement()) : status.position;
    position.altitude = status.position.altitude;
    if (m_isRecord) {
        m_attitude.SetRecorded(status.attitude);
        m_position.SetRecorded(position);
    } else {
        m_attitude.SetMeasured(status.attitude);
        m_position.SetMeasured(position);
    }
    if (!m_ages || m_ageing.isActive()) { // which is not set again with each block
        return;
    }
    std::optional<Milliseconds> next;
    for (const std::optional<Milliseconds>& rest : {m_status.GetRest(now), m_fix.GetRest(now)}) {
        if (rest) {
            next = std::min(next.value_or(*rest), *rest);
        }
    }
    if (next) {
        m_ageing.start(*next + Milliseconds(1));
    }
}

} // namespace ZANServer
